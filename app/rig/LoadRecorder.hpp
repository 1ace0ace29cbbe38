#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "app/rig/Timeline.hpp"
#include "foundation/run/Runtime.hpp"
#include "loader/platform/hid.hpp"
#include "loader/platform/host.hpp"

namespace karvex::app {

/// Stands between the loader and its two seams, passes every call on, and notes what a load does. The loader
/// stores its status without telling anybody, but it calls its host right behind each store: looking there
/// sees every value at the moment in which it was stored.
class LoadRecorder {
 public:
  /// The runtime and the timeline must outlive the recorder, and the recorder its use by the loader: until
  /// workerIsRunning() is false, the loader's worker may call.
  LoadRecorder(const loader::host_calls& host, const loader::hid_calls& hid, foundation::Runtime& runtime,
               Timeline& timeline);

  loader::host_calls hostCalls();
  loader::hid_calls hidCalls();

  /// Called, on the thread in work, whenever the load may have moved on.
  void setProgressListener(std::function<void()> listener) { progressListener_ = std::move(listener); }
  /// Called before the loader prints, for whoever draws on the same terminal.
  void setTextListener(std::function<void()> listener) { textListener_ = std::move(listener); }

  /// True from the moment in which the loader starts its worker until that has ended.
  bool workerIsRunning() const { return workerIsRunning_; }
  /// How often the loader looked for a board without getting one open.
  int failedOpens() const { return searches_ - opens_; }
  /// How many bytes the reader gave, or its failure; 0 before it ran.
  std::int32_t bytesRead() const { return bytesRead_; }

 private:
  static LoadRecorder& in(void* context) { return *static_cast<LoadRecorder*>(context); }
  void lookAtStatus();
  void note(std::string event);
  void logLine(const char* text);
  void runWorker(void (*job)());
  loader::hid_search findFirst(std::uint16_t vendor, std::uint16_t product, loader::hid_device** device);
  loader::hid_access open(loader::hid_device* device);
  void close(loader::hid_device* device);
  loader::hid_delivery send(loader::hid_device* device, const std::uint8_t* bytes, std::size_t length);

  loader::host_calls host_;
  loader::hid_calls hid_;
  foundation::Runtime& runtime_;
  Timeline& timeline_;
  std::function<void()> progressListener_;
  std::function<void()> textListener_;
  std::atomic<bool> workerIsRunning_ = false;
  std::atomic<int> searches_ = 0;
  std::atomic<int> opens_ = 0;
  std::atomic<std::int32_t> bytesRead_ = 0;
  std::mutex statusMutex_;
  std::uint32_t lastStatus_;
};

}  // namespace karvex::app
