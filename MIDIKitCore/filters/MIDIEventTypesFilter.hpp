#pragma once

#include <cstddef>
#include <functional>

#include "MIDIKitCore/events/MIDIEventFamily.hpp"
#include "MIDIKitCore/events/MIDIEventTypeSet.hpp"
#include "MIDIKitCore/filters/MIDIEventFilterCriteria.hpp"
#include "MIDIKitCore/filters/MIDIEventFilterRule.hpp"

namespace midikit::core {

/// A filter on the types of one family. `only...` lets nothing else pass; `keep...` and `drop...` leave
/// events of other families alone.
template <MIDIEventFamilyType Type>
class MIDIEventTypesFilter : public MIDIEventFilterRule<IsOfFamily<Type>, IsOfType<Type>, IsOfTypes<Type>> {
 public:
  using Set = MIDIEventTypeSet<Type>;

  static MIDIEventTypesFilter onlyType(Type type) { return {Verb::only, IsOfType<Type>{type}}; }
  static MIDIEventTypesFilter onlyTypes(Set types) { return {Verb::only, IsOfTypes<Type>{types}}; }
  static MIDIEventTypesFilter keepType(Type type) { return {Verb::keep, IsOfType<Type>{type}}; }
  static MIDIEventTypesFilter keepTypes(Set types) { return {Verb::keep, IsOfTypes<Type>{types}}; }
  static MIDIEventTypesFilter dropType(Type type) { return {Verb::drop, IsOfType<Type>{type}}; }
  static MIDIEventTypesFilter dropTypes(Set types) { return {Verb::drop, IsOfTypes<Type>{types}}; }

  /// The family alone.
  static MIDIEventTypesFilter only() { return {Verb::only, IsOfFamily<Type>{}}; }
  /// All but the family.
  static MIDIEventTypesFilter drop() { return {Verb::drop, IsOfFamily<Type>{}}; }

  bool operator==(const MIDIEventTypesFilter&) const = default;

 private:
  using Verb = MIDIEventFilterVerb;
  using Rule = MIDIEventFilterRule<IsOfFamily<Type>, IsOfType<Type>, IsOfTypes<Type>>;
  using Rule::Rule;
};

using SysExTypes = MIDIEventTypesFilter<SysExType>;
using SysCommonTypes = MIDIEventTypesFilter<SysCommonType>;
using SysRealTimeTypes = MIDIEventTypesFilter<SysRealTimeType>;
using UtilityTypes = MIDIEventTypesFilter<UtilityType>;

}  // namespace midikit::core

template <class Type>
struct std::hash<midikit::core::MIDIEventTypesFilter<Type>> {
  std::size_t operator()(const midikit::core::MIDIEventTypesFilter<Type>& filter) const {
    return filter.hash();
  }
};
