#pragma once

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <numeric>
#include <vector>

#include "foundation/files/TemporaryDirectory.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "loader/halfkay.hpp"
#include "loader/platform/hid.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {

using namespace std::chrono_literals;

/// "80 3D 5A FFx127": each byte, and how often it comes in a row.
inline std::string in_short(const std::uint8_t* begin, const std::uint8_t* end) {
  std::string text;
  for (const auto* next = begin; begin != end; begin = next) {
    next = std::find_if(begin, end, [begin](auto byte) { return byte != *begin; });
    text += fmt::format("{}{:02X}", text.empty() ? "" : " ", *begin);
    text += next - begin > 1 ? fmt::format("x{}", next - begin) : "";
  }
  return text;
}

/// What the boards and the system answer the loader.
struct world {
  hid_search search = hid_search::found;
  hid_access access = hid_access::opened;
  bool creates_device = true;
  std::size_t takes_reports = 10'000;
  std::chrono::milliseconds comes_at{0};
  std::chrono::milliseconds takes_reports_from{0};
  hid_delivery refusal = hid_delivery::refused;  ///< a report that isn't taken costs 1 ms
  bool is_eager = false;  ///< jobs of the global queue run before the call that queues them returns
};

/// The loader on a virtual clock. Everything that it does to the outside is in `events`, with its time in
/// milliseconds: "500 log > KARVEX : ...", "2500 open", ...
class loader_fixture : public testing::Test {
 protected:
  loader_fixture() {
    install_host({
        .context = this,
        .now = [](void* self) { return in(self).runtime.clock().now().time_since_epoch(); },
        .sleep_for = [](void* self,
                        std::chrono::milliseconds span) { in(self).runtime.clock().sleepFor(span); },
        .log = [](void* self, const char* text) { in(self).note(std::string("log ") + text); },
        .print = [](void* self, const char* text) { in(self).note(std::string("print ") + text); },
        .print_error = [](void* self, const char* text) { in(self).note(std::string("error ") + text); },
        .run_on_global_queue = run_on_global_queue,
        .run_on_main_queue = [](void* self, void (*job)()) { in(self).runtime.mainQueue().post(job); },
        .end_process =
            [](void* self, int status) {
              in(self).note(fmt::format("exit {}", status));
              throw std::exception();
            },
    });
    install_hid({.context = this,
                 .find_first = find_first,
                 .open = open,
                 .close = [](void* self, hid_device*) { in(self).note("close"); },
                 .set_output_report = set_output_report});
  }
  ~loader_fixture() override { close_halfkay_device(); }

  /// Forgets what was, and counts the time from now on.
  void start() {
    events.clear();
    reports.clear();
    start_ = runtime.clock().now();
  }
  std::chrono::milliseconds elapsed() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(runtime.clock().now() - start_);
  }
  const std::string& write_file(std::string_view bytes) {
    std::ofstream(file, std::ios::binary) << bytes;
    return file;
  }

  world answers;
  std::vector<std::string> events;
  std::vector<std::string> reports;
  foundation::VirtualRuntime runtime;
  const foundation::TemporaryDirectory directory;
  const std::string file = directory.path() / "a b%20.hex";

 private:
  static loader_fixture& in(void* context) { return *static_cast<loader_fixture*>(context); }
  void note(const std::string& text) { events.push_back(fmt::format("{} {}", elapsed().count(), text)); }
  static void run_on_global_queue(void* self, void (*job)()) {
    in(self).answers.is_eager ? job() : in(self).runtime.globalQueue().post(job);
  }
  static hid_search find_first(void* self, std::uint16_t vendor, std::uint16_t product, hid_device** device) {
    in(self).note(fmt::format("search {:04X}:{:04X}", vendor, product));
    *device = in(self).answers.creates_device ? reinterpret_cast<hid_device*>(self) : nullptr;
    return in(self).elapsed() < in(self).answers.comes_at ? hid_search::none : in(self).answers.search;
  }
  static hid_access open(void* self, hid_device*) {
    in(self).note(in(self).answers.access == hid_access::opened ? "open" : "open failed");
    return in(self).answers.access;
  }
  static hid_delivery set_output_report(void* self, hid_device*, const std::uint8_t* bytes,
                                        std::size_t length) {
    auto& fixture = in(self);
    if (fixture.reports.size() >= fixture.answers.takes_reports ||
        fixture.elapsed() < fixture.answers.takes_reports_from) {
      fixture.runtime.clock().sleepFor(1ms);
      return fixture.answers.refusal;
    }
    fixture.reports.push_back(in_short(bytes, bytes + length));
    fixture.note("report " + fixture.reports.back());
    return hid_delivery::sent;
  }

  foundation::TimePoint start_ = runtime.clock().now();
};

inline std::string hex_record(unsigned type, std::uint32_t address, const std::vector<std::uint8_t>& data) {
  const auto sum = std::accumulate(data.begin(), data.end(), data.size() + (address >> 8U) + address + type);
  return fmt::format(":{:02X}{:04X}{:02X}{:02X}{:02X}\n", data.size(), address & 0xFFFFU, type,
                     fmt::join(data, ""), -sum & 0xFFU);
}

/// `count` bytes of this value from `address` on, in records of 16.
inline std::string hex_fill(std::uint32_t address, std::size_t count, std::uint8_t value) {
  std::string text;
  for (std::size_t done = 0; done < count; done += 16, address += 16) {
    text += hex_record(
        4, 0, {static_cast<std::uint8_t>(address >> 24U), static_cast<std::uint8_t>(address >> 16U)});
    text += hex_record(0, address & 0xFFFFU,
                       std::vector<std::uint8_t>(std::min<std::size_t>(16, count - done), value));
  }
  return text;
}

}  // namespace karvex::loader
