#include "loader/load.hpp"

#include <chrono>
#include <ctime>
#include <optional>
#include <string>

#include "loader/halfkay.hpp"
#include "loader/load_status.hpp"
#include "loader/mcu_table.hpp"
#include "loader/programming_worker.hpp"
#include "tests/loader/loader_fixture.hpp"

namespace karvex::loader {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::SizeIs;

class LoadTest : public loader_fixture {
 protected:
  std::string load(const std::string& text, const char* mcu = "TEENSY32") {
    return load_url(url_of(file_with(text)), mcu);
  }

  std::string load_url(const std::string& url, const char* mcu = "TEENSY32") {
    std::string answer;
    run([&] { answer = setParameters(url.c_str(), mcu); });
    return answer;
  }

  /// Refuses every report from the given one on.
  void refuse_from(std::size_t report) {
    on_report = [report](std::size_t sent) {
      return sent < report ? hid_delivery::sent : hid_delivery::refused;
    };
  }
};

TEST_F(LoadTest, AGoodLoadTakesEachStepAtItsTime) {
  const auto file = file_with(hex_data(0, 1500) + hex_end);
  EXPECT_EQ(load_url(url_of(file), "teensy32"), "Success");
  EXPECT_THAT(
      events(),
      ElementsAre("0 log > KARVEX : Entering setParameters....",
                  "500 log > KARVEX : Status set to LOAD_STATUS_IMPORT_FILE",
                  "500 log > KARVEX : read_intel_hex(Filename = " + file.string() + "\n",
                  "500 log > KARVEX : Number of bytes read : 1500\n",
                  "500 log > KARVEX : Attempt to open HID device",
                  "2500 log > KARVEX : Fetching the First Teensy in Halfkay mode : VID:0x16C0 / PID:0x0478",
                  "2500 search 16C0:0478", "2500 open", "2500 log > KARVEX : Device Open successfull!",
                  "2500 log > KARVEX : Teensy reference found!",
                  "2500 log > KARVEX : Teensy HID device open successful after 0 loops",
                  "2500 log > KARVEX : Start programming....: Status = LOAD_STATUS_PROGRAMMING",
                  "2500 report 0 of 1088 bytes", "2510 report 1 of 1088 bytes",
                  "2520 log > KARVEX : Programming sucessful : Rebooting....",
                  "3520 log > KARVEX : Send BOOT Snippet to device....", "3520 report 2 of 1088 bytes",
                  "3530 close", "3530 log > KARVEX : Teensy closed", "3530 log > KARVEX : Reboot successful!",
                  "3530 log > KARVEX : Status = LOAD_STATUS_SUCCESS!"));
  EXPECT_EQ(get_load_status(), LOAD_STATUS_SUCCESS);
  EXPECT_EQ(get_load_progress().blocks_sent, 2U);
  EXPECT_EQ(get_load_progress().blocks_to_send, 2U);
}

TEST_F(LoadTest, TheLastTwoStatusesWaitForTheMainThread) {
  const auto url = url_of(file_with(hex_end));
  std::vector<std::uint32_t> seen;
  run([&] {
    ASSERT_STREQ(setParameters(url.c_str(), "TEENSY2"), "Success");
    runtime.clock().sleepFor(1100ms);
    seen.push_back(get_load_status());
    runtime.mainQueue().post([&] { seen.push_back(get_load_status()); });
    runtime.mainQueue().post([&] { seen.push_back(get_load_status()); });
  });
  EXPECT_THAT(seen, ElementsAre(5, 7, 7)) << "6 and 7 were queued while the main thread slept";
}

TEST_F(LoadTest, OnlyTheFirstBlockAndThoseThatWriteSomethingAreSent) {
  const std::string blank_block = hex_record(0, 0x0800, std::vector<std::uint8_t>(16, 0xFF));
  const std::string one_byte = hex_record(0, 0x13FF, {0x42});
  struct BlockCase {
    const char* description;
    std::string text;
    std::vector<std::uint32_t> addresses;
  };
  const BlockCase block_cases[] = {
      {"an empty file", "", {0}},
      {"5,000 bytes from 0", hex_data(0, 5000), {0, 0x400, 0x800, 0xC00, 0x1000}},
      {"from 0x2000 on", hex_data(0x2000, 1), {0, 0x2000}},
      {"a block of 0xFF and one with a single byte", blank_block + one_byte, {0, 0x1000}},
      {"the last block, and data behind the flash", hex_data(0x3FFF0, 32), {0, 0x3FC00}},
  };
  for (const auto& example : block_cases) {
    SCOPED_TRACE(example.description);
    reports.clear();
    ASSERT_EQ(load(example.text), "Success");
    std::vector<std::uint32_t> addresses;
    for (const auto& report : reports) {
      addresses.push_back(report[0] | static_cast<std::uint32_t>(report[1] << 8U | report[2] << 16U));
    }
    auto expected = example.addresses;
    expected.push_back(0xFFFFFF);
    EXPECT_EQ(addresses, expected);
    EXPECT_EQ(get_load_progress().blocks_to_send, example.addresses.size());
  }
  EXPECT_THAT(std::vector(reports[0].begin() + 64, reports[0].end()), Each(0xFF));
}

TEST_F(LoadTest, TheDeadlinesOfTheFirstBlockALaterOneAndTheBootReport) {
  struct DeadlineCase {
    std::size_t first_refused;
    std::uint32_t status;
    std::vector<std::string> ending;
  };
  const DeadlineCase deadline_cases[] = {
      {0, LOAD_STATUS_ERROR_PROGRAM, {"7500 log >>> KARVEX : Error writing to Teensy\n", "7500 close"}},
      {1, LOAD_STATUS_ERROR_PROGRAM, {"4510 log >>> KARVEX : Error writing to Teensy\n", "4510 close"}},
      {2, LOAD_STATUS_SUCCESS, {"4020 close", "4020 log > KARVEX : Status = LOAD_STATUS_SUCCESS!"}},
  };
  const auto text = hex_data(0, 1500);
  auto started = elapsed();
  for (const auto& example : deadline_cases) {
    reports.clear();
    refuse_from(example.first_refused);
    const auto before = events().size();
    EXPECT_EQ(load(text), "Success");
    EXPECT_EQ(get_load_status(), example.status);
    std::vector<std::string> expected;
    for (const auto& event : example.ending) {
      const auto blank = event.find(' ');
      expected.push_back(std::to_string(std::stoll(event.substr(0, blank)) + started.count()) +
                         event.substr(blank));
    }
    auto all = events();
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_THAT(all, IsSupersetOf(expected));
    started = elapsed();
  }
  EXPECT_EQ(printed(), ">>> Timeout error!\n>>> Timeout error!\n>>> Timeout error!\n");
}

TEST_F(LoadTest, ABoardThatNeverComesIsWaitedForTwentyFiveSecondsOfVirtualTimeAndNoRealOnes) {
  std::optional<std::clock_t> first_search;
  on_search = [&first_search] {
    first_search = first_search.value_or(std::clock());
    return hid_search::none;
  };
  std::chrono::milliseconds gave_up{};
  std::string answer;
  const auto url = url_of(file_with(hex_end));
  run([&] {
    answer = setParameters(url.c_str(), "TEENSY2");
    gave_up = elapsed();
  });
  EXPECT_LT(std::clock() - first_search.value(), CLOCKS_PER_SEC / 20) << "processor time of the whole wait";
  EXPECT_EQ(answer, "Error - Could not open Teensy");
  EXPECT_EQ(gave_up, 25500ms);
  EXPECT_EQ(get_load_status(), LOAD_STATUS_IMPORT_FILE);
  const auto searches = events({"search"});
  ASSERT_THAT(searches, SizeIs(10));
  EXPECT_EQ(searches.front(), "2500 search 16C0:0478");
  EXPECT_EQ(searches.back(), "25000 search 16C0:0478");
  EXPECT_EQ(events({"log"}).back(),
            "25500 log > KARVEX Could not open Teensy after programming mode has been set : Abort\n");
}

TEST_F(LoadTest, ABoardThatMayNotBeOpenedEndsTheWaitAtOnce) {
  on_open = [] { return hid_access::not_permitted; };
  EXPECT_EQ(load(hex_end), "Error - Permission denied");
  EXPECT_EQ(get_load_status(), LOAD_STATUS_ERROR_PERMISSION);
  EXPECT_THAT(
      events({"log > KARVEX : Not Permitted", "log > KARVEX : Teensy HID", "log > KARVEX Could"}),
      ElementsAre("2500 log > KARVEX : Not Permitted => Abort!",
                  "2500 log > KARVEX : Teensy HID manager access not permitted!",
                  "2500 log > KARVEX Could not open Teensy after programming mode has been set : Abort\n"));
}

TEST_F(LoadTest, AFileThatCannotBeReadEndsTheLoadBeforeAnyBoardIsLookedFor) {
  const std::string longest_path = "/" + std::string(247, 'x');
  const std::string urls[] = {
      "file:///nowhere/a.hex",
      url_of(file_with(":zz\n")),
      url_of(file_with("").parent_path()),
      "file://" + longest_path,
      "file://" + longest_path + "x",
      "file://" + std::string(100'000, 'x'),
      "file://",
      "",
  };
  for (const auto& url : urls) {
    EXPECT_EQ(load_url(url), "Error: Could not read file");
    EXPECT_EQ(get_load_status(), LOAD_STATUS_ERROR_IMPORT_FILE);
  }
  EXPECT_THAT(events({"search"}), SizeIs(0));
  EXPECT_THAT(printed(), HasSubstr("Unable to read file " + longest_path + "\nUnable to read file \n"));
  EXPECT_THAT(
      events({"log >>> KARVEX : File URL too long"}),
      ElementsAre(HasSubstr("(256 characters, at most 255)"), HasSubstr("(100007 characters, at most 255)")));
  EXPECT_EQ(
      events({"log > KARVEX : Error during file import : Status = LOAD_STATUS_ERROR_IMPORT_FILE"}).size(),
      std::size(urls));
}

TEST_F(LoadTest, APathIsTakenAsItStandsWithItsEscapes) {
  const auto file = file_with(hex_end);
  const auto with_blank = file.parent_path() / "a b.hex";
  std::filesystem::rename(file, with_blank);
  EXPECT_EQ(load_url(url_of(file.parent_path() / "a%20b.hex")), "Error: Could not read file");
  EXPECT_EQ(load_url(url_of(with_blank)), "Success");
}

TEST_F(LoadTest, AWorkerThatHasFailedBeforeTheLastLookTurnsTheAnswer) {
  // A host whose global queue runs its jobs at once makes the worker as fast as it can be.
  refuse_from(0);
  auto eager = host_with_eager_global_queue();
  install_host(eager);
  EXPECT_EQ(load(hex_end), "Error : Upload error");
  EXPECT_EQ(get_load_status(), LOAD_STATUS_ERROR_PROGRAM);
  EXPECT_THAT(events({"log > KARVEX : Error uploading"}),
              ElementsAre("7500 log > KARVEX : Error uploading program to teensy"));
}

TEST_F(LoadTest, SizesThatNoReportFitsEndTheWorkerWithABadFileFormat) {
  code_size = 0x40000;
  block_size = 2048;
  static load_job job;
  run([this] { runtime.globalQueue().post([] { programming_worker(job); }); });
  EXPECT_EQ(get_load_status(), LOAD_STATUS_ERROR_FILE_FORMAT);
  EXPECT_TRUE(job.error_flag);
  EXPECT_THAT(events(), ElementsAre("0 log >>> KARVEX : Error -> Unkown code/block size => Status = "
                                    "LOAD_STATUS_ERROR_FILE_FORMAT"));
}

TEST_F(LoadTest, AFailedLoadLeavesNoProgressToTheNext) {
  ASSERT_EQ(load(hex_data(0, 5000)), "Success");
  EXPECT_EQ(get_load_progress().blocks_sent, 5U);
  EXPECT_EQ(load_url("file:///nowhere/a.hex"), "Error: Could not read file");
  EXPECT_EQ(get_load_progress().blocks_sent, 0U);
  EXPECT_EQ(get_load_progress().blocks_to_send, 0U);
}

}  // namespace
}  // namespace karvex::loader
