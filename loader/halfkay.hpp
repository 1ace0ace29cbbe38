#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

/// Talking to a board in its HalfKay bootloader: find, open, send reports, close, reset. One board at a time;
/// the calls come from the main thread and from the programming worker, never from both at once.
namespace karvex::loader {

inline constexpr std::uint16_t PJRC_VENDOR_ID = 0x16C0;
inline constexpr std::uint16_t halfkay_product_id = 0x0478;

enum class halfkay_open_result : std::int32_t {
  not_permitted = -1,  ///< a board is there, and the system refuses this user; the load status is 12
  not_found = 0,
  opened = 1,
};

/// Closes what is open, waits 2 s and opens the first board listed in HalfKay mode. Blocks.
halfkay_open_result open_halfkay_device();

/// The path of the node that the system refused last, for a user who is to do something about it; empty if
/// the platform has none to name. Main thread, with no load running.
const char* refused_halfkay_node();

/// Closes the open board. Does nothing without one.
void close_halfkay_device();

/// Offers a report to the open board until it takes it or `time_out` is over. True when the report went out.
bool write_report(const std::uint8_t* report, std::size_t length, std::chrono::milliseconds time_out);

/// Makes `buffer` the report that reboots the board into its firmware, and sends it. Result as write_report.
bool send_boot_report(std::uint8_t* buffer, std::size_t length);

/// Reboots the first board listed in HalfKay mode, if there is one. Blocks for 2 s and more; always gives 0.
/// To be called on the main thread, with no load running.
int reset_halfkay_device();

}  // namespace karvex::loader
