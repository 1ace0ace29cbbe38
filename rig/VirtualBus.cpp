#include "rig/VirtualBus.hpp"

#include <utility>

#include "device/PortName.hpp"
#include "records/UsbIds.hpp"

namespace karvex::rig {
namespace {

constexpr std::int32_t bootloaderRevision = 0x0100;

device::UsbDevice descriptorOf(const VirtualBoard& board) {
  const bool inBootloader = board.state() == BoardState::halfKay;
  return {
      .idVendor = records::boardVendorId,
      .idProduct = board.productId(),
      .bcdDevice = inBootloader ? bootloaderRevision : board.kind().revision,
      .serialNumber = board.serialNumber(),
      .product = board.productName(),
  };
}

/// Brings the board up to the present and uses it. Whether its state, or what is settled about it, changed.
bool changesIn(VirtualBoard& board, foundation::TimePoint now,
               const std::function<void(VirtualBoard&)>& use) {
  const auto stateBefore = board.state();
  const auto changeBefore = board.changesAt();
  board.advanceTo(now);
  use(board);
  return board.state() != stateBefore || board.changesAt() != changeBefore;
}

}  // namespace

VirtualBoard& VirtualBus::plugIn(std::unique_ptr<VirtualBoard> board) {
  VirtualBoard& plugged = *board;
  std::size_t place = 0;
  {
    const std::lock_guard lock(mutex_);
    place = boards_.size();
    places_.emplace(board->serialNumber(), place);
    boards_.push_back(std::move(board));
  }
  observers_.notify(place);
  return plugged;
}

bool VirtualBus::anyBoard(const std::function<bool(VirtualBoard&)>& use) {
  bool isFound = false;
  std::vector<std::size_t> changed;
  {
    const std::lock_guard lock(mutex_);
    const auto now = clock_.now();  // Under the lock, so that no board sees time go back.
    for (std::size_t place = 0; place < boards_.size() && !isFound; ++place) {
      if (changesIn(*boards_[place], now, [&](VirtualBoard& board) { isFound = use(board); })) {
        changed.push_back(place);
      }
    }
  }
  for (const auto place : changed) {
    observers_.notify(place);
  }
  return isFound;
}

void VirtualBus::useBoard(std::size_t place, const std::function<void(VirtualBoard&)>& use) {
  bool hasChanged = false;
  {
    const std::lock_guard lock(mutex_);
    hasChanged = changesIn(*boards_.at(place), clock_.now(), use);
  }
  if (hasChanged) {
    observers_.notify(place);
  }
}

VirtualBus::BoardStatus VirtualBus::boardAt(std::size_t place) {
  BoardStatus status;
  useBoard(place, [&status](const VirtualBoard& board) {
    status = {.serialNumber = board.serialNumber(),
              .mcu = std::string(board.kind().mcu),
              .firmwareName = board.firmwareName(),
              .state = board.state(),
              .changesAt = board.changesAt()};
  });
  return status;
}

std::size_t VirtualBus::boardCount() const {
  const std::lock_guard lock(mutex_);
  return boards_.size();
}

foundation::Subscription VirtualBus::observeBoards(std::function<void(std::size_t place)> callback) {
  return observers_.add(std::move(callback));
}

bool VirtualBus::inspect(std::string_view serialNumber, const std::function<void(VirtualBoard&)>& look) {
  std::size_t place = 0;
  {
    const std::lock_guard lock(mutex_);
    const auto found = places_.find(serialNumber);
    if (found == places_.end()) {
      return false;
    }
    place = found->second;
  }
  useBoard(place, look);
  return true;
}

void VirtualBus::unplug(const std::string& serialNumber) {
  inspect(serialNumber, [this](VirtualBoard& board) { board.unplug(clock_.now()); });
}

void VirtualBus::repair(const std::string& serialNumber) {
  inspect(serialNumber, [this](VirtualBoard& board) {
    board.setFaults({});
    board.plugIn(clock_.now());
  });
}

bool VirtualBus::setLineSpeed(const std::string& serialNumber, std::uint32_t baud) {
  bool isRunning = false;
  inspect(serialNumber, [&](VirtualBoard& board) {
    isRunning = board.state() == BoardState::running;
    if (isRunning) {
      board.setLineSpeed(clock_.now(), baud);
    }
  });
  return isRunning;
}

std::optional<VirtualBus::HalfKayBoard> VirtualBus::firstHalfKayBoard() {
  std::optional<HalfKayBoard> found;
  std::size_t place = 0;
  anyBoard([&](VirtualBoard& board) {
    if (board.state() == BoardState::halfKay) {
      found = HalfKayBoard{place, board.session(), board.faults().deniesAccess};
    }
    ++place;
    return found.has_value();
  });
  return found;
}

ReportOutcome VirtualBus::sendReport(const HalfKayBoard& to, std::span<const std::uint8_t> report) {
  auto outcome = ReportOutcome::gone;
  useBoard(to.place, [&](VirtualBoard& board) {
    if (board.session() == to.session) {
      outcome = board.takeReport(clock_.now(), report);
    }
  });
  return outcome;
}

int VirtualBus::forEachDevice(const std::function<void(const device::UsbDevice&)>& visit) {
  std::vector<device::UsbDevice> devices;
  anyBoard([&devices](const VirtualBoard& board) {
    if (board.isOnBus()) {
      devices.push_back(descriptorOf(board));
    }
    return false;
  });
  for (const auto& device : devices) {
    visit(device);
  }
  return 0;
}

bool VirtualBus::isPresent(const std::string& interfaceName) {
  bool isRunning = false;
  if (const auto serialNumber = device::serialNumberInInterfaceName(interfaceName)) {
    inspect(*serialNumber,
            [&](const VirtualBoard& board) { isRunning = board.state() == BoardState::running; });
  }
  return isRunning;
}

}  // namespace karvex::rig
