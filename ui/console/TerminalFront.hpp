#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "foundation/Observers.hpp"
#include "ui/Actions.hpp"
#include "ui/Observation.hpp"
#include "ui/TerminationSignals.hpp"
#include "ui/console/Keys.hpp"
#include "ui/console/Screen.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::ui::console {

/// The front for a terminal. A thread of its own draws the page and reads the keys, so that both go on while
/// the main queue is blocked. Made and destroyed on the main thread.
class TerminalFront {
 public:
  /// `quit` is called, on the main thread, when the user or a signal (TerminationSignals) wants the program
  /// to end: behind the run that is going, and behind its reports to the service; a user's wish is dropped if
  /// that run fails (QuitRequest). Everything must outlive the front.
  TerminalFront(ContentView& view, Actions& actions, std::function<void()> quit);
  ~TerminalFront();
  TerminalFront(const TerminalFront&) = delete;
  TerminalFront& operator=(const TerminalFront&) = delete;

  /// Shows a line below the page, below the two before it where there is room. Any thread.
  void notice(std::string_view line);

 private:
  void run();
  void draw();
  void handle(Key key);
  void moveSelection(int step);
  void takeKeys(short events);
  void askToLeave(Leaving leaving);
  void leaveWhenIdle();
  void wake();

  /// What the main thread and others have told the front's.
  struct Told {
    Snapshot snapshot;
    std::vector<std::string> notices;
    QuitRequest wish;
    bool isEnding = false;
  };
  Told told();

  ContentView& view_;
  Actions& actions_;
  std::function<void()> quit_;
  int wakeDescriptor_;

  std::mutex mutex_;
  Told told_;  // Guarded by the mutex.

  const Colours colours_;
  std::string drawn_;  // The front's thread alone, as the two below.
  PageSize drawnSize_{};
  bool isHungUp_ = false;

  std::vector<foundation::Subscription> subscriptions_;
  std::thread thread_;
  std::optional<TerminationSignals> terminationSignals_;
};

}  // namespace karvex::ui::console
