#include "loader/intel_hex.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>

#include "loader/firmware_image.hpp"
#include "loader/mcu_table.hpp"
#include "tests/loader/loader_fixture.hpp"

namespace karvex::loader {
namespace {

using testing::HasSubstr;

class IntelHexTest : public loader_fixture {
 protected:
  std::int32_t read(const std::string& text, const char* mcu = "TEENSY32") {
    select_mcu(mcu);
    return read_intel_hex(file_with(text).c_str());
  }

  /// The picture as what the file wrote: address to byte.
  static std::map<std::size_t, int> picture() {
    std::map<std::size_t, int> written;
    for (auto at = std::find(image_mask.begin(), image_mask.end(), 1); at != image_mask.end();
         at = std::find(at + 1, image_mask.end(), 1)) {
      const auto address = static_cast<std::size_t>(at - image_mask.begin());
      written[address] = image_bytes[address];
    }
    return written;
  }
};

using Picture = std::map<std::size_t, int>;

struct HexCase {
  const char* description;
  std::string text;
  std::int32_t result;
  Picture picture;
  int bad_line = 0;
};

const std::string two_bytes = ":020010001122BB\n";

std::string padded_end_record(std::size_t length) {
  return ":00000001FF" + std::string(length - 12, 'x') + "\n";
}

const HexCase cases[] = {
    {"an empty file is a file without data", "", 0, {}},
    {"only an end record", ":00000001FF\n", 0, {}},
    {"an end record needs no line end", ":00000001FF", 0, {}},
    {"no end record", two_bytes, 2, {{0x10, 0x11}, {0x11, 0x22}}},
    {"no line end behind the data", ":020010001122BB", 2, {{0x10, 0x11}, {0x11, 0x22}}},
    {"CR LF", ":020010001122BB\r\n:00000001FF\r\n", 2, {{0x10, 0x11}, {0x11, 0x22}}},
    {"small letters",
     ":02001000aabb89\n:02002000aAbB79\n",
     4,
     {{0x10, 0xAA}, {0x11, 0xBB}, {0x20, 0xAA}, {0x21, 0xBB}}},
    {"no data bytes", ":0000100000F0\n", -2, {}, 1},
    {"no data bytes, right checksum", ":00001000F0\n", 0, {}},
    {"text behind the checksum is not looked at",
     ":020010001122BB and more\n",
     2,
     {{0x10, 0x11}, {0x11, 0x22}}},
    {"garbage behind the end record", two_bytes + ":00000001FF\ngarbage\n", 2, {{0x10, 0x11}, {0x11, 0x22}}},
    {"an end record's checksum and length don't matter", ":02000001zzzzzz\n", 0, {}},
    {"the later record wins and both count", two_bytes + ":01001100EE00\n", 3, {{0x10, 0x11}, {0x11, 0xEE}}},
    {"a blank line", two_bytes + "\n" + two_bytes, -2, {{0x10, 0x11}, {0x11, 0x22}}, 2},
    {"a blank before the colon", " " + two_bytes, -2, {}, 1},
    {"ten characters", ":00000001\n", -2, {}, 1},
    {"eleven with the line end", ":00000001F\n", 0, {}},
    {"the length field is more than the line has", ":030010001122BB\n", -2, {}, 1},
    {"a line that is a digit short counts its line end",
     ":020010001122B\n",
     -2,
     {{0x10, 0x11}, {0x11, 0x22}},
     1},
    {"unreadable length", ":0G0010001122BB\n", -2, {}, 1},
    {"a sign is no digit", ":+2001000112200\n", -2, {}, 1},
    {"unreadable address", ":0200x0001122BB\n", -2, {}, 1},
    {"unreadable type", ":020010 01122BB\n", -2, {}, 1},
    {"unreadable data keep what stood before", ":020010001x22BB\n:0", -2, {}, 1},
    {"unreadable second byte", ":0200100011x2BB\n", -2, {{0x10, 0x11}}, 1},
    {"unreadable checksum", ":020010001122-B\n", -2, {{0x10, 0x11}, {0x11, 0x22}}, 1},
    {"wrong checksum keeps the bytes", ":0200100011223B\n", -2, {{0x10, 0x11}, {0x11, 0x22}}, 1},
    {"a bad digit in the middle of a long record keeps what stood before it",
     ":14001000000102030405060708090A0B0C0g0E0F1011121300\n",
     -2,
     {{0x10, 0},
      {0x11, 1},
      {0x12, 2},
      {0x13, 3},
      {0x14, 4},
      {0x15, 5},
      {0x16, 6},
      {0x17, 7},
      {0x18, 8},
      {0x19, 9},
      {0x1A, 10},
      {0x1B, 11},
      {0x1C, 12}},
     1},
    {"other types pass unchecked", ":0400000300003800FF\n:04000005600010002D\n:0000000900\n", 0, {}},
    {"a NUL byte at the start skips the line",
     std::string("\0:zz\n", 5) + two_bytes,
     2,
     {{0x10, 0x11}, {0x11, 0x22}}},
    {"a NUL byte ends the line", std::string(":0200100011\0002BB\n", 17), -2, {}, 1},
    {"a NUL byte behind the checksum harms nothing",
     std::string(":020010001122BB\0\n", 17),
     2,
     {{0x10, 0x11}, {0x11, 0x22}}},
    {"a NUL byte cuts an unchecked record too short", std::string(":02001003\0\0\0\0\0\0\n", 16), -2, {}, 1},
    {"1023 characters are one line", ":0000000300" + std::string(1011, 'x') + "\n" + hex_end, 0, {}},
    {"1024 characters are two, and the second is no record",
     ":0000000300" + std::string(1012, 'x') + "\n" + hex_end,
     -2,
     {},
     2},
    {"a long line whose second piece is a record",
     ":0000000300" + std::string(1012, 'x') + two_bytes,
     2,
     {{0x10, 0x11}, {0x11, 0x22}}},
    {"a long end record ends the reading in its first piece", padded_end_record(4000) + "garbage\n", 0, {}},
    {"segment address", ":020000021001EB\n:0100050042B8\n", 1, {{0x10015, 0x42}}},
    {"linear address", ":020000040012E8\n:0100050042B8\n", 1, {{0x120005, 0x42}}},
    {"an address record with a bad checksum has no effect",
     ":020000040012E9\n:0100050042B8\n",
     1,
     {{0x5, 0x42}}},
    {"nor one that can't be read", ":0200000400x2E8\n:02000002 0012E8\n:0100050042B8\n", 1, {{0x5, 0x42}}},
    {"nor one of another length", ":030000040012E700\n:0100050042B8\n", 1, {{0x5, 0x42}}},
    {"the last byte of the picture's reach", ":0200000400FFFB\n:01FFFE0042C0\n", 1, {{0xFFFFFE, 0x42}}},
    {"one byte beyond", ":0200000400FFFB\n:01FFFF0042BF\n", -2, {}, 2},
    {"the limit holds for records of every type", ":020000040100F9\n:00000001FF\n", -2, {}, 2},
    {"the sum does not wrap around", ":02000004FFFFFC\n:01FFFF0042BF\n", -2, {}, 2},
};

TEST_F(IntelHexTest, LinesReadAsTheyShould) {
  for (const auto& example : cases) {
    SCOPED_TRACE(example.description);
    const auto printed_before = printed().size();
    EXPECT_EQ(read(example.text), example.result);
    EXPECT_EQ(picture(), example.picture);
    const auto message =
        example.bad_line != 0 ? fmt::format("Warning, HEX parse error line {}\n", example.bad_line) : "";
    EXPECT_EQ(printed().substr(printed_before), message);
  }
}

TEST_F(IntelHexTest, TheFlashWindowIsTakenOffForTheTargetsThatHaveOne) {
  struct WindowCase {
    const char* mcu;
    std::uint16_t upper;  ///< of the linear address
    std::optional<std::size_t> lands_at;
  };
  const WindowCase window_cases[] = {
      {"TEENSY40", 0x6000, 0x0},
      {"TEENSY40", 0x601E, 0x1E0000},
      {"TEENSY40", 0x601F, std::nullopt},
      {"imxrt1062", 0x6001, 0x10000},
      {"TEENSY41", 0x607B, 0x7B0000},
      {"TEENSY41", 0x607C, std::nullopt},
      {"TEENSY_MICROMOD", 0x60FB, 0xFB0000},
      {"TEENSY36", 0x6000, std::nullopt},
      {"TEENSY40", 0x5FFF, std::nullopt},
      {"TEENSY40", 0x001F, 0x1F0000},
  };
  for (const auto& example : window_cases) {
    SCOPED_TRACE(fmt::format("{} {:04X}", example.mcu, example.upper));
    const auto text = hex_record(4, 0,
                                 {static_cast<std::uint8_t>(example.upper >> 8U),
                                  static_cast<std::uint8_t>(example.upper)}) +
                      hex_record(0, 0, {0x42});
    EXPECT_EQ(read(text, example.mcu), example.lands_at ? 1 : -2);
    EXPECT_EQ(picture(), example.lands_at ? Picture({{*example.lands_at, 0x42}}) : Picture());
  }
}

TEST_F(IntelHexTest, FilesThatCannotBeReadSaySoAndLeaveAnEmptyPicture) {
  ASSERT_EQ(read(two_bytes), 2);
  EXPECT_EQ(read_intel_hex("/nowhere/firmware.hex"), -1);
  EXPECT_TRUE(picture().empty());
  const auto directory = file_with("").parent_path();
  EXPECT_EQ(read_intel_hex(directory.c_str()), -1);
  EXPECT_EQ(printed(), fmt::format("Unable to read file /nowhere/firmware.hex\nUnable to read file {}\n",
                                   directory.string()));
  EXPECT_THAT(events(),
              testing::Contains(HasSubstr("> KARVEX : read_intel_hex(Filename = /nowhere/firmware.hex\n")));
}

TEST_F(IntelHexTest, LinesMeetTheEdgeOfTheReadBufferAnywhere) {
  // Lines of many lengths, so that the buffer's 64 KiB end falls on every place of a line.
  std::string text;
  std::int32_t count = 0;
  for (std::uint32_t i = 0; i < 9000; ++i) {
    const std::size_t length = i % 33;
    text += hex_record(0, static_cast<std::uint16_t>(i * 7), std::vector<std::uint8_t>(length, 0x5A));
    text.insert(text.size() - 1, std::string(i % 5, ' '));
    count += static_cast<std::int32_t>(length);
  }
  EXPECT_EQ(read(text), count);
}

}  // namespace
}  // namespace karvex::loader
