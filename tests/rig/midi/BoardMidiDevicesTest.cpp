#include "rig/midi/BoardMidiDevices.hpp"

#include <fmt/format.h>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "tests/MIDIKitIO/platform/engine/MIDIServiceFixture.hpp"

namespace karvex::rig {
namespace {

using namespace midikit::io;
using namespace midikit::io::engine;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class BoardMidiDevicesTest : public midikit::io::engine::MIDIServiceFixture {
 protected:
  void plugIn(const char* mcu, const char* serialNumber, Faults faults = {}) {
    bus.plugIn(std::make_unique<VirtualBoard>(*findBoardKind(mcu), serialNumber, faults));
  }
  std::int32_t offline(Ref object) const {
    std::int32_t value = -1;
    EXPECT_EQ(service.MIDIObjectGetIntegerProperty(object, kMIDIPropertyOffline, value), noErr);
    return value;
  }
  std::string text(Ref object, std::string_view key) const {
    std::optional<std::string> value;
    EXPECT_EQ(service.MIDIObjectGetStringProperty(object, key, value), noErr) << key;
    return value.value_or("none");
  }
  /// Waits until that moment, and returns what was reported until then.
  std::vector<std::string> reportedUntil(foundation::TimePoint moment) {
    runtime.clock().sleepUntil(moment);
    return std::exchange(reported_, {});
  }
  ReportOutcome sendBoot() {
    std::vector<std::uint8_t> report(130, 0xFF);
    return bus.sendReport(bus.firstHalfKayBoard().value(), report);
  }

  VirtualBus bus{runtime.clock()};
};

TEST_F(BoardMidiDevicesTest, BoardsAreDevicesFromTheStartAndWhenTheyComeLater) {
  plugIn("TEENSY2", "10");
  plugIn("TEENSY2", "20", {.neverReturns = true});
  bus.setLineSpeed("20", 134);
  const BoardMidiDevices boards(runtime, bus, service);
  ASSERT_THAT(boards.devices(), ElementsAre(service.MIDIGetDevice(0), service.MIDIGetDevice(1)));
  const Ref first = service.MIDIGetDevice(0);
  EXPECT_EQ(text(first, serialNumberPropertyKey), "10");
  EXPECT_EQ(text(first, kMIDIPropertyName), "TEENSY2 MIDI");
  EXPECT_EQ(text(first, kMIDIPropertyModel), "TEENSY2");
  EXPECT_FALSE(text(source(0), kMIDIPropertyManufacturer).empty());
  EXPECT_EQ(service.MIDIDeviceGetNumberOfEntities(first), 1U);
  EXPECT_EQ(offline(first), 0);
  EXPECT_EQ(offline(service.MIDIGetDevice(1)), 1) << "on its way into the bootloader";
  EXPECT_EQ(service.MIDIGetNumberOfDestinations(), 2U);

  reported();
  plugIn("TEENSYLC", "30");
  EXPECT_EQ(reported().size(), 5U) << "device, entity, source, destination, setup";
  EXPECT_EQ(text(boards.devices().at(2), serialNumberPropertyKey), "30");
}

TEST_F(BoardMidiDevicesTest, ABoardIsOfflineFromTheMomentItLeavesUntilTheMomentItsFirmwareRuns) {
  plugIn("TEENSY2", "10");
  plugIn("TEENSY2", "20");
  const BoardMidiDevices boards(runtime, bus, service);
  const Ref device = boards.devices()[1];
  reported();
  const auto change = fmt::format("4 {}/0 offline", device);
  const auto request = runtime.clock().now();
  bus.setLineSpeed("20", 134);
  EXPECT_THAT(reportedUntil(request + 1ms), ElementsAre(change, "1"));
  EXPECT_EQ(offline(device), 1);
  EXPECT_EQ(offline(source(1)), 1) << "what is below the device goes with it";
  EXPECT_EQ(offline(boards.devices()[0]), 0);
  EXPECT_THAT(reportedUntil(request + 60s), IsEmpty()) << "its bootloader is no MIDI device";

  const auto boot = runtime.clock().now();
  ASSERT_EQ(sendBoot(), ReportOutcome::accepted);
  EXPECT_THAT(reportedUntil(boot + VirtualBoard::usualBootTime - 1ns), IsEmpty());
  EXPECT_EQ(offline(device), 1);
  EXPECT_THAT(reportedUntil(boot + VirtualBoard::usualBootTime + 1ns), ElementsAre(change, "1"))
      << "although nobody asked the bus meanwhile";
  EXPECT_EQ(offline(device), 0);
  EXPECT_THAT(reportedUntil(boot + 1h), IsEmpty());
  bus.unplug("20");
  EXPECT_THAT(reported(), ElementsAre(change, "1"));
  EXPECT_EQ(offline(device), 1);
  bus.repair("20");
  EXPECT_THAT(reported(), ElementsAre(change, "1"));
  EXPECT_EQ(offline(device), 0) << "plugged in again";
}

TEST_F(BoardMidiDevicesTest, NothingIsDoneWhileNothingHappensNorBehindTheEnd) {
  plugIn("TEENSY2", "10");
  int callbacks = 0;
  const auto subscription = bus.observeBoards([&](std::size_t) { ++callbacks; });
  {
    const BoardMidiDevices boards(runtime, bus, service);
    bus.setLineSpeed("10", 134);
    runtime.clock().sleepFor(5s);
    EXPECT_EQ(callbacks, 2) << "it leaves, and the bootloader is there";
    bus.forEachDevice([](const auto&) {});
    ASSERT_EQ(bus.sendReport(bus.firstHalfKayBoard().value(), std::vector<std::uint8_t>(130)),
              ReportOutcome::refused);
    EXPECT_EQ(callbacks, 2) << "looking at a board, and refused reports, change nothing";
    runtime.clock().sleepFor(VirtualBoard::eraseTime);
    ASSERT_EQ(sendBoot(), ReportOutcome::accepted);
  }
  reported();
  EXPECT_THAT(reportedUntil(runtime.clock().now() + 1h), IsEmpty());
}

TEST(BoardMidiDevicesThreadsTest, BoardsChangeUnderTheirDevices) {
  foundation::SystemRuntime runtime;
  VirtualBus bus(runtime.clock());
  VirtualMidiService service(runtime);
  for (int i = 0; i < 20; ++i) {
    const BoardMidiDevices boards(runtime, bus, service);
    bus.plugIn(std::make_unique<VirtualBoard>(*findBoardKind("TEENSY2"), std::to_string(i),
                                              Faults{.entersHalfKayAfter = std::chrono::milliseconds(0)}));
    bus.setLineSpeed(std::to_string(i), 134);
  }
  const BoardMidiDevices last(runtime, bus, service);
  EXPECT_EQ(last.devices().size(), 20U);
}

}  // namespace
}  // namespace karvex::rig
