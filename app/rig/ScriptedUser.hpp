#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "foundation/Observers.hpp"
#include "foundation/Runtime.hpp"
#include "foundation/Timer.hpp"
#include "ui/ContentView.hpp"
#include "ui/Observation.hpp"

namespace karvex::app {

/// Upgrades without a hand: when the list has come, selects a row and clicks on the Upload button, and tells
/// when the run is over and everything that it started has ended. Main thread.
class ScriptedUser {
 public:
  struct Plan {
    std::size_t firstRow = 0;  ///< counted from 0
    bool answersAlerts = false;
  };

  /// `done` is called once. All must outlive this object.
  ScriptedUser(foundation::Runtime& runtime, ui::ContentView& view, Plan plan, std::function<void()> done);

  /// False as long as the run could not be begun: no such row, a device that can't be upgraded, or an alert
  /// that is up.
  bool hasBegun() const { return step_ == Step::running || hasRun_; }

 private:
  enum class Step { waitingForList, running, done };

  void look();
  void begin();
  bool isQuiet() const;

  foundation::Runtime& runtime_;
  ui::ContentView& view_;
  Plan plan_;
  std::function<void()> done_;
  Step step_ = Step::waitingForList;
  bool hasRun_ = false;
  foundation::Timer timer_;
};

}  // namespace karvex::app
