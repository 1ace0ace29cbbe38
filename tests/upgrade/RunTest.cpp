// What the user, a refresh and a run may do to each other. Whole runs are in RunTimelineTest.cpp.

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
  // The second refresh is still waiting for its list when the run begins on that of the first.
  fixture.misbehave("slow@list=2000");
  for (const auto delay : {0s, 1s}) {
    fixture.runtime.mainQueue().postAt(fixture.runtime.clock().now() + delay, [] {
      foundation::NotificationCenter::defaultCenter().post(scanDevicesNotification);
    });
  }
  fixture.settle();
  EXPECT_TRUE(fixture.flashMatches(1));
}

TEST(RunTest, OnlyAnAttachedDeviceWakesTheUploadButton) {
  UpgradeFixture fixture(2);
  fixture.appear();
  fixture.rig.bus.unplug(fixture.serialAt(0));
  fixture.runtime.mainQueue().post([&] {
    fixture.model.loadingInProgress.set(true);
    EXPECT_TRUE(fixture.controlsAreFree()) << "an upload without a selection starts nothing";
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
