#include "tests/kernel/KernelFixture.hpp"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace midikit::io {

using namespace std::chrono_literals;

bool comesTrue(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + 5s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(2ms);
  }
  return true;
}

std::vector<std::uint8_t> sysExOf(std::size_t length) {
  std::vector<std::uint8_t> bytes(length, 0xF0);
  for (std::size_t place = 1; place + 1 < length; ++place) {
    bytes[place] = static_cast<std::uint8_t>((place * 7 + place / 128) & 0x7F);
  }
  bytes.back() = 0xF7;
  return bytes;
}

MIDIPacketList packet(const std::vector<std::uint8_t>& bytes, std::uint64_t timeStamp) {
  MIDIPacketList list(MIDIPacketList::headerSize + MIDIPacketList::packetHeaderSize + bytes.size());
  EXPECT_TRUE(list.add(timeStamp, bytes));
  return list;
}

void KernelFixture::SetUp() {
  if (::access("/dev/snd/seq", R_OK | W_OK) != 0) {
    GTEST_SKIP() << "This machine has no ALSA sequencer; tests/kernel/run brings one up.";
  }
  stateHome_ = testing::TempDir() + "midikit-io-kernel-" + std::to_string(::getpid());
  ::setenv("XDG_STATE_HOME", stateHome_.c_str(), 1);
  service_ = makeService();
  ASSERT_EQ(
      service_->MIDIClientCreateWithBlock(
          "Kernel Test", client_, [this](const MIDINotification& message) { notifications_.add(message); }),
      noErr);
}

void KernelFixture::TearDown() {
  service_.reset();
  std::error_code ignored;
  std::filesystem::remove_all(stateHome_, ignored);
}

std::shared_ptr<MIDIService> KernelFixture::makeService() {
  return makeAlsaMIDIService(runtime_);
}

std::string KernelFixture::text(Ref object, std::string_view key) const {
  std::optional<std::string> value;
  return service_->MIDIObjectGetStringProperty(object, key, value) == noErr ? value.value_or("") : "";
}

std::optional<std::int32_t> KernelFixture::number(Ref object, std::string_view key) const {
  std::int32_t value = 0;
  return service_->MIDIObjectGetIntegerProperty(object, key, value) == noErr ? std::optional(value)
                                                                             : std::nullopt;
}

MIDIObjectRef KernelFixture::source(const std::string& name) const {
  for (std::size_t index = 0; index < service_->MIDIGetNumberOfSources(); ++index) {
    if (text(service_->MIDIGetSource(index)) == name) {
      return service_->MIDIGetSource(index);
    }
  }
  return 0;
}

MIDIObjectRef KernelFixture::destination(const std::string& name) const {
  for (std::size_t index = 0; index < service_->MIDIGetNumberOfDestinations(); ++index) {
    if (text(service_->MIDIGetDestination(index)) == name) {
      return service_->MIDIGetDestination(index);
    }
  }
  return 0;
}

MIDIObjectRef KernelFixture::device(std::string_view key, const std::string& value) const {
  for (std::size_t index = 0; index < service_->MIDIGetNumberOfDevices(); ++index) {
    if (text(service_->MIDIGetDevice(index), key) == value) {
      return service_->MIDIGetDevice(index);
    }
  }
  return 0;
}

bool KernelFixture::hasEntity(Ref endpoint) const {
  Ref entity = 0;
  EXPECT_EQ(service_->MIDIEndpointGetEntity(endpoint, entity), noErr);
  return entity != 0;
}

MIDIObjectRef KernelFixture::inputPort() {
  Ref port = 0;
  EXPECT_EQ(service_->MIDIInputPortCreateWithBlock(client_, "in", port, reader()), noErr);
  return port;
}

MIDIObjectRef KernelFixture::outputPort() {
  Ref port = 0;
  EXPECT_EQ(service_->MIDIOutputPortCreate(client_, "out", port), noErr);
  return port;
}

MIDIReadBlock KernelFixture::reader() {
  return [this](const MIDIPacketList& list, ConnectionToken) {
    for (std::size_t index = 0; index < list.packetCount(); ++index) {
      for (const auto byte : list.packet(index).bytes) {
        received_.add(byte);
      }
    }
  };
}

std::vector<std::uint8_t> KernelFixture::received() const {
  return received_.all();
}

std::size_t KernelFixture::told(std::int32_t messageID) const {
  const auto all = notifications_.all();
  return static_cast<std::size_t>(std::ranges::count(all, messageID, &MIDINotification::messageID));
}

}  // namespace midikit::io
