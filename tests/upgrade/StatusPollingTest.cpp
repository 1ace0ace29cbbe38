#include <gmock/gmock.h>

#include <chrono>

#include "loader/load_status.hpp"
#include "tests/upgrade/UpgradeFixture.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;
using loader::set_load_status;
using testing::ElementsAre;
using testing::IsEmpty;

/// A table of two rows.
class StatusPollingTest : public testing::Test {
 protected:
  StatusPollingTest() {
    fixture.makeView();
    fixture.view->deviceManager.managedDevices.set({records::BootableDevice(), records::BootableDevice()});
  }

  void select(std::size_t place) { fixture.view->selectedDeviceId.set(fixture.rows()[place].id); }
  std::uint32_t statusAt(std::size_t place) { return fixture.rows()[place].status; }

  UpgradeFixture fixture{0};
};

TEST_F(StatusPollingTest, AChangeIsAcknowledgedOnceAndGoesIntoTheSelectedRow) {
  select(1);
  set_load_status(5);
  fixture.runFor(249ms);
  EXPECT_THAT(fixture.logged, IsEmpty());
  fixture.runFor(1s);
  EXPECT_THAT(fixture.logged, ElementsAre("> KARVEX : Acknowledged Status value = 5"));
  EXPECT_EQ(statusAt(0), 0U);
  EXPECT_EQ(statusAt(1), 5U);
  EXPECT_FALSE(fixture.view->statusManager.statusChanged.get());
  for (const auto status : {5U, 6U, 7U}) {
    set_load_status(status);
  }
  fixture.runFor(1s);
  EXPECT_THAT(fixture.logged,
              ElementsAre("> KARVEX : Acknowledged Status value = 5",
                          "> KARVEX : Acknowledged Status value = 7", "> KARVEX : End of loading Sequence"));
  EXPECT_TRUE(fixture.view->procedureComplete.get()) << "what comes and goes is seen as its end, once";
}

TEST_F(StatusPollingTest, MissingPermissionFreesTheControlsWithoutASelectionToo) {
  fixture.model.actionButtonsDisabled.set(true);
  set_load_status(12);
  fixture.runFor(1s);
  EXPECT_THAT(fixture.logged, ElementsAre("> KARVEX : Acknowledged Status value = 12"));
  EXPECT_TRUE(fixture.controlsAreFree());
}

TEST(BadFileTest, AFileFormatThatTheWorkerRefusesStopsTheRunWithItsNotice) {
  UpgradeFixture fixture(1);
  fixture.appear();
  fixture.misbehave("silent@firmware");  // The run is under way.
  fixture.runtime.mainQueue().post([&] {
    fixture.view->select(fixture.rows()[0].id);
    fixture.model.loadingInProgress.set(true);
  });
  fixture.runFor(1s);
  set_load_status(10);
  fixture.runFor(1s);
  EXPECT_EQ(fixture.view->stopNotice.get(), noticeOf(SilentStop::badFile, fixture.serialAt(0)));
  EXPECT_TRUE(fixture.controlsAreFree());
}

}  // namespace
}  // namespace karvex::upgrade
