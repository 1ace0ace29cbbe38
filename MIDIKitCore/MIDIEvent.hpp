#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "MIDIKitCore/ParseError.hpp"
#include "MIDIKitCore/detail/EventFactory.hpp"
#include "MIDIKitCore/detail/EventStorage.hpp"
#include "MIDIKitCore/events/ChanVoiceEvents.hpp"
#include "MIDIKitCore/events/MIDIEventTypes.hpp"
#include "MIDIKitCore/events/ParameterNumberEvents.hpp"
#include "MIDIKitCore/events/SystemEvents.hpp"
#include "MIDIKitCore/events/UtilityEvents.hpp"
#include "MIDIKitCore/sysex/SysExEvents.hpp"
#include "MIDIKitCore/sysex/SysExID.hpp"
#include "MIDIKitCore/wire/MIDIProtocolVersion.hpp"
#include "MIDIKitCore/wire/UMPPacket.hpp"

namespace midikit::core {

namespace detail {
class VoiceImage;
}

/// A MIDI message of either protocol: a sum type with a record for each of its cases. A value of 28 bytes
/// that copies as memory; copies of a long system exclusive event share its bytes, and copying never
/// allocates. Different events may be used on different threads, copies of one included.
///
/// Make one with the factory of the case, which takes the arguments of the record's constructor, or from a
/// record: `MIDIEvent::noteOn(60_u7, ChanVoice7Bit16BitValue::midi1(100_u7), 0_u4)`. Take it apart with `as`
/// or `visit`.
class MIDIEvent {
 public:
  using NoteOn = core::NoteOn;
  using NoteOff = core::NoteOff;
  using NoteCC = core::NoteCC;
  using NotePitchBend = core::NotePitchBend;
  using NotePressure = core::NotePressure;
  using NoteManagement = core::NoteManagement;
  using CC = core::CC;
  using ProgramChange = core::ProgramChange;
  using PitchBend = core::PitchBend;
  using Pressure = core::Pressure;
  using RPN = core::RPN;
  using NRPN = core::NRPN;
  using SysEx7 = core::SysEx7;
  using UniversalSysEx7 = core::UniversalSysEx7;
  using SysEx8 = core::SysEx8;
  using UniversalSysEx8 = core::UniversalSysEx8;
  using TimecodeQuarterFrame = core::TimecodeQuarterFrame;
  using SongPositionPointer = core::SongPositionPointer;
  using SongSelect = core::SongSelect;
  using UnofficialBusSelect = core::UnofficialBusSelect;
  using TuneRequest = core::TuneRequest;
  using TimingClock = core::TimingClock;
  using Start = core::Start;
  using Continue = core::Continue;
  using Stop = core::Stop;
  using ActiveSensing = core::ActiveSensing;
  using SystemReset = core::SystemReset;
  using NoOp = core::NoOp;
  using JRClock = core::JRClock;
  using JRTimestamp = core::JRTimestamp;

  using SysExID = core::SysExID;
  using SysExManufacturer = core::SysExManufacturer;
  using SysExType = core::SysExType;
  using UniversalSysExType = core::UniversalSysExType;
  using ParseError = core::ParseError;
  using AssignableController = core::AssignableController;
  using RegisteredController = core::RegisteredController;

  /// The case, in the order of the records.
  enum class Kind : std::uint8_t {
    noteOn,
    noteOff,
    noteCC,
    notePitchBend,
    notePressure,
    noteManagement,
    cc,
    programChange,
    pitchBend,
    pressure,
    rpn,
    nrpn,
    sysEx7,
    universalSysEx7,
    sysEx8,
    universalSysEx8,
    timecodeQuarterFrame,
    songPositionPointer,
    songSelect,
    unofficialBusSelect,
    tuneRequest,
    timingClock,
    start,
    continue_,
    stop,
    activeSensing,
    systemReset,
    noOp,
    jrClock,
    jrTimestamp,
  };
  static constexpr std::size_t kindCount = static_cast<std::size_t>(Kind::jrTimestamp) + 1;

