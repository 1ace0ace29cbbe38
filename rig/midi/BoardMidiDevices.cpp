#include "rig/midi/BoardMidiDevices.hpp"

#include <mutex>
#include <string>
#include <utility>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/Timer.hpp"

namespace karvex::rig {

using namespace midikit::io;

namespace {

bool isOffline(const VirtualBus::BoardStatus& board) {
  return board.state != BoardState::running;
}

DeviceDescription describe(const VirtualBus::BoardStatus& board) {
  auto device = simpleDevice(board.firmwareName);
  device.properties.emplace(serialNumberPropertyKey, board.serialNumber);
  device.sharedProperties.emplace(kMIDIPropertyManufacturer, "Virtual boards");
  device.sharedProperties.emplace(kMIDIPropertyModel, board.mcu);
  device.sharedProperties.emplace(kMIDIPropertyOffline, isOffline(board) ? 1 : 0);
  return device;
}

}  // namespace

/// Kept by the jobs that wait, too, until they find that it has been closed.
struct BoardMidiDevices::State : std::enable_shared_from_this<State> {
  struct Device {
    MIDIObjectRef ref;
    bool isOffline;
    foundation::Timer timer;  ///< until the board changes by itself
  };

  State(foundation::Runtime& itsRuntime, VirtualBus& itsBus, VirtualMidiService& itsService)
      : runtime(itsRuntime), bus(itsBus), service(itsService), queue(itsRuntime.globalQueue()) {}

  /// What is new of the board at that place goes to the service. Devices stand in the order of the places.
  void refresh(std::size_t place) {
    const std::lock_guard lock(mutex);
    if (isClosed) {
      return;
    }
    while (devices.size() <= place) {
      const auto board = bus.boardAt(devices.size());
      devices.push_back({.ref = service.addDevice(describe(board)), .isOffline = isOffline(board)});
    }
    const auto board = bus.boardAt(place);
    auto& device = devices[place];
    if (device.isOffline != isOffline(board)) {
      device.isOffline = isOffline(board);
      service.setPropertyThroughout(device.ref, kMIDIPropertyOffline, device.isOffline ? 1 : 0);
    }
    device.timer.cancel();
    if (board.changesAt) {
      device.timer = foundation::Timer::oneShot(
          runtime.clock(), queue, *board.changesAt - runtime.clock().now(), [weak = weak_from_this(), place] {
            if (const auto self = weak.lock()) {
              self->refresh(place);
            }
          });
    }
  }

  void refreshSoon(std::size_t place) {
    queue.post([self = shared_from_this(), place] { self->refresh(place); });
  }

  foundation::Runtime& runtime;
  VirtualBus& bus;
  VirtualMidiService& service;
  foundation::SerialQueue queue;
  std::mutex
      mutex;  ///< of all below; held while bus and service are asked, which never call back under theirs
  std::vector<Device> devices;
  bool isClosed = false;
};

BoardMidiDevices::BoardMidiDevices(foundation::Runtime& runtime, VirtualBus& bus, VirtualMidiService& service)
    : state_(std::make_shared<State>(runtime, bus, service)),
      subscription_(bus.observeBoards([weak = std::weak_ptr(state_)](std::size_t place) {
        if (const auto state = weak.lock()) {
          state->refreshSoon(place);
        }
      })) {
  for (std::size_t place = 0; place < bus.boardCount(); ++place) {
    state_->refresh(place);
  }
}

BoardMidiDevices::~BoardMidiDevices() {
  const std::lock_guard lock(state_->mutex);
  state_->isClosed = true;
  for (auto& device : state_->devices) {
    device.timer.cancel();
  }
}

std::vector<MIDIObjectRef> BoardMidiDevices::devices() const {
  const std::lock_guard lock(state_->mutex);
  std::vector<MIDIObjectRef> refs;
  refs.reserve(state_->devices.size());
  for (const auto& device : state_->devices) {
    refs.push_back(device.ref);
  }
  return refs;
}

}  // namespace karvex::rig
