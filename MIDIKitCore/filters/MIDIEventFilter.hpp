#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/filters/ChanVoiceTypes.hpp"
#include "MIDIKitCore/filters/MIDIEventGroupsFilter.hpp"
#include "MIDIKitCore/filters/MIDIEventTypesFilter.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// Turns a list of events into the list of those that pass, each judged by itself: a sum type of the filters
/// there are. An immutable value that can be compared, hashed and stored as configuration; any thread.
///
/// `MIDIEventFilter::chanVoice(ChanVoiceTypes::keepChannel(1_u4)).apply(events)`
class MIDIEventFilter {
 public:
  using Alternative = std::variant<ChanVoiceTypes, SysExTypes, SysCommonTypes, SysRealTimeTypes, UtilityTypes,
                                   MIDIEventGroupsFilter>;

  static MIDIEventFilter chanVoice(ChanVoiceTypes types) { return MIDIEventFilter(std::move(types)); }
  static MIDIEventFilter sysEx(SysExTypes types) { return MIDIEventFilter(types); }
  static MIDIEventFilter sysCommon(SysCommonTypes types) { return MIDIEventFilter(types); }
  static MIDIEventFilter sysRealTime(SysRealTimeTypes types) { return MIDIEventFilter(types); }
  static MIDIEventFilter utility(UtilityTypes types) { return MIDIEventFilter(types); }

  /// Events of this group.
  static MIDIEventFilter group(UInt4 group) { return MIDIEventFilter(MIDIEventGroupsFilter::group(group)); }
  /// Events of one of these groups.
  static MIDIEventFilter groups(std::vector<UInt4> groups) {
    return MIDIEventFilter(MIDIEventGroupsFilter::groups(std::move(groups)));
  }

  const Alternative& alternative() const { return alternative_; }

  /// Whether the filter lets an event pass.
  bool passes(const MIDIEvent& event) const;

  /// A new list of the events that pass, in their order, made in one pass.
  std::vector<MIDIEvent> apply(std::span<const MIDIEvent> events) const;

  bool operator==(const MIDIEventFilter&) const = default;

 private:
  explicit MIDIEventFilter(Alternative alternative) : alternative_(std::move(alternative)) {}

  Alternative alternative_;
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::MIDIEventFilter> {
  std::size_t operator()(const midikit::core::MIDIEventFilter& filter) const;
};
