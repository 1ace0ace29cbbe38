#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/linux/AlsaMIDIService.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "tests/kernel/SequencerPeer.hpp"

namespace midikit::io {

/// What blocks on the service's threads write down.
template <typename Entry>
class Record {
 public:
  void add(const Entry& entry) {
    const std::lock_guard lock(mutex_);
    entries_.push_back(entry);
  }
  std::vector<Entry> all() const {
    const std::lock_guard lock(mutex_);
    return entries_;
  }
  void clear() {
    const std::lock_guard lock(mutex_);
    entries_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

/// True as soon as `condition` is; false if it isn't within five seconds, which on an emulated machine is
/// what half a second is on a real one.
bool comesTrue(const std::function<bool()>& condition);

/// A system exclusive message of that length whose bytes differ from their neighbours.
std::vector<std::uint8_t> sysExOf(std::size_t length);

/// One packet; at time 0, which means at once, unless told otherwise.
MIDIPacketList packet(const std::vector<std::uint8_t>& bytes, std::uint64_t timeStamp = 0);

/// The service on the machine's own sequencer, with one client; skipped where there is none.
class KernelFixture : public testing::Test {
 protected:
  using Ref = MIDIObjectRef;

  void SetUp() override;
  void TearDown() override;

  std::shared_ptr<MIDIService> makeService();
  std::string text(Ref object, std::string_view key = kMIDIPropertyName) const;
  std::optional<std::int32_t> number(Ref object, std::string_view key) const;
  /// The object of that name, or 0.
  Ref source(const std::string& name) const;
  Ref destination(const std::string& name) const;
  Ref device(std::string_view key, const std::string& value) const;
  bool hasEntity(Ref endpoint) const;

  Ref inputPort();
  Ref outputPort();
  /// All bytes that came to inputPort(), and to the virtual destinations that use this block.
  MIDIReadBlock reader();
  std::vector<std::uint8_t> received() const;
  /// How many messages of that number there were.
  std::size_t told(std::int32_t messageID) const;

  std::string stateHome_;
  karvex::foundation::SystemRuntime runtime_;
  std::shared_ptr<MIDIService> service_;
  Ref client_ = 0;
  Record<std::uint8_t> received_;
  Record<MIDINotification> notifications_;
};

}  // namespace midikit::io
