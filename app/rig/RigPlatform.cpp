#include "app/rig/RigPlatform.hpp"

#include <utility>

#include "app/LoaderHost.hpp"

namespace karvex::app {

RigPlatform::RigPlatform(foundation::Runtime& rigRuntime, const EquipmentPlan& plan,
                         rig::ServiceFaults faults)
    : runtime(rigRuntime),
      bus(runtime.clock()),
      terminals(bus),
      hid(bus, runtime.clock()),
      midiService(std::make_shared<rig::VirtualMidiService>(runtime)),
      service(runtime, plan.firmwareFolder()),
      urlSession(runtime, service.transferPolicy()) {
  plugIn(plan, bus);
  midiDevices.emplace(runtime, bus, *midiService);
  for (const auto place : plan.occupied) {
    terminals.occupy(plan.serialNumberAt(place), "another program");
  }
  for (const auto place : plan.snatched) {
    terminals.occupyBehindUse(plan.serialNumberAt(place), "another program");
  }
  service.setDevices(servedDevices(plan, service.baseAddress()));
  service.setFaults(std::move(faults));
  loader::install_host(loaderHostOn(runtime));
  loader::install_hid(hid.calls());
}

upgrade::Platform RigPlatform::platform() {
  return {.runtime = runtime,
          .urlSession = urlSession,
          .usbBus = bus,
          .serialInterfaces = bus,
          .terminalNodes = terminals,
          .midiService = midiService,
          .serviceAddress = service::ServiceAddress::at(service.baseAddress())};
}

}  // namespace karvex::app
