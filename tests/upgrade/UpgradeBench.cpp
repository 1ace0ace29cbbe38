#include "tests/upgrade/UpgradeBench.hpp"

#include <stdexcept>

#include "foundation/Log.hpp"
#include "foundation/Task.hpp"

namespace karvex::upgrade {
namespace {

namespace log = foundation::log;

foundation::Task<> thenStop(foundation::Task<> task, foundation::Runtime& runtime) {
  co_await std::move(task);
  runtime.stopMain();
}

}  // namespace

UpgradeBench::UpgradeBench()
    : service(runtime, std::filesystem::temp_directory_path()),
      urlSession(runtime, service.transferPolicy()),
      address(service.baseAddress()) {
  log::redirectSystem([this](std::string_view text) { logged.emplace_back(text); });
  log::redirectPrint([this](std::string_view text) { printed += text; });
  log::redirectDebug([this](std::string_view text) { debugged.emplace_back(text); });
}

UpgradeBench::~UpgradeBench() {
  log::redirectSystem(nullptr);
  log::redirectPrint(nullptr);
  log::redirectDebug(nullptr);
}

Platform UpgradeBench::platform() {
  return {.runtime = runtime,
          .urlSession = urlSession,
          .usbBus = bus,
          .serialInterfaces = bus,
          .terminalNodes = terminals,
          .midiService = midiService,
          .serviceAddress = service::ServiceAddress::at(address)};
}

void UpgradeBench::misbehave(const std::string& fault) {
  rig::ServiceFaults faults;
  if (const auto complaint = rig::addServiceFault(fault, faults)) {
    throw std::invalid_argument(*complaint);
  }
  service.setFaults(faults);
}

void UpgradeBench::runFor(foundation::Duration span) {
  runtime.mainQueue().postAt(runtime.clock().now() + span, [this] { runtime.stopMain(); });
  runtime.runMain();
}

void UpgradeBench::run(foundation::Task<> task) {
  foundation::spawn(runtime.mainQueue(), thenStop(std::move(task), runtime));
  runtime.runMain();
}

}  // namespace karvex::upgrade
