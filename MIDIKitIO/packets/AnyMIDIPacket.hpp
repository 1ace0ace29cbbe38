#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <variant>

#include "MIDIKitCore/sysex/SysExData.hpp"
#include "MIDIKitIO/objects/MIDIEndpoint.hpp"
#include "MIDIKitInternals/InlineVector.hpp"

namespace midikit::io {

/// Where a packet came from, null if that isn't known: packets for a virtual endpoint of the program have
/// none. The record never changes and is shared, so copying it never allocates; it may be kept.
using MIDIPacketSource = std::shared_ptr<const MIDIOutputEndpoint>;

/// The bytes of a packet, which never change. Up to 15 of them are in the object; copies of more share them.
/// Read it as a list of bytes (`size()`, `[]`, `begin()`, `data()`) or as a `std::span<const std::uint8_t>`.
using MIDIPacketBytes = core::SysExData;

/// One packet of MIDI 1.0 bytes.
struct MIDIPacketData {
  MIDIPacketBytes bytes;
  std::uint64_t timeStamp = 0;  ///< in units of MIDIService::machAbsoluteTime
  MIDIPacketSource source;
};

/// One Universal MIDI Packet.
struct UniversalMIDIPacketData {
  UniversalMIDIPacketData() = default;
  /// Allocates once if there are four words or more.
  explicit UniversalMIDIPacketData(std::span<const std::uint32_t> words, std::uint64_t timeStamp = 0,
                                   MIDIPacketSource source = nullptr);

  MIDIPacketBytes bytes;        ///< of the words in order, the high byte of each word first
  std::uint64_t timeStamp = 0;  ///< in units of MIDIService::machAbsoluteTime
  MIDIPacketSource source;
};

/// A packet of either kind: a sum type, and a value of 48 bytes. Copying one never allocates. For every call:
///
/// Thread-safe: yes, as a value is; copies of one may be used on different threads.
/// Realtime-safe: yes.
class AnyMIDIPacket {
 public:
  using Case = std::variant<MIDIPacketData, UniversalMIDIPacketData>;

  static AnyMIDIPacket packet(MIDIPacketData data) { return AnyMIDIPacket(std::move(data)); }
  static AnyMIDIPacket universalPacket(UniversalMIDIPacketData data) {
    return AnyMIDIPacket(std::move(data));
  }

  /// Which kind it is, for `std::visit` or `std::get_if`.
  const Case& asCase() const { return case_; }

  /// @name The fields of either kind
  /// References live as long as the packet.
  /// @{
  const MIDIPacketBytes& bytes() const {
    return std::visit([](const auto& data) -> const MIDIPacketBytes& { return data.bytes; }, case_);
  }
  std::uint64_t timeStamp() const {
    return std::visit([](const auto& data) { return data.timeStamp; }, case_);
  }
  const MIDIPacketSource& source() const {
    return std::visit([](const auto& data) -> const MIDIPacketSource& { return data.source; }, case_);
  }
  /// @}

 private:
  explicit AnyMIDIPacket(Case itsCase) : case_(std::move(itsCase)) {}

  Case case_;
};

/// The packets of one list. One packet needs no memory of its own.
using AnyMIDIPackets = internals::InlineVector<AnyMIDIPacket, 1>;

}  // namespace midikit::io