 private:
  using Storage =
      detail::EventStorage<NoteOn, NoteOff, NoteCC, NotePitchBend, NotePressure, NoteManagement, CC,
                           ProgramChange, PitchBend, Pressure, RPN, NRPN, SysEx7, UniversalSysEx7, SysEx8,
                           UniversalSysEx8, TimecodeQuarterFrame, SongPositionPointer, SongSelect,
                           UnofficialBusSelect, TuneRequest, TimingClock, Start, Continue, Stop,
                           ActiveSensing, SystemReset, NoOp, JRClock, JRTimestamp>;

  template <class... Ts>
  static consteval std::size_t positionIn(const detail::EventStorage<Ts...>*, const auto* record) {
    return detail::positionOf<std::remove_cvref_t<decltype(*record)>, Ts...>();
  }
  template <class T>
  static constexpr std::size_t position =
      positionIn(static_cast<const Storage*>(nullptr), static_cast<const T*>(nullptr));

 public:
  /// A type that is the record of a case.
  template <class T>
  static constexpr bool isRecord = position<T> < kindCount;

  template <class Record>
    requires isRecord<Record>
  static constexpr Kind kindOf = static_cast<Kind>(position<Record>);

  template <class Record>
    requires isRecord<std::remove_cvref_t<Record>>
  constexpr MIDIEvent(Record&& record) noexcept
      : MIDIEvent(std::in_place_type<std::remove_cvref_t<Record>>, std::forward<Record>(record)) {}

  /// Makes the record in its place, of what its constructor takes.
  template <class Record, class... Fields>
    requires isRecord<Record> && std::constructible_from<Record, Fields...>
  constexpr explicit MIDIEvent(std::in_place_type_t<Record>, Fields&&... fields) : kind_(kindOf<Record>) {
    if (sizeof(Record) < sizeof(ChanVoiceBits) && !std::is_constant_evaluated()) {
      // So that what encodes events of several kinds at once finds something to look at.
      std::memset(static_cast<void*>(&storage_), 0, sizeof storage_);
    }
    storage_.template construct<Record>(std::forward<Fields>(fields)...);
  }

  constexpr MIDIEvent(const MIDIEvent& other) noexcept;
  constexpr MIDIEvent(MIDIEvent&& other) noexcept;
  constexpr MIDIEvent& operator=(const MIDIEvent& other) noexcept;
  constexpr MIDIEvent& operator=(MIDIEvent&& other) noexcept;
  constexpr ~MIDIEvent();

  // One factory for each case, to be called like a function: MIDIEvent::stop(2_u4).
  static constexpr detail::EventFactory<MIDIEvent, core::NoteOn> noteOn{};
  static constexpr detail::EventFactory<MIDIEvent, core::NoteOff> noteOff{};
  static constexpr detail::EventFactory<MIDIEvent, core::NoteCC> noteCC{};
  static constexpr detail::EventFactory<MIDIEvent, core::NotePitchBend> notePitchBend{};
  static constexpr detail::EventFactory<MIDIEvent, core::NotePressure> notePressure{};
  static constexpr detail::EventFactory<MIDIEvent, core::NoteManagement> noteManagement{};
  static constexpr detail::EventFactory<MIDIEvent, core::CC> cc{};
  static constexpr detail::EventFactory<MIDIEvent, core::ProgramChange> programChange{};
  static constexpr detail::EventFactory<MIDIEvent, core::PitchBend> pitchBend{};
  static constexpr detail::EventFactory<MIDIEvent, core::Pressure> pressure{};
  static constexpr detail::EventFactory<MIDIEvent, core::RPN> rpn{};
  static constexpr detail::EventFactory<MIDIEvent, core::NRPN> nrpn{};
  static constexpr detail::EventFactory<MIDIEvent, core::SysEx7> sysEx7{};
  static constexpr detail::EventFactory<MIDIEvent, core::UniversalSysEx7> universalSysEx7{};
  static constexpr detail::EventFactory<MIDIEvent, core::SysEx8> sysEx8{};
  static constexpr detail::EventFactory<MIDIEvent, core::UniversalSysEx8> universalSysEx8{};
  static constexpr detail::EventFactory<MIDIEvent, core::TimecodeQuarterFrame> timecodeQuarterFrame{};
  static constexpr detail::EventFactory<MIDIEvent, core::SongPositionPointer> songPositionPointer{};
  static constexpr detail::EventFactory<MIDIEvent, core::SongSelect> songSelect{};
  static constexpr detail::EventFactory<MIDIEvent, core::UnofficialBusSelect> unofficialBusSelect{};
  static constexpr detail::EventFactory<MIDIEvent, core::TuneRequest> tuneRequest{};
  static constexpr detail::EventFactory<MIDIEvent, core::TimingClock> timingClock{};
  static constexpr detail::EventFactory<MIDIEvent, core::Start> start{};
  static constexpr detail::EventFactory<MIDIEvent, core::Continue> continue_{};
  static constexpr detail::EventFactory<MIDIEvent, core::Stop> stop{};
  static constexpr detail::EventFactory<MIDIEvent, core::ActiveSensing> activeSensing{};
  static constexpr detail::EventFactory<MIDIEvent, core::SystemReset> systemReset{};
  static constexpr detail::EventFactory<MIDIEvent, core::NoOp> noOp{};
  static constexpr detail::EventFactory<MIDIEvent, core::JRClock> jrClock{};
  static constexpr detail::EventFactory<MIDIEvent, core::JRTimestamp> jrTimestamp{};

