#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/run/Clock.hpp"
#include "rig/BoardKind.hpp"
#include "rig/BoardMemory.hpp"
#include "rig/Faults.hpp"

namespace karvex::rig {

enum class BoardState {
  running,    ///< its firmware runs: a serial port and a MIDI device
  switching,  ///< off the bus on the way into its bootloader
  halfKay,    ///< in its HalfKay bootloader: a HID device
  rebooting,  ///< off the bus on the way back into its firmware
  gone,       ///< off the bus until somebody plugs it in again
};

/// "running", "switching", ...
std::string_view nameOf(BoardState state);

enum class ReportOutcome { accepted, refused, gone };

/// One board as a state machine. It has no clock: whoever calls tells the time, which must not go back. It
/// checks what a real board would notice and refuses what a real one would; each refusal of that kind leaves
/// a complaint. Not locked; VirtualBus does that.
class VirtualBoard {
 public:
  using TimePoint = foundation::TimePoint;

  /// Told each time something happens: "134 baud", "halfkay", "refused 0" (the first time that a block is),
  /// "report 0", "boot", "running", "gone", "complaint: ..." (whatever no real board would take).
  using EventListener = std::function<void(TimePoint at, const std::string& event)>;
  /// Given each report that the board took.
  using ReportListener = std::function<void(std::span<const std::uint8_t> report)>;

  /// From the 134 baud request until the bootloader is on the bus; 1.3 to 1.5 s were measured on real boards.
  static constexpr std::chrono::milliseconds usualSwitchTime{1400};
  /// From the boot report until the firmware is back on the bus; measured likewise.
  static constexpr std::chrono::milliseconds usualBootTime{1300};
  /// How long the flash takes to erase. Begins when block 0 is offered; reports are refused meanwhile.
  static constexpr std::chrono::milliseconds eraseTime{300};

  /// With memory of its own.
  VirtualBoard(const BoardKind& kind, std::string serialNumber, Faults faults = {});
  /// As the memory says, which is for a flash of that kind. A board that was on its way got where it went,
  /// and one that was off the bus was plugged in again.
  VirtualBoard(const BoardKind& kind, std::string serialNumber, Faults faults, BoardMemory memory);

  void setEventListener(EventListener listener) { eventListener_ = std::move(listener); }
  void setReportListener(ReportListener listener) { reportListener_ = std::move(listener); }

  /// Lets the time pass. The other operations do so by themselves.
  void advanceTo(TimePoint now);

  /// From now on, this is wrong with the board.
  void setFaults(const Faults& faults) { faults_ = faults; }

  /// Somebody pulls the plug.
  void unplug(TimePoint now);
  /// Somebody plugs the board in again: its firmware runs. Does nothing to a board that is on the bus or on
  /// its way to it.
  void plugIn(TimePoint now);

  /// The line coding of the board's serial port was changed to this speed, in baud.
  void setLineSpeed(TimePoint now, std::uint32_t baud);

  /// An output report arrives, as the bytes behind the report ID.
  ReportOutcome takeReport(TimePoint now, std::span<const std::uint8_t> report);

  const BoardKind& kind() const { return kind_; }
  const std::string& serialNumber() const { return serialNumber_; }
  const Faults& faults() const { return faults_; }
  BoardState state() const { return state_; }
  /// When the board enters another state by itself, as far as is settled now.
  std::optional<TimePoint> changesAt() const { return pending_ ? std::optional(pending_->at) : std::nullopt; }
  bool isOnBus() const { return state_ == BoardState::running || state_ == BoardState::halfKay; }
  /// Counts the board's visits to its bootloader: a handle from an earlier visit is a handle to nothing.
  std::uint32_t session() const { return session_; }
  /// USB product ID and product string of what the board is at the moment.
  std::int32_t productId() const;
  std::string productName() const;
  /// The product string of its firmware, whatever the board is at the moment.
  std::string firmwareName() const;

  std::span<const std::uint8_t> flash() const { return memory_.flash(); }
  std::uint32_t blocksTaken() const { return blocksTaken_; }
  bool hasBooted() const { return hasBooted_; }
  const std::vector<std::string>& complaints() const { return complaints_; }

 private:
  struct Change {
    TimePoint at;
    BoardState to;
  };

  void enter(BoardState state, TimePoint at);
  void leaveBusUntil(Change change, BoardState meanwhile);
  bool mustRefuse(TimePoint now, bool isFirstBlock);
  std::uint32_t addressIn(std::span<const std::uint8_t> report) const;
  std::optional<std::string> objectionTo(std::span<const std::uint8_t> report) const;
  ReportOutcome boot(TimePoint now, std::span<const std::uint8_t> report);
  ReportOutcome takeBlock(TimePoint now, std::span<const std::uint8_t> report);
  ReportOutcome refuse(TimePoint now);
  void tell(TimePoint at, const std::string& event) const;

  const BoardKind& kind_;
  std::string serialNumber_;
  Faults faults_;
  BoardMemory memory_;
  EventListener eventListener_;
  ReportListener reportListener_;

  BoardState state_;
  std::optional<Change> pending_;
  std::uint32_t session_;

  std::optional<TimePoint> firstOfferAt_;
  std::optional<TimePoint> erasedAt_;
  bool isErased_ = false;
  bool toldRefusal_ = false;
  std::uint32_t blocksTaken_ = 0;
  bool hasBooted_ = false;
  std::vector<std::string> complaints_;
};

}  // namespace karvex::rig
