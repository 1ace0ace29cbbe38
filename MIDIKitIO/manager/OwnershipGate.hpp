#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "foundation/run/Latch.hpp"
#include "foundation/run/Runtime.hpp"

namespace midikit::io {

/// Keeps the answer to "is this endpoint ours?" from being given while it changes: the platform announces an
/// endpoint of ours before its unique ID is known here, and still lists one that is just going. A change
/// never waits; anyone who asks does. All operations may be called on any thread.
class OwnershipGate {
 public:
  /// The runtime must outlive the gate.
  explicit OwnershipGate(karvex::foundation::Runtime& runtime) : runtime_(runtime) {}
  OwnershipGate(const OwnershipGate&) = delete;
  OwnershipGate& operator=(const OwnershipGate&) = delete;

  /// Does `work`, which makes an endpoint of ours or lets go of it. Several may overlap. What it calls must
  /// not look().
  template <class Work>
  void change(const Work& work) {
    const Change change(*this);
    work();
  }

  /// Does `work`, which compares the platform's endpoints with ours, while nothing changes; again if a change
  /// began meanwhile.
  template <class Work>
  void look(const Work& work) const {
    std::uint64_t begun = 0;
    do {
      begun = awaitEnd();
      work();
    } while (begun != count());
  }

 private:
  class Change {
   public:
    explicit Change(OwnershipGate& gate) : gate_(gate) { gate_.begin(); }
    ~Change() { gate_.end(); }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

   private:
    OwnershipGate& gate_;
  };

  void begin();
  void end();
  /// Waits until no change is under way. Returns how many have begun so far.
  std::uint64_t awaitEnd() const;
  std::uint64_t count() const;

  karvex::foundation::Runtime& runtime_;
  mutable std::mutex mutex_;
  std::uint64_t begun_ = 0;
  std::uint64_t underWay_ = 0;
  mutable std::vector<std::shared_ptr<karvex::foundation::Latch>>
      awaited_;  ///< of those who wait for the end
};

}  // namespace midikit::io
