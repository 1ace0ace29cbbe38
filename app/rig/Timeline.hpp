#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "foundation/run/Clock.hpp"

namespace karvex::app {

/// What happened and when. Any thread may add.
class Timeline {
 public:
  struct Entry {
    foundation::TimePoint at;
    std::string event;
  };

  void add(foundation::TimePoint at, std::string event);

  /// The entries in the order of their times; those of the same time in the order in which they were added.
  std::vector<Entry> entries() const;

 private:
  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

}  // namespace karvex::app
