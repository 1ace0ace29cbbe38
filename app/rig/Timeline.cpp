#include "app/rig/Timeline.hpp"

#include <algorithm>
#include <utility>

namespace karvex::app {

void Timeline::add(foundation::TimePoint at, std::string event) {
  const std::lock_guard lock(mutex_);
  // A board tells of a change only when somebody next looks at it, so entries can come late.
  const auto place =
      std::upper_bound(entries_.begin(), entries_.end(), at,
                       [](foundation::TimePoint time, const Entry& entry) { return time < entry.at; });
  entries_.insert(place, {at, std::move(event)});
}

std::vector<Timeline::Entry> Timeline::entries() const {
  const std::lock_guard lock(mutex_);
  return entries_;
}

}  // namespace karvex::app
