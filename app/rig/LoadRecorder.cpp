#include "app/rig/LoadRecorder.hpp"

#include <fmt/format.h>

#include <charconv>
#include <string_view>
#include <utility>

#include "loader/load_status.hpp"

namespace karvex::app {
namespace {

void callIfSet(const std::function<void()>& listener) {
  if (listener) {
    listener();
  }
}

}  // namespace

LoadRecorder::LoadRecorder(const loader::host_calls& host, const loader::hid_calls& hid,
                           foundation::Runtime& runtime, Timeline& timeline)
    : host_(host),
      hid_(hid),
      runtime_(runtime),
      timeline_(timeline),
      lastStatus_(loader::get_load_status()) {}

void LoadRecorder::note(std::string event) {
  timeline_.add(runtime_.clock().now(), std::move(event));
  callIfSet(progressListener_);
}

void LoadRecorder::lookAtStatus() {
  const auto status = loader::get_load_status();
  {
    const std::lock_guard lock(statusMutex_);
    if (std::exchange(lastStatus_, status) == status) {
      return;
    }
  }
  note(fmt::format("status {}", status));
}

/// The reader's result is told in the log and nowhere else.
void LoadRecorder::logLine(const char* text) {
  constexpr std::string_view result = "> KARVEX : Number of bytes read : ";
  const std::string_view line = text;
  if (line.starts_with(result)) {
    std::int32_t value = 0;
    std::from_chars(line.data() + result.size(), line.data() + line.size(), value);
    bytesRead_ = value;
  }
  host_.log(host_.context, text);
}

/// The worker tells of a failure before it has closed the device, so its end is noted apart.
void LoadRecorder::runWorker(void (*job)()) {
  workerIsRunning_ = true;
  runtime_.globalQueue().post([this, job] {
    job();
    workerIsRunning_ = false;
  });
}

loader::hid_search LoadRecorder::findFirst(std::uint16_t vendor, std::uint16_t product,
                                           loader::hid_device** device) {
  lookAtStatus();
  ++searches_;
  const auto result = hid_.find_first(hid_.context, vendor, product, device);
  if (result != loader::hid_search::found) {
    note("no device");
  }
  return result;
}

loader::hid_access LoadRecorder::open(loader::hid_device* device) {
  const auto access = hid_.open(hid_.context, device);
  if (access == loader::hid_access::opened) {
    ++opens_;
    note("open");
  } else {
    note(access == loader::hid_access::not_permitted ? "not permitted" : "open failed");
  }
  return access;
}

void LoadRecorder::close(loader::hid_device* device) {
  lookAtStatus();
  hid_.close(hid_.context, device);
  note("close");
}

loader::hid_delivery LoadRecorder::send(loader::hid_device* device, const std::uint8_t* bytes,
                                        std::size_t length) {
  const auto delivery = hid_.set_output_report(hid_.context, device, bytes, length);
  if (delivery == loader::hid_delivery::sent) {
    callIfSet(progressListener_);
  }
  return delivery;
}

loader::host_calls LoadRecorder::hostCalls() {
  return {
      .context = this,
      .now = [](void* self) { return in(self).host_.now(in(self).host_.context); },
      .sleep_for =
          [](void* self, std::chrono::milliseconds span) {
            in(self).lookAtStatus();
            in(self).host_.sleep_for(in(self).host_.context, span);
          },
      .log =
          [](void* self, const char* text) {
            in(self).lookAtStatus();
            in(self).logLine(text);
          },
      .print =
          [](void* self, const char* text) {
            callIfSet(in(self).textListener_);
            in(self).host_.print(in(self).host_.context, text);
          },
      .print_error =
          [](void* self, const char* text) {
            callIfSet(in(self).textListener_);
            in(self).host_.print_error(in(self).host_.context, text);
          },
      .run_on_global_queue = [](void* self, void (*job)()) { in(self).runWorker(job); },
      .run_on_main_queue =
          [](void* self, void (*job)()) { in(self).host_.run_on_main_queue(in(self).host_.context, job); },
      .end_process = [](void* self,
                        int exitStatus) { in(self).host_.end_process(in(self).host_.context, exitStatus); },
  };
}

loader::hid_calls LoadRecorder::hidCalls() {
  return {
      .context = this,
      .find_first = [](void* self, std::uint16_t vendor, std::uint16_t product,
                       loader::hid_device** device) { return in(self).findFirst(vendor, product, device); },
      .open = [](void* self, loader::hid_device* device) { return in(self).open(device); },
      .close = [](void* self, loader::hid_device* device) { in(self).close(device); },
      .set_output_report = [](void* self, loader::hid_device* device, const std::uint8_t* bytes,
                              std::size_t length) { return in(self).send(device, bytes, length); },
  };
}

}  // namespace karvex::app
