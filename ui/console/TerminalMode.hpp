#pragma once

#include <string_view>

namespace karvex::ui::console {

/// Takes the terminal over for a full page with single keys, and gives it back as it was: at its end, when
/// std::quick_exit() ends the process, and when a signal does that nobody else handles. What the process
/// writes to standard error meanwhile would stand in the page and go with it: if standard error is a
/// terminal, it is held back until then. One at a time.
class TerminalMode {
 public:
  TerminalMode();
  ~TerminalMode();
  TerminalMode(const TerminalMode&) = delete;
  TerminalMode& operator=(const TerminalMode&) = delete;

  /// True if standard input and standard output are a terminal that this can be done with.
  static bool isPossible();

  /// Writes to the terminal; nothing if it has been given back.
  static void write(std::string_view text);
};

}  // namespace karvex::ui::console
