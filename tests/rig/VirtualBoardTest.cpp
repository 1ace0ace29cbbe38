#include "rig/VirtualBoard.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <system_error>
#include <vector>

#include "foundation/files/TemporaryDirectory.hpp"

namespace karvex::rig {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using Bytes = std::vector<std::uint8_t>;

/// A board on its own, with everything that it tells.
class Bench {
 public:
  explicit Bench(const char* mcu, Faults faults = {}) : board(*findBoardKind(mcu), "42", faults) {
    board.setEventListener([this](foundation::TimePoint at, const std::string& event) {
      events.push_back(fmt::format(
          "{} {}", std::chrono::duration_cast<std::chrono::milliseconds>(at - start).count(), event));
    });
    board.setReportListener(
        [this](std::span<const std::uint8_t> report) { lengths.push_back(report.size()); });
  }

  void enterHalfKay() {
    board.setLineSpeed(now, 134);
    pass(VirtualBoard::usualSwitchTime);
  }
  void pass(foundation::Duration span) {
    now += span;
    board.advanceTo(now);
  }
  Bytes block(std::uint32_t address, std::uint8_t fill) const {
    Bytes report(board.kind().headerLength(), 0);
    const auto shown = board.kind().addressBytes == AddressBytes::high16 ? address >> 8U : address;
    report[0] = static_cast<std::uint8_t>(shown);
    report[1] = static_cast<std::uint8_t>(shown >> 8U);
    if (board.kind().addressBytes == AddressBytes::full24) {
      report[2] = static_cast<std::uint8_t>(shown >> 16U);
    }
    report.resize(board.kind().reportLength(), fill);
    return report;
  }
  Bytes boot(std::size_t length) const {
    Bytes report(length, 0);
    std::fill_n(report.begin(), 3, std::uint8_t{0xFF});
    return report;
  }
  ReportOutcome offer(const Bytes& report) { return board.takeReport(now, report); }
  /// Offers it until the board takes it, as a patient host would.
  void deliver(const Bytes& report) {
    while (offer(report) == ReportOutcome::refused && now < start + 1h) {
      pass(1ms);
    }
  }

