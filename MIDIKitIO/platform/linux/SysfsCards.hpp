#pragma once

#include <filesystem>

#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"

namespace midikit::io::alsa {

/// Where the kernel shows its sound cards.
inline const std::filesystem::path soundClass = "/sys/class/sound";

/// What `directory`, a soundClass, tells of a card. A file that can't be read, as when the card is just
/// leaving, counts as absent; of one that is longer than any attribute only the first page is looked at.
CardFacts readCard(const std::filesystem::path& directory, int card);

}  // namespace midikit::io::alsa
