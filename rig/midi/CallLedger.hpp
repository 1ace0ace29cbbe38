#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "rig/midi/MIDIOperation.hpp"

namespace karvex::rig {

/// Counts the calls of each operation, and makes those fail that a test wants to. All operations may be
/// called on any thread.
class CallLedger {
 public:
  /// How often the operation was called since the start or the last resetCounts(), failures included.
  std::uint64_t count(MIDIOperation operation) const;
  /// The same for all operations together.
  std::uint64_t total() const;
  void resetCounts();

  /// The next `times` calls of the operation do nothing and give `status`; one without a status gives 0 or
  /// nothing. With an `object`, only calls that have it as their first argument count. Injections for the
  /// same call are used up one after the other, in the order in which they were made.
  void failNext(MIDIOperation operation, midikit::io::OSStatus status, std::uint64_t times = 1,
                std::optional<midikit::io::MIDIObjectRef> object = std::nullopt);
  /// Drops the injected failures that haven't come up yet.
  void clearFailures();

  /// For the service: one call begins. Gives the status with which it must fail, if it must. `object` is its
  /// first argument, or 0.
  std::optional<midikit::io::OSStatus> begin(MIDIOperation operation, midikit::io::MIDIObjectRef object);

 private:
  struct Failure {
    MIDIOperation operation;
    midikit::io::OSStatus status;
    std::uint64_t times;
    std::optional<midikit::io::MIDIObjectRef> object;
  };

  mutable std::mutex mutex_;
  std::array<std::uint64_t, midiOperationCount> counts_{};
  std::vector<Failure> failures_;
};

}  // namespace karvex::rig
