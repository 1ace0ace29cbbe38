#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace midikit::bench {

/// Makes the compiler believe that somebody reads what `memory` points to.
inline void keep(const void* memory) {
  asm volatile("" : : "r"(memory) : "memory");
}

/// The times that one thing took in all rounds, for a number of items a round.
class Series {
 public:
  Series(std::string name, std::size_t items) : name_(std::move(name)), items_(static_cast<double>(items)) {}

  template <typename Work>
  void measure(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    times_.push_back(
        std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / items_);
  }

  /// In nanoseconds for an item.
  double fastest() const { return *std::min_element(times_.begin(), times_.end()); }
  double median() const {
    auto sorted = times_;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
  }
  const std::string& name() const { return name_; }

 private:
  std::string name_;
  double items_;
  std::vector<double> times_;
};

inline void printHeader(std::string_view title, int rounds) {
  fmt::print("\n{}, {} interleaved rounds\n  {:<44} {:>13} {:>13} {:>15}\n", title, rounds, "", "median",
             "fastest", "of the bound");
}

inline void printBound(const Series& bound) {
  fmt::print("  {:<44} {:>10.3f} ns {:>10.3f} ns\n", bound.name(), bound.median(), bound.fastest());
}

inline void printAgainst(const Series& series, const Series& bound, std::string_view wanted) {
  fmt::print("  {:<44} {:>10.3f} ns {:>10.3f} ns {:>7.2f} {:>7.2f} {}\n", series.name(), series.median(),
             series.fastest(), series.median() / bound.median(), series.fastest() / bound.fastest(), wanted);
}

}  // namespace midikit::bench
