#include <algorithm>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/detail/FieldHash.hpp"

namespace midikit::core {
namespace {

/// The value of a validated field, every other field itself.
template <class Field>
const auto& heldIn(const Field& field) {
  if constexpr (requires { field.value().form(); }) {
    return field.value();
  } else {
    return field;
  }
}

/// Equal data have equal hashes, as far as bytes go: the beginning and the size tell messages apart well
/// enough.
std::size_t hashOfData(const SysExData& data) {
  constexpr std::size_t looked = 64;
  const std::string_view beginning(reinterpret_cast<const char*>(data.data()), std::min(looked, data.size()));
  return core::hashOf(beginning, data.size());
}

std::size_t hashOf(const SysExManufacturer& manufacturer) {
  return core::hashOf(manufacturer.id().value_or(UInt7()), manufacturer.byte2(), manufacturer.byte3());
}

struct RecordHash {
  std::size_t operator()(const SysEx7& event) const {
    return core::hashOf(hashOf(event.manufacturer), hashOfData(event.data), event.group);
  }
  std::size_t operator()(const UniversalSysEx7& event) const {
    return core::hashOf(event.universalType, event.deviceID, event.subID1, event.subID2,
                        hashOfData(event.data), event.group);
  }
  std::size_t operator()(const SysEx8& event) const {
    return core::hashOf(hashOf(event.manufacturer), hashOfData(event.data), event.streamID, event.group);
  }
  std::size_t operator()(const UniversalSysEx8& event) const {
    return core::hashOf(event.universalType, event.deviceID, event.subID1, event.subID2,
                        hashOfData(event.data), event.streamID, event.group);
  }
  template <class Record>
  std::size_t operator()(const Record& record) const {
    return std::apply([](const auto&... fields) { return core::hashOf(heldIn(fields)...); }, record.fields());
  }
};

}  // namespace
}  // namespace midikit::core

std::size_t std::hash<midikit::core::MIDIEvent>::operator()(
    const midikit::core::MIDIEvent& event) const noexcept {
  return midikit::core::hashOf(event.kind(), event.visit(midikit::core::RecordHash()));
}
