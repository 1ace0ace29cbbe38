#include <string>
#include <vector>

#include "tests/kernel/KernelFixture.hpp"
#include "tests/kernel/UsbBoard.hpp"

namespace midikit::io {
namespace {

using karvex::tests::UsbBoard;
using testing::ElementsAre;

class AlsaUsbBoardTest : public KernelFixture {
 protected:
  void SetUp() override {
    KernelFixture::SetUp();
    if (!IsSkipped() && !UsbBoard::isPossible()) {
      GTEST_SKIP() << "This kernel plays no USB devices; tests/kernel/run brings one up that does.";
    }
  }

  Ref board() const { return device(serialNumberPropertyKey, "KX-0001"); }
  bool isOnline() const { return board() != 0 && number(board(), kMIDIPropertyOffline) == 0; }
  Ref firstSource() const {
    return service_->MIDIEntityGetSource(service_->MIDIDeviceGetEntity(board(), 0), 0);
  }
  Ref firstDestination() const {
    return service_->MIDIEntityGetDestination(service_->MIDIDeviceGetEntity(board(), 0), 0);
  }
  /// The board's own side of the cable.
  static std::optional<SequencerPeer::Address> boardSide(SequencerPeer& peer) {
    for (const char* name : {"f_midi", "MIDI Gadget", "boardside", "f_midi MIDI 1", "MIDI function"}) {
      if (const auto found = peer.find(name)) {
        return found;
      }
    }
    return std::nullopt;
  }
};

TEST_F(AlsaUsbBoardTest, ABoardThatLeavesIsOfflineAndComesBackAsTheSameObject) {
  const UsbBoard plug({.serialNumber = "KX-0001"});
  plug.plugIn();
  ASSERT_TRUE(comesTrue([&] { return isOnline(); }));
  const Ref ref = board();
  const auto uniqueID = number(ref, kMIDIPropertyUniqueID);
  EXPECT_EQ(text(ref), "Board of Test");
  EXPECT_EQ(text(ref, kMIDIPropertyManufacturer), "Kernel Test");
  EXPECT_EQ(text(ref, kMIDIPropertyModel), "Board of Test");
  ASSERT_EQ(service_->MIDIPortConnectSource(inputPort(), firstSource(), nullptr), noErr);
  const auto setupChanges = told(1);

  plug.unplug();
  ASSERT_TRUE(comesTrue([&] { return number(ref, kMIDIPropertyOffline) == 1; }));
  EXPECT_TRUE(comesTrue([&] { return told(4) >= 1 && told(1) > setupChanges; }));
  EXPECT_EQ(number(firstSource(), kMIDIPropertyOffline), 1);
  EXPECT_EQ(service_->MIDISend(outputPort(), firstDestination(), packet({0xF8})), noErr) << "goes nowhere";

  plug.plugIn();
  ASSERT_TRUE(comesTrue([&] { return isOnline(); }));
  EXPECT_EQ(board(), ref);
  EXPECT_EQ(number(ref, kMIDIPropertyUniqueID), uniqueID);

  SequencerPeer peer("Board");
  const int out = peer.addSource("board out");
  const int in = peer.addDestination("board in");
  const auto side = boardSide(peer);
  ASSERT_TRUE(side.has_value());
  peer.connectTo(out, *side);
  peer.connectFrom(in, *side);
  peer.sendNote(out, 40);
  EXPECT_TRUE(comesTrue([&] { return received() == std::vector<std::uint8_t>{0x90, 40, 100}; }))
      << "the connection stands again, without anybody's doing";
  ASSERT_EQ(service_->MIDISend(outputPort(), firstDestination(), packet({0x90, 41, 100})), noErr);
  EXPECT_THAT(peer.read(3), ElementsAre(0x90, 41, 100));
}

TEST_F(AlsaUsbBoardTest, TwoKeyboardsWithTheSameEmptyNumberStayApart) {
  const UsbBoard keys({.serialNumber = "00000001", .product = "Keys"});
  const UsbBoard pads({.serialNumber = "00000001", .plug = 1, .product = "Pads", .productId = "0x0105"});
  const auto online = [this](const char* name) {
    const Ref found = device(kMIDIPropertyName, name);
    return found != 0 && number(found, kMIDIPropertyOffline) == 0 ? found : 0;
  };
  keys.plugIn();
  ASSERT_TRUE(comesTrue([&] { return online("Keys") != 0; }));
  const Ref first = online("Keys");
  keys.unplug();
  ASSERT_TRUE(comesTrue([&] { return online("Keys") == 0; }));
  pads.plugIn();
  ASSERT_TRUE(comesTrue([&] { return online("Pads") != 0; }));
  const Ref second = online("Pads");
  EXPECT_NE(second, first);
  keys.plugIn();
  ASSERT_TRUE(comesTrue([&] { return online("Keys") != 0; }));
  EXPECT_EQ(online("Keys"), first);
  EXPECT_EQ(online("Pads"), second);
}

TEST_F(AlsaUsbBoardTest, ALongMessageReachesADeviceWhole) {
  const UsbBoard plug({.serialNumber = "KX-0001"});
  plug.plugIn();
  ASSERT_TRUE(comesTrue([&] { return isOnline(); }));
  SequencerPeer peer("Board");
  const int in = peer.addDestination("board in");
  ASSERT_TRUE(boardSide(peer).has_value());
  peer.connectFrom(in, *boardSide(peer));
  ASSERT_EQ(service_->MIDIObjectSetIntegerProperty(firstDestination(), kMIDIPropertyMaxSysExSpeed, 12500),
            noErr);
  const auto dump = sysExOf(16384);
  ASSERT_EQ(service_->MIDISend(outputPort(), firstDestination(), packet(dump)), noErr);
  const auto arrived = peer.read(dump.size());
  EXPECT_TRUE(arrived == dump) << arrived.size();
}

}  // namespace
}  // namespace midikit::io
