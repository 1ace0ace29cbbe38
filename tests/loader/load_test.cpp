#include "loader/load.hpp"

#include <array>
#include <functional>
#include <utility>

#include "loader/firmware_image.hpp"
#include "loader/halfkay_report.hpp"
#include "loader/load_status.hpp"
#include "loader/mcu_table.hpp"
#include "loader/programming_worker.hpp"
#include "tests/loader/loader_fixture.hpp"

namespace karvex::loader {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class LoadTest : public loader_fixture {
 protected:
  /// Runs a load until well after its end.
  std::string load_url(const std::string& url, const char* mcu = "TEENSY32") {
    std::string answer;
    start();
    run([&] { answer = setParameters(url.c_str(), mcu); });
    return answer;
  }
  std::string load(const std::string& text, const char* mcu = "TEENSY32") {
    return load_url("file://" + write_file(text), mcu);
  }
  void run(std::function<void()> on_main) {
    runtime.mainQueue().post(std::move(on_main));
    runtime.mainQueue().postAt(runtime.clock().now() + 1min, [this] { runtime.stopMain(); });
    runtime.runMain();
  }
};

TEST_F(LoadTest, AGoodLoadTakesEachStepAtItsTime) {
  EXPECT_EQ(load(hex_fill(0, 1500, 0x5A), "teensy32"), "Success");
  EXPECT_THAT(
      events,
      ElementsAre("0 log > KARVEX : Entering setParameters....",
                  "500 log > KARVEX : Status set to LOAD_STATUS_IMPORT_FILE",
                  "500 log > KARVEX : read_intel_hex(Filename = " + file + "\n",
                  "500 log > KARVEX : Number of bytes read : 1500\n",
                  "500 log > KARVEX : Attempt to open HID device",
                  "2500 log > KARVEX : Fetching the First Teensy in Halfkay mode : VID:0x16C0 / PID:0x0478",
                  "2500 search 16C0:0478", "2500 open", "2500 log > KARVEX : Device Open successfull!",
                  "2500 log > KARVEX : Teensy reference found!",
                  "2500 log > KARVEX : Teensy HID device open successful after 0 loops",
                  "2500 log > KARVEX : Start programming....: Status = LOAD_STATUS_PROGRAMMING",
                  "2500 report 00x64 5Ax1024", "2510 report 00 04 00x62 5Ax476 FFx548",
                  "2520 log > KARVEX : Programming sucessful : Rebooting....",
                  "3520 log > KARVEX : Send BOOT Snippet to device....", "3520 report FFx3 00x1085",
                  "3530 close", "3530 log > KARVEX : Teensy closed", "3530 log > KARVEX : Reboot successful!",
                  "3530 log > KARVEX : Status = LOAD_STATUS_SUCCESS!"));
  EXPECT_STREQ(load_status_text(get_load_status()), "Success");
}

TEST_F(LoadTest, TheLastTwoStatusesWaitForTheMainThread) {
  std::vector<std::uint32_t> seen;
  const auto note = [&seen] { seen.push_back(get_load_status()); };
  run([&, url = "file://" + write_file("")] {
    setParameters(url.c_str(), "TEENSY2");
    runtime.clock().sleepFor(1100ms);
    note();
    runtime.mainQueue().post(note);
  });
  EXPECT_THAT(seen, ElementsAre(LOAD_STATUS_PROGRAMMING, LOAD_STATUS_SUCCESS));
}

TEST_F(LoadTest, TheReportsOfALoad) {
  const std::tuple<const char*, std::uint32_t, std::size_t, std::uint8_t, const char*> cases[] = {
      // The address is written as the target wants it.
      {"at90usb162", 0x3D80, 1, 0x5A, "00x2 FFx128|80 3D 5A FFx127|FFx3 00x127"},
      {"atmega32u4", 0x7D80, 1, 0x5A, "00x2 FFx128|80 7D 5A FFx127|FFx3 00x127"},
      {"at90usb646", 0xFB00, 1, 0x5A, "00x2 FFx256|00 FB 5A FFx255|FFx3 00x255"},
      {"at90usb1286", 0x1FB00, 1, 0x5A, "00x2 FFx256|FB 01 5A FFx255|FFx3 00x255"},
      {"mkl26z64", 0xF600, 1, 0x5A, "00x64 FFx512|00 F6 00x62 5A FFx511|FFx3 00x573"},
      {"mk20dx128", 0x1FC00, 1, 0x5A, "00x64 FFx1024|00 FC 01 00x61 5A FFx1023|FFx3 00x1085"},
      {"TEENSY_micromod", 0xFBFC00, 1, 0x5A, "00x64 FFx1024|00 FC FB 00x61 5A FFx1023|FFx3 00x1085"},
      // The first block always goes out, and of the others those that write something.
      {"TEENSY40", 0, 0, 0, "00x64 FFx1024|FFx3 00x1085"},
      {"TEENSY40", 0, 1025, 1, "00x64 01x1024|00 04 00x62 01 FFx1023|FFx3 00x1085"},
      {"TEENSY40", 0x800, 16, 0xFF, "00x64 FFx1024|FFx3 00x1085"},
      {"TEENSY40", 0x13FF, 1, 2, "00x64 FFx1024|00 10 00x62 FFx1023 02|FFx3 00x1085"},
      // The last block, and no data after the flash.
      {"TEENSY32", 0x3FFF0, 32, 3, "00x64 FFx1024|00 FC 03 00x61 FFx1008 03x16|FFx3 00x1085"},
      {"mk20dx128", 0x1FFFF, 2, 3, "00x64 FFx1024|00 FC 01 00x61 FFx1023 03|FFx3 00x1085"},
  };
  for (const auto& [mcu, address, count, value, expected] : cases) {
    EXPECT_EQ(load(hex_fill(address, count, value), mcu), "Success");
    EXPECT_EQ(fmt::format("{}", fmt::join(reports, "|")), expected) << mcu;
    EXPECT_EQ(get_load_progress().blocks_sent, reports.size() - 1);
    EXPECT_EQ(get_load_progress().blocks_to_send, reports.size() - 1);
  }
}

TEST_F(LoadTest, ALoadThatFailsEndsWithItsReasonAndTheNextOneStartsFresh) {
  const world refuses_first{.takes_reports = 0},
      leaves_after_one{.takes_reports = 1, .refusal = hid_delivery::gone}, refuses_boot{.takes_reports = 2},
      fails_at_once{.takes_reports = 0, .is_eager = true}, no_board{.search = hid_search::none},
      not_permitted{.access = hid_access::not_permitted};
  const std::tuple<world, const char*, std::uint32_t, const char*> cases[] = {
      {refuses_first, "Success", LOAD_STATUS_ERROR_PROGRAM,
       "7500 print >>> Timeout error!\n|7500 log >>> KARVEX : Error writing to Teensy\n|7500 close|"
       "7500 log > KARVEX : Teensy closed"},
      {leaves_after_one, "Success", LOAD_STATUS_ERROR_PROGRAM,
       "4510 log >>> KARVEX : Error writing to Teensy\n|4510 close|4510 log > KARVEX : Teensy closed"},
      {refuses_boot, "Success", LOAD_STATUS_SUCCESS,
       "4020 print >>> Timeout error!\n|4020 close|4020 log > KARVEX : Teensy closed|"
       "4020 log > KARVEX : Reboot successful!|4020 log > KARVEX : Status = LOAD_STATUS_SUCCESS!"},
      {fails_at_once, "Error : Upload error", LOAD_STATUS_ERROR_PROGRAM,
       "7500 log > KARVEX : Error uploading program to teensy"},
      {no_board, "Error - Could not open Teensy", LOAD_STATUS_IMPORT_FILE,
       "25000 log > KARVEX : Open device attempt => No device detected in halfkay mode|"
       "25000 log > KARVEX : Teensy reference not set yet|"
       "25500 log > KARVEX Could not open Teensy after programming mode has been set : Abort\n"},
      {not_permitted, "Error - Permission denied", LOAD_STATUS_ERROR_PERMISSION,
       "2500 log > KARVEX : Not Permitted => Abort!|"
       "2500 log > KARVEX : Teensy HID manager access not permitted!|"
       "2500 log > KARVEX Could not open Teensy after programming mode has been set : Abort\n"},
  };
  for (const auto& [given, answer, status, ending] : cases) {
    answers = given;
    EXPECT_EQ(load(hex_fill(0, 1500, 0x5A)), answer);
    EXPECT_EQ(get_load_status(), status);
    EXPECT_THAT(fmt::format("{}", fmt::join(events, "|")), EndsWith(ending));
    answers = {.comes_at = 24s};
    EXPECT_EQ(load(hex_fill(0x400, 10, 0x5A)), "Success");
    EXPECT_THAT(events, Contains("25000 log > KARVEX : Teensy HID device open successful after 9 loops"));
    EXPECT_EQ(reports.size(), 3U) << "two blocks and the boot report: nothing of the first file";
    EXPECT_EQ(get_load_status(), LOAD_STATUS_SUCCESS);
  }
}

TEST_F(LoadTest, AFileThatCannotBeReadEndsTheLoadBeforeABoardIsLookedFor) {
  ASSERT_EQ(load(""), "Success");
  const std::string unread = "print Unable to read file ", folder = directory.path();
  const std::string longest = "/" + std::string(247, 'x');
  const std::pair<std::string, std::string> cases[] = {
      {"file:///nowhere/a%20b.hex", unread + "/nowhere/a%20b.hex\n"},
      {"file://" + folder, unread + folder + "\n"},
      {"file://" + write_file(":zz\n"), "print Warning, HEX parse error line 1\n"},
      {"file://" + longest, unread + longest + "\n"},
      {"file://" + longest + "x", "log >>> KARVEX : File URL too long (256 characters, at most 255) : "},
      {std::string(100'000, 'x'), "log >>> KARVEX : File URL too long (100000 characters, at most 255) : "},
      {"file://", unread + "\n"},
      {"", unread + "\n"},
  };
  for (const auto& [url, event] : cases) {
    EXPECT_EQ(load_url(url), "Error: Could not read file");
    EXPECT_EQ(get_load_status(), LOAD_STATUS_ERROR_IMPORT_FILE);
    EXPECT_EQ(get_load_progress().blocks_sent + get_load_progress().blocks_to_send, 0U);
    EXPECT_THAT(events, Contains(HasSubstr("500 " + event)));
    EXPECT_EQ(events.back(),
              "500 log > KARVEX : Error during file import : Status = LOAD_STATUS_ERROR_IMPORT_FILE");
  }
}

TEST_F(LoadTest, SizesThatNoReportFitsEndTheWorkerWithABadFileFormat) {
  EXPECT_FALSE(layout_for(0x10000, 128) || layout_for(0x8000, 300));
  code_size = 0x40000;
  block_size = 2048;
  load_job job;
  programming_worker(job);
  EXPECT_TRUE(job.error_flag);
  EXPECT_STREQ(load_status_text(get_load_status()), "Bad file format");
  EXPECT_THAT(events, ElementsAre("0 log >>> KARVEX : Error -> Unkown code/block size => Status = "
                                  "LOAD_STATUS_ERROR_FILE_FORMAT"));
}

TEST_F(LoadTest, ANameOfAMicrocontrollerIsKnownOnlyWhole) {
  const std::pair<const char*, const char*> twins[] = {
      {"imxrt1062", "TEENSY40"},    {"mk64fx512", "TEENSY35"}, {"atmega32u4", "TEENSY2"},
      {"TEENSY31", "TEENSY32"},     {"mk66fx1m0", "TEENSY36"}, {"mkl26z64", "TEENSYLC"},
      {"at90usb1286", "TEENSY2PP"}, {"mk20dx128", "TEENSY30"}, {"mk20dx256", "TEENSY31"}};
  for (const auto& [chip, board] : twins) {
    EXPECT_EQ(find_mcu(chip)->code_size, find_mcu(board)->code_size) << chip;
    EXPECT_EQ(find_mcu(chip)->block_size, find_mcu(board)->block_size) << chip;
  }
  const std::string list = "0 print Supported MCUs are:\n|0 print  - at90usb162\n|";
  for (const char* name : {"TEENSY400", "TEENSY", "", static_cast<const char*>(nullptr)}) {
    start();
    EXPECT_THROW(select_mcu(name), std::exception);
    const auto text = fmt::format("{}", fmt::join(events, "|"));
    EXPECT_THAT(text, StartsWith(name == nullptr
                                     ? "0 error No MCU specified.\n|" + list
                                     : fmt::format("0 error Unknown MCU type \"|0 error {}|0 error \"\n|{}",
                                                   name, list)));
    EXPECT_THAT(text, EndsWith("|0 print  - TEENSY_MICROMOD\n|0 exit 1"));
  }
  EXPECT_EQ(load_status_text(LOAD_STATUS_ERROR_PERMISSION + 1), nullptr);
}

using HalfkayTest = loader_fixture;

TEST_F(HalfkayTest, AnOpenThatFailsSaysWhyAResetKeepsItsPausesAndNeitherLeavesTheBoardOpen) {
  const auto open = [] {
    EXPECT_EQ(open_halfkay_device(), halfkay_open_result::not_found);
    EXPECT_FALSE(write_report(nullptr, 0, 1s));
  };
  const auto reset = [] { reset_halfkay_device(); };
  const std::string lost =
      "2000 log > KARVEX : Teensy reference not set yet|"
      "2000 print >>> iokit_teensy_reference lost!\n";
  const std::string closed = "log > KARVEX : Teensy closed";
  const std::tuple<world, std::function<void()>, std::string> cases[] = {
      {{.search = hid_search::unavailable},
       open,
       "|2000 log >>> KARVEX : Could not create USB devices dictionary => Abort|" + lost},
      {{.search = hid_search::none},
       open,
       "|2000 log > KARVEX : Open device attempt => No device detected in halfkay mode|" + lost},
      {{.creates_device = false}, open, "|2000 search 16C0:0478|" + lost},
      {{.access = hid_access::failed},
       open,
       "|2000 open failed|2000 log >>> KARVEX : Device Open failed => Abort!|" + lost},
      {{},
       reset,
       "0 log > KARVEX : Check presence of a device in halfkay mode|0 search 16C0:0478|0 open|"
       "0 log > KARVEX : Device Open successfull!|"
       "0 log > KARVEX : Halfkay mode device detected before programming attempt. Trying to reset...|"
       "0 report FFx3 00x1085|110 close|2110 log > KARVEX : Reset sent to device|2110 " +
           closed},
      {{.takes_reports = 0},
       reset,
       "|1000 print >>> Timeout error!\n|1100 close|3100 log > KARVEX : Reset sent to device|3100 " + closed},
      {{.search = hid_search::none},
       reset,
       "|0 log > KARVEX : Resettor did not detect device in halfkay mode (OK)"},
  };
  set_load_status(LOAD_STATUS_IMPORT_FILE);
  for (const auto& [given, operation, ending] : cases) {
    start();
    answers = given;
    operation();
    close_halfkay_device();
    EXPECT_THAT(fmt::format("{}", fmt::join(events, "|")), EndsWith(ending));
  }
  EXPECT_EQ(elapsed(), 2000ms) << "the same pause without a board";
}

TEST_F(HalfkayTest, AnOpenFirstClosesWhatIsOpenAndAReportIsOfferedUntilTheDeadline) {
  const std::array<std::uint8_t, 2> report{};
  open_halfkay_device();
  start();
  open_halfkay_device();
  EXPECT_EQ(events.front(), "0 close");
  answers.takes_reports_from = 3999ms;
  EXPECT_TRUE(write_report(report.data(), report.size(), 2s));
  EXPECT_EQ(elapsed(), 4009ms) << "1999 ms of refusals and the pause after a report";
  answers.takes_reports = 0;
  EXPECT_FALSE(write_report(report.data(), report.size(), 2s));
  EXPECT_EQ(elapsed(), 6009ms) << "no pause after a report that did not go out";
}

TEST(FirmwareImageTest, RangesEndAtTheEndOfThePicture) {
  using bytes_at = std::vector<std::pair<std::uint32_t, std::uint8_t>>;
  // Of two files, of which the first leaves nothing.
  for (const auto& file :
       {bytes_at{{0, 0x00}, {0xFFFFFD, 0x00}}, {{0xFF, 0xFF}, {0x1FF, 0x00}, {0xFFFFFE, 0x12}}}) {
    clear_image();
    for (const auto& [address, byte] : file) {
      note_written(address, 1);
      image_bytes[address] = byte;
      image_mask[address] = 1;
    }
  }
  // Address, length, whether there are data and whether all is blank.
  const std::tuple<std::uint32_t, std::uint32_t, bool, bool> cases[] = {
      {0x000, 0x0FF, false, true},          {0x000, 0x100, true, true},
      {0x100, 0x100, true, false},          {0x1FF, 0, false, true},
      {0xFFFF00, 0xFFFFFFFF, true, false},  {0x1000000, 0x100, false, true},
      {0xFFFFFFFF, 0xFFFFFFFF, false, true}};
  for (const auto& [address, length, has_data, is_blank] : cases) {
    EXPECT_EQ(block_has_data(address, length), has_data) << address;
    EXPECT_EQ(block_is_blank(address, length), is_blank) << address;
  }
  const auto report = [](std::uint32_t address, std::size_t length) {
    std::vector<std::uint8_t> bytes(length, 0xEE);
    build_block_report({address_form::bits_0_to_23, 64, length}, address, bytes);
    return in_short(bytes.data(), bytes.data() + length);
  };
  EXPECT_EQ(report(0xFFFFFC, 67), "FC FFx2 00x61 FFx2 12");
  EXPECT_EQ(report(0xFFFFFC, 68), "FC FFx2 00x61 FFx4") << "erased flash, if the range reaches the end";
  EXPECT_EQ(report(0xFFFFFFF0, 96), "F0 FFx2 00x61 FFx32");
}

}  // namespace
}  // namespace karvex::loader
