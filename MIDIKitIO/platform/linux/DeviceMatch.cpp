#include "MIDIKitIO/platform/linux/DeviceMatch.hpp"

#include <algorithm>

namespace midikit::io::alsa {

namespace {

/// How many keys a device has at most.
constexpr std::size_t levels = 3;

using Matches = std::vector<std::optional<std::size_t>>;

template <typename Fits>
void matchLevel(std::span<const KnownDevice> known, std::span<const KnownDevice> present, Matches& matches,
                const Fits& fit) {
  for (std::size_t place = 0; place < present.size(); ++place) {
    for (std::size_t former = 0; former < known.size() && !matches[place]; ++former) {
      const bool isTaken = std::ranges::find(matches, std::optional(former)) != matches.end();
      if (!isTaken && fit(known[former], present[place])) {
        matches[place] = former;
      }
    }
  }
}

}  // namespace

std::vector<std::string> deviceKeys(const SequencerClient& client, const CardFacts* card) {
  if (card == nullptr) {
    return {"client:" + client.name};
  }
  if (!card->usb) {
    return {"card:" + card->id + ':' + client.name};
  }
  const auto& usb = *card->usb;
  const auto vendor = "usb:" + usb.vendorId + ':';
  const auto number = usb.serialNumber ? usableSerialNumber(*usb.serialNumber) : std::nullopt;
  if (!number) {
    return {vendor + usb.productId + '@' + usb.path};
  }
  const auto withProduct = vendor + *number + ':' + usb.productId;
  std::vector<std::string> keys = {withProduct + '@' + usb.path, withProduct};
  if (isTelling(*number)) {
    keys.push_back(vendor + *number);
  }
  return keys;
}

std::vector<std::optional<std::size_t>> matchDevices(std::span<const KnownDevice> known,
                                                     std::span<const KnownDevice> present) {
  Matches matches(present.size());
  matchLevel(known, present, matches, [](const KnownDevice& former, const KnownDevice& now) {
    return former.client == now.client && former.keys.front() == now.keys.front();
  });
  for (std::size_t level = 0; level < levels; ++level) {
    matchLevel(known, present, matches, [level](const KnownDevice& former, const KnownDevice& now) {
      return level < former.keys.size() && level < now.keys.size() && former.keys[level] == now.keys[level];
    });
  }
  return matches;
}

bool isTelling(std::string_view serialNumber) {
  constexpr std::string_view digitsInOrder = "0123456789ABCDEF";
  constexpr std::string_view tenDigits = "1234567890";
  serialNumber.remove_prefix(std::min(serialNumber.find_first_not_of('0'), serialNumber.size()));
  const auto isOneOrZero = [&](char character) {
    return character == '0' || character == serialNumber.front();
  };
  return !std::ranges::all_of(serialNumber, isOneOrZero) &&
         digitsInOrder.find(serialNumber) == std::string_view::npos &&
         tenDigits.find(serialNumber) == std::string_view::npos;
}

}  // namespace midikit::io::alsa
