#pragma once

#include <cstddef>
#include <cstdint>

/// The seam between the loader and the platform's USB HID devices (Device Class Definition for HID 1.11).
namespace karvex::loader {

/// A device of the platform; only the platform looks inside.
struct hid_device;

enum class hid_search {
  found,        ///< a device is listed
  none,         ///< none is
  unavailable,  ///< the platform's HID service can't be asked
};

enum class hid_access {
  opened,
  not_permitted,  ///< the device is there, and the system refuses this user
  failed,
};

enum class hid_delivery {
  sent,
  refused,  ///< the device is there and didn't take the report; offering it again is sensible
  gone,     ///< the device has left the bus
};

/// What the loader asks of the platform. Every call is handed `context` back. The calls come from the main
/// thread and from the programming worker, never from both at once.
struct hid_calls {
  void* context = nullptr;
  /// Finds the first device listed with this vendor and product. When one is found, `*device` is an object
  /// for it, not yet open, or null if none could be made.
  hid_search (*find_first)(void* context, std::uint16_t vendor, std::uint16_t product,
                           hid_device** device) = nullptr;
  /// Opens the device. Unless the result is `opened`, the object has been given back and is not to be used
  /// again.
  hid_access (*open)(void* context, hid_device* device) = nullptr;
  /// Closes an open device and gives the object back.
  void (*close)(void* context, hid_device* device) = nullptr;
  /// Sends the bytes as an output report with report ID 0; the ID is not among the bytes. May block.
  hid_delivery (*set_output_report)(void* context, hid_device* device, const std::uint8_t* bytes,
                                    std::size_t length) = nullptr;
  /// The path of the node whose open was not permitted last; empty before the first. Optional.
  const char* (*refused_node)(void* context) = nullptr;
};

/// Installs the platform. To be called before anything else of the loader, and never while a load runs.
void install_hid(const hid_calls& calls);

}  // namespace karvex::loader
