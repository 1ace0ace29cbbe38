#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "foundation/run/VirtualRuntime.hpp"
#include "rig/midi/VirtualMidiService.hpp"

namespace midikit::io::engine {

/// One raw message as a line: "1", "2 parent/type child/type", "4 object/type key", ...
std::string lineOf(const MIDINotification& message);

/// "5: 90 3C 40; 7: F8", by time stamp.
std::string lineOf(const MIDIPacketList& list);

/// "2| 5: 40903C00 80000000", the protocol first.
std::string lineOf(const MIDIEventList& list);

MIDIPacketList packets(const std::vector<std::pair<std::uint64_t, std::vector<std::uint8_t>>>& packets);

/// One packet at time 0.
MIDIPacketList packet(const std::vector<std::uint8_t>& bytes);

MIDIEventList events(MIDIProtocolID protocol, const std::vector<std::vector<std::uint32_t>>& packets);

/// A service on virtual time with one client, whose notifications are written down.
class MIDIServiceFixture : public testing::Test {
 protected:
  using Ref = MIDIObjectRef;

  MIDIServiceFixture();

  /// Lets all that waits on the service's threads run.
  void settle() { runtime.clock().sleepFor(std::chrono::milliseconds(1)); }
  /// What was reported since the last time.
  std::vector<std::string> reported();
  /// A reader that writes down what it is given, after the name.
  MIDIReadBlock byteReader(const std::string& name);
  MIDIReceiveBlock wordReader(const std::string& name);
  /// What the readers were given since the last time.
  std::vector<std::string> read();

  Ref source(std::size_t index = 0) const { return service.MIDIGetSource(index); }
  Ref destination(std::size_t index = 0) const { return service.MIDIGetDestination(index); }

  karvex::foundation::VirtualRuntime runtime;
  std::vector<std::string> reported_;
  std::vector<std::string> read_;
  std::shared_ptr<ThruConnectionStore> store = std::make_shared<ThruConnectionStore>();
  karvex::rig::VirtualMidiService service{runtime, {.major = 13, .minor = 0}, store};
  Ref client = 0;
};

}  // namespace midikit::io::engine
