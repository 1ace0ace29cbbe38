#pragma once

#include "device/platform/BoardSurvey.hpp"

namespace karvex::device {

/// The survey of this machine, from sysfs, udev's database and /proc.
class UdevBoardSurvey final : public BoardSurvey {
 public:
  std::vector<SurveyedBoard> boards() override;
};

/// Why this user can't open the node for reading and writing: "Permission denied: it belongs to root:dialout,
/// mode 660". Empty if nothing speaks against it. Opens nothing. Thread-safe: no, it looks up names of users
/// and groups. Realtime-safe: no, it reads files of the system.
std::string obstacleOf(const std::string& node);

}  // namespace karvex::device
