#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <span>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/detail/FieldHash.hpp"
#include "MIDIKitCore/filters/MIDIEventFilterCriteria.hpp"

namespace midikit::core {

/// What becomes of an event: `only` and `keep` let those pass that match and drop those that don't, and
/// `drop` does the opposite. Events outside the scope are dropped by `only` alone.
enum class MIDIEventFilterVerb : std::uint8_t { only, keep, drop };

constexpr bool passes(MIDIEventFilterVerb verb, MIDIEventMatch match) {
  switch (verb) {
    case MIDIEventFilterVerb::only:
      return match == MIDIEventMatch::matching;
    case MIDIEventFilterVerb::keep:
      return match != MIDIEventMatch::differing;
    case MIDIEventFilterVerb::drop:
      return match != MIDIEventMatch::matching;
  }
  return false;
}

/// A verb and one of several criteria: what all filters are made of. An immutable value; any thread. The
/// named factories of the concrete filters make one.
template <class... Criteria>
class MIDIEventFilterRule {
 public:
  using Criterion = std::variant<Criteria...>;

  MIDIEventFilterVerb verb() const { return verb_; }
  const Criterion& criterion() const { return criterion_; }

  /// Whether the filter lets an event pass.
  bool passes(const MIDIEvent& event) const {
    return withTest([&event](const auto& test) { return test(event); });
  }

  /// A new list of the events that pass, in their order.
  std::vector<MIDIEvent> apply(std::span<const MIDIEvent> events) const {
    std::vector<MIDIEvent> passing;
    passing.reserve(events.size());
    withTest([&](const auto& test) { std::ranges::copy_if(events, std::back_inserter(passing), test); });
    return passing;
  }

  std::size_t hash() const {
    const auto hashOfField = []<class OneCriterion>(const OneCriterion& criterion) -> std::size_t {
      if constexpr (std::is_empty_v<OneCriterion>) {
        return 0;
      } else {
        const auto& [field] = criterion;
        return hashOf(field);
      }
    };
    const std::size_t kind = criterion_.index() << 2U | static_cast<std::size_t>(verb_);
    return hashOf(kind, std::visit(hashOfField, criterion_));
  }

  bool operator==(const MIDIEventFilterRule&) const = default;

 protected:
  MIDIEventFilterRule(MIDIEventFilterVerb verb, Criterion criterion)
      : verb_(verb), criterion_(std::move(criterion)) {}

 private:
  // Gives `use` the test of an event, so that the criterion is looked up once for a whole list.
  template <class Use>
  auto withTest(Use use) const {
    return std::visit(
        [this, &use](const auto& criterion) {
          return use([verb = verb_, &criterion](const MIDIEvent& event) {
            return core::passes(verb, criterion.judge(event));
          });
        },
        criterion_);
  }

  MIDIEventFilterVerb verb_;
  Criterion criterion_;
};

}  // namespace midikit::core
