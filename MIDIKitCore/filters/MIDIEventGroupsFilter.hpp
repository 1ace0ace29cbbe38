#pragma once

#include <utility>
#include <vector>

#include "MIDIKitCore/filters/MIDIEventFilterCriteria.hpp"
#include "MIDIKitCore/filters/MIDIEventFilterRule.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// A filter on the group, which every event has.
class MIDIEventGroupsFilter : public MIDIEventFilterRule<IsInGroup, IsInGroups> {
 public:
  static MIDIEventGroupsFilter group(UInt4 group) { return {MIDIEventFilterVerb::only, IsInGroup{group}}; }
  static MIDIEventGroupsFilter groups(std::vector<UInt4> groups) {
    return {MIDIEventFilterVerb::only, IsInGroups{std::move(groups)}};
  }

  bool operator==(const MIDIEventGroupsFilter&) const = default;

 private:
  using MIDIEventFilterRule::MIDIEventFilterRule;
};

}  // namespace midikit::core
