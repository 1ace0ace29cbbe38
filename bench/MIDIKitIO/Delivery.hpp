#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string_view>

namespace midikit::bench {

/// Counts the notes that arrive.
class Arrivals {
 public:
  /// So many have come. Any thread.
  void add(std::size_t count);
  /// Sleeps until so many have come since the last reset: who spins takes a processor from the threads that
  /// are measured. False after two seconds without all of them.
  bool await(std::size_t count);
  void reset();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t count_ = 0;
};

/// A way from a sender to a receiver, which counts what arrives: sends a note-on with that number, 0 to 127.
using Route = std::function<void(std::uint8_t note)>;

/// What came of one route.
struct DeliveryFigures {
  double median = 0;        ///< of the latency, in microseconds
  double percentile99 = 0;  ///< the same
  double rate = 0;          ///< events a second
  double sending = 0;       ///< allocations for an event on the sender's thread
  double receiving = 0;     ///< allocations for an event on all other threads
  double lost = 0;          ///< waits that came to no end
};

/// Sends one note at a time, for the latency, then many with a few under way, for the rate; counts the
/// allocations of the latter. `notes` is how many are sent for the rate; a tenth of them for the latency.
DeliveryFigures measureDelivery(const Route& route, Arrivals& arrivals, std::size_t notes);

/// Of several rounds, figure by figure; the sum of what was lost.
DeliveryFigures medianOf(std::span<const DeliveryFigures> rounds);

/// A line, with ratios to `plain` unless that is null.
void print(std::string_view name, const DeliveryFigures& figures, const DeliveryFigures* plain);

}  // namespace midikit::bench
