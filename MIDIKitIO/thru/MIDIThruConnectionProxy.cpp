#include "MIDIKitIO/thru/MIDIThruConnectionProxy.hpp"

#include "MIDIKitIO/manager/DroppedErrors.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"

namespace midikit::io {

std::shared_ptr<MIDIThruConnectionProxy> MIDIThruConnectionProxy::create(
    const std::shared_ptr<MIDIManager>& manager, CoreMIDIAPIVersion api,
    const MIDIEndpointIdentities& outputs, const MIDIEndpointIdentities& inputs) {
  const std::shared_ptr<MIDIThruConnectionProxy> proxy(new MIDIThruConnectionProxy());
  proxy->outputConnection_ = std::make_shared<MIDIOutputConnection>(
      manager, api, MIDIOutputConnectionSettings{.mode = MIDIOutputConnectionMode::inputs(inputs)});
  auto receiver = MIDIReceiver::events(
      {}, [weak = proxy->weak_from_this()](std::span<const core::MIDIEvent> events,
                                           std::uint64_t /*timeStamp*/, const MIDIPacketSource& /*source*/) {
        if (const auto its = weak.lock()) {
          its->forward(events);
        }
      });
  proxy->inputConnection_ = std::make_shared<MIDIInputConnection>(
      manager, api,
      MIDIInputConnectionSettings{.mode = MIDIInputConnectionMode::outputs(outputs),
                                  .receiver = std::move(receiver)});
  proxy->outputConnection_->create();
  proxy->outputConnection_->resolve();
  proxy->inputConnection_->listen();
  proxy->inputConnection_->connect();
  return proxy;
}

void MIDIThruConnectionProxy::follow(const MIDIIORawNotification& change) noexcept {
  inputConnection_->follow(change);
  outputConnection_->follow(change);
}

void MIDIThruConnectionProxy::dispose() noexcept {
  inputConnection_->dispose();
  outputConnection_->dispose();
}

void MIDIThruConnectionProxy::forward(std::span<const core::MIDIEvent> events) noexcept {
  internal::droppingErrors([&] { outputConnection_->sendEvents(events); });
}

}  // namespace midikit::io
