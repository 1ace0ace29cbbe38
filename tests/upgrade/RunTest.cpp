// The upgrade run when all goes well, and what ends it without a failure of the device in work.

#include <gmock/gmock.h>

#include <chrono>
#include <random>

#include "foundation/NotificationCenter.hpp"
#include "tests/upgrade/RunBench.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

TEST(RunTest, UpgradesEachDeviceFromTheSelectedOneOn) {
  RunBench bench(5);
  bench.appear();
  bench.forget();
  bench.upgradeFrom(2);
  for (std::size_t place = 0; place < 5; ++place) {
    SCOPED_TRACE(place);
    EXPECT_EQ(bench.flashMatches(place), place >= 2);
    EXPECT_EQ(bench.completionsOf(place), place >= 2 ? 1U : 0U);
    EXPECT_EQ(bench.rows()[place].currentVersion == bench.rows()[place].firmwareVersion, place >= 2);
  }
  EXPECT_THAT(bench.statusesOf(2), ElementsAre(4U, 5U, 6U, 7U));
  EXPECT_EQ(bench.alert(), Alert::procedureComplete);
  EXPECT_TRUE(bench.controlsAreFree());
  EXPECT_EQ(bench.view->selectedDeviceId.get(), std::nullopt);
  EXPECT_EQ(bench.logged.back(), "> KARVEX : End of loading Sequence");
}

TEST(RunTest, TheServiceRemembersWhatItWasToldOf) {
  RunBench bench(1);
  bench.appear();
  bench.upgradeFrom(0);
  bench.confirm(Alert::procedureComplete);
  bench.refresh();
  EXPECT_EQ(bench.rows()[0].currentVersion, bench.rows()[0].firmwareVersion);
}

TEST(RunTest, WaitsTheFinishedDevicesDelayAndThenLooksForTheNext) {
  RunBench bench(2);
  bench.list(0, [](auto& device) { device.setupDelay = 4'294'968; });
  bench.appear();
  const auto start = bench.runtime.clock().now();
  bench.upgradeFrom(0);
  EXPECT_THAT(bench.logged, testing::IsSupersetOf({"> KARVEX : Sleeping for 4294968 milliseconds",
                                                   "> KARVEX : Check if next device is alive..."}));
  EXPECT_GT(bench.runtime.clock().now() - start, 4'294'968ms);
  EXPECT_EQ(bench.alert(), Alert::procedureComplete);
}

TEST(RunTest, ANextDeviceThatIsNotThereEndsTheRunWithALine) {
  for (const std::size_t missing : {1U, 2U, 4U}) {
    SCOPED_TRACE(missing);
    RunBench bench(5);
    bench.appear();
    bench.rig.bus.unplug(bench.serialAt(missing));
    bench.upgradeFrom(0);
    EXPECT_EQ(bench.alert(), std::nullopt);
    EXPECT_THAT(bench.logged, Contains("> KARVEX : Upgrade stopped => reason device #" +
                                       bench.serialAt(missing) + " is not attached"));
    EXPECT_TRUE(bench.controlsAreFree());
    EXPECT_EQ(bench.view->selectedDeviceId.get(), std::nullopt);
    EXPECT_EQ(bench.view->stopNotice.get(), noticeOf(SilentStop::deviceMissing, bench.serialAt(missing)));
    EXPECT_EQ(bench.rows()[missing].status, 0U);
    EXPECT_EQ(bench.rows()[missing - 1].status, 7U);
    bench.rig.bus.repair(bench.serialAt(missing));
    bench.refresh();
    EXPECT_EQ(bench.view->stopNotice.get(), "");
    bench.upgradeFrom(missing);
    EXPECT_EQ(bench.alert(), Alert::procedureComplete);
    EXPECT_TRUE(bench.flashMatches(4));
  }
}

TEST(RunTest, AReportThatFailsIsPassedOver) {
  RunBench bench(3);
  bench.appear();
  rig::ServiceFaults faults;
  ASSERT_EQ(rig::addServiceFault("cut-off@complete", faults), std::nullopt);
  bench.rig.service.setFaults(faults);
  bench.upgradeFrom(0);
  EXPECT_EQ(bench.alert(), Alert::procedureComplete);
  EXPECT_THAT(bench.debugged, Not(IsEmpty()));
  for (std::size_t place = 0; place < 3; ++place) {
    EXPECT_EQ(bench.rows()[place].status, 7U);
    EXPECT_EQ(bench.rows()[place].currentVersion, bench.rows()[place].firmwareVersion);
  }
}

TEST(RunTest, AListedBoardInItsBootloaderFailsAtThePortTest) {
  RunBench bench(1);
  bench.rig.bus.setLineSpeed(bench.serialAt(0), 134);
  bench.runFor(3s);
  bench.appear();
  ASSERT_EQ(bench.rows().size(), 1U);
  bench.view->halfkayModeDetected.set(false);
  bench.model.enableUploadControls();
  bench.upgradeFrom(0);
  EXPECT_THAT(bench.logged, Contains("> KARVEX : Already in Halfkay mode... abort!"));
  EXPECT_EQ(bench.alert(), Alert::portBusy);
}

