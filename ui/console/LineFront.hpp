#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "foundation/Observers.hpp"
#include "ui/ContentView.hpp"
#include "ui/Observation.hpp"

namespace karvex::ui::console {

/// The front for a pipe: writes a line for each change, and takes no input. Main thread.
class LineFront {
 public:
  /// The view must outlive the front.
  LineFront(ContentView& view, std::function<void(std::string_view line)> write);

  /// Calls `quit` when nothing is under way, at once or later; says why if it is to be later.
  void quitWhenIdle(std::function<void()> quit);

 private:
  void look();
  void quitIfIdle();

  ContentView& view_;
  std::function<void(std::string_view)> write_;
  Snapshot last_;
  std::function<void()> quit_;  // Set as long as somebody waits for it.
  std::vector<foundation::Subscription> subscriptions_;
};

}  // namespace karvex::ui::console
