#include <gmock/gmock.h>

#include <chrono>

#include "loader/load_status.hpp"
#include "tests/upgrade/UpgradeBench.hpp"
#include "upgrade/DeviceListView.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;
using loader::set_load_status;
using testing::ElementsAre;
using testing::IsEmpty;

class StatusPollingTest : public testing::Test {
 protected:
  StatusPollingTest() {
    set_load_status(0);
    view.deviceManager.managedDevices.set({records::BootableDevice(), records::BootableDevice()});
  }
  ~StatusPollingTest() override { set_load_status(0); }

  foundation::Uuid idAt(std::size_t place) { return view.deviceManager.managedDevices.get()[place].id; }
  std::uint32_t statusAt(std::size_t place) { return view.deviceManager.managedDevices.get()[place].status; }

  UpgradeBench bench;
  NotificationManager notificationManager;
  std::shared_ptr<midikit::io::ObservableMIDIManager> midiManager =
      midikit::io::ObservableMIDIManager::create(
          {.service = bench.midiService, .runtime = bench.runtime, .clientName = "StatusPollingTest"});
  SharedDeviceListModel model;
  DeviceListView view{bench.platform(), notificationManager, midiManager, model};
};

TEST_F(StatusPollingTest, AChangeIsAcknowledgedOnceAndGoesIntoTheSelectedRow) {
  view.selectedDeviceId.set(idAt(1));
  set_load_status(5);
  bench.runFor(249ms);
  EXPECT_THAT(bench.logged, IsEmpty());
  bench.runFor(1s);
  EXPECT_THAT(bench.logged, ElementsAre("> KARVEX : Acknowledged Status value = 5"));
  EXPECT_EQ(statusAt(0), 0U);
  EXPECT_EQ(statusAt(1), 5U);
  EXPECT_FALSE(view.statusManager.statusChanged.get());
  EXPECT_EQ(view.statusManager.statusState.get(), 5U);
}

TEST_F(StatusPollingTest, WhatComesAndGoesBetweenTwoTicksIsSeenAsItsEnd) {
  view.selectedDeviceId.set(idAt(1));
  for (const auto status : {5U, 6U, 7U}) {
    set_load_status(status);
  }
  bench.runFor(1s);
  EXPECT_THAT(bench.logged,
              ElementsAre("> KARVEX : Acknowledged Status value = 7", "> KARVEX : End of loading Sequence"));
  EXPECT_TRUE(view.procedureComplete.get()) << "and the end of the load is handled once";
}

TEST_F(StatusPollingTest, AnEqualValueIsAcknowledgedAgainWhenItIsAnnounced) {
  view.selectedDeviceId.set(idAt(0));
  set_load_status(2);
  bench.runFor(1s);
  view.deviceManager.updateStatus(idAt(0), 4);
  view.statusManager.statusChanged.set(true);
  bench.runFor(1s);
  EXPECT_EQ(statusAt(0), 2U);
  EXPECT_EQ(bench.logged.size(), 2U);
}

TEST_F(StatusPollingTest, WithoutASelectionAStatusIsOnlyAcknowledged) {
  set_load_status(7);
  bench.runFor(1s);
  EXPECT_THAT(bench.logged, ElementsAre("> KARVEX : Acknowledged Status value = 7"));
  EXPECT_EQ(statusAt(0) + statusAt(1), 0U);
  EXPECT_FALSE(view.procedureComplete.get());
}

TEST_F(StatusPollingTest, MissingPermissionFreesTheControlsWithOrWithoutASelection) {
  for (const bool isSelected : {true, false}) {
    set_load_status(2);
    view.selectedDeviceId.set(isSelected ? std::optional(idAt(0)) : std::nullopt);
    bench.runFor(1s);
    const auto before = statusAt(0);
    model.isUploadButtonDisabled.set(false);
    model.actionButtonsDisabled.set(true);
    set_load_status(12);
    bench.runFor(1s);
    EXPECT_EQ(bench.logged.back(), "> KARVEX : Acknowledged Status value = 12");
    EXPECT_TRUE(model.isUploadButtonDisabled.get());
    EXPECT_FALSE(model.loadingInProgress.get());
    EXPECT_FALSE(model.actionButtonsDisabled.get());
    EXPECT_EQ(view.selectedDeviceId.get(), std::nullopt);
    EXPECT_EQ(statusAt(0), before) << "12 doesn't reach the row";
  }
  EXPECT_FALSE(view.procedureComplete.get());
}

TEST_F(StatusPollingTest, ABlockedMainThreadGetsTheLastValueInOneTick) {
  view.selectedDeviceId.set(idAt(0));
  bench.runtime.mainQueue().post([this] {
    set_load_status(2);
    bench.runtime.clock().sleepFor(10s);
    set_load_status(5);
  });
  bench.runFor(11s);
  EXPECT_THAT(bench.logged, ElementsAre("> KARVEX : Acknowledged Status value = 5"));
}

}  // namespace
}  // namespace karvex::upgrade
