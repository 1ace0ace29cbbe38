#include "ui/DeviceExplorerView.hpp"

#include <gmock/gmock.h>

#include <chrono>

#include "tests/ui/UiFixture.hpp"

namespace karvex::ui {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr auto reportPath = "/services/deviceExplorer.php";

class DeviceExplorerViewTest : public UiFixture {
 protected:
  DeviceExplorerViewTest() { open(); }

  void open() {
    actions.sync();
    runFor(1ms);
    ASSERT_NE(view.deviceExplorerView(), nullptr);
  }
};

TEST_F(DeviceExplorerViewTest, AReportThatWasAnsweredClosesTheSheet) {
  misbehave("slow@report=5000");
  actions.sendReport();
  runFor(4s);
  EXPECT_TRUE(view.isSendingReport.get());
  EXPECT_TRUE(view.showDeviceExplorer.get());
  runFor(2s);
  EXPECT_FALSE(view.isSendingReport.get());
  EXPECT_FALSE(view.showDeviceExplorer.get());
  EXPECT_EQ(view.deviceExplorerView(), nullptr);
  ASSERT_EQ(requestsTo(reportPath), 1U);
  EXPECT_THAT(rig.service.requests().back().body, testing::HasSubstr(app::serialNumberOf(1)));
  EXPECT_THAT(view.deviceListView.deviceManager.deviceExplorer.devices.get(), IsEmpty())
      << "the table's own list is another one";
  EXPECT_THAT(debugged, Not(Contains(StartsWith("Error => "))));
}

TEST_F(DeviceExplorerViewTest, AReportThatFailedLeavesItOpenForAnotherAttempt) {
  misbehave("cut-off@report");
  actions.sendReport();
  runFor(2s);
  EXPECT_FALSE(view.isSendingReport.get());
  EXPECT_TRUE(view.showDeviceExplorer.get());
  const auto error = view.deviceExplorerView()->deviceList.lastError.get();
  EXPECT_THAT(debugged, Contains("Error => " + error));
  EXPECT_NE(error, "");
  rig.service.setFaults({});
  actions.sendReport();
  runFor(2s);
  EXPECT_FALSE(view.showDeviceExplorer.get());
}

TEST_F(DeviceExplorerViewTest, AReportGoesOnBehindAClosedSheetAndItsResultIsDropped) {
  misbehave("slow@report=5000");
  actions.sendReport();
  runFor(1s);
  actions.closeSheet();
  runFor(1ms);
  EXPECT_FALSE(view.isSendingReport.get());
  open();
  runFor(10s);
  EXPECT_TRUE(view.showDeviceExplorer.get()) << "the result was that of the sheet before";
  EXPECT_FALSE(view.isSendingReport.get());
  EXPECT_EQ(requestsTo(reportPath), 1U);
}

TEST_F(DeviceExplorerViewTest, ASecondClickSendsASecondReport) {
  misbehave("slow@report=1000");
  actions.sendReport();
  actions.sendReport();
  runFor(5s);
  EXPECT_EQ(requestsTo(reportPath), 2U);
  EXPECT_FALSE(view.showDeviceExplorer.get());
}

}  // namespace
}  // namespace karvex::ui
