#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

#include "foundation/run/Runtime.hpp"

namespace karvex::rig {

/// Lets the peers of a server wait on purpose, in the runtime's time, while the threads that serve them wait
/// for real. Peers are known to the runtime's outside work by the number of their port. All operations may be
/// called on any thread, of the runtime or not.
class DeliberateWaits {
 public:
  /// The runtime must outlive this object.
  explicit DeliberateWaits(foundation::Runtime& runtime) : runtime_(runtime) {}
  DeliberateWaits(const DeliberateWaits&) = delete;
  DeliberateWaits& operator=(const DeliberateWaits&) = delete;

  struct Peer {
    int socket;
    std::uint64_t port;
  };

  /// Blocks the calling thread until `span` of the runtime's time is over, and gives true. Gives false as
  /// soon as the peer closes its end, or the waits are ended. Without a span it waits for one of these.
  bool wait(Peer peer, std::optional<std::chrono::milliseconds> span);

  /// Ends the waits that there are, and each that comes later. Time stands still for their peers again.
  void endAll();

 private:
  class Wait;

  std::shared_ptr<Wait> begin(std::uint64_t port);

  foundation::Runtime& runtime_;
  std::mutex mutex_;
  bool isEnding_ = false;
  std::set<std::shared_ptr<Wait>> waits_;
};

}  // namespace karvex::rig
