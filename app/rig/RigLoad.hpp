#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "app/rig/Timeline.hpp"
#include "foundation/run/Runtime.hpp"
#include "rig/VirtualBus.hpp"

namespace karvex::app {

/// One load of one file onto one board of the bus.
struct LoadRequest {
  std::filesystem::path file;
  std::string mcu;
  /// The board to put into its bootloader; empty if there is none of that kind.
  std::string serialNumber;
  /// Called whenever the load may have moved on, on the thread in work.
  std::function<void()> onProgress;
  /// Called before the loader prints something.
  std::function<void()> beforeText;
};

/// What came out of it.
struct LoadOutcome {
  std::string result;  ///< the loader's answer; empty if the process ended before it gave one
  std::uint32_t loadStatus = 0;
  std::int32_t bytesRead = 0;
  int failedOpens = 0;
  std::uint32_t reports = 0;  ///< blocks that the board took
  std::uint32_t blocksToSend = 0;
  bool bootReport = false;
  bool flashMatches = false;
  bool isBack = false;  ///< the board's serial interface came back behind the boot report
  std::string serialNumber;
  std::string mcu;
  std::string boardState;
  foundation::TimePoint start;
  std::vector<Timeline::Entry> timeline;

  /// The board holds exactly what the file says.
  bool isLoaded() const;
};

/// Asks the board for its bootloader, loads the file and watches until the load has ended and the board is
/// back (or has had its chance). Called on the runtime's main thread, outside runMain(). If the loader ends
/// the process, `beforeEnd` gets what is known until then.
LoadOutcome runLoad(foundation::Runtime& runtime, rig::VirtualBus& bus, const LoadRequest& request,
                    const std::function<void(const LoadOutcome&)>& beforeEnd);

}  // namespace karvex::app
