// Every failure of a run, at the first, a middle and the last device of five: what the user, the log, the
// service and the boards see of it, and that the next run completes.

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "app/LoaderHost.hpp"
#include "loader/load.hpp"
#include "loader/load_status.hpp"
#include "tests/upgrade/RunBench.hpp"

namespace karvex::upgrade {
namespace {

using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::StartsWith;

struct Failure {
  std::string name;
  std::function<void(RunBench&, std::size_t place)> arrange;
  std::optional<Alert> alert;
  /// Lines of the log, in this order, others between them.
  std::vector<std::string> log;
  /// The last status of the device's row before the failure's end.
  std::uint32_t status;
  /// Beginning of the alert's message, where the failure is in it.
  std::string detail = "";
  /// The alert at a later device, where it is another one.
  std::optional<std::optional<Alert>> laterAlert = std::nullopt;
  /// Debug output.
  std::string debug = "";
  /// What the notice says where no alert tells of the failure.
  std::optional<SilentStop> stop = std::nullopt;
};

void PrintTo(const Failure& failure, std::ostream* out) {
  *out << failure.name;
}

void withFault(RunBench& bench, std::size_t place, const std::string& fault) {
  bench.inspect(place, [&fault](rig::VirtualBoard& board) {
    rig::Faults faults;
    ASSERT_EQ(rig::addFault(fault, faults), std::nullopt);
    board.setFaults(faults);
  });
}

auto fault(const std::string& name) {
  return [name](RunBench& bench, std::size_t place) { withFault(bench, place, name); };
}

/// The worker runs to its end before setParameters looks at it.
void hurryWorker(foundation::Runtime& runtime) {
  auto host = app::loaderHostOn(runtime);
  host.run_on_global_queue = [](void*, void (*job)()) { job(); };
  loader::install_host(host);
}

std::vector<Failure> failures() {
  return {
      {.name = "FirmwareUrlIsNone",
       .arrange = [](RunBench& bench,
                     std::size_t place) { bench.list(place, [](auto& d) { d.serverFile = "a file.hex"; }); },
       .log = {},
       .status = 2,
       .debug = "Invalid URL : .https://",
       .stop = SilentStop::badUrl},
      {.name = "DownloadFails",
       .arrange =
           [](RunBench& bench, std::size_t place) {
             bench.list(place, [](auto& d) { d.serverURL = "https://127.0.0.1:1"; });
           },
       .alert = Alert::downloadError,
       .log = {"> KARVEX : Download Failed:  "},
       .status = 2},
      {.name = "ServerAnswersWithAPage",
       .arrange = [](RunBench& bench,
                     std::size_t place) { bench.list(place, [](auto& d) { d.serverFile = "absent.hex"; }); },
       .alert = Alert::uploadError,
       .log = {"> KARVEX : File Download complete", "> KARVEX : Starting Upload procedure...",
               "> KARVEX : Upload failed => reason Error: Could not read file"},
       .status = 5,
       .detail = "Error: Could not read file\nRefresh list then restart upgrade procedure.\n"},
      {.name = "PortIsBusy",
       .arrange = [](RunBench& bench,
                     std::size_t place) { bench.rig.terminals.occupy(bench.serialAt(place), "minicom"); },
       .alert = Alert::portBusy,
       .log = {"> KARVEX : Checking serial port availablity for port : /dev/cu.usbmodem",
               "> KARVEX : Error opening or closing serial port "},
       .status = 4},
      {.name = "PortFailsTheRequest",
       .arrange = [](RunBench& bench,
                     std::size_t place) { bench.terminals.failsRequest.insert(bench.portAt(place)); },
       .alert = Alert::halfkayModeFailed,
       .log = {"> KARVEX Serial port opened succesfully",
               "> KARVEX : Could not open serial port /dev/cu.usbmodem"},
       .status = 5,
       .detail = "An error occurred during an attempt to put the device in programming mode.\n"},
      {.name = "NoBoardComesUp",
       .arrange = fault("never-enters-halfkay"),
       .alert = Alert::uploadError,
       .log = {"> KARVEX : Halfkay mode request Sent on port ",
               "> KARVEX : Upload failed => reason Error - Could not open Teensy"},
       .status = 5,
       .detail = "Error - Could not open Teensy\nRefresh list then"},
      {.name = "WorkerFailsAtOnce",
       .arrange =
           [](RunBench& bench, std::size_t place) {
             withFault(bench, place, "vanishes=0");
             hurryWorker(bench.runtime);
           },
       .alert = Alert::uploadError,
       .log = {"> KARVEX : Upload failed => reason Error : Upload error"},
       .status = 5,
       .detail = "Error : Upload error\nRefresh list then"},
      {.name = "BootloaderMayNotBeOpened",
       .arrange = fault("access-denied"),
       .log = {"> KARVEX : Teensy HID manager access not permitted!",
               "> KARVEX : Upload failed => reason Error - Permission denied"},
       .status = 5,
       // Behind a later device the list is asked for anew, and the board shows in its bootloader.
       .laterAlert = Alert::halfkayModeDetected,
       .stop = SilentStop::permissionDenied},
      {.name = "BoardLeavesInTheMiddle",
       .arrange = fault("vanishes=2"),
       .log = {"> KARVEX : Upgrade stopped => reason status 11, "},
       .status = 11,
       .stop = SilentStop::programError},
      {.name = "BoardTakesNoBlock",
       .arrange = fault("refuses-for-good"),
       .log = {"> KARVEX : Upgrade stopped => reason status 11, "},
       .status = 11,
       .stop = SilentStop::programError},
  };
}

using Case = std::tuple<Failure, std::size_t>;

class FaultMatrixTest : public testing::TestWithParam<Case> {
 protected:
  static constexpr std::size_t boards = 5;

