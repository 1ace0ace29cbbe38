#include "rig/midi/BoardMidiDevices.hpp"

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "foundation/SerialQueue.hpp"
#include "foundation/Timer.hpp"

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
  };

  State(foundation::Runtime& itsRuntime, VirtualBus& itsBus, VirtualMidiService& itsService)
      : runtime(itsRuntime), bus(itsBus), service(itsService), queue(itsRuntime.globalQueue()) {}

  /// What is new of the bus goes to the service.
  void refresh() {
    const std::lock_guard lock(mutex);
    if (isClosed) {
      return;
    }
    const auto boards = bus.boards();
    std::optional<foundation::TimePoint> next;
    for (std::size_t place = 0; place < boards.size(); ++place) {
      refresh(place, boards[place]);
      if (const auto at = boards[place].changesAt) {
        next = std::min(next.value_or(*at), *at);
      }
    }
    timer.cancel();
    if (next) {
      timer = foundation::Timer::oneShot(runtime.clock(), queue, *next - runtime.clock().now(),
                                         [weak = weak_from_this()] {
                                           if (const auto self = weak.lock()) {
                                             self->refresh();
                                           }
                                         });
    }
  }

  void refresh(std::size_t place, const VirtualBus::BoardStatus& board) {
    if (place == devices.size()) {
      devices.push_back({service.addDevice(describe(board)), isOffline(board)});
    } else if (devices[place].isOffline != isOffline(board)) {
      devices[place].isOffline = isOffline(board);
      service.setPropertyThroughout(devices[place].ref, kMIDIPropertyOffline, isOffline(board) ? 1 : 0);
    }
  }

  void refreshSoon() {
    queue.post([self = shared_from_this()] { self->refresh(); });
  }

  foundation::Runtime& runtime;
  VirtualBus& bus;
  VirtualMidiService& service;
  foundation::SerialQueue queue;
  std::mutex
      mutex;  ///< of all below; held while bus and service are asked, which never call back under theirs
  std::vector<Device> devices;
  foundation::Timer timer;
  bool isClosed = false;
};

BoardMidiDevices::BoardMidiDevices(foundation::Runtime& runtime, VirtualBus& bus, VirtualMidiService& service)
    : state_(std::make_shared<State>(runtime, bus, service)),
      subscription_(bus.observeBoards([weak = std::weak_ptr(state_)] {
        if (const auto state = weak.lock()) {
          state->refreshSoon();
        }
      })) {
  state_->refresh();
}

BoardMidiDevices::~BoardMidiDevices() {
  const std::lock_guard lock(state_->mutex);
  state_->isClosed = true;
  state_->timer.cancel();
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
