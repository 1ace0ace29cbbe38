#pragma once

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/VirtualRuntime.hpp"
#include "loader/platform/hid.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {

/// What the loader throws out of when it wants the process to end, so that a test goes on.
struct process_ended {
  int exit_status;
};

/// The loader on a virtual clock, with a HID platform whose answers a test decides. Everything that the
/// loader does to the outside is written down with its time in milliseconds: "500 log > KARVEX : ...", "2500
/// open", ...
class loader_fixture : public testing::Test {
 protected:
  loader_fixture();

  /// Runs `on_main` on the main queue, and then the clock until a minute has passed.
  void run(std::function<void()> on_main);

  std::chrono::milliseconds elapsed() const;

  /// All that was written down, or only what has one of these beginnings behind the time.
  std::vector<std::string> events() const;
  std::vector<std::string> events(std::vector<std::string> beginnings) const;
  /// What was printed on standard output.
  std::string printed() const;

  /// A file with these bytes that lives as long as the test; its name has no special character.
  std::filesystem::path file_with(std::string_view bytes);
  static std::string url_of(const std::filesystem::path& file) { return "file://" + file.string(); }

  /// The usual host, but for jobs on the global queue: they run to their end before the call returns.
  host_calls host_with_eager_global_queue();

  // The platform's answers.
  std::function<hid_search()> on_search = [] { return hid_search::found; };
  std::function<hid_access()> on_open = [] { return hid_access::opened; };
  /// Gets the number of reports that went out before.
  std::function<hid_delivery(std::size_t)> on_report = [](std::size_t) { return hid_delivery::sent; };
  bool creates_device = true;
  /// How long a report takes that isn't sent.
  std::chrono::milliseconds failing_report_time{1};
  std::vector<std::vector<std::uint8_t>> reports;

  foundation::VirtualRuntime runtime;

 private:
  void note(const std::string& event);
  host_calls host();
  hid_calls hid();
  static loader_fixture& in(void* context) { return *static_cast<loader_fixture*>(context); }

  foundation::TimePoint start_ = runtime.clock().now();
  mutable std::mutex mutex_;
  std::vector<std::string> events_;
  std::string printed_;
  std::filesystem::path directory_;
  int device_ = 0;
  /// Closes the files behind everything else.
  struct directory_remover {
    std::filesystem::path& directory;
    ~directory_remover();
  } remover_{directory_};
};

/// A record with its colon, checksum and line end.
std::string hex_record(std::uint8_t type, std::uint16_t address, const std::vector<std::uint8_t>& data);

/// `count` data bytes from `address` in records of 16; each byte is the low byte of its address, made odd.
std::string hex_data(std::uint32_t address, std::size_t count);

inline const std::string hex_end = ":00000001FF\n";

}  // namespace karvex::loader
