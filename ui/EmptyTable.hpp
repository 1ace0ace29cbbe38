#pragma once

#include <cstddef>
#include <string>

#include "upgrade/ListRequest.hpp"

namespace karvex::ui {

/// Why there may be no row to show.
struct EmptyTable {
  upgrade::ListRequest request;
  std::size_t listed = 0;            ///< devices of the service's last good list
  std::size_t seenOnTheBus = 0;      ///< boards that the last scan found, listed or not
  bool isInProgrammingMode = false;  ///< one of them
};

/// What the body of a table without rows says: what is missing, and what to do. Empty before anything was
/// asked.
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::string textOf(const EmptyTable& table);

}  // namespace karvex::ui
