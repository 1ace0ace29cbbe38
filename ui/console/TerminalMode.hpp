#pragma once

#include <termios.h>

namespace karvex::ui::console {

/// Takes the terminal over for a full page with single keys, and gives it back as it was: at its end, and
/// when a signal ends the process. One at a time.
class TerminalMode {
 public:
  TerminalMode();
  ~TerminalMode();
  TerminalMode(const TerminalMode&) = delete;
  TerminalMode& operator=(const TerminalMode&) = delete;

  /// True if standard input and standard output are a terminal that this can be done with.
  static bool isPossible();

 private:
  termios before_{};
};

}  // namespace karvex::ui::console
