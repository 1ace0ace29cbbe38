#include "app/KarvexCore.hpp"

#include "MIDIKitIO/platform/linux/AlsaMIDIService.hpp"
#include "app/LoaderHost.hpp"
#include "device/platform/linux/RulesFile.hpp"
#include "loader/platform/linux/hidapi_hid.hpp"

namespace karvex::app {

KarvexCore::KarvexCore()
    : urlSession_(runtime_),
      terminalNodes_(runtime_.globalQueue()),
      platform_{.runtime = runtime_,
                .urlSession = urlSession_,
                .usbBus = usbBus_,
                .serialInterfaces = serialInterfaces_,
                .terminalNodes = terminalNodes_,
                .midiService = midikit::io::makeAlsaMIDIService(runtime_),
                .serviceAddress = service::ServiceAddress::builtIn(),
                .deviceRules = [] { return device::findRulesFile().state(); }},
      app_(platform_),
      view_(platform_, app_),
      actions_(runtime_.mainQueue(), view_),
      failureLog_(failureLogFile()),
      failureRecorder_(view_, [this](auto failure) { failureLog_.add(timeNow(), failure); }) {
  loader::install_host(loaderHostOn(runtime_));
  loader::install_hid(loader::hidapi_hid_calls());
}

}  // namespace karvex::app
