#pragma once

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "MIDIKitCore/controllers/Controller.hpp"
#include "MIDIKitCore/events/MIDIEventTypeSet.hpp"
#include "MIDIKitCore/events/MIDIEventTypes.hpp"
#include "MIDIKitCore/filters/MIDIEventFilterCriteria.hpp"
#include "MIDIKitCore/filters/MIDIEventFilterRule.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitCore/numbers/UInt7Range.hpp"

namespace midikit::core {

namespace detail {

using ChanVoiceRule = MIDIEventFilterRule<IsOfFamily<ChanVoiceType>, IsOfType<ChanVoiceType>,
                                          IsOfTypes<ChanVoiceType>, IsOnChannel, IsOnChannels, IsOfController,
                                          IsOfControllers, IsNoteInRange, IsNoteInRanges>;

}  // namespace detail

/// A filter on channel voice events. Types and channels judge all of them, `rpn` and `nrpn` included;
/// controllers judge `cc` events alone, and note ranges `noteOn` and `noteOff` events alone, whatever other
/// events have a controller or a note. `only...` lets nothing else pass; `keep...` and `drop...` leave what
/// they don't judge alone.
class ChanVoiceTypes : public detail::ChanVoiceRule {
 public:
  static ChanVoiceTypes onlyType(ChanVoiceType type) { return {Verb::only, IsOfType<ChanVoiceType>{type}}; }
  static ChanVoiceTypes onlyTypes(MIDIEventTypeSet<ChanVoiceType> types) {
    return {Verb::only, IsOfTypes<ChanVoiceType>{types}};
  }
  static ChanVoiceTypes onlyChannel(UInt4 channel) { return {Verb::only, IsOnChannel{channel}}; }
  static ChanVoiceTypes onlyChannels(std::vector<UInt4> channels) {
    return {Verb::only, IsOnChannels{std::move(channels)}};
  }
  static ChanVoiceTypes onlyCC(Controller controller) { return {Verb::only, IsOfController{controller}}; }
  static ChanVoiceTypes onlyCCs(std::vector<Controller> controllers) {
    return {Verb::only, IsOfControllers{std::move(controllers)}};
  }
  static ChanVoiceTypes onlyNotesInRange(UInt7Range range) { return {Verb::only, IsNoteInRange{range}}; }
  static ChanVoiceTypes onlyNotesInRanges(std::vector<UInt7Range> ranges) {
    return {Verb::only, IsNoteInRanges{std::move(ranges)}};
  }

  static ChanVoiceTypes keepType(ChanVoiceType type) { return {Verb::keep, IsOfType<ChanVoiceType>{type}}; }
  static ChanVoiceTypes keepTypes(MIDIEventTypeSet<ChanVoiceType> types) {
    return {Verb::keep, IsOfTypes<ChanVoiceType>{types}};
  }
  static ChanVoiceTypes keepChannel(UInt4 channel) { return {Verb::keep, IsOnChannel{channel}}; }
  static ChanVoiceTypes keepChannels(std::vector<UInt4> channels) {
    return {Verb::keep, IsOnChannels{std::move(channels)}};
  }
  static ChanVoiceTypes keepCC(Controller controller) { return {Verb::keep, IsOfController{controller}}; }
  static ChanVoiceTypes keepCCs(std::vector<Controller> controllers) {
    return {Verb::keep, IsOfControllers{std::move(controllers)}};
  }
  static ChanVoiceTypes keepNotesInRange(UInt7Range range) { return {Verb::keep, IsNoteInRange{range}}; }
  static ChanVoiceTypes keepNotesInRanges(std::vector<UInt7Range> ranges) {
    return {Verb::keep, IsNoteInRanges{std::move(ranges)}};
  }

  static ChanVoiceTypes dropType(ChanVoiceType type) { return {Verb::drop, IsOfType<ChanVoiceType>{type}}; }
  static ChanVoiceTypes dropTypes(MIDIEventTypeSet<ChanVoiceType> types) {
    return {Verb::drop, IsOfTypes<ChanVoiceType>{types}};
  }
  static ChanVoiceTypes dropChannel(UInt4 channel) { return {Verb::drop, IsOnChannel{channel}}; }
  static ChanVoiceTypes dropChannels(std::vector<UInt4> channels) {
    return {Verb::drop, IsOnChannels{std::move(channels)}};
  }
  static ChanVoiceTypes dropCC(Controller controller) { return {Verb::drop, IsOfController{controller}}; }
  static ChanVoiceTypes dropCCs(std::vector<Controller> controllers) {
    return {Verb::drop, IsOfControllers{std::move(controllers)}};
  }
  static ChanVoiceTypes dropNotesInRange(UInt7Range range) { return {Verb::drop, IsNoteInRange{range}}; }
  static ChanVoiceTypes dropNotesInRanges(std::vector<UInt7Range> ranges) {
    return {Verb::drop, IsNoteInRanges{std::move(ranges)}};
  }

  /// Channel voice events alone.
  static ChanVoiceTypes only() { return {Verb::only, IsOfFamily<ChanVoiceType>{}}; }
  /// All but channel voice events.
  static ChanVoiceTypes drop() { return {Verb::drop, IsOfFamily<ChanVoiceType>{}}; }

  bool operator==(const ChanVoiceTypes&) const = default;

 private:
  using Verb = MIDIEventFilterVerb;
  using MIDIEventFilterRule::MIDIEventFilterRule;
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::ChanVoiceTypes> {
  std::size_t operator()(const midikit::core::ChanVoiceTypes& filter) const { return filter.hash(); }
};
