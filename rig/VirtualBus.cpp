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

}  // namespace

VirtualBoard& VirtualBus::plugIn(std::unique_ptr<VirtualBoard> board) {
  const std::lock_guard lock(mutex_);
  return *boards_.emplace_back(std::move(board));
}

bool VirtualBus::anyBoard(const std::function<bool(VirtualBoard&)>& use) {
  const std::lock_guard lock(mutex_);
  const auto now = clock_.now();  // Under the lock, so that no board sees time go back.
  for (const auto& board : boards_) {
    board->advanceTo(now);
    if (use(*board)) {
      return true;
    }
  }
  return false;
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
  const std::lock_guard lock(mutex_);
  const auto now = clock_.now();
  VirtualBoard& board = *boards_[to.place];
  board.advanceTo(now);
  return board.session() == to.session ? board.takeReport(now, report) : ReportOutcome::gone;
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
