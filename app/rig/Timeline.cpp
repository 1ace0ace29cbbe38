#include "app/rig/Timeline.hpp"

#include <algorithm>
#include <utility>

namespace karvex::app {

void Timeline::add(foundation::TimePoint at, std::string event) {
  const std::lock_guard lock(mutex_);
  entries_.push_back({at, std::move(event)});
}

std::vector<Timeline::Entry> Timeline::sorted() const {
  const std::lock_guard lock(mutex_);
  auto copy = entries_;
  // A board tells of a change only when somebody next looks at it, so entries can come late.
  std::stable_sort(copy.begin(), copy.end(), [](const Entry& a, const Entry& b) { return a.at < b.at; });
  return copy;
}

}  // namespace karvex::app
