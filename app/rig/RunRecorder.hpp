#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "app/rig/RigPlatform.hpp"
#include "app/rig/Timeline.hpp"
#include "foundation/Observers.hpp"
#include "foundation/run/Clock.hpp"
#include "ui/ContentView.hpp"
#include "ui/Observation.hpp"

namespace karvex::app {

/// Everything that a run of the application showed and did, with times, for a report.
struct RunRecord {
  struct StatusAt {
    foundation::TimePoint at;
    std::uint32_t status;
  };
  struct DialogAt {
    foundation::TimePoint at;
    std::string title;
    std::string message;
  };
  struct ControlsAt {
    foundation::TimePoint at;
    bool uploadDisabled;
    bool loading;
    bool actionsDisabled;
  };
  /// A board, at the end.
  struct Board {
    std::string serialNumber;
    std::string mcu;
    std::string state;
    std::uint32_t reports = 0;  ///< blocks that the board took in its last load
    bool bootReport = false;
    bool flashMatches = false;  ///< with the file that the service lists for it
    bool isReported = false;    ///< the service was told of its upgrade
    bool isBack = false;        ///< it is on the bus, or will be in a moment
    std::vector<Timeline::Entry> timeline;
  };

  foundation::TimePoint start;
  std::map<std::string, std::vector<StatusAt>> statuses;  ///< by serial number
  std::vector<DialogAt> dialogs;
  std::vector<ControlsAt> controls;
  std::vector<rig::ServiceRequest> requests;
  std::vector<Board> boards;
  bool hasGivenUp = false;  ///< an alert came back whatever was answered, which ended the run
};

/// Writes the record while the application runs. Main thread; the boards' events may come on any.
class RunRecorder {
 public:
  /// Given the record when the loader ends the process.
  using EndListener = std::function<void(const RunRecord&)>;

  /// All must outlive the recorder.
  RunRecorder(RigPlatform& rig, ui::ContentView& view, const EquipmentPlan& plan, EndListener endListener);
  ~RunRecorder();
  RunRecorder(const RunRecorder&) = delete;
  RunRecorder& operator=(const RunRecorder&) = delete;

  /// The record until now, with the boards as they are.
  RunRecord record() const;

 private:
  void look();
  void lookAtRows(const std::vector<records::BootableDevice>& devices);
  void lookAtControls();
  RunRecord::Board boardAt(std::size_t place) const;

  RigPlatform& rig_;
  ui::ContentView& view_;
  const EquipmentPlan& plan_;
  RunRecord record_;
  std::map<std::string, Timeline> timelines_;
  std::vector<std::pair<foundation::Uuid, std::uint32_t>> rows_;  ///< and the status of each at the last look
  std::string lastDialog_;
  std::vector<foundation::Subscription> subscriptions_;
};

}  // namespace karvex::app
