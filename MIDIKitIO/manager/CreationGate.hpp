#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "foundation/Gate.hpp"
#include "foundation/Runtime.hpp"

namespace midikit::io {

/// Keeps the answer to "is this endpoint ours?" from being given while one of ours is half made: the platform
/// announces it before its unique ID is known here. Who makes an endpoint never waits; who asks does. All
/// operations may be called on any thread.
class CreationGate {
 public:
  /// The runtime must outlive the gate.
  explicit CreationGate(karvex::foundation::Runtime& runtime) : runtime_(runtime) {}
  CreationGate(const CreationGate&) = delete;
  CreationGate& operator=(const CreationGate&) = delete;

  /// Does `work`, which makes an endpoint. One at a time; what it calls must not look().
  template <class Work>
  void create(const Work& work) {
    const Creation creation(*this);
    work();
  }

  /// Does `work`, which compares the platform's endpoints with ours, while no creation is under way; again if
  /// one began meanwhile.
  template <class Work>
  void look(const Work& work) const {
    std::uint64_t begun = 0;
    do {
      begun = awaitEnd();
      work();
    } while (begun != count());
  }

 private:
  class Creation {
   public:
    explicit Creation(CreationGate& gate) : gate_(gate) { gate_.begin(); }
    ~Creation() { gate_.end(); }
    Creation(const Creation&) = delete;
    Creation& operator=(const Creation&) = delete;

   private:
    CreationGate& gate_;
  };

  void begin();
  void end();
  /// Waits for the creation that is under way. Returns how many have begun so far.
  std::uint64_t awaitEnd() const;
  std::uint64_t count() const;

  karvex::foundation::Runtime& runtime_;
  mutable std::mutex mutex_;
  std::uint64_t begun_ = 0;
  bool isUnderWay_ = false;
  mutable std::vector<std::shared_ptr<karvex::foundation::Gate>> awaited_;  ///< of those who wait for the end
};

}  // namespace midikit::io
