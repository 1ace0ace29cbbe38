#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "tests/kernel/KernelBench.hpp"

namespace midikit::io {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

void write(const fs::path& file, const std::string& text) {
  std::ofstream stream(file);
  stream << text << '\n';
  stream.flush();
  ASSERT_TRUE(stream.good()) << file;
}

/// A USB MIDI device that the kernel's gadget driver plays, on the kernel's own dummy USB controller.
class UsbBoard {
 public:
  static bool isPossible() { return fs::exists(root) && fs::exists("/sys/class/udc/dummy_udc.1"); }

  /// `plug` is 0 or 1.
  explicit UsbBoard(const std::string& serialNumber, int plug = 0,
                    const std::string& product = "Board of Test")
      : gadget(root / ("karvex" + std::to_string(plug))), udc("dummy_udc." + std::to_string(plug)) {
    fs::create_directories(gadget / "strings/0x409");
    fs::create_directories(gadget / "configs/c.1");
    fs::create_directories(gadget / "functions/midi.usb0");
    write(gadget / "idVendor", "0x1d6b");
    write(gadget / "idProduct", plug == 0 ? "0x0104" : "0x0105");
    write(gadget / "strings/0x409/serialnumber", serialNumber);
    write(gadget / "strings/0x409/manufacturer", "Kernel Test");
    write(gadget / "strings/0x409/product", product);
    write(gadget / "functions/midi.usb0/id", "boardside");
    fs::create_directory_symlink(gadget / "functions/midi.usb0", gadget / "configs/c.1/midi.usb0");
  }
  ~UsbBoard() {
    std::error_code ignored;
    unplug();
    fs::remove(gadget / "configs/c.1/midi.usb0", ignored);
    for (const char* part : {"configs/c.1", "functions/midi.usb0", "strings/0x409", ""}) {
      fs::remove(gadget / part, ignored);
    }
  }
  UsbBoard(const UsbBoard&) = delete;
  UsbBoard& operator=(const UsbBoard&) = delete;

  void plugIn() { write(gadget / "UDC", udc); }
  void unplug() { std::ofstream(gadget / "UDC") << '\n'; }

 private:
  static inline const fs::path root = "/sys/kernel/config/usb_gadget";
  const fs::path gadget;
  const std::string udc;
};

class AlsaUsbBoardTest : public KernelBench {
 protected:
  void SetUp() override {
    KernelBench::SetUp();
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
  UsbBoard plug("KX-0001");
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
  UsbBoard keys("00000001", 0, "Keys");
  UsbBoard pads("00000001", 1, "Pads");
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
  UsbBoard plug("KX-0001");
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
