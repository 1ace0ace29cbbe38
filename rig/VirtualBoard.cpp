#include "rig/VirtualBoard.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "records/UsbIds.hpp"

namespace karvex::rig {
namespace {

constexpr std::uint32_t requestBaud = 134;
constexpr std::uint8_t erasedByte = 0xFF;

/// The reset of a board whose kind the host doesn't know is always this long.
constexpr std::size_t longestReport = 1088;

/// The request to leave the bootloader is an address that no block has.
bool asksForBoot(std::span<const std::uint8_t> report) {
  return report.size() >= 3 &&
         std::all_of(report.begin(), report.begin() + 3, [](std::uint8_t byte) { return byte == 0xFF; });
}

}  // namespace

std::string_view nameOf(BoardState state) {
  switch (state) {
    case BoardState::running:
      return "running";
    case BoardState::switching:
      return "switching";
    case BoardState::halfKay:
      return "halfkay";
    case BoardState::rebooting:
      return "rebooting";
    case BoardState::gone:
      return "gone";
  }
  return "";
}

VirtualBoard::VirtualBoard(const BoardKind& kind, std::string serialNumber, Faults faults)
    : VirtualBoard(kind, std::move(serialNumber), faults, BoardMemory(kind.flashSize)) {}

VirtualBoard::VirtualBoard(const BoardKind& kind, std::string serialNumber, Faults faults, BoardMemory memory)
    : kind_(kind), serialNumber_(std::move(serialNumber)), faults_(faults), memory_(std::move(memory)) {
  if (faults.startsInHalfKay) {
    memory_.setInBootloader(true);
  }
  state_ = memory_.isInBootloader() ? BoardState::halfKay : BoardState::running;
  session_ = memory_.isInBootloader() ? 1 : 0;
}

void VirtualBoard::advanceTo(TimePoint now) {
  if (pending_ && pending_->at <= now) {
    const Change change = *pending_;
    pending_.reset();
    enter(change.to, change.at);
  }
}

void VirtualBoard::enter(BoardState state, TimePoint at) {
  state_ = state;
  memory_.setInBootloader(state == BoardState::halfKay);
  if (state == BoardState::halfKay) {
    ++session_;
    firstOfferAt_.reset();
    erasedAt_.reset();
    isErased_ = false;
    toldRefusal_ = false;
    blocksTaken_ = 0;
    hasBooted_ = false;
  }
  tell(at, std::string(nameOf(state)));
}

void VirtualBoard::leaveBusUntil(Change change, BoardState meanwhile) {
  state_ = meanwhile;
  memory_.setInBootloader(change.to == BoardState::halfKay);
  pending_ = change;
}

void VirtualBoard::unplug(TimePoint now) {
  advanceTo(now);
  pending_.reset();
  enter(BoardState::gone, now);
}

void VirtualBoard::plugIn(TimePoint now) {
  advanceTo(now);
  if (state_ == BoardState::gone) {
    enter(BoardState::running, now);
  }
}

void VirtualBoard::setLineSpeed(TimePoint now, std::uint32_t baud) {
  advanceTo(now);
  if (state_ != BoardState::running || baud != requestBaud) {
    return;
  }
  tell(now, "134 baud");
  if (!faults_.neverEntersHalfKay) {
    const auto delay = faults_.entersHalfKayAfter.value_or(usualSwitchTime);
    leaveBusUntil({now + delay, BoardState::halfKay}, BoardState::switching);
  }
}

ReportOutcome VirtualBoard::takeReport(TimePoint now, std::span<const std::uint8_t> report) {
  advanceTo(now);
  if (state_ != BoardState::halfKay) {
    return ReportOutcome::gone;
  }
  const bool isBoot = asksForBoot(report);
  if (!isBoot && faults_.vanishesAtBlock == blocksTaken_) {
    enter(BoardState::gone, now);
    return ReportOutcome::gone;
  }
  if (const auto objection = objectionTo(report)) {
    complaints_.push_back(*objection);
    tell(now, "complaint: " + *objection);
    return refuse(now);
  }
  if (mustRefuse(now, !isBoot && addressIn(report) == 0)) {
    return refuse(now);
  }
  return isBoot ? boot(now, report) : takeBlock(now, report);
}

/// Block 0 starts the erase when it is first offered; behind its end, the flash is empty.
bool VirtualBoard::mustRefuse(TimePoint now, bool isFirstBlock) {
  if (!firstOfferAt_) {
    firstOfferAt_ = now;
  }
  if (faults_.refusesReportsForGood) {
    return true;
  }
  if (faults_.refusesReportsFor && now < *firstOfferAt_ + *faults_.refusesReportsFor) {
    return true;
  }
  if (isFirstBlock && !erasedAt_) {
    erasedAt_ = now + eraseTime;
  }
  if (erasedAt_ && now < *erasedAt_) {
    return true;
  }
  if (erasedAt_ && !isErased_) {
    std::ranges::fill(memory_.flash(), erasedByte);
    isErased_ = true;
  }
  return false;
}

std::uint32_t VirtualBoard::addressIn(std::span<const std::uint8_t> report) const {
  const std::uint32_t low = report[0] | static_cast<std::uint32_t>(report[1]) << 8U;
  switch (kind_.addressBytes) {
    case AddressBytes::low16:
      return low;
    case AddressBytes::high16:
      return low << 8U;
    case AddressBytes::full24:
      return low | static_cast<std::uint32_t>(report[2]) << 16U;
  }
  return low;
}

/// What a real bootloader would stumble over, or nothing.
std::optional<std::string> VirtualBoard::objectionTo(std::span<const std::uint8_t> report) const {
  if (asksForBoot(report)) {
    const bool fits = report.size() == kind_.reportLength() || report.size() == longestReport;
    return fits ? std::nullopt : std::optional(fmt::format("boot report of {} bytes", report.size()));
  }
  if (report.size() != kind_.reportLength()) {
    return fmt::format("report of {} bytes instead of {}", report.size(), kind_.reportLength());
  }
  const auto header = report.first(kind_.headerLength());
  if (header.size() > 3 &&
      std::any_of(header.begin() + 3, header.end(), [](auto byte) { return byte != 0; })) {
    return std::string("header is not zero behind the address");
  }
  const auto address = addressIn(report);
  if (address % kind_.blockSize != 0) {
    return fmt::format("address {:#x} is not on a block", address);
  }
  if (address + kind_.blockSize > kind_.flashSize) {
    return fmt::format("address {:#x} is beyond the flash", address);
  }
  if (address != 0 && !erasedAt_) {
    return fmt::format("address {:#x} came before block 0, which erases", address);
  }
  return std::nullopt;
}

ReportOutcome VirtualBoard::refuse(TimePoint now) {
  if (!std::exchange(toldRefusal_, true)) {
    tell(now, fmt::format("refused {}", blocksTaken_));
  }
  return ReportOutcome::refused;
}

ReportOutcome VirtualBoard::boot(TimePoint now, std::span<const std::uint8_t> report) {
  hasBooted_ = true;
  tell(now, "boot");
  if (reportListener_) {
    reportListener_(report);
  }
  if (faults_.neverReturns) {
    enter(BoardState::gone, now);
  } else {
    const auto delay = faults_.returnsAfter.value_or(usualBootTime);
    leaveBusUntil({now + delay, BoardState::running}, BoardState::rebooting);
  }
  return ReportOutcome::accepted;
}

ReportOutcome VirtualBoard::takeBlock(TimePoint now, std::span<const std::uint8_t> report) {
  const auto data = report.subspan(kind_.headerLength());
  std::copy(data.begin(), data.end(), memory_.flash().begin() + addressIn(report));
  tell(now, fmt::format("report {}", blocksTaken_));
  ++blocksTaken_;
  toldRefusal_ = false;
  if (reportListener_) {
    reportListener_(report);
  }
  return ReportOutcome::accepted;
}

std::int32_t VirtualBoard::productId() const {
  return state_ == BoardState::halfKay ? records::halfKayProductId : kind_.productId;
}

std::string VirtualBoard::productName() const {
  return state_ == BoardState::halfKay ? "HalfKay" : firmwareName();
}

std::string VirtualBoard::firmwareName() const {
  return fmt::format("{} MIDI", kind_.mcu);
}

void VirtualBoard::tell(TimePoint at, const std::string& event) const {
  if (eventListener_) {
    eventListener_(at, event);
  }
}

}  // namespace karvex::rig
