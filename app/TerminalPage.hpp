#pragma once

#include <functional>

#include "ui/Actions.hpp"
#include "ui/ContentView.hpp"
#include "ui/console/TerminalFront.hpp"

namespace karvex::app {

/// The terminal front with the terminal for itself: what the program's channels would print shows in the
/// page's last line. One at a time, made and destroyed on the main thread.
class TerminalPage {
 public:
  /// `quit` is called as that of ui::console::TerminalFront. The system channel shows where it would be seen
  /// without the page, and always with `showLog`. Everything must outlive the page.
  TerminalPage(ui::ContentView& view, ui::Actions& actions, std::function<void()> quit, bool showLog = false);
  ~TerminalPage();
  TerminalPage(const TerminalPage&) = delete;
  TerminalPage& operator=(const TerminalPage&) = delete;

 private:
  bool showsLog_;  // Decided ahead of the front, which takes standard error over.
  ui::console::TerminalFront front_;
};

}  // namespace karvex::app