TEST(RunTest, WhileARunIsGoingNobodyElseSelects) {
  RunBench bench(2);
  bench.appear();
  bench.runtime.mainQueue().post([&] {
    bench.view->select(bench.rows()[0].id);
    bench.model.loadingInProgress.set(true);
    bench.view->select(bench.rows()[1].id);
    EXPECT_EQ(bench.view->selectedDeviceId.get(), bench.rows()[0].id);
    EXPECT_TRUE(bench.model.isUploadButtonDisabled.get());
  });
  bench.settle();
  EXPECT_EQ(bench.alert(), Alert::procedureComplete);
}

TEST(RunTest, ARefreshThatEndsDuringARunLeavesItItsRows) {
  RunBench bench(2);
  bench.appear();
  bool hasBegun = false;
  const auto subscription = bench.view->deviceManager.managedDevices.observe([&](const auto& devices) {
    if (!devices.empty() && !std::exchange(hasBegun, true)) {
      bench.runtime.mainQueue().post([&] {
        bench.view->select(bench.rows()[0].id);
        bench.model.loadingInProgress.set(true);
      });
    }
  });
  bench.runtime.mainQueue().post([] {
    for (int i = 0; i < 2; ++i) {
      foundation::NotificationCenter::defaultCenter().post(scanDevicesNotification);
    }
  });
  bench.settle();
  EXPECT_TRUE(bench.flashMatches(1));
}

TEST(RunTest, AnUploadWithoutASelectionStartsNothing) {
  RunBench bench(1);
  bench.appear();
  bench.runtime.mainQueue().post([&] { bench.model.loadingInProgress.set(true); });
  bench.settle();
  EXPECT_TRUE(bench.controlsAreFree());
  EXPECT_THAT(bench.logged, Not(Contains("> KARVEX : Calling File loader...")));
}

TEST(RunTest, OnlyAnAttachedDeviceWakesTheUploadButton) {
  RunBench bench(2);
  bench.appear();
  bench.rig.bus.unplug(bench.serialAt(0));
  bench.runtime.mainQueue().post([&] {
    bench.view->select(bench.rows()[0].id);
    EXPECT_TRUE(bench.model.isUploadButtonDisabled.get());
    bench.view->autoSelect = true;
    bench.view->select(bench.rows()[1].id);
    EXPECT_TRUE(bench.model.isUploadButtonDisabled.get()) << "the run's own selection";
    EXPECT_FALSE(bench.view->autoSelect);
    bench.view->select(std::nullopt);
    EXPECT_TRUE(bench.model.isUploadButtonDisabled.get());
    bench.view->select(bench.rows()[1].id);
    EXPECT_FALSE(bench.model.isUploadButtonDisabled.get());
  });
  bench.settle();
}

/// The three flags are always one of the four triples, and a run is going just when they say so.
TEST(RunTest, TheControlsAreInOneOfTheirStatesWhateverHappens) {
  std::mt19937 random(7);
  for (int walk = 0; walk < 8; ++walk) {
    SCOPED_TRACE(walk);
    RunBench bench(3);
    bench.appear();
    const auto look = [&] {
      const std::array flags{bench.model.isUploadButtonDisabled.get(), bench.model.loadingInProgress.get(),
                             bench.model.actionButtonsDisabled.get()};
      EXPECT_TRUE(flags == (std::array{true, false, false}) || flags == (std::array{false, false, false}) ||
                  flags == (std::array{true, true, true}))
          << flags[0] << flags[1] << flags[2];
    };
    for (int event = 0; event < 40; ++event) {
      const auto choice = random() % 8;
      bench.runtime.mainQueue().post([&, choice, row = random() % 3] {
        const auto rows = bench.rows();
        if (choice < 2 && row < rows.size()) {
          bench.view->select(rows[row].id);
        } else if (choice == 2 && !bench.model.isUploadButtonDisabled.get()) {
          bench.model.loadingInProgress.set(true);
        } else if (choice == 3 && !bench.model.actionButtonsDisabled.get()) {
          foundation::NotificationCenter::defaultCenter().post(scanDevicesNotification);
        } else if (choice == 4) {
          if (const auto alert = bench.alert()) {
            bench.view->confirm(*alert);
          }
        } else if (choice == 5) {
          bench.rig.bus.unplug(bench.serialAt(row));
        } else if (choice == 6) {
          bench.rig.bus.repair(bench.serialAt(row));
        }
      });
      bench.runFor(std::chrono::milliseconds(random() % 4000));
      look();
    }
  }
}

TEST(RunTest, TimeBeyondTheToldPausesGrowsWithTheNumberOfBoards) {
  const auto timeOf = [](std::size_t boards) {
    RunBench bench(boards);
    bench.appear();
    const auto start = bench.runtime.clock().now();
    bench.upgradeFrom(0);
    EXPECT_EQ(bench.alert(), Alert::procedureComplete);
    return std::chrono::duration<double>(bench.runtime.clock().now() - start).count();
  };
  // Six kinds of boards take turns, so that runs of a multiple of six are alike.
  const auto few = timeOf(6);
  const auto some = timeOf(12);
  const auto many = timeOf(18);
  EXPECT_NEAR((many - some) / (some - few), 1.0, 0.01) << few << " s, " << some << " s, " << many << " s";
}

}  // namespace
}  // namespace karvex::upgrade
