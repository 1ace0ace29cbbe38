#pragma once

#include <cstdint>
#include <utility>

#include "foundation/Published.hpp"

namespace karvex::upgrade {

/// The main thread's mirror of the load status, which is written on two threads and tells nobody. Main
/// thread.
class StatusManager {
 public:
  /// The last value that was seen.
  foundation::Published<std::uint32_t> statusState{0};
  /// A value waits to be acknowledged.
  foundation::Published<bool> statusChanged{false};

  /// Looks at the load status; gives `statusChanged` and `statusState` behind that.
  std::pair<bool, std::uint32_t> pollStatus();
};

}  // namespace karvex::upgrade
