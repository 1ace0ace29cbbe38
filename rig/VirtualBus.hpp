#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "device/platform/SerialInterfaces.hpp"
#include "device/platform/UsbBus.hpp"
#include "foundation/Observers.hpp"
#include "foundation/run/Clock.hpp"
#include "rig/VirtualBoard.hpp"

namespace karvex::rig {

/// A USB bus with boards on it, in the order in which they were plugged in; a board keeps its place when it
/// changes between firmware and bootloader, as it does on a real port. All operations may be called on any
/// thread.
class VirtualBus final : public device::UsbBus, public device::SerialInterfaces {
 public:
  /// The clock must outlive the bus.
  explicit VirtualBus(foundation::Clock& clock) : clock_(clock) {}

  /// Plugs a board in, running its firmware unless its faults say otherwise. The reference stays good for the
  /// life of the bus, but what it refers to is to be read only while nothing else uses the bus, or inside
  /// inspect().
  VirtualBoard& plugIn(std::unique_ptr<VirtualBoard> board);

  /// Calls `look` with the board of that serial number, brought up to the present. False if there is none.
  bool inspect(std::string_view serialNumber, const std::function<void(VirtualBoard&)>& look);

  /// Pulls the plug of the board with that serial number.
  void unplug(const std::string& serialNumber);
  /// From now on nothing is wrong with the board with that serial number, and if it was gone it is plugged in
  /// again.
  void repair(const std::string& serialNumber);

  /// The line speed of the serial port of the board with that serial number was changed. False if no running
  /// board has it.
  bool setLineSpeed(const std::string& serialNumber, std::uint32_t baud);

  /// What is known of a board at one moment.
  struct BoardStatus {
    std::string serialNumber;
    std::string mcu;
    std::string firmwareName;
    BoardState state{};
    std::optional<foundation::TimePoint> changesAt;  ///< when it enters another state by itself
  };

  /// The board at that place, from 0, at the present moment. Boards never change their places. Throws
  /// std::out_of_range if there is none.
  BoardStatus boardAt(std::size_t place);
  std::size_t boardCount() const;

  /// Calls back with the place of a board when it was plugged in, when its state has changed, and when it has
  /// been settled that it will; not when that time comes: nobody tells the bus. On the thread that used the
  /// bus, outside its lock.
  [[nodiscard]] foundation::Subscription observeBoards(std::function<void(std::size_t place)> callback);

  /// A board in its bootloader, in the visit that it is on.
  struct HalfKayBoard {
    std::size_t place;
    std::uint32_t session;
    bool deniesAccess;
  };

  /// The first board listed that is in its bootloader.
  std::optional<HalfKayBoard> firstHalfKayBoard();

  /// Offers an output report to the board; if that visit to the bootloader is over, the board is gone.
  ReportOutcome sendReport(const HalfKayBoard& to, std::span<const std::uint8_t> report);

  int forEachDevice(const std::function<void(const device::UsbDevice&)>& visit) override;
  bool isPresent(const std::string& interfaceName) override;

 private:
  /// Calls `use` with each board at the present moment, under the lock, until it gives true. Observers hear
  /// of what that changed.
  bool anyBoard(const std::function<bool(VirtualBoard&)>& use);

  /// Likewise with the one board at that place, whatever the number of the others.
  void useBoard(std::size_t place, const std::function<void(VirtualBoard&)>& use);

  foundation::Clock& clock_;
  mutable std::mutex mutex_;
  std::vector<std::unique_ptr<VirtualBoard>> boards_;
  std::map<std::string, std::size_t, std::less<>> places_;  ///< by serial number, the first that has it
  foundation::Observers<std::size_t> observers_;
};

}  // namespace karvex::rig
