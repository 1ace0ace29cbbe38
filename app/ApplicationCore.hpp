#pragma once

#include "foundation/run/Runtime.hpp"
#include "ui/Actions.hpp"
#include "ui/ContentView.hpp"

namespace karvex::app {

/// The application's objects, for a front to show. Made, run and destroyed on the core's main thread.
class ApplicationCore {
 public:
  virtual ~ApplicationCore() = default;
  virtual foundation::Runtime& runtime() = 0;
  virtual ui::ContentView& view() = 0;
  virtual ui::Actions& actions() = 0;
  /// The window is on the screen, and has told the actions so. The toolkit's thread.
  virtual void shown() {}
};

}  // namespace karvex::app