  /// Everything that was wrong is mended.
  static void repair(RunBench& bench) {
    bench.listRight();
    bench.terminals.failsRequest.clear();
    loader::install_host(app::loaderHostOn(bench.runtime));
    for (std::size_t place = 0; place < boards; ++place) {
      bench.rig.terminals.vacate(bench.serialAt(place));
      bench.rig.bus.repair(bench.serialAt(place));
    }
  }
};

void expectInOrder(const std::vector<std::string>& log, const std::vector<std::string>& wanted) {
  auto at = log.begin();
  for (const auto& text : wanted) {
    at = std::find_if(at, log.end(), [&text](const auto& line) { return line.starts_with(text); });
    ASSERT_NE(at, log.end()) << "no line, or not in this order: " << text;
  }
}

TEST_P(FaultMatrixTest, EndsTheRunAndLosesNothing) {
  const auto& [failure, place] = GetParam();
  RunBench bench(boards);
  failure.arrange(bench, place);
  bench.appear();
  ASSERT_EQ(bench.rows().size(), boards);
  bench.forget();

  bench.upgradeFrom(0);

  EXPECT_EQ(bench.alert(), place == 0 ? failure.alert : failure.laterAlert.value_or(failure.alert));
  if (bench.alert()) {
    EXPECT_THAT(bench.view->messageOf(*bench.alert()), StartsWith(failure.detail));
    EXPECT_THAT(bench.logged, testing::Each(testing::Not(StartsWith("> KARVEX : Upgrade stopped"))));
  }
  EXPECT_EQ(bench.view->stopNotice.get(), failure.stop ? noticeOf(*failure.stop, bench.serialAt(place)) : "");
  expectInOrder(bench.logged, failure.log);
  if (!failure.debug.empty()) {
    EXPECT_THAT(bench.debugged, Contains(StartsWith(failure.debug)));
  }
  EXPECT_TRUE(bench.controlsAreFree());
  if (place == 0 && failure.status == loader::LOAD_STATUS_IMPORT_FILE) {
    EXPECT_EQ(loader::get_load_status(), failure.status)
        << "the list is asked for anew before a tick shows it";
  } else {
    EXPECT_THAT(bench.statusesOf(place), Contains(failure.status));
  }
  EXPECT_THAT(bench.statusesOf(place), testing::Not(Contains(7U)));
  for (std::size_t other = 0; other < boards; ++other) {
    SCOPED_TRACE(other);
    EXPECT_EQ(bench.completionsOf(other), other < place ? 1U : 0U);
    EXPECT_EQ(bench.flashMatches(other), other < place)
        << "devices before it are done, those behind it untouched";
  }

  repair(bench);
  if (bench.alert()) {
    bench.confirm(*bench.alert());
  }
  bench.runFor(std::chrono::seconds(5));  // Boards on their way get where they go.
  bench.refresh();
  // A board that the failure left in its bootloader is told of, and the OK sends it back into its firmware.
  while (bench.alert() == Alert::halfkayModeDetected) {
    bench.confirm(Alert::halfkayModeDetected);
    bench.runFor(std::chrono::seconds(5));
    bench.refresh();
  }
  ASSERT_EQ(bench.rows().size(), boards);
  bench.upgradeFrom(place);
  EXPECT_EQ(bench.alert(), Alert::procedureComplete);
  for (std::size_t other = 0; other < boards; ++other) {
    SCOPED_TRACE(other);
    EXPECT_TRUE(bench.flashMatches(other));
    EXPECT_EQ(bench.completionsOf(other), 1U);
  }
}

INSTANTIATE_TEST_SUITE_P(AtEachPlace, FaultMatrixTest,
                         testing::Combine(testing::ValuesIn(failures()), testing::Values(0U, 2U, 4U)),
                         [](const auto& one) {
                           return std::get<0>(one.param).name + "At" + std::to_string(std::get<1>(one.param));
                         });

}  // namespace
}  // namespace karvex::upgrade
