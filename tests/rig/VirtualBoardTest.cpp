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
class BoardFixture {
 public:
  explicit BoardFixture(const char* mcu, Faults faults = {}) : board(*findBoardKind(mcu), "42", faults) {
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
    BoardFixture fixture(kind.mcu.data());
    fixture.enterHalfKay();
    EXPECT_EQ(fixture.board.productId(), 0x0478);
    const auto last = kind.flashSize - kind.blockSize;
    fixture.deliver(fixture.block(0, 0x11));
    fixture.deliver(fixture.block(last, 0x22));
    const auto flash = fixture.board.flash();
    EXPECT_EQ(std::ranges::count(flash.first(kind.blockSize), 0x11), kind.blockSize);
    EXPECT_EQ(std::ranges::count(flash.last(kind.blockSize), 0x22), kind.blockSize);
    EXPECT_EQ(static_cast<std::uint32_t>(std::ranges::count(flash, 0xFF)),
              kind.flashSize - 2 * kind.blockSize);
    EXPECT_EQ(fixture.offer(fixture.block(last + kind.blockSize, 0x33)), ReportOutcome::refused);
    EXPECT_THAT(fixture.board.complaints(), testing::SizeIs(1));
    fixture.deliver(fixture.boot(kind.reportLength()));
    fixture.pass(VirtualBoard::usualBootTime);
    EXPECT_EQ(fixture.board.state(), BoardState::running);
    EXPECT_EQ(fixture.board.productId(), kind.productId);
    fixture.enterHalfKay();
    EXPECT_EQ(fixture.offer(fixture.boot(1088)), ReportOutcome::accepted) << "of the greatest length";
  }
}

TEST(VirtualBoardTest, ALifeFromFirmwareToBootloaderAndBack) {
  BoardFixture fixture("TEENSYLC");
  fixture.board.setLineSpeed(fixture.now, 9600);
  EXPECT_EQ(fixture.board.state(), BoardState::running);
  fixture.board.setLineSpeed(fixture.now, 134);
  EXPECT_FALSE(fixture.board.isOnBus());
  EXPECT_EQ(fixture.offer(fixture.block(0, 1)), ReportOutcome::gone);
  fixture.pass(VirtualBoard::usualSwitchTime);
  EXPECT_EQ(fixture.offer(fixture.block(0, 1)), ReportOutcome::refused) << "the flash is being erased";
  fixture.pass(VirtualBoard::eraseTime - 1ms);
  EXPECT_EQ(fixture.offer(fixture.block(0, 1)), ReportOutcome::refused);
  fixture.pass(1ms);
  EXPECT_EQ(fixture.offer(fixture.block(0, 1)), ReportOutcome::accepted);
  EXPECT_EQ(fixture.offer(fixture.block(512, 1)), ReportOutcome::accepted);
  EXPECT_EQ(fixture.offer(fixture.boot(576)), ReportOutcome::accepted);
  EXPECT_EQ(fixture.offer(fixture.block(0, 1)), ReportOutcome::gone);
  fixture.pass(VirtualBoard::usualBootTime);
  EXPECT_THAT(fixture.events, ElementsAre("0 134 baud", "1400 halfkay", "1400 refused 0", "1700 report 0",
                                          "1700 report 1", "1700 boot", "3000 running"));
  EXPECT_THAT(fixture.lengths, ElementsAre(576U, 576U, 576U));
  fixture.enterHalfKay();
  EXPECT_EQ(fixture.board.flash()[512], 1) << "only a block erases, not the bootloader's start";
  fixture.deliver(fixture.block(0, 2));
  EXPECT_EQ(fixture.board.flash()[0], 2);
  EXPECT_EQ(fixture.board.flash()[512], 0xFF);
}

TEST(VirtualBoardTest, WhatABootloaderWouldStumbleOverIsRefusedWithAComplaint) {
  BoardFixture fixture("TEENSY32");
  fixture.enterHalfKay();
  auto dirtyHeader = fixture.block(0x400, 1);
  dirtyHeader[10] = 1;
  const std::pair<Bytes, const char*> wrong[] = {
      {Bytes{}, "report of 0 bytes"},
      {Bytes(1087), "report of 1087 bytes instead of 1088"},
      {fixture.boot(1000), "boot report of 1000 bytes"},
      {fixture.block(0x400, 1), "came before block 0"},
      {fixture.block(0x200, 1), "not on a block"},
      {fixture.block(0x40000, 1), "beyond the flash"},
      {dirtyHeader, "header is not zero"},
  };
  for (const auto& [report, complaint] : wrong) {
    EXPECT_EQ(fixture.offer(report), ReportOutcome::refused);
    EXPECT_THAT(fixture.board.complaints().back(), HasSubstr(complaint));
  }
  EXPECT_EQ(std::ranges::count(fixture.board.flash(), 0xFF), 0x40000);
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
