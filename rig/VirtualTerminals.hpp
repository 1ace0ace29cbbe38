#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "device/platform/TerminalNode.hpp"
#include "rig/VirtualBus.hpp"

namespace karvex::rig {

/// The serial ports of the boards on a virtual bus. A port is there while its board runs its firmware; it
/// belongs to one opener at a time. A board that leaves takes its port along and comes back with another one,
/// so a node that is open meanwhile stays without a device. Setting a port's line speed reaches the board. No
/// data come in, and what is written goes nowhere. All operations may be called on any thread.
class VirtualTerminals final : public device::TerminalNodes {
 public:
  /// The bus must outlive this object, and this object the nodes that it opened.
  explicit VirtualTerminals(VirtualBus& bus) : bus_(bus) {}

  device::OpenedTerminal open(const std::string& path, device::PortMode mode) override;

  /// Another program wants the port of the board with that serial number, now and whenever the board comes
  /// back: it can't be opened until vacate(). A node that is open already isn't touched.
  void occupy(const std::string& serialNumber, const std::string& program);
  void vacate(const std::string& serialNumber);
  /// The same, but the other program comes only when a node to the port has been opened and closed here, as
  /// one does that looks for a port again and again.
  void occupyBehindUse(const std::string& serialNumber, const std::string& program);

 private:
  class Node;

  /// A board's port, from the time between two of its visits to the bootloader.
  struct Port {
    std::string serialNumber;
    std::uint32_t visitsBefore;

    auto operator<=>(const Port&) const = default;
  };

  std::optional<Port> presentPort(const std::string& serialNumber);

  VirtualBus& bus_;
  std::mutex mutex_;  ///< never held while the bus is asked
  std::set<Port> ours_;
  std::map<std::string, std::string> occupants_;  ///< other programs, by serial number
  std::map<std::string, std::string> waiting_;    ///< those that come when the port has been used
};

}  // namespace karvex::rig