  constexpr Kind kind() const { return kind_; }

  /// Whether the payload is a `Record`.
  template <class Record>
    requires isRecord<Record>
  constexpr bool is() const {
    return kind_ == kindOf<Record>;
  }

  /// The payload if it's a `Record`, else null. It lives as long as the event keeps its case.
  template <class Record>
    requires isRecord<Record>
  constexpr const Record* as() const {
    return is<Record>() ? &storage_.template get<Record>() : nullptr;
  }
  template <class Record>
    requires isRecord<Record>
  constexpr Record* as() {
    return is<Record>() ? &storage_.template get<Record>() : nullptr;
  }

  /// Calls one of `handlers` with the payload and returns its result, as `std::visit` does: a single handler
  /// keeps what the call does to it. A record that no handler takes is an error of compilation, and so are
  /// two types of result, and a handler with a state of its own by name beside others.
  template <class... Handlers>
  constexpr auto visit(Handlers&&... handlers) const {
    return dispatch(*this, detail::visitorOf(std::forward<Handlers>(handlers)...));
  }
  /// The same with a payload that can be changed.
  template <class... Handlers>
  constexpr auto visit(Handlers&&... handlers) {
    return dispatch(*this, detail::visitorOf(std::forward<Handlers>(handlers)...));
  }

  /// Every event has a group: 0 for what came from a MIDI 1.0 byte stream, unless the caller of the parser
  /// gives another.
  constexpr UInt4 group() const;

  constexpr bool isSysEx() const { return kind_ >= Kind::sysEx7 && kind_ <= Kind::universalSysEx8; }

  /// Room that any event but a system exclusive one needs at most, in MIDI 1.0 bytes and in words.
  static constexpr std::size_t maximumShortBytes = 12;
  static constexpr std::size_t maximumShortWords = 4;

  /// The MIDI 1.0 byte form. Empty for an event that MIDI 1.0 can't express: `noteCC`, `notePitchBend`,
  /// `noteManagement`, the 8-bit system exclusive ones and the utility ones. Never fails.
  std::vector<std::uint8_t> midi1Bytes() const;
  /// Puts the same behind what `into` holds. Allocates only where `into` has to grow.
  void appendMIDI1Bytes(std::vector<std::uint8_t>& into) const;
  /// Writes the same to the beginning of `into` and gives its size; where that is larger than `into`, nothing
  /// is written. Never allocates.
  std::size_t writeMIDI1Bytes(std::span<std::uint8_t> into) const;

  /// The Universal MIDI Packets of the event. `protocol` is that of channel voice messages; those that only
  /// MIDI 2.0 has are sent in it anyway. One packet, but for long system exclusive messages, and for RPN and
  /// NRPN in MIDI 1.0, which take one for each controller. The bank of a program change isn't sent in
  /// MIDI 1.0. Never fails.
  std::vector<UMPPacket> umpWords(MIDIProtocolVersion protocol) const;
  /// Puts the words of the same packets behind what `into` holds; their message types tell them apart.
  /// Allocates only where `into` has to grow.
  void appendUMPWords(MIDIProtocolVersion protocol, std::vector<std::uint32_t>& into) const;
  /// Writes the same to the beginning of `into` and gives the number of words; where that is larger than
  /// `into`, nothing is written. Never allocates.
  std::size_t writeUMPWords(MIDIProtocolVersion protocol, std::span<std::uint32_t> into) const;

