#include "bench/MIDIKitIO/Delivery.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>
#include <vector>

#include "tests/AllocationCounter.hpp"

namespace midikit::bench {
namespace {

using Clock = std::chrono::steady_clock;

/// So many may be under way: few enough for the buffers of every route.
constexpr std::size_t window = 64;

double at(const std::vector<double>& sorted, double share) {
  return sorted.empty() ? 0
                        : sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
}

}  // namespace

bool Arrivals::await(std::size_t count) const {
  const auto end = Clock::now() + std::chrono::seconds(2);
  while (count_.load(std::memory_order_acquire) < count) {
    if (Clock::now() > end) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}

DeliveryMeasurement::DeliveryMeasurement(Route route, Arrivals& arrivals, std::size_t notes)
    : route_(std::move(route)), notes_(notes) {
  for (std::size_t number = 0; number < notes_ / 100; ++number) {
    arrivals.reset();
    send(number);
    arrivals.await(1);
  }
  measureLatency(arrivals);
  measureRate(arrivals);
}

void DeliveryMeasurement::measureLatency(Arrivals& arrivals) {
  std::vector<double> times;
  times.reserve(notes_ / 10);
  for (std::size_t number = 0; number < notes_ / 10; ++number) {
    arrivals.reset();
    const auto start = Clock::now();
    send(number);
    if (!arrivals.await(1)) {
      ++lost_;
      continue;
    }
    times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
  }
  std::ranges::sort(times);
  median_ = at(times, 0.5);
  percentile99_ = at(times, 0.99);
}

void DeliveryMeasurement::measureRate(Arrivals& arrivals) {
  arrivals.reset();
  const auto allBefore = karvex::tests::allocationsSoFar();
  const auto hereBefore = karvex::tests::allocationsOfThisThread();
  const auto start = Clock::now();
  for (std::size_t number = 0; number < notes_; ++number) {
    if (number >= window && !arrivals.await(number - window + 1)) {
      break;
    }
    send(number);
  }
  lost_ += arrivals.await(notes_) ? 0U : 1U;
  const std::chrono::duration<double> taken = Clock::now() - start;
  const auto here = static_cast<double>(karvex::tests::allocationsOfThisThread() - hereBefore);
  const auto all = static_cast<double>(karvex::tests::allocationsSoFar() - allBefore);
  rate_ = static_cast<double>(notes_) / taken.count();
  sending_ = here / static_cast<double>(notes_);
  receiving_ = (all - here) / static_cast<double>(notes_);
}

void DeliveryMeasurement::print(const DeliveryMeasurement* plain) const {
  const auto ratio = [plain](double value, double other) {
    return plain != nullptr ? fmt::format(" ({:.2f})", value / other) : std::string();
  };
  fmt::print(
      "  {:<44} {:>8.1f} us{} median, {:>8.1f} us{} 99 %, {:>9.0f} events a second{}, {:.2f} + {:.2f} "
      "allocations{}\n",
      route_.name, median_, ratio(median_, plain != nullptr ? plain->median_ : 1), percentile99_,
      ratio(percentile99_, plain != nullptr ? plain->percentile99_ : 1), rate_,
      ratio(rate_, plain != nullptr ? plain->rate_ : 1), sending_, receiving_,
      lost_ > 0 ? fmt::format(", LOST {}", lost_) : "");
}

}  // namespace midikit::bench
