#include "ui/Actions.hpp"

#include <gmock/gmock.h>

#include <chrono>

#include "tests/ui/UiFixture.hpp"

namespace karvex::ui {
namespace {

using namespace std::chrono_literals;
using upgrade::Alert;

constexpr auto listPath = "/services/loaderInfo.php";

class ActionsTest : public UiFixture {
 protected:
  ActionsTest() {
    actions.appear();
    runFor(1s);
  }

  std::optional<foundation::Uuid> selected() const { return view.deviceListView.selectedDeviceId.get(); }
  bool isRunning() const { return view.loadingViewModel.loadingInProgress.get(); }
};

TEST_F(ActionsTest, EachDoesItsPartOnTheMainQueue) {
  ASSERT_EQ(rows().size(), 2U);
  EXPECT_EQ(requestsTo(listPath), 1U);
  const auto id = rows()[1].id;
  actions.select(id);
  EXPECT_EQ(selected(), std::nullopt) << "not before the main queue gets to it";
  runFor(1ms);
  EXPECT_EQ(selected(), id);
  actions.refresh();
  actions.sync();
  runFor(1s);
  EXPECT_EQ(requestsTo(listPath), 2U);
  EXPECT_NE(rows().at(1).id, id);
  EXPECT_TRUE(view.showDeviceExplorer.get());
  actions.sync();
  runFor(1ms);
  EXPECT_TRUE(view.showDeviceExplorer.get()) << "the button is below the sheet";
  actions.closeSheet();
  actions.sendReport();
  runFor(1s);
  EXPECT_FALSE(view.showDeviceExplorer.get());
  EXPECT_EQ(requestsTo("/services/deviceExplorer.php"), 0U) << "no sheet, no button";
}

TEST_F(ActionsTest, AControlThatIsDisabledDoesNothing) {
  actions.upload();
  runFor(1s);
  EXPECT_FALSE(isRunning());
  const auto id = rows()[0].id;
  actions.select(id);
  actions.upload();
  runFor(1ms);
  ASSERT_TRUE(isRunning());
  actions.select(rows()[1].id);
  actions.upload();
  actions.refresh();
  actions.sync();
  actions.confirm(Alert::procedureComplete);
  runFor(100ms);
  EXPECT_EQ(selected(), id);
  EXPECT_EQ(requestsTo(listPath), 1U);
  EXPECT_FALSE(view.showDeviceExplorer.get());
  runFor(60s);
  EXPECT_TRUE(view.deviceListView.isUp(Alert::procedureComplete)) << "the run was left alone";
  EXPECT_EQ(requestsTo("/services/uploadComplete.php"), 2U);
}

TEST_F(ActionsTest, WhileAnAlertIsUpOnlyItsOkDoesAnything) {
  actions.select(rows()[0].id);
  runFor(1ms);
  for (const auto alert : upgrade::alertsInOrder) {
    SCOPED_TRACE(static_cast<int>(alert));
    actions.select(rows()[0].id);
    runFor(1ms);
    const auto before = requestsTo(listPath);
    auto& flag = view.deviceListView.*upgrade::DeviceListView::flagOf(alert);
    flag.set(true);
    actions.select(std::nullopt);
    actions.upload();
    actions.refresh();
    actions.sync();
    runFor(1s);
    EXPECT_EQ(selected(), rows()[0].id);
    EXPECT_FALSE(isRunning());
    EXPECT_EQ(requestsTo(listPath), before);
    EXPECT_FALSE(view.showDeviceExplorer.get());
    actions.confirm(alert);
    actions.confirm(alert);
    runFor(3s);
    EXPECT_FALSE(flag.get());
    EXPECT_EQ(requestsTo(listPath), before + (alert == Alert::procedureComplete ? 0U : 1U));
    EXPECT_EQ(selected() == std::nullopt, alert == Alert::halfkayModeDetected);
    EXPECT_EQ(view.loadingViewModel.isUploadButtonDisabled.get(), alert != Alert::procedureComplete);
  }
}

TEST_F(ActionsTest, TheSheetStaysAsItIsBelowAnAlert) {
  actions.sync();
  runFor(1ms);
  view.deviceListView.portBusyError.set(true);
  actions.sendReport();
  actions.closeSheet();
  runFor(1s);
  EXPECT_TRUE(view.showDeviceExplorer.get());
  EXPECT_EQ(requestsTo("/services/deviceExplorer.php"), 0U);
  actions.confirm(Alert::portBusy);
  actions.closeSheet();
  runFor(1s);
  EXPECT_FALSE(view.showDeviceExplorer.get());
}

TEST_F(ActionsTest, LeavingWaitsForWhatMustNotBeLeft) {
  using enum Leaving;
  const auto mayLeave = [&](Leaving leaving) {
    bool hasLeft = false;
    actions.leave(leaving, [&hasLeft] { hasLeft = true; });
    runFor(1ms);
    return hasLeft;
  };
  EXPECT_TRUE(mayLeave(byUser) && mayLeave(byOrder));
  for (const auto alert : upgrade::alertsInOrder) {
    auto& flag = view.deviceListView.*upgrade::DeviceListView::flagOf(alert);
    flag.set(true);
    EXPECT_EQ(mayLeave(byUser), alert == Alert::procedureComplete) << "a failure is to be seen";
    EXPECT_TRUE(mayLeave(byOrder));
    flag.set(false);
  }
  view.deviceListView.reportsUnderWay.set(1);
  EXPECT_FALSE(mayLeave(byUser) || mayLeave(byOrder));
  view.deviceListView.reportsUnderWay.set(0);
  actions.select(rows()[0].id);
  actions.upload();
  EXPECT_FALSE(mayLeave(byUser)) << "the click was first";
  EXPECT_FALSE(mayLeave(byOrder));
  runFor(60s);
  EXPECT_TRUE(mayLeave(byUser));
}

}  // namespace
}  // namespace karvex::ui
