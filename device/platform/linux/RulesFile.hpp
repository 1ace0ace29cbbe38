#pragma once

#include <filesystem>

#include "device/platform/DeviceRules.hpp"

namespace karvex::device {

/// The file of our udev rules that counts.
struct RulesFile {
  std::filesystem::path path;  ///< empty if there is none where udev looks
  bool isOff = false;          ///< the file is empty, as who wants no rules makes it

  RulesState state() const { return path.empty() || isOff ? RulesState::missing : RulesState::there; }
};

/// Looks into the folders of udev(7) below `root`, which is another one than "/" for tests.
/// Thread-safe: yes.
/// Realtime-safe: no, it reads directories.
RulesFile findRulesFile(const std::filesystem::path& root = "/");

}  // namespace karvex::device
