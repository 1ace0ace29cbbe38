#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "MIDIKitCore/MIDIEvent.hpp"

// Most of what a device sends are six kinds of channel voice events and the clocks between them, which differ
// in a few numbers only. A stream mixes them, and a processor that has to guess the kind of each event from
// one to the next is wrong too often: that costs more than all the rest of the encoding. So they're encoded
// by one run of instructions that takes the differences from a table.

namespace midikit::core::detail {

/// What `NoteOn`, `NoteOff`, `NotePressure`, `CC`, `PitchBend` and `Pressure` have in memory, as far as each
/// goes; what a kind doesn't have is masked out by its row.
struct VoiceLayout {
  ChanVoiceBits value;
  std::uint8_t group;
  std::uint8_t channel;
  std::uint8_t number;  ///< note or controller
  std::uint8_t style;
  std::uint16_t attributeData;
  std::uint8_t attributeType;
};

/// The bytes of a word the other way round, where the processor has the lowest first.
constexpr std::uint32_t highestFirst(std::uint32_t word) {
  return std::endian::native == std::endian::little ? __builtin_bswap32(word) : word;
}

/// Reads the payload of one of these as bytes.
class VoiceImage {
 public:
  explicit VoiceImage(const MIDIEvent& event)
      : bytes_(reinterpret_cast<const unsigned char*>(&event.storage_)) {}

  std::uint32_t integer() const { return at<std::uint32_t>(offsetof(VoiceLayout, value.bits)); }
  std::size_t form() const { return at<std::uint8_t>(offsetof(VoiceLayout, value.form)); }
  /// Group, channel and number where the first word of a packet has them, and something in its lowest byte.
  /// `offset` is where the payload has its group.
  std::uint32_t address(std::size_t offset) const { return highestFirst(at<std::uint32_t>(offset)); }
  /// The attribute of a note and the byte behind it.
  std::uint32_t attribute() const { return at<std::uint32_t>(offsetof(VoiceLayout, attributeData)); }

 private:
  template <class T>
  T at(std::size_t offset) const {
    T value;
    std::memcpy(&value, bytes_ + offset, sizeof value);
    return value;
  }

  const unsigned char* bytes_;
};

template <class Record>
concept HasVoiceImage = std::is_standard_layout_v<Record> && std::is_trivially_copyable_v<Record> &&
                        offsetof(Record, channel) == offsetof(VoiceLayout, channel) &&
                        offsetof(Record, group) == offsetof(VoiceLayout, group);

static_assert(HasVoiceImage<NoteOn> && HasVoiceImage<NoteOff> && HasVoiceImage<NotePressure> &&
              HasVoiceImage<CC> && HasVoiceImage<PitchBend> && HasVoiceImage<Pressure>);
static_assert(offsetof(NoteOn, _velocity) == 0 && offsetof(NoteOff, _velocity) == 0 &&
              offsetof(NotePressure, _amount) == 0 && offsetof(CC, _value) == 0 &&
              offsetof(PitchBend, _value) == 0 && offsetof(Pressure, _amount) == 0);
static_assert(sizeof(TimingClock) == 1 && sizeof(TuneRequest) == 1);
static_assert(offsetof(NoteOn, note) == offsetof(VoiceLayout, number) &&
              offsetof(NoteOff, note) == offsetof(VoiceLayout, number) &&
              offsetof(NotePressure, note) == offsetof(VoiceLayout, number) &&
              offsetof(CC, controller) == offsetof(VoiceLayout, number));
static_assert(offsetof(NoteOn, attribute) == offsetof(VoiceLayout, attributeData) &&
              offsetof(NoteOff, attribute) == offsetof(VoiceLayout, attributeData));
// An attribute has its data ahead of its type.
static_assert(
    std::bit_cast<std::array<std::uint8_t, sizeof(NoteAttribute)>>(NoteAttribute::undefined(
        0x12, 0x3434))[offsetof(VoiceLayout, attributeType) - offsetof(VoiceLayout, attributeData)] == 0x12);

/// How a value that is held in one form becomes the 32 bits of its place in a packet of MIDI 2.0.
struct VoiceScaling {
  std::uint32_t shift;  ///< to the left, so that the value begins at the highest bit
  /// 2^32 times the sum of the shifts to the right at which the bits below the highest one are repeated.
  std::uint32_t repetition;
};

/// How one kind of events is encoded. A kind that isn't has no form that isn't rare.
struct alignas(64) VoiceRow {
  static constexpr std::uint8_t noForm = 0xFF;

