// What the user, a refresh and a run may do to each other. Whole runs are in RunTimelineTest.cpp.

#include <gmock/gmock.h>

#include <chrono>
#include <utility>

#include "foundation/NotificationCenter.hpp"
#include "tests/upgrade/UpgradeFixture.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;

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

}  // namespace
}  // namespace karvex::upgrade
