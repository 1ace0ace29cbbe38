#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace karvex::foundation {

/// What waits for its turn, first in, first out. It keeps its memory, so a line in steady use stops
/// allocating. Not locked.
template <typename Entry>
class WaitingLine {
 public:
  bool empty() const { return first_ == entries_.size(); }
  std::size_t size() const { return entries_.size() - first_; }

  void push(Entry entry) {
    // What has been taken makes room before the line grows. It is at least half of it, so an entry moves once
    // for each one that is taken, at most.
    if (entries_.size() == entries_.capacity() && first_ > 0 && first_ >= entries_.size() / 2) {
      entries_.erase(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(first_));
      first_ = 0;
    }
    entries_.push_back(std::move(entry));
  }

  /// Not to be called on an empty line.
  Entry pop() {
    Entry entry = std::move(entries_[first_++]);
    if (empty()) {
      clear();
    }
    return entry;
  }

  void clear() {
    entries_.clear();
    first_ = 0;
  }

 private:
  std::vector<Entry> entries_;
  std::size_t first_ = 0;  ///< of those that wait
};

}  // namespace karvex::foundation
