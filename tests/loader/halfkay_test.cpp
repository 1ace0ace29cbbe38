#include "loader/halfkay.hpp"

#include <array>
#include <chrono>

#include "loader/load_status.hpp"
#include "tests/loader/loader_fixture.hpp"

namespace karvex::loader {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

class HalfkayTest : public loader_fixture {
 protected:
  HalfkayTest() { set_load_status(LOAD_STATUS_IMPORT_FILE); }
  ~HalfkayTest() override { close_halfkay_device(); }

  std::array<std::uint8_t, 130> report{};
};

TEST_F(HalfkayTest, AnOpenWaitsTwoSecondsAndTellsEachStep) {
  EXPECT_EQ(open_halfkay_device(), halfkay_open_result::opened);
  EXPECT_THAT(
      events(),
      ElementsAre("2000 log > KARVEX : Fetching the First Teensy in Halfkay mode : VID:0x16C0 / PID:0x0478",
                  "2000 search 16C0:0478", "2000 open", "2000 log > KARVEX : Device Open successfull!",
                  "2000 log > KARVEX : Teensy reference found!"));
  close_halfkay_device();
  close_halfkay_device();
  EXPECT_THAT(events({"close", "log > KARVEX : Teensy closed"}),
              ElementsAre("2000 close", "2000 log > KARVEX : Teensy closed"));
}

TEST_F(HalfkayTest, AnOpenThatFailsSaysWhyAndLeavesNothingOpen) {
  struct OpenCase {
    hid_search search;
    bool creates_device;
    hid_access access;
    halfkay_open_result result;
    std::vector<std::string> log;
  };
  const std::string not_set = "log > KARVEX : Teensy reference not set yet";
  const OpenCase open_cases[] = {
      {hid_search::unavailable,
       true,
       hid_access::opened,
       halfkay_open_result::not_found,
       {"log >>> KARVEX : Could not create USB devices dictionary => Abort", not_set}},
      {hid_search::none,
       true,
       hid_access::opened,
       halfkay_open_result::not_found,
       {"log > KARVEX : Open device attempt => No device detected in halfkay mode", not_set}},
      {hid_search::found, false, hid_access::opened, halfkay_open_result::not_found, {not_set}},
      {hid_search::found,
       true,
       hid_access::failed,
       halfkay_open_result::not_found,
       {"log >>> KARVEX : Device Open failed => Abort!", not_set}},
      {hid_search::found,
       true,
       hid_access::not_permitted,
       halfkay_open_result::not_permitted,
       {"log >>> KARVEX : Device Open failed => Abort!", "log > KARVEX : Not Permitted => Abort!"}},
  };
  for (const auto& example : open_cases) {
    const auto before = events({"log"}).size();
    on_search = [&example] { return example.search; };
    on_open = [&example] { return example.access; };
    creates_device = example.creates_device;
    EXPECT_EQ(open_halfkay_device(), example.result);
    std::vector<std::string> logged;
    for (const auto& event : events({"log"})) {
      logged.push_back(event.substr(event.find(' ') + 1));
    }
    logged.erase(logged.begin(), logged.begin() + static_cast<std::ptrdiff_t>(before) + 1);
    EXPECT_EQ(logged, example.log);
    EXPECT_FALSE(write_report(report.data(), report.size(), 1s));
  }
  EXPECT_EQ(get_load_status(), LOAD_STATUS_ERROR_PERMISSION);
  EXPECT_THAT(events({"close"}), SizeIs(0));
  EXPECT_THAT(printed(), testing::StartsWith(">>> iokit_teensy_reference lost!\n"));
}

TEST_F(HalfkayTest, AnOpenFirstClosesWhatIsOpenAndThenWaits) {
  ASSERT_EQ(open_halfkay_device(), halfkay_open_result::opened);
  ASSERT_EQ(open_halfkay_device(), halfkay_open_result::opened);
  EXPECT_THAT(events({"open", "close"}), ElementsAre("2000 open", "2000 close", "4000 open"));
}

TEST_F(HalfkayTest, AReportIsOfferedUntilTheDeadlineAndNotLater) {
  ASSERT_EQ(open_halfkay_device(), halfkay_open_result::opened);
  const auto opened_at = elapsed();
  on_report = [&](std::size_t) {
    return elapsed() < opened_at + 1999ms ? hid_delivery::refused : hid_delivery::sent;
  };
  EXPECT_TRUE(write_report(report.data(), report.size(), 2s));
  EXPECT_EQ(elapsed() - opened_at, 2009ms) << "1999 ms of refusals and the pause behind a report";

  const auto refused_from = elapsed();
  for (const auto outcome : {hid_delivery::refused, hid_delivery::gone}) {
    on_report = [outcome](std::size_t) { return outcome; };
    EXPECT_FALSE(write_report(report.data(), report.size(), 2s));
  }
  EXPECT_EQ(elapsed() - refused_from, 4s) << "no pause behind a report that did not go out";
  EXPECT_EQ(printed(), ">>> Timeout error!\n>>> Timeout error!\n");
}

TEST_F(HalfkayTest, ATimeOutOfZeroOffersNothing) {
  ASSERT_EQ(open_halfkay_device(), halfkay_open_result::opened);
  EXPECT_FALSE(write_report(report.data(), report.size(), 0s));
  EXPECT_THAT(reports, SizeIs(0));
}

TEST_F(HalfkayTest, AResetRebootsTheFirstBoardAndKeepsItsPauses) {
  set_load_status(LOAD_STATUS_SUCCESS);
  EXPECT_EQ(reset_halfkay_device(), 0);
  EXPECT_THAT(
      events(),
      ElementsAre("0 log > KARVEX : Check presence of a device in halfkay mode", "0 search 16C0:0478",
                  "0 open", "0 log > KARVEX : Device Open successfull!",
                  "0 log > KARVEX : Halfkay mode device detected before programming attempt. "
                  "Trying to reset...",
                  "0 report 0 of 1088 bytes", "110 close", "2110 log > KARVEX : Reset sent to device"));
  ASSERT_THAT(reports, SizeIs(1));
  EXPECT_THAT(std::vector(reports[0].begin(), reports[0].begin() + 3), Each(0xFF));
  EXPECT_THAT(std::vector(reports[0].begin() + 3, reports[0].end()), Each(0));
}

TEST_F(HalfkayTest, AResetThatFindsNoBoardStillTakesItsTime) {
  on_search = [] { return hid_search::none; };
  EXPECT_EQ(reset_halfkay_device(), 0);
  EXPECT_THAT(events({"log"}),
              ElementsAre("0 log > KARVEX : Check presence of a device in halfkay mode",
                          "0 log > KARVEX : Open device attempt => No device detected in halfkay mode",
                          "0 log > KARVEX : Resettor did not detect device in halfkay mode (OK)"));
  EXPECT_EQ(elapsed(), 2s);
}

TEST_F(HalfkayTest, AResetThatTheBoardRefusesGoesOnBehindItsTimeOut) {
  on_report = [](std::size_t) { return hid_delivery::refused; };
  EXPECT_EQ(reset_halfkay_device(), 0);
  EXPECT_THAT(events({"close", "log > KARVEX : Reset"}),
              ElementsAre("1100 close", "3100 log > KARVEX : Reset sent to device"));
  on_report = [](std::size_t) { return hid_delivery::sent; };
  EXPECT_EQ(open_halfkay_device(), halfkay_open_result::opened);
  EXPECT_THAT(events({"close"}), SizeIs(1)) << "what the reset closed is not closed again";
  EXPECT_THAT(events({"log > KARVEX : Teensy closed"}), ElementsAre("3100 log > KARVEX : Teensy closed"));
}

}  // namespace
}  // namespace karvex::loader
