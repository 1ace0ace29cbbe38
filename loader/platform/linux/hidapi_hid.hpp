#pragma once

#include "loader/platform/hid.hpp"

namespace karvex::loader {

/// The machine's own HID devices, through hidapi's hidraw back end. A device of this table may leave the bus
/// at any moment. None of the calls throws; the host has to be installed before any of them (see host.hpp),
/// since opening a device can mean to wait for it.
hid_calls hidapi_hid_calls();

}  // namespace karvex::loader
