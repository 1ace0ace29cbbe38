// The upgrade run when all goes well, and what ends it without a failure of the device in work.

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <random>

#include "app/LoaderHost.hpp"
#include "device/PortName.hpp"
#include "foundation/NotificationCenter.hpp"
#include "loader/load.hpp"
#include "tests/upgrade/UpgradeFixture.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST(RunTest, UpgradesEachDeviceFromTheSelectedOneOnAndPassesOverAReportThatFails) {
  UpgradeFixture fixture(4);
  fixture.appear();
  fixture.misbehave("cut-off@complete");
  fixture.upgradeFrom(2);
  for (std::size_t place = 0; place < 4; ++place) {
    SCOPED_TRACE(place);
    EXPECT_EQ(fixture.flashMatches(place), place >= 2);
    EXPECT_EQ(fixture.completionsOf(place), place >= 2 ? 1U : 0U);
    EXPECT_EQ(fixture.rows()[place].currentVersion == fixture.rows()[place].firmwareVersion, place >= 2);
  }
  EXPECT_THAT(fixture.debugged, Not(IsEmpty()));
  EXPECT_EQ(fixture.alert(), Alert::procedureComplete);
  EXPECT_TRUE(fixture.controlsAreFree());
  EXPECT_EQ(fixture.view->selectedDeviceId.get(), std::nullopt);
  fixture.confirm(Alert::procedureComplete);
  fixture.runFor(5s);  // The last board comes back.
  fixture.refresh();
  ASSERT_EQ(fixture.rows().size(), 4U);
  EXPECT_EQ(fixture.rows()[3].currentVersion, fixture.rows()[3].firmwareVersion) << "the service remembers";
}

/// The worker runs to its end before setParameters looks at it.
void hurryWorker(foundation::Runtime& runtime) {
  auto host = app::loaderHostOn(runtime);
  host.run_on_global_queue = [](void*, void (*job)()) { job(); };
  loader::install_host(host);
}

/// What no fault of the rig brings about, and what the run says of it.
TEST(RunTest, EachFailureIsToldAndTheNextRunCompletes) {
  const struct {
    const char* what;
    std::function<void(UpgradeFixture&, std::size_t place)> arrange;
    std::optional<Alert> alert;
    const char* detail;
    const char* line;  ///< of the log or the debug output
    std::optional<SilentStop> stop = std::nullopt;
  } failures[] = {
      {"no URL", [](auto& of, auto place) { of.list(place, [](auto& d) { d.serverFile = "a file.hex"; }); },
       std::nullopt, "", "Invalid URL : .https://", SilentStop::badUrl},
      {"a page", [](auto& of, auto place) { of.list(place, [](auto& d) { d.serverFile = "absent.hex"; }); },
       Alert::uploadError, "Error: Could not read file\nRefresh list then restart upgrade procedure.\n",
       "> KARVEX : Upload failed => reason Error: Could not read file"},
      {"the port goes",
       [](auto& of, auto place) {
         of.terminals.failsRequest.insert(device::portNameFor(of.serialAt(place)));
       },
       Alert::halfkayModeFailed,
       "An error occurred during an attempt to put the device in programming mode.\n",
       "> KARVEX : Could not open serial port /dev/cu.usbmodem"},
      {"the worker fails at once",
       [](auto& of, auto place) {
         of.spoil(place, "vanishes=0");
         hurryWorker(of.runtime);
       },
       Alert::uploadError, "Error : Upload error\nRefresh list then",
       "> KARVEX : Upload failed => reason Error : Upload error"},
      {"leaves in the middle", [](auto& of, auto place) { of.spoil(place, "vanishes=2"); }, std::nullopt, "",
       "> KARVEX : Upgrade stopped => reason status 11, ", SilentStop::programError},
  };
  for (const auto& failure : failures) {
    for (const std::size_t place : {0U, 2U}) {
      SCOPED_TRACE(testing::Message() << failure.what << " at " << place);
      UpgradeFixture fixture(3);
      failure.arrange(fixture, place);
      fixture.appear();
      fixture.upgradeFrom(0);
      EXPECT_EQ(fixture.alert(), failure.alert);
      if (fixture.alert()) {
        EXPECT_THAT(fixture.view->messageOf(*fixture.alert()), StartsWith(failure.detail));
        EXPECT_THAT(fixture.logged, Each(Not(StartsWith("> KARVEX : Upgrade stopped"))));
      }
      fixture.logged.insert(fixture.logged.end(), fixture.debugged.begin(), fixture.debugged.end());
      EXPECT_THAT(fixture.logged, Contains(StartsWith(failure.line)));
      EXPECT_EQ(fixture.view->stopNotice.get(),
                failure.stop ? noticeOf(*failure.stop, fixture.serialAt(place)) : "");
      EXPECT_TRUE(fixture.controlsAreFree());
      EXPECT_THAT(fixture.statusesOf(place), Not(Contains(7U)));
      EXPECT_EQ(fixture.completionsOf(place), 0U);

      fixture.list(place, [](auto&) {});
      fixture.terminals.failsRequest.clear();
      loader::install_host(app::loaderHostOn(fixture.runtime));
      fixture.repair(place);
      do {  // A board that is left in its bootloader is told of, and the OK sends it back.
        if (const auto up = fixture.alert()) {
          fixture.confirm(*up);
        }
        fixture.runFor(5s);
        fixture.refresh();
      } while (fixture.alert());
      EXPECT_EQ(fixture.view->serialPortMgr.errorText.get(), "");
      fixture.upgradeFrom(place);
      EXPECT_EQ(fixture.alert(), Alert::procedureComplete);
      EXPECT_TRUE(fixture.flashMatches(2));
    }
  }
}

