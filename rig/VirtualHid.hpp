#pragma once

#include "foundation/run/Clock.hpp"
#include "loader/platform/hid.hpp"
#include "rig/VirtualBus.hpp"

namespace karvex::rig {

/// The boards of a virtual bus as the HID devices that the loader programs.
class VirtualHid {
 public:
  /// Both must outlive this object.
  VirtualHid(VirtualBus& bus, foundation::Clock& clock) : bus_(bus), clock_(clock) {}

  /// The calls to install into the loader; this object must stay where it is meanwhile.
  loader::hid_calls calls();

 private:
  loader::hid_search findFirst(std::uint16_t vendor, std::uint16_t product, loader::hid_device** device);
  loader::hid_delivery setOutputReport(const VirtualBus::HalfKayBoard& to,
                                       std::span<const std::uint8_t> report);

  VirtualBus& bus_;
  foundation::Clock& clock_;
};

}  // namespace karvex::rig
