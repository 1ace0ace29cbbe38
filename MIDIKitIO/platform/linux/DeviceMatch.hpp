#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"

/// Which of the devices that were here before is which of those that are here now. Pure functions.
namespace midikit::io::alsa {

/// What a device is told by, from the most exact key to the one that says least: a USB device by vendor,
/// serial number, product and plug; then without the plug; then without the product, which goes with the
/// firmware. A serial number that many devices have, as "00000001", says nothing by itself. Without a number,
/// vendor, product and plug count, and a card that isn't on USB has its name.
std::vector<std::string> deviceKeys(const SequencerClient& client, const CardFacts* card);

/// A device that was here.
struct KnownDevice {
  std::optional<int> client;  ///< none if it had left
  std::span<const std::string> keys;
};

/// For each device that is here the place of the known one that it is, if it is one. The best match of all
/// goes first, so that no device takes the place of one that fits it better.
std::vector<std::optional<std::size_t>> matchDevices(std::span<const KnownDevice> known,
                                                     std::span<const KnownDevice> present);

/// False for what makers put in where a number should be: nothing but one character and zeros, or the digits
/// in their order.
bool isTelling(std::string_view serialNumber);

}  // namespace midikit::io::alsa
