#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"

#include <algorithm>
#include <numeric>
#include <set>
#include <utility>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/linux/DeviceMatch.hpp"
#include "foundation/text/Utf8.hpp"

namespace midikit::io::alsa {

using engine::MIDIObjectKind;

namespace {

constexpr int systemClient = 0;
constexpr std::size_t longestText = 126;
/// The rate of a MIDI 1.0 cable in bytes a second, which every device keeps up with.
constexpr std::int32_t usualSysExSpeed = 3125;

/// Names for what can't tell itself apart: the second of a name is "name#2".
class Distinct {
 public:
  std::string make(const std::string& wanted) {
    std::string name = wanted;
    for (int number = 2; !taken_.insert(name).second; ++number) {
      name = wanted + '#' + std::to_string(number);
    }
    return name;
  }

 private:
  std::set<std::string> taken_;
};

/// Unique IDs that no two of the objects share.
class DistinctIds {
 public:
  std::int32_t make(std::string identity) {
    while (!taken_.insert(uniqueIdOf(identity)).second) {
      identity += '\'';
    }
    return uniqueIdOf(identity);
  }

 private:
  std::set<std::int32_t> taken_;
};

/// What each device's unique IDs are made from: the key that says least, so that they survive another plug
/// and other firmware. Of devices that share it the first one by its most exact key has it.
std::vector<std::string> identitiesOf(const std::vector<std::vector<std::string>>& keys) {
  std::vector<std::size_t> order(keys.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, {}, [&keys](std::size_t place) { return std::pair(keys[place].front(), place); });
  std::vector<std::string> identities(keys.size());
  std::set<std::string> bases;
  Distinct exact;
  for (const auto place : order) {
    const auto& base = keys[place].back();
    identities[place] = bases.insert(base).second ? base : exact.make(keys[place].front() + '#');
  }
  return identities;
}

engine::DeviceDescription withoutEntities(const SequencerClient& client, const CardFacts* card) {
  engine::DeviceDescription device{.name = readableText(client.name)};
  auto& shared = device.sharedProperties;
  shared.emplace(kMIDIPropertyOffline, 0);
  shared.emplace(kMIDIPropertyDriverOwner, "ALSA");
  shared.emplace(kMIDIPropertyMaxSysExSpeed, usualSysExSpeed);
  if (card != nullptr && card->usb) {
    const auto& usb = *card->usb;
    if (usb.manufacturer) {
      shared.emplace(kMIDIPropertyManufacturer, readableText(*usb.manufacturer));
    }
    shared.emplace(kMIDIPropertyModel, readableText(usb.product.value_or(client.name)));
    if (auto serialNumber = usb.serialNumber ? usableSerialNumber(*usb.serialNumber) : std::nullopt) {
      device.properties.emplace(serialNumberPropertyKey, *std::move(serialNumber));
    }
  }
  return device;
}

DeviceRecord deviceOf(const SequencerClient& client, const CardFacts* card, const std::string& identity,
                      DistinctIds& ids) {
  DeviceRecord record{.keys = deviceKeys(client, card),
                      .client = client.number,
                      .description = withoutEntities(client, card)};
  auto& device = record.description;
  device.properties.emplace(kMIDIPropertyUniqueID, ids.make(identity));
  const auto idFor = [&](const std::string& what) {
    return PropertyDictionary{{std::string(kMIDIPropertyUniqueID), ids.make(identity + what)}};
  };
  for (const auto& port : client.ports) {
    const auto name = readableText(port.name);
    const auto place = '/' + std::to_string(port.number);
    engine::EntityDescription entity{.name = name, .properties = idFor(place)};
    if (port.isReadable) {
      entity.sources.push_back({.name = name, .properties = idFor(place + "/source")});
    }
    if (port.isWritable) {
      entity.destinations.push_back({.name = name, .properties = idFor(place + "/destination")});
    }
    device.entities.push_back(std::move(entity));
    record.ports.push_back(port.number);
  }
  return record;
}

void addEndpoints(Equipment& equipment, const SequencerClient& client, Distinct& identities,
                  DistinctIds& ids) {
  for (const auto& port : client.ports) {
    const auto identity =
        identities.make("port:" + client.name + '/' + std::to_string(port.number) + '/' + port.name);
    const auto add = [&](MIDIObjectKind kind, const char* direction) {
      auto name = readableText(port.name);
      const auto program = readableText(client.name);
      auto displayName = name.starts_with(program) ? name : program + ' ' + name;
      equipment.endpoints.push_back(
          {.address = {client.number, port.number},
           .identity = identity,
           .kind = kind,
           .description = {.name = std::move(name),
                           .properties = {
                               {std::string(kMIDIPropertyDisplayName), std::move(displayName)},
                               {std::string(kMIDIPropertyUniqueID), ids.make(identity + direction)},
                               {std::string(kMIDIPropertyOffline), 0},
                               {std::string(kMIDIPropertyDriverOwner), "ALSA"},
                           }}});
    };
    if (port.isReadable) {
      add(MIDIObjectKind::source, "/source");
    }
    if (port.isWritable) {
      add(MIDIObjectKind::destination, "/destination");
    }
  }
}

bool isDevice(const SequencerClient& client) {
  return client.isKernel && client.card.has_value();
}

void keepVisiblePorts(SequencerClient& client) {
  std::erase_if(client.ports, [](const SequencerPort& port) { return !port.isReadable && !port.isWritable; });
  std::ranges::sort(client.ports, {}, &SequencerPort::number);
}

}  // namespace

Equipment equipmentOf(std::vector<SequencerClient> clients, const std::map<int, CardFacts>& cards,
                      int ownClient) {
  std::ranges::for_each(clients, keepVisiblePorts);
  std::erase_if(clients, [ownClient](const SequencerClient& client) {
    return client.number == systemClient || client.number == ownClient || client.ports.empty();
  });
  std::ranges::sort(
      clients, {}, [](const SequencerClient& client) { return std::pair(!isDevice(client), client.number); });
  const auto firstProgram = std::ranges::find_if_not(clients, isDevice);
  const auto factsOf = [&cards](const SequencerClient& client) {
    const auto card = cards.find(*client.card);
    return card != cards.end() ? &card->second : nullptr;
  };
  std::vector<std::vector<std::string>> keys;
  for (auto client = clients.begin(); client != firstProgram; ++client) {
    keys.push_back(deviceKeys(*client, factsOf(*client)));
  }
  const auto identities = identitiesOf(keys);
  Equipment equipment;
  Distinct names;
  DistinctIds ids;
  for (auto client = clients.begin(); client != clients.end(); ++client) {
    if (client < firstProgram) {
      const auto& identity = identities.at(static_cast<std::size_t>(client - clients.begin()));
      equipment.devices.push_back(deviceOf(*client, factsOf(*client), identity, ids));
    } else {
      addEndpoints(equipment, *client, names, ids);
    }
  }
  return equipment;
}

std::int32_t uniqueIdOf(std::string_view identity) {
  std::uint32_t hash = 2166136261U;  // FNV-1a, 32 bits
  for (const char byte : identity) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
  }
  return hash != 0 ? static_cast<std::int32_t>(hash) : 1;
}

std::string readableText(std::string_view raw) {
  std::string text;
  for (std::size_t count = 0; !raw.empty() && count < longestText; ++count) {
    const auto character = karvex::foundation::firstCharacter(raw);
    text +=
        character && !character->isControl() ? character->bytes : karvex::foundation::replacementCharacter;
    raw.remove_prefix(character ? character->bytes.size() : 1);
  }
  return text;
}

std::optional<std::string> usableSerialNumber(std::string_view raw) {
  std::size_t units = 0;
  for (auto rest = raw; !rest.empty();) {
    const auto character = karvex::foundation::firstCharacter(rest);
    units += character ? character->utf16Units() : 1;
    if (!character || character->isControl() || units > longestText) {
      return std::nullopt;
    }
    rest.remove_prefix(character->bytes.size());
  }
  return raw.empty() ? std::nullopt : std::optional(std::string(raw));
}

}  // namespace midikit::io::alsa
