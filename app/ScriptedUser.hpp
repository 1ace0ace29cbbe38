#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "foundation/Observers.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/Timer.hpp"
#include "ui/ContentView.hpp"
#include "ui/Observation.hpp"

namespace karvex::app {

/// Upgrades unattended: when the list has come, selects a row and clicks on the Upload button, answers
/// alerts if it is to, and tells when the run is over and everything that it started has ended. Main thread.
class ScriptedUser {
 public:
  struct Plan {
    std::size_t firstRow = 0;  ///< counted from 0
    bool answersAlerts = false;
  };

  /// `done` is called once. All must outlive this object.
  ScriptedUser(foundation::Runtime& runtime, ui::ContentView& view, Plan plan, std::function<void()> done);

  /// True if an alert came back whatever was answered; that ends the run.
  bool hasGivenUp() const { return hasGivenUp_; }

  /// The devices to upgrade, as they were when the list had come. None if there is no row to begin with.
  /// Thread-safe: on the main thread alone.
  /// Realtime-safe: yes.
  const std::vector<records::BootableDevice>& wanted() const { return wanted_; }

 private:
  enum class Step { waitingForList, running, done };

  void look();
  void begin();
  bool isQuiet() const;
  bool answersAlert();

  foundation::Runtime& runtime_;
  ui::ContentView& view_;
  Plan plan_;
  std::function<void()> done_;
  Step step_ = Step::waitingForList;
  bool hasGivenUp_ = false;
  std::vector<records::BootableDevice> wanted_;
  std::map<std::string, int> answers_;  ///< by the alert and the rows that it came to
  foundation::Timer timer_;
};

}  // namespace karvex::app
