#include "loader/load.hpp"

#include <array>
#include <chrono>
#include <cstring>
#include <mutex>

#include "loader/halfkay.hpp"
#include "loader/halfkay_report.hpp"
#include "loader/intel_hex.hpp"
#include "loader/load_status.hpp"
#include "loader/mcu_table.hpp"
#include "loader/platform/host.hpp"
#include "loader/programming_worker.hpp"

namespace karvex::loader {
namespace {

using std::chrono::milliseconds;

/// Gives the table a moment to show the status before the thread that draws it is blocked.
constexpr milliseconds pause_at_start{500};
constexpr milliseconds pause_between_opens{500};
constexpr int most_opens = 10;

constexpr std::size_t scheme_length = 7;  // "file://"

/// The path of the file in use, NUL-terminated.
std::array<char, 255> load_path;

load_job current_job;

void set_load_path(const char* url_text) {
  load_path.fill('\0');
  const std::size_t url_length = std::strlen(url_text);
  if (url_length > load_path.size()) {
    // With no path there is no such file, so the load ends as for any other file that can't be read.
    host_log(">>> KARVEX : File URL too long (%zu characters, at most %zu) : the file can't be read",
             url_length, load_path.size());
  } else if (url_length > scheme_length) {
    std::memcpy(load_path.data(), url_text + scheme_length, url_length - scheme_length);
  }
}

/// Opens the board, which may still be on its way into its bootloader. Null when it is open, else the answer.
const char* wait_for_halfkay_device() {
  host_log("> KARVEX : Attempt to open HID device");
  for (int failed = 0; failed < most_opens; ++failed) {
    switch (open_halfkay_device()) {
      case halfkay_open_result::opened:
        host_log("> KARVEX : Teensy HID device open successful after %d loops", failed);
        return nullptr;
      case halfkay_open_result::not_permitted:
        host_log("> KARVEX : Teensy HID manager access not permitted!");
        host_log("> KARVEX Could not open Teensy after programming mode has been set : Abort\n");
        return load_permission_error;
      case halfkay_open_result::not_found:
        host_sleep(pause_between_opens);
        break;
    }
  }
  host_log("> KARVEX Could not open Teensy after programming mode has been set : Abort\n");
  return load_open_error;
}

bool import_file() {
  host_log("> KARVEX : Status set to LOAD_STATUS_IMPORT_FILE");
  const auto bytes_read = read_intel_hex(load_path.data());
  host_log("> KARVEX : Number of bytes read : %d\n", bytes_read);
  if (bytes_read < 0) {
    set_load_status(LOAD_STATUS_ERROR_IMPORT_FILE);
    host_log("> KARVEX : Error during file import : Status = LOAD_STATUS_ERROR_IMPORT_FILE");
    return false;
  }
  return true;
}

void start_worker() {
  {
    const std::lock_guard guard(current_job.lock);
    current_job.error_flag = false;
  }
  host_run_on_global_queue([] { programming_worker(current_job); });
}

bool worker_has_failed() {
  const std::lock_guard guard(current_job.lock);
  return current_job.error_flag;
}

}  // namespace

const char* setParameters(const char* url_text, const char* mcu_name) {
  host_log("> KARVEX : Entering setParameters....");
  set_load_status(LOAD_STATUS_IMPORT_FILE);
  reset_load_progress();
  host_sleep(pause_at_start);
  set_load_path(url_text);
  select_mcu(mcu_name);
  current_job.report_length = report_length(block_size);
  if (!import_file()) {
    return load_file_error;
  }
  if (const char* failure = wait_for_halfkay_device()) {
    return failure;
  }
  set_load_status(LOAD_STATUS_PROGRAMMING);
  host_log("> KARVEX : Start programming....: Status = LOAD_STATUS_PROGRAMMING");
  start_worker();
  if (worker_has_failed()) {
    host_log("> KARVEX : Error uploading program to teensy");
    return load_upload_error;
  }
  return load_started;
}

}  // namespace karvex::loader