TEST(RunTest, ABootloaderThatMayNotBeOpenedIsToldOfInTheLogAndANotice) {
  UpgradeFixture fixture(1);
  fixture.spoil(0, "access-denied");
  fixture.appear();
  fixture.upgradeFrom(0);
  EXPECT_EQ(fixture.alert(), std::nullopt);
  EXPECT_THAT(fixture.logged, Contains("> KARVEX : Upload failed => reason Error - Permission denied"));
  using enum device::RulesState;
  const auto noticeWith = [&](device::RulesState rules) {
    return noticeOf(SilentStop::permissionDenied, fixture.serialAt(0), {.rules = rules});
  };
  EXPECT_EQ(fixture.view->stopNotice.get(), noticeWith(missing));
  EXPECT_THAT(noticeWith(missing), HasSubstr("The udev rules are missing (60-karvex.rules): install them"));
  EXPECT_THAT(noticeWith(there), Not(HasSubstr("60-karvex.rules")));
  EXPECT_TRUE(fixture.controlsAreFree());
}

TEST(RunTest, WaitsTheFinishedDevicesDelayAndThenLooksForTheNext) {
  UpgradeFixture fixture(2);
  fixture.list(0, [](auto& device) { device.setupDelay = 4'294'968; });
  fixture.appear();
  const auto start = fixture.runtime.clock().now();
  fixture.upgradeFrom(0);
  EXPECT_THAT(fixture.logged, testing::IsSupersetOf({"> KARVEX : Sleeping for 4294968 milliseconds",
                                                     "> KARVEX : Check if next device is alive..."}));
  EXPECT_GT(fixture.runtime.clock().now() - start, 4'294'968ms);
  EXPECT_EQ(fixture.alert(), Alert::procedureComplete);
}

TEST(RunTest, ANextDeviceThatIsNotThereEndsTheRunWithALine) {
  for (const std::size_t missing : {1U, 2U, 4U}) {
    SCOPED_TRACE(missing);
    UpgradeFixture fixture(5);
    fixture.appear();
    fixture.rig.bus.unplug(fixture.serialAt(missing));
    fixture.upgradeFrom(0);
    EXPECT_EQ(fixture.alert(), std::nullopt);
    EXPECT_THAT(fixture.logged, Contains("> KARVEX : Upgrade stopped => reason device #" +
                                         fixture.serialAt(missing) + " is not attached"));
    EXPECT_TRUE(fixture.controlsAreFree());
    EXPECT_EQ(fixture.view->selectedDeviceId.get(), std::nullopt);
    EXPECT_EQ(fixture.view->stopNotice.get(), noticeOf(SilentStop::deviceMissing, fixture.serialAt(missing)));
    EXPECT_EQ(fixture.rows()[missing].status, 0U);
    EXPECT_EQ(fixture.rows()[missing - 1].status, 7U);
    fixture.rig.bus.repair(fixture.serialAt(missing));
    fixture.refresh();
    EXPECT_EQ(fixture.view->stopNotice.get(), "");
    fixture.upgradeFrom(missing);
    EXPECT_EQ(fixture.alert(), Alert::procedureComplete);
    EXPECT_TRUE(fixture.flashMatches(4));
  }
}

