#include "bench/MIDIKitIO/Delivery.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
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

void Arrivals::add(std::size_t count) {
  {
    const std::lock_guard lock(mutex_);
    count_ += count;
  }
  changed_.notify_all();
}

bool Arrivals::await(std::size_t count) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, std::chrono::seconds(2), [&] { return count_ >= count; });
}

void Arrivals::reset() {
  const std::lock_guard lock(mutex_);
  count_ = 0;
}

namespace {

void send(const Route& route, std::size_t number) {
  route(static_cast<std::uint8_t>(number & 0x7FU));
}

void measureLatency(const Route& route, Arrivals& arrivals, std::size_t notes, DeliveryFigures& out) {
  std::vector<double> times;
  times.reserve(notes);
  for (std::size_t number = 0; number < notes; ++number) {
    arrivals.reset();
    const auto start = Clock::now();
    send(route, number);
    if (arrivals.await(1)) {
      times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    } else {
      ++out.lost;
    }
  }
  std::ranges::sort(times);
  out.median = at(times, 0.5);
  out.percentile99 = at(times, 0.99);
}

void measureRate(const Route& route, Arrivals& arrivals, std::size_t notes, DeliveryFigures& out) {
  arrivals.reset();
  const auto allBefore = karvex::tests::allocationsSoFar();
  const auto hereBefore = karvex::tests::allocationsOfThisThread();
  const auto start = Clock::now();
  for (std::size_t number = 0; number < notes; ++number) {
    if (number >= window && !arrivals.await(number - window + 1)) {
      break;
    }
    send(route, number);
  }
  out.lost += arrivals.await(notes) ? 0 : 1;
  const std::chrono::duration<double> taken = Clock::now() - start;
  const auto here = static_cast<double>(karvex::tests::allocationsOfThisThread() - hereBefore);
  const auto all = static_cast<double>(karvex::tests::allocationsSoFar() - allBefore);
  out.rate = static_cast<double>(notes) / taken.count();
  out.sending = here / static_cast<double>(notes);
  out.receiving = (all - here) / static_cast<double>(notes);
}

}  // namespace

DeliveryFigures measureDelivery(const Route& route, Arrivals& arrivals, std::size_t notes) {
  DeliveryFigures figures;
  DeliveryFigures warmingUp;
  measureLatency(route, arrivals, notes / 100, warmingUp);
  measureLatency(route, arrivals, notes / 10, figures);
  measureRate(route, arrivals, notes, figures);
  return figures;
}

DeliveryFigures medianOf(std::span<const DeliveryFigures> rounds) {
  DeliveryFigures result;
  for (const auto figure : {&DeliveryFigures::median, &DeliveryFigures::percentile99, &DeliveryFigures::rate,
                            &DeliveryFigures::sending, &DeliveryFigures::receiving}) {
    std::vector<double> values;
    for (const auto& round : rounds) {
      values.push_back(round.*figure);
    }
    std::ranges::sort(values);
    result.*figure = at(values, 0.5);
  }
  for (const auto& round : rounds) {
    result.lost += round.lost;
  }
  return result;
}

void print(std::string_view name, const DeliveryFigures& figures, const DeliveryFigures* plain) {
  const auto ratio = [&](double DeliveryFigures::* figure) {
    return plain != nullptr ? fmt::format(" ({:.2f})", figures.*figure / (plain->*figure)) : std::string();
  };
  fmt::print(
      "  {:<39} {:>6.1f} us{} median, {:>6.1f} us{} 99 %, {:>7.0f} events a second{}, {:.2f} + {:.2f} "
      "allocations{}\n",
      name, figures.median, ratio(&DeliveryFigures::median), figures.percentile99,
      ratio(&DeliveryFigures::percentile99), figures.rate, ratio(&DeliveryFigures::rate), figures.sending,
      figures.receiving, figures.lost > 0 ? fmt::format(", LOST {}", figures.lost) : "");
}

}  // namespace midikit::bench
