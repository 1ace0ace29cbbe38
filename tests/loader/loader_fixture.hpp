#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numeric>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/TemporaryDirectory.hpp"
#include "foundation/VirtualRuntime.hpp"
#include "loader/halfkay.hpp"
#include "loader/platform/hid.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {

using namespace std::chrono_literals;

/// "80 3D 5A FFx127": each byte, and how often it comes in a row.
inline std::string in_short(const std::uint8_t* begin, const std::uint8_t* end) {
  std::vector<std::string> runs;
  for (const auto* next = begin; begin != end; begin = next) {
    next = std::find_if(begin, end, [begin](auto byte) { return byte != *begin; });
    runs.push_back(fmt::format("{:02X}", *begin) +
                   (next - begin > 1 ? fmt::format("x{}", next - begin) : ""));
  }
  return fmt::format("{}", fmt::join(runs, " "));
}

/// The loader on a virtual clock, with a HID platform whose answers a test decides. Everything that the
/// loader does to the outside is in `events`, with its time in milliseconds: "500 log > KARVEX : ...", "2500
/// open", ...
class loader_fixture : public testing::Test {
 protected:
  loader_fixture() {
    install_host({
        .context = this,
        .now = [](void* self) { return in(self).runtime.clock().now().time_since_epoch(); },
        .sleep_for = [](void* self,
                        std::chrono::milliseconds span) { in(self).runtime.clock().sleepFor(span); },
        .log = [](void* self, const char* text) { in(self).note("log", text); },
        .print = [](void* self, const char* text) { in(self).note("print", text); },
        .print_error = [](void* self, const char* text) { in(self).note("error", text); },
        .run_on_global_queue =
            [](void* self, void (*job)()) {
              in(self).is_eager ? job() : in(self).runtime.globalQueue().post(job);
            },
        .run_on_main_queue = [](void* self, void (*job)()) { in(self).runtime.mainQueue().post(job); },
        .end_process = [](void*, int status) { throw std::runtime_error(std::to_string(status)); },
    });
    install_hid({
        .context = this,
        .find_first = [](void* self, std::uint16_t vendor, std::uint16_t product,
                         hid_device** device) { return in(self).search(vendor, product, device); },
        .open =
            [](void* self, hid_device*) {
              in(self).note("open");
              return in(self).on_open();
            },
        .close = [](void* self, hid_device*) { in(self).note("close"); },
        .set_output_report = [](void* self, hid_device*, const std::uint8_t* bytes,
                                std::size_t length) { return in(self).take_report(bytes, length); },
    });
  }
  ~loader_fixture() override { close_halfkay_device(); }

  /// Forgets what was, and counts the time from now on.
  void start() {
    events.clear();
    reports = 0;
    start_ = runtime.clock().now();
  }
  std::chrono::milliseconds elapsed() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(runtime.clock().now() - start_);
  }
  std::vector<std::string> last(std::size_t count) const {
    return {events.end() - static_cast<std::ptrdiff_t>(std::min(count, events.size())), events.end()};
  }
  const std::string& write_file(std::string_view bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
    return file;
  }

  std::function<hid_search()> on_search = [] { return hid_search::found; };
  std::function<hid_access()> on_open = [] { return hid_access::opened; };
  std::function<hid_delivery()> on_report = [] { return hid_delivery::sent; };  ///< takes 1 ms to refuse
  bool creates_device = true;
  bool is_eager = false;  ///< jobs of the global queue run before the call that queues them returns
  std::size_t reports = 0;
  std::vector<std::string> events;
  foundation::VirtualRuntime runtime;
  const foundation::TemporaryDirectory directory;
  const std::string file = directory.path() / "a b%20.hex";

 private:
  static loader_fixture& in(void* context) { return *static_cast<loader_fixture*>(context); }
  void note(std::string_view what, std::string_view text = "") {
    events.push_back(fmt::format("{} {}{}{}", elapsed().count(), what, text.empty() ? "" : " ", text));
  }
  hid_search search(std::uint16_t vendor, std::uint16_t product, hid_device** device) {
    note("search", fmt::format("{:04X}:{:04X}", vendor, product));
    *device = creates_device ? reinterpret_cast<hid_device*>(this) : nullptr;
    return on_search();
  }
  hid_delivery take_report(const std::uint8_t* bytes, std::size_t length) {
    const auto result = on_report();
    if (result == hid_delivery::sent) {
      note("report", in_short(bytes, bytes + length));
      ++reports;
    } else {
      runtime.clock().sleepFor(1ms);
    }
    return result;
  }

  foundation::TimePoint start_ = runtime.clock().now();
};

inline std::string hex_record(std::uint8_t type, std::uint32_t address,
                              const std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> bytes = {static_cast<std::uint8_t>(data.size()),
                                     static_cast<std::uint8_t>(address >> 8U),
                                     static_cast<std::uint8_t>(address), type};
  bytes.insert(bytes.end(), data.begin(), data.end());
  bytes.push_back(static_cast<std::uint8_t>(-std::accumulate(bytes.begin(), bytes.end(), 0)));
  return fmt::format(":{:02X}\n", fmt::join(bytes, ""));
}

/// `count` bytes of this value from `address` on, in records of 16.
inline std::string hex_fill(std::uint32_t address, std::size_t count, std::uint8_t value) {
  std::string text;
  for (std::size_t done = 0; done < count; done += 16, address += 16) {
    text += hex_record(
        4, 0, {static_cast<std::uint8_t>(address >> 24U), static_cast<std::uint8_t>(address >> 16U)});
    text += hex_record(0, address, std::vector<std::uint8_t>(std::min<std::size_t>(16, count - done), value));
  }
  return text;
}

}  // namespace karvex::loader
