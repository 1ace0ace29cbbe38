#pragma once

#include <optional>
#include <string>
#include <vector>

#include "device/platform/UsbBus.hpp"

namespace karvex::device {

/// A device node of a board, and whether this user could use it.
struct SurveyedNode {
  std::string path;      ///< "/dev/ttyACM0"
  std::string obstacle;  ///< why it can't be opened, and whose it is; empty if it can
  std::string holders;   ///< the programs that have it open, as far as this user may look; empty if none
  std::optional<bool>
      isTagged;  ///< the rules have handed it to the user at the machine; absent without udevd, and for sound
};

/// A board as it is on the bus at this moment.
struct SurveyedBoard {
  std::string place;  ///< the ports on the way to it: "1-1.2"
  UsbDevice device;
  std::vector<SurveyedNode> nodes;
  std::optional<bool> isKeptFromModemManagers;  ///< absent without udevd, as the next
  std::optional<bool> isKeptFromMtpProbes;
};

/// Looks at the boards without touching them: opens no node, and sends nothing.
class BoardSurvey {
 public:
  virtual ~BoardSurvey() = default;

  /// All USB devices of the boards' vendor, in bus order; none if the walk can't be made.
  /// Thread-safe: yes.
  /// Realtime-safe: no, it reads files of the system.
  virtual std::vector<SurveyedBoard> boards() = 0;
};

}  // namespace karvex::device
