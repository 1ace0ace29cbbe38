#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "foundation/Observers.hpp"
#include "ui/Actions.hpp"
#include "ui/Observation.hpp"
#include "ui/console/Keys.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::ui::console {

/// The front for a terminal. A thread of its own draws the page and reads the keys, so that both go on while
/// the main queue is blocked. Made and destroyed on the main thread.
class TerminalFront {
 public:
  /// `quit` is called, on the front's thread, when the user wants to leave: behind the run that is going, and
  /// behind its reports to the service. Everything must outlive the front.
  TerminalFront(ContentView& view, Actions& actions, std::function<void()> quit);
  ~TerminalFront();
  TerminalFront(const TerminalFront&) = delete;
  TerminalFront& operator=(const TerminalFront&) = delete;

  /// Shows a line below the page, in the place of the one before. Any thread.
  void notice(std::string_view line);

 private:
  void run();
  void draw();
  void handle(Key key);
  void moveSelection(int step);
  void quitWhenIdle();
  void wake();
  Snapshot current();

  ContentView& view_;
  Actions& actions_;
  std::function<void()> quit_;
  int wakeDescriptor_;

  std::mutex mutex_;  // Guards what both threads touch.
  Snapshot snapshot_;
  std::string notice_;
  bool isEnding_ = false;

  bool wantsToQuit_ = false;  // The front's thread alone, as the page drawn last.
  bool hasQuit_ = false;
  std::string drawn_;

  std::vector<foundation::Subscription> subscriptions_;
  std::thread thread_;
};

}  // namespace karvex::ui::console
