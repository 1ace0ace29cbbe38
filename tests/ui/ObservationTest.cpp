#include "ui/Observation.hpp"

#include <gmock/gmock.h>

#include <functional>
#include <optional>

#include "tests/ui/UiFixture.hpp"
#include "ui/EmptyTable.hpp"

namespace karvex::ui {
namespace {

using upgrade::Alert;

TEST(RowOfTest, EachStatusHasItsWordsAndItsTone) {
  const struct {
    Tone tone;
    const char* text;
  } statuses[] = {
      {Tone::gray, "Idle"},
      {Tone::orange, "Preparing..."},
      {Tone::white, "Importing file..."},
      {Tone::white, "Moving file..."},
      {Tone::orange, "Checking device state..."},
      {Tone::orange, "Programming..."},
      {Tone::orange, "Rebooting..."},
      {Tone::green, "Success"},
      {Tone::red, "Error - Unknown MCU device"},
      {Tone::red, "Could not import file"},
      {Tone::red, "Bad file format"},
      {Tone::red, "Program error"},
      {Tone::red, "Permission denied"},
  };
  records::BootableDevice device;
  for (const auto& expected : statuses) {
    SCOPED_TRACE(device.status);
    const auto row = rowOf(device);
    EXPECT_EQ(row.statusTone, expected.tone);
    EXPECT_EQ(row.statusText, expected.text);
    EXPECT_EQ(row.isProgramming, device.status == 5);
    ++device.status;
  }
  EXPECT_EQ(rowOf(device).statusText, "") << "a number that is no status";
}

TEST(RowOfTest, TheOtherCells) {
  records::BootableDevice device;
  device.sequenceNumber = -3;
  device.deviceName = "Pedal";
  device.portSerialNumber = "10";
  device.firmwareVersion = "1.0";
  const struct {
    const char* version;
    std::optional<bool> isOffline;
    Tone versionTone;
    Tone mark;
  } cases[] = {
      {"1.0", true, Tone::green, Tone::orange},
      {"1.1", false, Tone::red, Tone::green},
      {"1.0 ", std::nullopt, Tone::red, Tone::green},
      {"1", true, Tone::red, Tone::orange},
  };
  for (const auto& example : cases) {
    device.currentVersion = example.version;
    device.isOffline = example.isOffline;
    const auto row = rowOf(device);
    EXPECT_EQ(row.currentVersionTone, example.versionTone) << example.version;
    EXPECT_EQ(row.onlineMark, example.mark);
    EXPECT_EQ(row.device, "-3 - Pedal");
    EXPECT_EQ(row.serialNumber, "#10");
  }
  device.deviceName.reset();
  EXPECT_EQ(rowOf(device).device, "-3 - ");
}

TEST(EmptyTableTest, SaysWhyThereIsNoRow) {
  using enum upgrade::ListRequest::State;
  const struct {
    EmptyTable table;
    const char* text;
  } cases[] = {
      {{}, ""},
      {{.request = {unreachable, "no route"}, .listed = 2},
       "The service could not be reached: no route. Check your internet connection, then refresh the list."},
      {{.request = {unreadable}, .listed = 2},
       "The service answered, but not with a list of devices. Refresh the list; if that doesn't help, notify "
       "your dealer."},
      {{.request = {answered}, .listed = 2},
       "No board was seen on the USB bus. Connect your equipment and power it up, then refresh the list."},
      {{.request = {answered}, .listed = 2, .seenOnTheBus = 1},
       "1 board was seen on the USB bus, but the service has no firmware for it. Notify your dealer."},
      {{.request = {answered}, .listed = 2, .seenOnTheBus = 3},
       "3 boards were seen on the USB bus, but the service has no firmware for any of them. Notify your "
       "dealer."},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(textOf(example.table), example.text);
  }
}

class ObservationTest : public UiFixture {};

/// A front that is told of a change must find it, and must be told of every one.
TEST_F(ObservationTest, EveryChangeOfASnapshotIsTold) {
  int told = 0;
  auto last = snapshotOf(view);
  const auto subscriptions = observe(view, [&told] { ++told; });
  auto& table = view.deviceListView;
  const records::BootableDevice device;
  const struct {
    const char* what;
    std::function<void()> make;
    std::function<bool(const Snapshot&)> shows;
  } changes[] = {
      {"request", [&] { table.deviceManager.listRequest.set({upgrade::ListRequest::State::underWay}); },
       [](const auto& now) { return now.emptyText.starts_with("Asking"); }},
      {"its end", [&] { table.deviceManager.listRequest.set({upgrade::ListRequest::State::answered}); },
       [](const auto& now) { return now.emptyText == "The service lists no device."; }},
      {"a board in its bootloader", [&] { table.deviceManager.errorCode.set(upgrade::halfkayDevicePresent); },
       [](const auto& now) { return now.emptyText.starts_with("A board is in programming mode"); }},
      {"a stop", [&] { table.stopNotice.set("it stopped"); },
       [](const auto& now) { return now.stopNotice == "it stopped"; }},
      {"rows", [&] { table.deviceManager.managedDevices.set({device}); },
       [](const auto& now) { return now.rows.size() == 1 && now.emptyText.empty(); }},
      {"selection", [&] { table.selectedDeviceId.set(device.id); },
       [&](const auto& now) { return now.selected == device.id; }},
      {"upload button", [&] { view.loadingViewModel.isUploadButtonDisabled.set(false); },
       [](const auto& now) { return now.canUpload; }},
      {"other buttons", [&] { view.loadingViewModel.actionButtonsDisabled.set(true); },
       [](const auto& now) { return !now.canAct; }},
      {"report", [&] { table.reportsUnderWay.set(1); }, [](const auto& now) { return now.isReporting; }},
      {"sheet", [&] { view.showDeviceExplorer.set(true); },
       [](const auto& now) { return now.showsDeviceExplorer; }},
      {"report of the sheet", [&] { view.deviceExplorerView()->isLoading.set(true); },
       [](const auto& now) { return now.isSendingReport; }},
      {"alert 6", [&] { table.halfkayModeFailed.set(true); },
       [](const auto& now) { return now.alert->alert == Alert::halfkayModeFailed; }},
      {"its text", [&] { table.serialPortMgr.errorText.set("gone"); },
       [](const auto& now) { return now.alert->message.ends_with("info: gone"); }},
      {"alert 3 goes first", [&] { table.uploadErrorShowModal.set(true); },
       [](const auto& now) { return now.alert->alert == Alert::uploadError; }},
      {"its text", [&] { table.uploadErrorText.set("Bad"); },
       [](const auto& now) { return now.alert->message.starts_with("Bad\n"); }},
      {"alert 1 before it", [&] { table.halfkayModeDetected.set(true); },
       [](const auto& now) { return now.alert->alert == Alert::halfkayModeDetected; }},
  };
  for (const auto& change : changes) {
    SCOPED_TRACE(change.what);
    told = 0;
    change.make();
    const auto now = snapshotOf(view);
    EXPECT_GE(told, 1);
    EXPECT_NE(now, last);
    EXPECT_TRUE(change.shows(now));
    last = now;
  }
}

}  // namespace
}  // namespace karvex::ui
