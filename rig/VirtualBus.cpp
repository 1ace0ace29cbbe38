#include "rig/VirtualBus.hpp"

#include <utility>

#include "device/PortName.hpp"

namespace karvex::rig {
namespace {

constexpr std::int32_t vendorId = 0x16C0;
constexpr std::int32_t bootloaderRevision = 0x0100;

device::UsbDevice descriptorOf(const VirtualBoard& board) {
  const bool inBootloader = board.state() == BoardState::halfKay;
  return {
      .idVendor = vendorId,
      .idProduct = board.productId(),
      .bcdDevice = inBootloader ? bootloaderRevision : board.kind().revision,
      .serialNumber = board.serialNumber(),
      .product = board.productName(),
  };
}

/// Brings the board up to the present and uses it. Whether its state, or what is settled about it, changed.
template <typename Use>
bool changesIn(VirtualBoard& board, foundation::TimePoint now, const Use& use) {
  const auto stateBefore = board.state();
  const auto changeBefore = board.changesAt();
  board.advanceTo(now);
  use();
  return board.state() != stateBefore || board.changesAt() != changeBefore;
}

}  // namespace

VirtualBoard& VirtualBus::plugIn(std::unique_ptr<VirtualBoard> board) {
  VirtualBoard& plugged = *board;
  {
    const std::lock_guard lock(mutex_);
    boards_.push_back(std::move(board));
  }
  observers_.notify();
  return plugged;
}

bool VirtualBus::anyBoard(const std::function<bool(VirtualBoard&)>& use) {
  bool isFound = false;
  bool hasChanged = false;
  {
    const std::lock_guard lock(mutex_);
    const auto now = clock_.now();  // Under the lock, so that no board sees time go back.
    for (const auto& board : boards_) {
      hasChanged |= changesIn(*board, now, [&] { isFound = use(*board); });
      if (isFound) {
        break;
      }
    }
  }
  if (hasChanged) {
    observers_.notify();
  }
  return isFound;
}

std::vector<VirtualBus::BoardStatus> VirtualBus::boards() {
  std::vector<BoardStatus> all;
  anyBoard([&all](const VirtualBoard& board) {
    all.push_back({.serialNumber = board.serialNumber(),
                   .mcu = std::string(board.kind().mcu),
                   .firmwareName = board.firmwareName(),
                   .state = board.state(),
                   .changesAt = board.changesAt()});
    return false;
  });
  return all;
}

foundation::Subscription VirtualBus::observeBoards(std::function<void()> callback) {
  return observers_.add(std::move(callback));
}

bool VirtualBus::inspect(const std::string& serialNumber, const std::function<void(VirtualBoard&)>& look) {
  return anyBoard([&](VirtualBoard& board) {
    if (board.serialNumber() != serialNumber) {
      return false;
    }
    look(board);
    return true;
  });
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
  return anyBoard([&](VirtualBoard& board) {
    if (board.serialNumber() != serialNumber || board.state() != BoardState::running) {
      return false;
    }
    board.setLineSpeed(clock_.now(), baud);
    return true;
  });
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
  bool hasChanged = false;
  {
    const std::lock_guard lock(mutex_);
    const auto now = clock_.now();
    VirtualBoard& board = *boards_[to.place];
    hasChanged = changesIn(board, now, [&] {
      if (board.session() == to.session) {
        outcome = board.takeReport(now, report);
      }
    });
  }
  if (hasChanged) {
    observers_.notify();
  }
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
  return anyBoard([&interfaceName](const VirtualBoard& board) {
    return board.state() == BoardState::running &&
           device::interfaceNameFor(board.serialNumber()) == interfaceName;
  });
}

}  // namespace karvex::rig
