#include "loader/intel_hex.hpp"

#include "loader/firmware_image.hpp"
#include "loader/mcu_table.hpp"
#include "tests/loader/loader_fixture.hpp"

namespace karvex::loader {
namespace {

using namespace std::string_literals;

class IntelHexTest : public loader_fixture {
 protected:
  /// "3 bytes, 10: 11x2, 20: 33" or "line 2, 10: 11x2": the result, and what the file wrote into the picture.
  std::string read(const std::string& text, const char* mcu = "TEENSY32") {
    start();
    select_mcu(mcu);
    const auto result = read_intel_hex(write_file(text).c_str());
    std::string picture = fmt::format("{} bytes", result);
    if (result == hex_line_malformed) {
      picture = events.back().substr(std::string_view("0 print Warning, HEX parse error ").size());
      picture.pop_back();
    }
    const std::string_view mask(reinterpret_cast<const char*>(image_mask.data()), image_size);
    for (std::size_t end = 0, at = 0; (at = mask.find('\1', end)) != std::string_view::npos;) {
      end = mask.find('\0', at);
      picture += fmt::format(", {:X}: {}", at, in_short(image_bytes.data() + at, image_bytes.data() + end));
    }
    return picture;
  }
};

struct hex_case {
  const char* description;
  std::string text;
  const char* expected;
  const char* mcu = "TEENSY32";
};

const std::string two = ":020010001122BB\n";
const std::string passed_over = ":0000000300";
std::string byte_at_upper(std::uint32_t upper) {
  return hex_fill(upper << 16U, 1, 0x42);
}

const hex_case cases[] = {
    {"an empty file is a file without data", "", "0 bytes"},
    {"an end record needs no line end", ":00000001FF", "0 bytes"},
    {"no end record, no line end", ":020010001122BB", "2 bytes, 10: 11 22"},
    {"CR LF, and text after the checksum", ":020010001122BB x\r\n:00000001FF\r\n", "2 bytes, 10: 11 22"},
    {"small letters", ":02001000aabb89\n:02002000aAbF75\n", "4 bytes, 10: AA BB, 20: AA BF"},
    {"no data bytes", ":0000100000F0\n", "line 1"},
    {"no data bytes, right checksum", ":00001000F0\n", "0 bytes"},
    {"what comes after an end record's type doesn't matter", two + ":02000001zzzzzz\ngarbage\n",
     "2 bytes, 10: 11 22"},
    {"the later record wins and both count", two + ":01001100EE00\n", "3 bytes, 10: 11 EE"},
    {"a blank line", two + "\n" + two, "line 2, 10: 11 22"},
    {"another beginning", "x020010001122BB\n", "line 1"},
    {"ten characters", ":00000001\n", "line 1"},
    {"eleven with the line end", ":00000001F\n", "0 bytes"},
    {"the length field is more than the line has", ":030010001122BB\n", "line 1"},
    {"a line that is a digit short counts its line end", ":020010001122B\n", "line 1, 10: 11 22"},
    {"unreadable length: a sign is no digit", ":+2001000112200\n", "line 1"},
    {"nor is a byte above ASCII",
     ":02001000\xB1\xB1"
     "22BB\n",
     "line 1"},
    {"unreadable address", ":0200x0001122BB\n", "line 1"},
    {"unreadable type", ":020010 01122BB\n", "line 1"},
    {"unreadable checksum", ":01001000EF-B\n", "line 1, 10: EF"},
    {"wrong checksum keeps the bytes", ":0200100011223B\n", "line 1, 10: 11 22"},
    {"a bad digit in a long record keeps what stood before it",
     ":140010000101010101010101010102020g0E0F101112131400\n", "line 1, 10: 01x10 02x2"},
    {"other types pass unchecked", ":0400000300003800FF\n:04000005600010002D\n:0000000900\n", "0 bytes"},
    {"a NUL byte at the start skips the line", "\0:zz\n"s + two, "2 bytes, 10: 11 22"},
    {"a NUL byte ends the line", ":0200100011\0002BB\n"s, "line 1"},
    {"a NUL byte after the checksum harms nothing", ":020010001122BB\0\n"s, "2 bytes, 10: 11 22"},
    {"a NUL byte cuts an unchecked record too short", ":02001003\0\0\0\0\0\0\n"s, "line 1"},
    {"1023 characters are one line", passed_over + std::string(1011, 'x') + "\n:00000001FF\n", "0 bytes"},
    {"1024 are two, and the second is no record", passed_over + std::string(1012, 'x') + "\n", "line 2"},
    {"its second piece is a record", passed_over + std::string(1012, 'x') + two, "2 bytes, 10: 11 22"},
    {"a long end record ends the reading", ":00000001FF" + std::string(4000, 'x') + "\ngarbage\n", "0 bytes"},
    {"segment address", ":020000021001EB\n:0100050042B8\n", "1 bytes, 10015: 42"},
    {"linear address", ":020000040012E8\n:0100050042B8\n", "1 bytes, 120005: 42"},
    {"an address with a bad checksum has no effect", ":020000040012E9\n:0100050042B8\n", "1 bytes, 5: 42"},
    {"nor one that can't be read", ":0200000200x2FC\n:02000002 0012E8\n:0100050042B8\n", "1 bytes, 5: 42"},
    {"nor one of another length", ":030000040012E700\n:0100050042B8\n", "1 bytes, 5: 42"},
    {"the last byte of the picture's reach", ":0200000400FFFB\n:01FFFE0042C0\n", "1 bytes, FFFFFE: 42"},
    {"one byte beyond", ":0200000400FFFB\n:01FFFF0042BF\n", "line 2"},
    {"the limit holds for records of every type", ":020000040100F9\n:00000001FF\n", "line 2"},
    {"the sum does not wrap around", ":02000004FFFFFC\n:01FFFF0042BF\n", "line 2"},
    {"the flash window", byte_at_upper(0x6000), "1 bytes, 0: 42", "TEENSY40"},
    {"its end", byte_at_upper(0x601E), "1 bytes, 1E0000: 42", "TEENSY40"},
    {"beyond its end", byte_at_upper(0x601F), "line 2", "TEENSY40"},
    {"the window of a larger flash", byte_at_upper(0x607B), "1 bytes, 7B0000: 42", "TEENSY41"},
    {"its end", byte_at_upper(0x607C), "line 2", "TEENSY41"},
    {"the largest", byte_at_upper(0x60FB), "1 bytes, FB0000: 42", "TEENSY_MICROMOD"},
    {"a target that has none", byte_at_upper(0x6000), "line 2", "TEENSY36"},
};

TEST_F(IntelHexTest, LinesReadAsTheyShould) {
  for (const auto& [description, text, expected, mcu] : cases) {
    EXPECT_EQ(read(text, mcu), expected) << description;
  }
}

TEST_F(IntelHexTest, LinesMeetTheEdgeOfTheReadBufferAnywhere) {
  // Lines of many lengths, so that the buffer's 64 KiB end falls on every place of a line.
  std::string text;
  for (std::uint32_t i = 0; i < 9000; ++i) {
    text += hex_record(0, i % 64, std::vector<std::uint8_t>(i % 33, 0x5A));
    text.insert(text.size() - 1, std::string(i % 5, ' '));
  }
  EXPECT_EQ(read(text), "143892 bytes, 0: 5Ax95");
}

}  // namespace
}  // namespace karvex::loader
