#include "tests/loader/loader_fixture.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <utility>

namespace karvex::loader {

loader_fixture::loader_fixture() {
  std::string pattern = (std::filesystem::temp_directory_path() / "karvex-test-XXXXXX").string();
  directory_ = mkdtemp(pattern.data());
  install_host(host());
  install_hid(hid());
}

loader_fixture::directory_remover::~directory_remover() {
  std::filesystem::remove_all(directory);
}

void loader_fixture::run(std::function<void()> on_main) {
  runtime.mainQueue().post(std::move(on_main));
  runtime.mainQueue().postAt(runtime.clock().now() + std::chrono::minutes(1), [this] { runtime.stopMain(); });
  runtime.runMain();
}

std::chrono::milliseconds loader_fixture::elapsed() const {
  auto& clock = const_cast<foundation::VirtualRuntime&>(runtime).clock();
  return std::chrono::duration_cast<std::chrono::milliseconds>(clock.now() - start_);
}

void loader_fixture::note(const std::string& event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(fmt::format("{} {}", elapsed().count(), event));
}

std::vector<std::string> loader_fixture::events() const {
  const std::lock_guard lock(mutex_);
  return events_;
}

std::vector<std::string> loader_fixture::events(std::vector<std::string> beginnings) const {
  auto all = events();
  std::erase_if(all, [&beginnings](const std::string& event) {
    const std::string_view text = std::string_view(event).substr(event.find(' ') + 1);
    return std::ranges::none_of(beginnings, [text](const auto& wanted) { return text.starts_with(wanted); });
  });
  return all;
}

std::string loader_fixture::printed() const {
  const std::lock_guard lock(mutex_);
  return printed_;
}

std::filesystem::path loader_fixture::file_with(std::string_view bytes) {
  static int files = 0;
  const auto path = directory_ / fmt::format("{}.hex", ++files);
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

host_calls loader_fixture::host() {
  return {
      .context = this,
      .now = [](void* self) { return in(self).runtime.clock().now().time_since_epoch(); },
      .sleep_for = [](void* self,
                      std::chrono::milliseconds span) { in(self).runtime.clock().sleepFor(span); },
      .log = [](void* self, const char* text) { in(self).note(std::string("log ") + text); },
      .print =
          [](void* self, const char* text) {
            in(self).note(std::string("print ") + text);
            const std::lock_guard lock(in(self).mutex_);
            in(self).printed_ += text;
          },
      .print_error = [](void* self, const char* text) { in(self).note(std::string("error ") + text); },
      .run_on_global_queue = [](void* self, void (*job)()) { in(self).runtime.globalQueue().post(job); },
      .run_on_main_queue = [](void* self, void (*job)()) { in(self).runtime.mainQueue().post(job); },
      .end_process = [](void*, int exit_status) { throw process_ended{exit_status}; },
  };
}

host_calls loader_fixture::host_with_eager_global_queue() {
  auto calls = host();
  calls.run_on_global_queue = [](void*, void (*job)()) { job(); };
  return calls;
}

hid_calls loader_fixture::hid() {
  return {
      .context = this,
      .find_first =
          [](void* self, std::uint16_t vendor, std::uint16_t product, hid_device** device) {
            const auto result = in(self).on_search();
            in(self).note(fmt::format("search {:04X}:{:04X}", vendor, product));
            if (result == hid_search::found && in(self).creates_device) {
              *device = reinterpret_cast<hid_device*>(&in(self).device_);
            }
            return result;
          },
      .open =
          [](void* self, hid_device*) {
            const auto result = in(self).on_open();
            in(self).note(result == hid_access::opened ? "open" : "open failed");
            return result;
          },
      .close = [](void* self, hid_device*) { in(self).note("close"); },
      .set_output_report =
          [](void* self, hid_device*, const std::uint8_t* bytes, std::size_t length) {
            auto& fixture = in(self);
            const auto result = fixture.on_report(fixture.reports.size());
            if (result == hid_delivery::sent) {
              fixture.note(fmt::format("report {} of {} bytes", fixture.reports.size(), length));
              fixture.reports.emplace_back(bytes, bytes + length);
            } else {
              fixture.runtime.clock().sleepFor(fixture.failing_report_time);
            }
            return result;
          },
  };
}

std::string hex_record(std::uint8_t type, std::uint16_t address, const std::vector<std::uint8_t>& data) {
  auto record = fmt::format(":{:02X}{:04X}{:02X}", data.size(), address, type);
  unsigned sum = static_cast<unsigned>(data.size()) + (address >> 8U) + (address & 0xFFU) + type;
  for (const auto byte : data) {
    record += fmt::format("{:02X}", byte);
    sum += byte;
  }
  return record + fmt::format("{:02X}\n", (0x100 - (sum & 0xFFU)) & 0xFFU);
}

std::string hex_data(std::uint32_t address, std::size_t count) {
  std::string text;
  std::uint32_t base = 0;
  for (std::size_t done = 0; done < count;) {
    const auto at = static_cast<std::uint32_t>(address + done);
    if (at >> 16U != base) {
      base = at >> 16U;
      text += hex_record(4, 0, {static_cast<std::uint8_t>(base >> 8U), static_cast<std::uint8_t>(base)});
    }
    std::vector<std::uint8_t> bytes(std::min<std::size_t>(16, count - done));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      bytes[i] = static_cast<std::uint8_t>((at + i) | 1U);
    }
    text += hex_record(0, static_cast<std::uint16_t>(at), bytes);
    done += bytes.size();
  }
  return text;
}

}  // namespace karvex::loader