  std::uint32_t head1 = 0;  ///< message type and status of the packet in MIDI 1.0
  std::uint32_t head2 = 0;  ///< the same in MIDI 2.0
  std::uint8_t groupOffset = offsetof(VoiceLayout, group);
  std::uint32_t addressMask = 0;  ///< what of VoiceImage::address() is sent

  /// Bits to drop for MIDI 1.0, by form; `noForm` for a form that is rare.
  std::array<std::uint8_t, 4> drop = {noForm, noForm, noForm, noForm};
  std::uint8_t leastValue = 0;   ///< a smaller one has rules of its own in MIDI 1.0
  std::uint8_t valueShift = 0;   ///< to the place of the value's low seven bits in MIDI 1.0
  std::uint16_t valueMask1 = 0;  ///< the data bytes of MIDI 1.0 that are of the value
  std::uint8_t size = 3;         ///< in bytes, in MIDI 1.0

  std::array<VoiceScaling, 2> scaling{};  ///< from the integer of MIDI 1.0, and from that of MIDI 2.0
  /// A form up to it is rare: the largest signed byte if all are, whatever an event of the kind has there.
  std::int8_t lastRareForm = 0x7F;
  std::uint32_t valueMask2 = 0xFFFFFFFF;
  std::uint32_t attributeMask = 0;  ///< what of VoiceImage::attribute() is none in all but rare notes
  std::uint8_t words = 2;           ///< in MIDI 2.0
};

/// `width1` and `width2` are those of the value in MIDI 1.0 and in MIDI 2.0.
consteval VoiceRow voiceRow(std::uint32_t status, unsigned width1, unsigned width2) {
  std::uint32_t repetition = 0;
  for (unsigned shift = width1 - 1; shift < 32; shift += width1 - 1) {
    repetition |= std::uint32_t{1} << (32 - shift);
  }
  VoiceRow row;
  row.head1 = 0x20000000 | status << 16;
  row.head2 = 0x40000000 | status << 16;
  row.addressMask = 0x0F0F7F00;
  row.valueMask1 = 0x007F;
  row.drop[2] = 0;
  row.drop[3] = static_cast<std::uint8_t>(width2 - width1);
  row.lastRareForm = 1;
  row.scaling = {{{.shift = 32 - width1, .repetition = repetition}, {.shift = 32 - width2, .repetition = 0}}};
  return row;
}

consteval VoiceRow noteRow(std::uint32_t status, std::uint8_t leastVelocity) {
  VoiceRow row = voiceRow(status, 7, 16);
  row.leastValue = leastVelocity;
  row.valueMask2 = 0xFFFF0000;
  row.attributeMask = highestFirst(0xFFFFFF00);
  return row;
}

/// Of a kind that acts on the whole channel: its value stands where others have a number.
consteval VoiceRow channelRow(std::uint32_t status, unsigned width1, std::uint8_t size) {
  VoiceRow row = voiceRow(status, width1, 32);
  row.addressMask = 0x0F0F0000;
  row.valueShift = 8;
  row.valueMask1 = size == 2 ? 0x7F00 : 0x7F7F;
  row.size = size;
  return row;
}

/// Of a system message: it has neither a channel nor a form, so that any will do.
consteval VoiceRow systemRow(std::uint32_t status, std::size_t groupOffset) {
  VoiceRow row;
  row.head1 = row.head2 = 0x10000000 | status << 16;
  row.groupOffset = static_cast<std::uint8_t>(groupOffset);
  row.addressMask = 0x0F000000;
  row.drop = {};
  return row;
}

/// Of one that has nothing but a group.
consteval VoiceRow groupRow(std::uint32_t status) {
  VoiceRow row = systemRow(status, offsetof(TimingClock, group));
  row.size = 1;
  row.lastRareForm = -1;
  row.words = 1;
  return row;
}

/// In packets of MIDI 2.0 it's rare, whose other messages have no value in the first word.
consteval VoiceRow songPositionRow() {
  VoiceRow row = systemRow(0xF2, offsetof(SongPositionPointer, group));
  // The beat is behind the group in VoiceImage::integer().
  row.drop.fill(std::endian::native == std::endian::little ? 16 : 0);
  row.valueShift = 8;
  row.valueMask1 = 0x7F7F;
  return row;
}
static_assert(offsetof(SongPositionPointer, midiBeat) == 2);

inline constexpr std::array<VoiceRow, MIDIEvent::kindCount> voiceRows = [] {
  using Kind = MIDIEvent::Kind;
  std::array<VoiceRow, MIDIEvent::kindCount> rows{};
  const auto rowOf = [&rows](Kind kind) -> VoiceRow& { return rows[static_cast<std::size_t>(kind)]; };
  rowOf(Kind::noteOff) = noteRow(0x80, 0);
  rowOf(Kind::noteOn) = noteRow(0x90, 1);
  rowOf(Kind::notePressure) = voiceRow(0xA0, 7, 32);
  rowOf(Kind::cc) = voiceRow(0xB0, 7, 32);
  rowOf(Kind::pressure) = channelRow(0xD0, 7, 2);
  rowOf(Kind::pitchBend) = channelRow(0xE0, 14, 3);
  rowOf(Kind::songPositionPointer) = songPositionRow();
  rowOf(Kind::tuneRequest) = groupRow(0xF6);
  rowOf(Kind::timingClock) = groupRow(0xF8);
  rowOf(Kind::start) = groupRow(0xFA);
  rowOf(Kind::continue_) = groupRow(0xFB);
  rowOf(Kind::stop) = groupRow(0xFC);
  rowOf(Kind::activeSensing) = groupRow(0xFE);
  rowOf(Kind::systemReset) = groupRow(0xFF);
  return rows;
}();

inline const VoiceRow& voiceRowOf(const MIDIEvent& event) {
  return voiceRows[static_cast<std::size_t>(event.kind())];
}

/// The packet in MIDI 1.0; its lower 24 bits are the message, as in MIDI1Messages.hpp. False if the value has
/// a rule of its own, or a form that is rare.
inline bool encodeVoice1(const VoiceRow& row, const VoiceImage& image, std::uint32_t& word) {
  const std::uint8_t drop = row.drop[image.form() & 3];
  const std::uint32_t value = image.integer() >> (drop & 31);
  // The upper seven bits of a bend go into the second data byte; no other value has any.
  word = row.head1 | (image.address(row.groupOffset) & row.addressMask) |
         ((value << row.valueShift | value >> 7) & row.valueMask1);
  return drop != VoiceRow::noForm && value >= row.leastValue;
}

/// The packet in MIDI 2.0, one or two words. False if the value has a form that is rare.
inline bool encodeVoice2(const VoiceRow& row, const VoiceImage& image, std::uint32_t* words) {
  const VoiceScaling& scaling = row.scaling[image.form() & 1];
  const std::uint32_t aligned = image.integer() << scaling.shift;
  // Min-Center-Max, as scaledUp() has it: above the centre the bits below the highest one are repeated.
  const std::uint32_t below = std::max(aligned, 0x80000000U) - 0x80000000U;
  const std::uint32_t value =
      aligned | static_cast<std::uint32_t>(std::uint64_t{below} * scaling.repetition >> 32);
  words[0] = row.head2 | (image.address(row.groupOffset) & row.addressMask);
  words[1] = value & row.valueMask2;
  return static_cast<std::int8_t>(image.form()) > row.lastRareForm &&
         (image.attribute() & row.attributeMask) == 0;
}

static_assert(static_cast<int>(ChanVoiceValueForm::midi1) == 2 &&
              static_cast<int>(ChanVoiceValueForm::midi2) == 3);

}  // namespace midikit::core::detail