  foundation::TimePoint start{};
  foundation::TimePoint now = start;
  std::vector<std::string> events;
  std::vector<std::size_t> lengths;
  VirtualBoard board;
};

TEST(VirtualBoardTest, EveryKindTakesItsFirstAndLastBlockWhereTheyBelong) {
  ASSERT_EQ(boardKinds().size(), 21U);
  for (const auto& kind : boardKinds()) {
    SCOPED_TRACE(kind.mcu);
    Bench bench(kind.mcu.data());
    bench.enterHalfKay();
    EXPECT_EQ(bench.board.productId(), 0x0478);
    const auto last = kind.flashSize - kind.blockSize;
    bench.deliver(bench.block(0, 0x11));
    bench.deliver(bench.block(last, 0x22));
    const auto flash = bench.board.flash();
    EXPECT_EQ(std::ranges::count(flash.first(kind.blockSize), 0x11), kind.blockSize);
    EXPECT_EQ(std::ranges::count(flash.last(kind.blockSize), 0x22), kind.blockSize);
    EXPECT_EQ(static_cast<std::uint32_t>(std::ranges::count(flash, 0xFF)),
              kind.flashSize - 2 * kind.blockSize);
    EXPECT_EQ(bench.offer(bench.block(last + kind.blockSize, 0x33)), ReportOutcome::refused);
    EXPECT_THAT(bench.board.complaints(), testing::SizeIs(1));
    bench.deliver(bench.boot(kind.reportLength()));
    bench.pass(VirtualBoard::usualBootTime);
    EXPECT_EQ(bench.board.state(), BoardState::running);
    EXPECT_EQ(bench.board.productId(), kind.productId);
  }
}

TEST(VirtualBoardTest, ALifeFromFirmwareToBootloaderAndBack) {
  Bench bench("TEENSYLC");
  bench.board.setLineSpeed(bench.now, 9600);
  EXPECT_EQ(bench.board.state(), BoardState::running);
  bench.board.setLineSpeed(bench.now, 134);
  EXPECT_FALSE(bench.board.isOnBus());
  EXPECT_EQ(bench.offer(bench.block(0, 1)), ReportOutcome::gone);
  bench.pass(VirtualBoard::usualSwitchTime);
  EXPECT_EQ(bench.offer(bench.block(0, 1)), ReportOutcome::refused) << "the flash is being erased";
  bench.pass(VirtualBoard::eraseTime - 1ms);
  EXPECT_EQ(bench.offer(bench.block(0, 1)), ReportOutcome::refused);
  bench.pass(1ms);
  EXPECT_EQ(bench.offer(bench.block(0, 1)), ReportOutcome::accepted);
  EXPECT_EQ(bench.offer(bench.block(512, 1)), ReportOutcome::accepted);
  EXPECT_EQ(bench.offer(bench.boot(576)), ReportOutcome::accepted);
  EXPECT_EQ(bench.offer(bench.block(0, 1)), ReportOutcome::gone);
  bench.pass(VirtualBoard::usualBootTime);
  EXPECT_THAT(bench.events, ElementsAre("0 134 baud", "1400 halfkay", "1400 refused 0", "1700 report 0",
                                        "1700 report 1", "1700 boot", "3000 running"));
  EXPECT_THAT(bench.lengths, ElementsAre(576U, 576U, 576U));
}

TEST(VirtualBoardTest, ANewLoadErasesTheOldOne) {
  Bench bench("TEENSY2");
  bench.enterHalfKay();
  bench.deliver(bench.block(0, 0x11));
  bench.deliver(bench.block(0x80, 0x22));
  bench.deliver(bench.boot(130));
  bench.pass(VirtualBoard::usualBootTime);
  bench.enterHalfKay();
  EXPECT_EQ(bench.board.flash()[0x80], 0x22) << "only a block erases, not the bootloader's start";
  bench.deliver(bench.block(0, 0x33));
  EXPECT_EQ(bench.board.flash()[0], 0x33);
  EXPECT_EQ(bench.board.flash()[0x80], 0xFF);
  EXPECT_EQ(bench.board.session(), 2U);
}

TEST(VirtualBoardTest, AResetReportOfFullLengthRebootsAnyKind) {
  for (const auto& kind : boardKinds()) {
    Bench bench(kind.mcu.data());
    bench.enterHalfKay();
    EXPECT_EQ(bench.offer(bench.boot(1088)), ReportOutcome::accepted) << kind.mcu;
    EXPECT_EQ(bench.board.state(), BoardState::rebooting) << kind.mcu;
  }
}

TEST(VirtualBoardTest, WhatABootloaderWouldStumbleOverIsRefusedWithAComplaint) {
  Bench bench("TEENSY32");
  bench.enterHalfKay();
  auto dirtyHeader = bench.block(0x400, 1);
  dirtyHeader[10] = 1;
  const std::pair<Bytes, const char*> wrong[] = {
      {Bytes{}, "report of 0 bytes"},
      {Bytes(1087), "report of 1087 bytes instead of 1088"},
      {bench.boot(1000), "boot report of 1000 bytes"},
      {bench.block(0x400, 1), "came before block 0"},
      {bench.block(0x200, 1), "not on a block"},
      {bench.block(0x40000, 1), "beyond the flash"},
      {dirtyHeader, "header is not zero"},
  };
  for (const auto& [report, complaint] : wrong) {
    EXPECT_EQ(bench.offer(report), ReportOutcome::refused);
    EXPECT_THAT(bench.board.complaints().back(), HasSubstr(complaint));
  }
  EXPECT_EQ(std::ranges::count(bench.board.flash(), 0xFF), 0x40000);
}

TEST(VirtualBoardTest, WhatIsInAFileIsThereForTheNextProcess) {
  const foundation::TemporaryDirectory directory;
  const auto& kind = *findBoardKind("TEENSY2");
  const auto remembered = [&] {
    return VirtualBoard(kind, "42", {}, BoardMemory(kind.flashSize, directory.path() / "42"));
  };
  const foundation::TimePoint now{};
  EXPECT_EQ(remembered().state(), BoardState::running);
  EXPECT_EQ(std::ranges::count(remembered().flash(), 0xFF), kind.flashSize);
  {
    auto board = remembered();
    board.setLineSpeed(now, 134);
  }
  auto board = remembered();
  EXPECT_EQ(board.state(), BoardState::halfKay) << "it was on its way there";
  const Bytes block(kind.reportLength(), 0);
  board.takeReport(now, block);
  board.takeReport(now + VirtualBoard::eraseTime, block);
  EXPECT_EQ(remembered().flash()[0], 0) << "also when the process doesn't end";
  board.unplug(now + VirtualBoard::eraseTime);
  EXPECT_EQ(remembered().state(), BoardState::running) << "somebody plugged it in again";
  EXPECT_THROW(BoardMemory(1, directory.path() / "42"), std::system_error);
}

}  // namespace
}  // namespace karvex::rig
