#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/engine/DeviceDescription.hpp"
#include "MIDIKitIO/platform/engine/MIDIObject.hpp"

/// What stands on the sequencer, as plain records, and what the layer sees of it. Pure functions.
namespace midikit::io::alsa {

/// Where a port is at this moment. Both numbers are at most 255.
struct PortAddress {
  int client = 0;
  int port = 0;

  friend constexpr auto operator<=>(const PortAddress&, const PortAddress&) = default;
};

/// One port of the sequencer, as the kernel tells of it.
struct SequencerPort {
  int number = 0;
  std::string name;         ///< any bytes: another program may have made it
  bool isReadable = false;  ///< anybody may subscribe to what comes from it
  bool isWritable = false;  ///< anybody may send to it
};

/// One client of the sequencer.
struct SequencerClient {
  int number = 0;
  std::string name;  ///< any bytes
  bool isKernel = false;
  std::optional<int> card;  ///< of a driver's client: its sound card
  std::vector<SequencerPort> ports;
};

/// What sysfs says of a USB device. Texts are any bytes.
struct UsbFacts {
  std::string vendorId;   ///< four hexadecimal digits
  std::string productId;  ///< four hexadecimal digits
  std::string path;       ///< where it is plugged in, as "1-1.2"
  std::optional<std::string> serialNumber;
  std::optional<std::string> manufacturer;
  std::optional<std::string> product;
};

struct CardFacts {
  std::string id;  ///< the card's short name; unique at one moment
  std::optional<UsbFacts> usb;
};

/// A sound card's client as a device: an entity for each port.
struct DeviceRecord {
  std::vector<std::string> keys;  ///< what it is told by, DeviceMatch.hpp
  int client = 0;
  engine::DeviceDescription description;
  std::vector<int> ports;  ///< the port of each entity of the description, ascending
};

/// One direction of a port of another program, or of the kernel's own through ports.
struct EndpointRecord {
  PortAddress address;
  std::string identity;  ///< the same whenever the program comes back; no two ports share one
  engine::MIDIObjectKind kind = engine::MIDIObjectKind::source;
  engine::EndpointDescription description;
};

/// All that there is to see, in the order of clients and ports.
struct Equipment {
  std::vector<DeviceRecord> devices;
  std::vector<EndpointRecord> endpoints;
};

/// The system's own client, this program's own, and ports that nobody may subscribe to are left out; so are
/// cards that have no port yet.
Equipment equipmentOf(std::vector<SequencerClient> clients, const std::map<int, CardFacts>& cards,
                      int ownClient);

/// A unique ID that is the same on every machine and never 0.
std::int32_t uniqueIdOf(std::string_view identity);

/// Text from outside for people to read: what isn't UTF-8, and each control character, becomes U+FFFD; what
/// exceeds 126 characters, the most that a USB string has, is cut off.
std::string readableText(std::string_view raw);

/// The number, unchanged, or nothing if it is empty or isn't clean text of at most 126 UTF-16 units: boards
/// are found by it, so a mended one would be the number of no board, or of another one.
std::optional<std::string> usableSerialNumber(std::string_view raw);

}  // namespace midikit::io::alsa
