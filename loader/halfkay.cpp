#include "loader/halfkay.hpp"

#include <array>
#include <span>

#include "loader/halfkay_report.hpp"
#include "loader/load_status.hpp"
#include "loader/platform/hid.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {
namespace {

using std::chrono::milliseconds;

/// A board needs a moment between its serial life and its bootloader life; asking earlier finds nothing.
constexpr milliseconds pause_before_open{2000};
/// The bootloader needs a moment to put a block into flash before it listens again.
constexpr milliseconds pause_after_report{10};
constexpr milliseconds boot_report_time_out{500};
constexpr milliseconds reset_report_time_out{1000};
/// Lets the reset report reach the board before its device is closed under it.
constexpr milliseconds pause_before_close_after_reset{100};
/// Lets a board that was reset come back with its serial port; taken without a board too.
constexpr milliseconds pause_after_reset{2000};

hid_calls hid;

/// The device that was created and opened, or null.
hid_device* opened_device = nullptr;
/// The device that reports go to, or null.
hid_device* iokit_teensy_reference = nullptr;

/// Opens the first board listed and gives it back, or null.
hid_device* find_halfkay_device() {
  hid_device* device = nullptr;
  switch (hid.find_first(hid.context, PJRC_VENDOR_ID, halfkay_product_id, &device)) {
    case hid_search::unavailable:
      host_log(">>> KARVEX : Could not create USB devices dictionary => Abort");
      return nullptr;
    case hid_search::none:
      host_log("> KARVEX : Open device attempt => No device detected in halfkay mode");
      return nullptr;
    case hid_search::found:
      break;
  }
  opened_device = device;
  if (device == nullptr) {
    return nullptr;
  }
  const hid_access access = hid.open(hid.context, device);
  if (access != hid_access::opened) {
    opened_device = nullptr;
    if (access == hid_access::not_permitted) {
      set_load_status(LOAD_STATUS_ERROR_PERMISSION);
    }
    host_log(">>> KARVEX : Device Open failed => Abort!");
    return nullptr;
  }
  host_log("> KARVEX : Device Open successfull!");
  return device;
}

void close_if_opened(hid_device* device) {
  if (opened_device == device && device != nullptr) {
    hid.close(hid.context, device);
  }
  opened_device = nullptr;
}

}  // namespace

void install_hid(const hid_calls& calls) {
  hid = calls;
}

halfkay_open_result open_halfkay_device() {
  close_halfkay_device();
  host_sleep(pause_before_open);
  host_log("> KARVEX : Fetching the First Teensy in Halfkay mode : VID:0x16C0 / PID:0x0478");
  iokit_teensy_reference = find_halfkay_device();
  if (iokit_teensy_reference != nullptr) {
    host_log("> KARVEX : Teensy reference found!");
    return halfkay_open_result::opened;
  }
  if (get_load_status() == LOAD_STATUS_ERROR_PERMISSION) {
    host_log("> KARVEX : Not Permitted => Abort!");
    return halfkay_open_result::not_permitted;
  }
  host_log("> KARVEX : Teensy reference not set yet");
  return halfkay_open_result::not_found;
}

const char* refused_halfkay_node() {
  return hid.refused_node == nullptr ? "" : hid.refused_node(hid.context);
}

void close_halfkay_device() {
  if (iokit_teensy_reference == nullptr) {
    return;
  }
  close_if_opened(iokit_teensy_reference);
  iokit_teensy_reference = nullptr;
  host_log("> KARVEX : Teensy closed");
}

bool write_report(const std::uint8_t* report, std::size_t length, milliseconds time_out) {
  if (iokit_teensy_reference == nullptr) {
    host_print(">>> iokit_teensy_reference lost!\n");
    return false;
  }
  const auto start = host_now();
  do {
    if (host_now() - start >= time_out) {
      host_print(">>> Timeout error!\n");
      return false;
    }
  } while (hid.set_output_report(hid.context, iokit_teensy_reference, report, length) != hid_delivery::sent);
  host_sleep(pause_after_report);
  return true;
}

bool send_boot_report(std::uint8_t* buffer, std::size_t length) {
  host_log("> KARVEX : Send BOOT Snippet to device....");
  build_boot_report(std::span(buffer, length));
  return write_report(buffer, length, boot_report_time_out);
}

int reset_halfkay_device() {
  host_log("> KARVEX : Check presence of a device in halfkay mode");
  iokit_teensy_reference = find_halfkay_device();
  if (iokit_teensy_reference == nullptr) {
    host_log("> KARVEX : Resettor did not detect device in halfkay mode (OK)");
    host_sleep(pause_after_reset);
    return 0;
  }
  host_log("> KARVEX : Halfkay mode device detected before programming attempt. Trying to reset...");
  std::array<std::uint8_t, longest_report> report;
  build_boot_report(report);
  write_report(report.data(), report.size(), reset_report_time_out);
  host_sleep(pause_before_close_after_reset);
  close_if_opened(iokit_teensy_reference);
  host_sleep(pause_after_reset);
  host_log("> KARVEX : Reset sent to device");
  return 0;
}

}  // namespace karvex::loader
