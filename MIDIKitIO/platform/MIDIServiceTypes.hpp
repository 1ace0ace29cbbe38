#pragma once

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <variant>

#include "MIDIKitCore/MIDIOSStatus.hpp"
#include "MIDIKitIO/platform/MIDIPacketList.hpp"
#include "MIDIKitInternals/InlineVector.hpp"

namespace midikit::io {

/// A platform's handle for a client, port, device, entity, endpoint or thru connection; 0 means none.
using MIDIObjectRef = std::uint32_t;

/// A platform's result; 0 (`noErr`) means success, MIDIOSStatus names the rest.
using OSStatus = std::int32_t;
inline constexpr OSStatus noErr = 0;

using core::MIDIOSStatus;

/// The platform's number of a named status.
constexpr OSStatus statusOf(MIDIOSStatus::Named named) {
  return MIDIOSStatus(named).number();
}

/// The platform whose generation of the MIDI interface a service offers.
struct PlatformVersion {
  int major = 0;
  int minor = 0;

  friend constexpr auto operator<=>(const PlatformVersion&, const PlatformVersion&) = default;
};

struct PropertyValue;

/// The properties of one object by key, or the value of a property that is itself a dictionary.
using PropertyDictionary = std::map<std::string, PropertyValue, std::less<>>;

/// What a property holds: an integer, which may also mean yes or no, a text, or a dictionary.
struct PropertyValue : std::variant<std::int32_t, std::string, PropertyDictionary> {
  using variant::variant;
};

/// One raw message of the service about its setup. `messageID` says which of the payloads is there.
struct MIDINotification {
  /// Of messages 2 (added) and 3 (removed).
  struct Child {
    MIDIObjectRef parent = 0;
    std::int32_t parentType = -1;
    MIDIObjectRef child = 0;
    std::int32_t childType = -1;
  };
  /// Of message 4 (a property changed).
  struct Property {
    MIDIObjectRef object = 0;
    std::int32_t objectType = -1;
    std::string propertyName;
  };
  /// Of message 7 (a driver's input or output failed).
  struct IOError {
    MIDIObjectRef driverDevice = 0;
    OSStatus errorCode = noErr;
  };

  std::int32_t messageID = 0;
  std::variant<std::monostate, Child, Property, IOError> payload;
};

/// The protocol of a port, an endpoint or an event list, by the platform's number.
enum class MIDIProtocolID : std::int32_t { midi1_0 = 1, midi2_0 = 2 };

/// Universal packet words that share a moment; at most 64 words.
struct MIDIEventPacket {
  std::uint64_t timeStamp = 0;  ///< in units of MIDIService::machAbsoluteTime
  std::uint32_t wordCount = 0;  ///< 0 to 64
  std::array<std::uint32_t, 64> words{};
};

/// The words that the packet has. A count that its maker got wrong gives no more than there are.
inline std::span<const std::uint32_t> wordsOf(const MIDIEventPacket& packet) {
  return std::span(packet.words).first(std::min<std::size_t>(packet.wordCount, packet.words.size()));
}

/// One packet needs no memory of its own.
struct MIDIEventList {
  MIDIProtocolID protocol = MIDIProtocolID::midi1_0;
  internals::InlineVector<MIDIEventPacket, 1> packets;
};

/// What the maker of a connection gave to MIDIPortConnectSource; comes back with each list from that source.
using ConnectionToken = const void*;

/// Runs on a service thread, one call at a time for one client.
using MIDINotifyBlock = std::function<void(const MIDINotification&)>;
/// Run on a service thread with one list; the list is valid during the call alone.
using MIDIReceiveBlock = std::function<void(const MIDIEventList&, ConnectionToken)>;
using MIDIReadBlock = std::function<void(const MIDIPacketList&, ConnectionToken)>;

}  // namespace midikit::io
