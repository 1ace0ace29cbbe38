#pragma once

#include <mutex>
#include <string>

namespace karvex::app {

/// One line at the bottom of a terminal that says what the load is doing. On anything but a terminal it draws
/// nothing. All operations may be called on any thread.
class ProgressLine {
 public:
  /// Draws on standard output.
  ProgressLine();
  ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  bool isVisible() const { return isTerminal_; }

  /// Draws the state of the load under way, as the loader tells it, behind `title`.
  void show(const std::string& title);

  /// Takes the line off the terminal, so that other text can be written.
  void clear();

 private:
  const bool isTerminal_;
  std::mutex mutex_;
  std::string shown_;
};

}  // namespace karvex::app