  /// One line for a log, as in "noteOn(0x3C, vel: midi1(64), chan: 0x0, group: 0x0)".
  std::string debugDescription() const;

  /// Of the same case with equal fields, values across their forms: see `ChanVoiceValue`.
  friend constexpr bool operator==(const MIDIEvent& a, const MIDIEvent& b) { return a.equals(b); }

 private:
  friend class detail::VoiceImage;

  template <class Other>
  constexpr void constructFrom(Other&& other) noexcept;
  template <class Other>
  constexpr void replaceBy(Other&& other) noexcept;
  constexpr bool equals(const MIDIEvent& other) const;

  // The one part of a system exclusive event that isn't plain memory.
  SysExData& body() { return *reinterpret_cast<SysExData*>(&storage_); }

  template <class Event, class Record>
  using Payload = std::conditional_t<std::is_const_v<Event>, const Record&, Record&>;
  template <class Event, class Visitor>
  using Outcome = std::invoke_result_t<Visitor&, Payload<Event, core::NoteOn>>;

  template <class Event, class Visitor, class... Records>
  static consteval bool handlesAll(const detail::EventStorage<Records...>*) {
    return (std::is_invocable_v<Visitor&, Payload<Event, Records>> && ...);
  }
  template <class Event, class Visitor, class... Records>
  static consteval bool givesOneType(const detail::EventStorage<Records...>*) {
    return (
        std::is_same_v<std::invoke_result_t<Visitor&, Payload<Event, Records>>, Outcome<Event, Visitor>> &&
        ...);
  }

  // What `visitor` gives for the payload of `event`, which is constant or not.
  template <class Event, class Visitor>
  static constexpr Outcome<Event, Visitor> dispatch(Event& event, Visitor&& visitor);

