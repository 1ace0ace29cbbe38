#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace midikit::bench {

/// Counts the notes that arrive.
class Arrivals {
 public:
  /// A note has come. Any thread.
  void add(std::size_t count = 1) { count_.fetch_add(count, std::memory_order_release); }
  /// Spins until so many have come since the last reset. False after two seconds without all of them.
  bool await(std::size_t count) const;
  void reset() { count_ = 0; }

 private:
  std::atomic<std::size_t> count_ = 0;
};

/// A way from a sender to a receiver, which counts what arrives.
struct Route {
  std::string name;
  /// Sends a note-on with that number, 0 to 127.
  std::function<void(std::uint8_t note)> send;
};

/// Sends one note at a time, for the latency, then many with a few under way, for the rate; counts the
/// allocations of both. Prints a line, with ratios to `plain` if that has been measured.
class DeliveryMeasurement {
 public:
  /// `notes` is how many are sent for the rate; a tenth of them is sent for the latency.
  DeliveryMeasurement(Route route, Arrivals& arrivals, std::size_t notes);

  void print(const DeliveryMeasurement* plain) const;

 private:
  void measureLatency(Arrivals& arrivals);
  void measureRate(Arrivals& arrivals);
  void send(std::size_t number) const { route_.send(static_cast<std::uint8_t>(number & 0x7FU)); }

  Route route_;
  std::size_t notes_;
  double median_ = 0;        ///< in microseconds
  double percentile99_ = 0;  ///< in microseconds
  double rate_ = 0;          ///< events a second
  double sending_ = 0;       ///< allocations for an event on the sender's thread
  double receiving_ = 0;     ///< allocations for an event on all other threads
  std::size_t lost_ = 0;
};

}  // namespace midikit::bench
