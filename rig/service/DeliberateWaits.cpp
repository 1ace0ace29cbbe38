#include "rig/service/DeliberateWaits.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace karvex::rig {

/// One wait. What ends it comes as an event on a descriptor, so that one poll can see that and the peer's
/// leaving.
class DeliberateWaits::Wait {
 public:
  Wait(foundation::OutsideWork& outsideWork, std::uint64_t port)
      : outsideWork_(outsideWork), port_(port), event_(eventfd(0, EFD_CLOEXEC)) {
    if (event_ < 0) {
      throw std::system_error(errno, std::generic_category(), "No event descriptor");
    }
  }
  ~Wait() { close(event_); }
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;

  /// Time may go on without the peer, unless the wait is over already.
  void pausePeer() {
    const std::lock_guard lock(mutex_);
    if (!isOver_) {
      outsideWork_.pause(port_);
    }
  }

  /// Ends the wait and makes time stand still for the peer, before the peer can notice anything.
  void end(bool timeIsUp) {
    const std::lock_guard lock(mutex_);
    if (isOver_) {
      return;
    }
    isOver_ = true;
    timeIsUp_ = timeIsUp;
    outsideWork_.resume(port_);
    eventfd_write(event_, 1);
  }

  /// Blocks until the end, or until the peer has closed its end of the socket. True if the time is up.
  bool block(int socket) {
    std::array<pollfd, 2> watched = {{{event_, POLLIN, 0}, {socket, POLLRDHUP, 0}}};
    while (poll(watched.data(), watched.size(), -1) < 0 && errno == EINTR) {
    }
    const std::lock_guard lock(mutex_);
    // A peer that has left tells its runtime so by itself; its port may be another's by now.
    isOver_ = true;
    return timeIsUp_;
  }

 private:
  foundation::OutsideWork& outsideWork_;
  const std::uint64_t port_;
  const int event_;
  std::mutex mutex_;
  bool isOver_ = false;
  bool timeIsUp_ = false;
};

bool DeliberateWaits::wait(Peer peer, std::optional<std::chrono::milliseconds> span) {
  const auto wait = begin(peer.port);
  if (span) {
    // Posted while the peer's work still keeps time from going on, so the wait begins now and is exact.
    runtime_.globalQueue().postAt(runtime_.clock().now() + *span, [wait] { wait->end(/*timeIsUp=*/true); });
  }
  wait->pausePeer();
  const bool timeIsUp = wait->block(peer.socket);
  const std::lock_guard lock(mutex_);
  waits_.erase(wait);
  return timeIsUp;
}

std::shared_ptr<DeliberateWaits::Wait> DeliberateWaits::begin(std::uint64_t port) {
  auto wait = std::make_shared<Wait>(runtime_.outsideWork(), port);
  const std::lock_guard lock(mutex_);
  if (isEnding_) {
    wait->end(/*timeIsUp=*/false);
  } else {
    waits_.insert(wait);
  }
  return wait;
}

void DeliberateWaits::endAll() {
  const std::lock_guard lock(mutex_);
  isEnding_ = true;
  for (const auto& wait : waits_) {
    wait->end(/*timeIsUp=*/false);
  }
}

}  // namespace karvex::rig