  Storage storage_;
  Kind kind_;
};

template <class Event, class Visitor>
constexpr MIDIEvent::Outcome<Event, Visitor> MIDIEvent::dispatch(Event& event, Visitor&& visitor) {
  constexpr const Storage* records = nullptr;
  static_assert(handlesAll<Event, Visitor>(records), "a record has no handler");
  static_assert(givesOneType<Event, Visitor>(records), "handlers give different types");
  switch (event.kind_) {
    case Kind::noteOn:
      return visitor(event.storage_.template get<NoteOn>());
    case Kind::noteOff:
      return visitor(event.storage_.template get<NoteOff>());
    case Kind::noteCC:
      return visitor(event.storage_.template get<NoteCC>());
    case Kind::notePitchBend:
      return visitor(event.storage_.template get<NotePitchBend>());
    case Kind::notePressure:
      return visitor(event.storage_.template get<NotePressure>());
    case Kind::noteManagement:
      return visitor(event.storage_.template get<NoteManagement>());
    case Kind::cc:
      return visitor(event.storage_.template get<CC>());
    case Kind::programChange:
      return visitor(event.storage_.template get<ProgramChange>());
    case Kind::pitchBend:
      return visitor(event.storage_.template get<PitchBend>());
    case Kind::pressure:
      return visitor(event.storage_.template get<Pressure>());
    case Kind::rpn:
      return visitor(event.storage_.template get<RPN>());
    case Kind::nrpn:
      return visitor(event.storage_.template get<NRPN>());
    case Kind::sysEx7:
      return visitor(event.storage_.template get<SysEx7>());
    case Kind::universalSysEx7:
      return visitor(event.storage_.template get<UniversalSysEx7>());
    case Kind::sysEx8:
      return visitor(event.storage_.template get<SysEx8>());
    case Kind::universalSysEx8:
      return visitor(event.storage_.template get<UniversalSysEx8>());
    case Kind::timecodeQuarterFrame:
      return visitor(event.storage_.template get<TimecodeQuarterFrame>());
    case Kind::songPositionPointer:
      return visitor(event.storage_.template get<SongPositionPointer>());
    case Kind::songSelect:
      return visitor(event.storage_.template get<SongSelect>());
    case Kind::unofficialBusSelect:
      return visitor(event.storage_.template get<UnofficialBusSelect>());
    case Kind::tuneRequest:
      return visitor(event.storage_.template get<TuneRequest>());
    case Kind::timingClock:
      return visitor(event.storage_.template get<TimingClock>());
    case Kind::start:
      return visitor(event.storage_.template get<Start>());
    case Kind::continue_:
      return visitor(event.storage_.template get<Continue>());
    case Kind::stop:
      return visitor(event.storage_.template get<Stop>());
    case Kind::activeSensing:
      return visitor(event.storage_.template get<ActiveSensing>());
    case Kind::systemReset:
      return visitor(event.storage_.template get<SystemReset>());
    case Kind::noOp:
      return visitor(event.storage_.template get<NoOp>());
    case Kind::jrClock:
      return visitor(event.storage_.template get<JRClock>());
    case Kind::jrTimestamp:
      return visitor(event.storage_.template get<JRTimestamp>());
  }
  __builtin_unreachable();
}

// Every record copies as memory, if the owners of a shared body are counted afterwards; the constant
// evaluator wants to know which record it is.
template <class Other>
constexpr void MIDIEvent::constructFrom(Other&& other) noexcept {
  if (std::is_constant_evaluated()) {
    dispatch(other,
             [this]<class Record>(const Record& record) { storage_.template construct<Record>(record); });
    return;
  }
  std::memcpy(static_cast<void*>(&storage_), static_cast<const void*>(&other.storage_), sizeof(Storage));
  if (isSysEx()) [[unlikely]] {
    if constexpr (std::is_lvalue_reference_v<Other>) {
      body().copiedAsMemory();
    } else {
      other.body().movedAsMemory();
    }
  }
}

template <class Other>
constexpr void MIDIEvent::replaceBy(Other&& other) noexcept {
  if (this != &other) {
    std::destroy_at(this);
    std::construct_at(this, std::forward<Other>(other));
  }
}

constexpr MIDIEvent::MIDIEvent(const MIDIEvent& other) noexcept : kind_(other.kind_) {
  constructFrom(other);
}
constexpr MIDIEvent::MIDIEvent(MIDIEvent&& other) noexcept : kind_(other.kind_) {
  constructFrom(std::move(other));
}

constexpr MIDIEvent& MIDIEvent::operator=(const MIDIEvent& other) noexcept {
  replaceBy(other);
  return *this;
}
constexpr MIDIEvent& MIDIEvent::operator=(MIDIEvent&& other) noexcept {
  replaceBy(std::move(other));
  return *this;
}

constexpr MIDIEvent::~MIDIEvent() {
  if (isSysEx()) [[unlikely]] {
    std::destroy_at(&body());
  }
}

constexpr UInt4 MIDIEvent::group() const {
  return dispatch(*this, [](const auto& record) { return record.group; });
}

constexpr bool MIDIEvent::equals(const MIDIEvent& other) const {
  return kind_ == other.kind_ && dispatch(*this, [&other]<class Record>(const Record& record) {
           return record == other.storage_.template get<Record>();
         });
}

/// Puts the MIDI 1.0 byte form of all the events behind what `into` holds, quicker than one by one. Allocates
/// only where `into` has to grow. No running status.
void appendMIDI1Bytes(std::span<const MIDIEvent> events, std::vector<std::uint8_t>& into);

/// Puts the words of all the events' packets behind what `into` holds, quicker than one by one. Allocates
/// only where `into` has to grow.
void appendUMPWords(std::span<const MIDIEvent> events, MIDIProtocolVersion protocol,
                    std::vector<std::uint32_t>& into);

static_assert(sizeof(MIDIEvent) == 28);
static_assert(MIDIEvent::kindOf<MIDIEvent::JRTimestamp> == MIDIEvent::Kind::jrTimestamp);
static_assert(MIDIEvent::kindOf<MIDIEvent::SysEx7> == MIDIEvent::Kind::sysEx7);

}  // namespace midikit::core

/// Of the case and of the fields as they are held.
template <>
struct std::hash<midikit::core::MIDIEvent> {
  std::size_t operator()(const midikit::core::MIDIEvent& event) const noexcept;
};