TEST(RunTest, WhileARunIsGoingNobodyElseSelects) {
  UpgradeFixture fixture(2);
  fixture.appear();
  fixture.runtime.mainQueue().post([&] {
    fixture.view->select(fixture.rows()[0].id);
    fixture.model.loadingInProgress.set(true);
    fixture.view->select(fixture.rows()[1].id);
    EXPECT_EQ(fixture.view->selectedDeviceId.get(), fixture.rows()[0].id);
    EXPECT_TRUE(fixture.model.isUploadButtonDisabled.get());
  });
  fixture.settle();
  EXPECT_EQ(fixture.alert(), Alert::procedureComplete);
}

TEST(RunTest, ARefreshThatEndsDuringARunLeavesItItsRows) {
  UpgradeFixture fixture(2);
  fixture.appear();
  bool hasBegun = false;
  const auto subscription = fixture.view->deviceManager.managedDevices.observe([&](const auto& devices) {
    if (!devices.empty() && !std::exchange(hasBegun, true)) {
      fixture.runtime.mainQueue().post([&] {
        fixture.view->select(fixture.rows()[0].id);
        fixture.model.loadingInProgress.set(true);
      });
    }
  });
  fixture.runtime.mainQueue().post([] {
    for (int i = 0; i < 2; ++i) {
      foundation::NotificationCenter::defaultCenter().post(scanDevicesNotification);
    }
  });
  fixture.settle();
  EXPECT_TRUE(fixture.flashMatches(1));
}

TEST(RunTest, AnUploadWithoutASelectionStartsNothing) {
  UpgradeFixture fixture(1);
  fixture.appear();
  fixture.runtime.mainQueue().post([&] { fixture.model.loadingInProgress.set(true); });
  fixture.settle();
  EXPECT_TRUE(fixture.controlsAreFree());
  EXPECT_THAT(fixture.logged, Not(Contains("> KARVEX : Calling File loader...")));
}

TEST(RunTest, OnlyAnAttachedDeviceWakesTheUploadButton) {
  UpgradeFixture fixture(2);
  fixture.appear();
  fixture.rig.bus.unplug(fixture.serialAt(0));
  fixture.runtime.mainQueue().post([&] {
    fixture.view->select(fixture.rows()[0].id);
    EXPECT_TRUE(fixture.model.isUploadButtonDisabled.get());
    fixture.view->autoSelect = true;
    fixture.view->select(fixture.rows()[1].id);
    EXPECT_TRUE(fixture.model.isUploadButtonDisabled.get()) << "the run's own selection";
    EXPECT_FALSE(fixture.view->autoSelect);
    fixture.view->select(std::nullopt);
    EXPECT_TRUE(fixture.model.isUploadButtonDisabled.get());
    fixture.view->select(fixture.rows()[1].id);
    EXPECT_FALSE(fixture.model.isUploadButtonDisabled.get());
  });
  fixture.settle();
}

/// The three flags are always one of the four triples, and a run is going just when they say so.
TEST(RunTest, TheControlsAreInOneOfTheirStatesWhateverHappens) {
  std::mt19937 random(7);
  for (int walk = 0; walk < 8; ++walk) {
    SCOPED_TRACE(walk);
    UpgradeFixture fixture(3);
    fixture.appear();
    const auto look = [&] {
      const std::array flags{fixture.model.isUploadButtonDisabled.get(),
                             fixture.model.loadingInProgress.get(),
                             fixture.model.actionButtonsDisabled.get()};
      EXPECT_TRUE(flags == (std::array{true, false, false}) || flags == (std::array{false, false, false}) ||
                  flags == (std::array{true, true, true}))
          << flags[0] << flags[1] << flags[2];
    };
    for (int event = 0; event < 40; ++event) {
      const auto choice = random() % 8;
      fixture.runtime.mainQueue().post([&, choice, row = random() % 3] {
        const auto rows = fixture.rows();
        if (choice < 2 && row < rows.size()) {
          fixture.view->select(rows[row].id);
        } else if (choice == 2 && !fixture.model.isUploadButtonDisabled.get()) {
          fixture.model.loadingInProgress.set(true);
        } else if (choice == 3 && !fixture.model.actionButtonsDisabled.get()) {
          foundation::NotificationCenter::defaultCenter().post(scanDevicesNotification);
        } else if (choice == 4) {
          if (const auto alert = fixture.alert()) {
            fixture.view->confirm(*alert);
          }
        } else if (choice == 5) {
          fixture.rig.bus.unplug(fixture.serialAt(row));
        } else if (choice == 6) {
          fixture.rig.bus.repair(fixture.serialAt(row));
        }
      });
      fixture.runFor(std::chrono::milliseconds(random() % 4000));
      look();
    }
  }
}

}  // namespace
}  // namespace karvex::upgrade
