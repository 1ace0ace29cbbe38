#pragma once

#include <map>
#include <mutex>
#include <string>

#include "device/platform/TerminalNode.hpp"
#include "rig/VirtualBus.hpp"

namespace karvex::rig {

/// The serial ports of the boards on a virtual bus. A port is there while its board runs its firmware; it
/// belongs to one opener at a time. Setting its line speed reaches the board. No data come in, and what is
/// written goes nowhere. All operations may be called on any thread.
class VirtualTerminals final : public device::TerminalNodes {
 public:
  /// The bus must outlive this object, and this object the nodes that it opened.
  explicit VirtualTerminals(VirtualBus& bus) : bus_(bus) {}

  device::OpenedTerminal open(const std::string& path, device::PortMode mode) override;

  /// Another program takes the port of the board with that serial number, or gives it back.
  void occupy(const std::string& serialNumber, const std::string& program);
  void vacate(const std::string& serialNumber);

 private:
  class Node;

  VirtualBus& bus_;
  std::mutex mutex_;
  std::map<std::string, std::string> holders_;  ///< by serial number
};

}  // namespace karvex::rig
