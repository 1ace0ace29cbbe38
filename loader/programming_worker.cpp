#include "loader/programming_worker.hpp"

#include <array>
#include <atomic>
#include <chrono>

#include "loader/firmware_image.hpp"
#include "loader/halfkay.hpp"
#include "loader/halfkay_report.hpp"
#include "loader/load_status.hpp"
#include "loader/mcu_table.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {
namespace {

using std::chrono::milliseconds;

/// The first block makes the bootloader erase the whole flash before it takes anything.
constexpr milliseconds first_block_time_out{5000};
constexpr milliseconds later_block_time_out{2000};
/// Lets the board finish its last block before it is told to reboot.
constexpr milliseconds pause_before_boot{1000};

std::atomic<std::uint32_t> blocks_sent = 0;
std::atomic<std::uint32_t> blocks_to_send = 0;

using report_buffer = std::array<std::uint8_t, longest_report>;

/// The first block always goes out, since it is what makes the board erase. A later one goes only if it would
/// leave something else than erased flash.
bool must_be_sent(std::uint32_t address, std::uint32_t size) {
  return address == 0 || (block_has_data(address, size) && !block_is_blank(address, size));
}

std::uint32_t count_blocks_to_send(std::uint32_t end, std::uint32_t size) {
  std::uint32_t count = 0;
  for (std::uint32_t address = 0; address < end; address += size) {
    count += must_be_sent(address, size) ? 1U : 0U;
  }
  return count;
}

void fail(load_job& job, std::uint32_t status) {
  set_load_status(status);
  const std::lock_guard guard(job.lock);
  job.error_flag = true;
}

bool send_blocks(load_job& job, report_buffer& report) {
  const auto layout = layout_for(code_size, block_size);
  if (!layout) {
    fail(job, LOAD_STATUS_ERROR_FILE_FORMAT);
    host_log(">>> KARVEX : Error -> Unkown code/block size => Status = LOAD_STATUS_ERROR_FILE_FORMAT");
    return false;
  }
  const auto end = static_cast<std::uint32_t>(code_size);
  const auto size = static_cast<std::uint32_t>(block_size);
  blocks_to_send = count_blocks_to_send(end, size);
  for (std::uint32_t address = 0; address < end; address += size) {
    if (!must_be_sent(address, size)) {
      continue;
    }
    build_block_report(*layout, address, report);
    if (!write_report(report.data(), job.report_length,
                      address == 0 ? first_block_time_out : later_block_time_out)) {
      host_log(">>> KARVEX : Error writing to Teensy\n");
      fail(job, LOAD_STATUS_ERROR_PROGRAM);
      return false;
    }
    ++blocks_sent;
  }
  return true;
}

void tell_rebooting() {
  set_load_status(LOAD_STATUS_REBOOTING);
  host_log("> KARVEX : Programming sucessful : Rebooting....");
}

void tell_success() {
  set_load_status(LOAD_STATUS_SUCCESS);
  host_log("> KARVEX : Status = LOAD_STATUS_SUCCESS!");
}

}  // namespace

void programming_worker(load_job& job) {
  report_buffer report;
  if (!send_blocks(job, report)) {
    close_halfkay_device();
    return;
  }
  host_run_on_main_queue(tell_rebooting);
  host_sleep(pause_before_boot);
  send_boot_report(report.data(), job.report_length);
  close_halfkay_device();
  host_log("> KARVEX : Reboot successful!");
  host_run_on_main_queue(tell_success);
}

load_progress get_load_progress() {
  return {blocks_sent.load(), blocks_to_send.load()};
}

void reset_load_progress() {
  blocks_sent = 0;
  blocks_to_send = 0;
}

}  // namespace karvex::loader
