#pragma once

#include <functional>
#include <thread>

namespace karvex::ui {

/// The signals by which a user or the system asks the program to end: SIGINT, SIGTERM and SIGHUP. While this
/// lives, they don't end it by themselves; one that the program was started without (nohup) stays ignored.
/// The first is a request like the user's. Another SIGINT or SIGTERM ends the program at once, by
/// std::quick_exit() with 128 and the signal's number: files and the terminal are put in order, and nothing
/// is waited for. One at a time.
class TerminationSignals {
 public:
  /// `ask` is called once, on a thread of this object's own. Throws std::system_error.
  explicit TerminationSignals(std::function<void()> ask);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  void run();

  std::function<void()> ask_;
  int descriptor_ = -1;  // Where the handler's notes arrive.
  std::thread thread_;
};

}  // namespace karvex::ui
