#pragma once

#include <cstdint>
#include <string_view>

namespace karvex::upgrade {

/// How far the load under way has come, for showing only. Any thread, no lock: a front asks while the main
/// queue is blocked.
struct LoadProgress {
  std::uint32_t blocksSent = 0;
  std::uint32_t blocksToSend = 0;  ///< 0 until blocks are being sent

  bool isKnown() const { return blocksToSend != 0; }
  bool operator==(const LoadProgress&) const = default;
};

LoadProgress currentLoadProgress();

/// What the user reads for the status of a device; empty for a number that is no status.
std::string_view statusText(std::uint32_t status);

/// True while a device of that status is being programmed, so that its load's progress is worth showing.
bool isProgramming(std::uint32_t status);

}  // namespace karvex::upgrade
