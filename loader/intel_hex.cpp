#include "loader/intel_hex.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

#include "loader/firmware_image.hpp"
#include "loader/mcu_table.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {
namespace {

// Columns of a record: ":LLAAAATT[DD...]CC".
constexpr std::size_t length_column = 1;
constexpr std::size_t address_column = 3;
constexpr std::size_t type_column = 7;
constexpr std::size_t data_column = 9;
constexpr std::size_t shortest_record = 11;

/// A line longer than this is read in pieces, and each piece counts as a line.
constexpr std::size_t longest_line = 1023;

/// The last address that a record may end at: one byte below the end of the picture stays free.
constexpr std::uint64_t end_limit = 0xFFFFFF;

/// Where the larger targets map their external flash, and where their files are addressed therefore.
constexpr std::uint32_t flash_window = 0x60000000;

enum record_type : std::uint32_t {
  data_record = 0,
  end_record = 1,
  segment_address_record = 2,
  linear_address_record = 4,
};

std::uint32_t image_offset = 0;
std::int32_t image_byte_count = 0;
bool end_record_seen = false;

/// What a field that isn't hexadecimal reads as: more than any field can hold.
constexpr std::uint32_t unreadable = 0x10000;

constexpr std::uint8_t no_digit = 0xFF;

constexpr std::uint8_t digit_value(unsigned character) {
  if (character >= '0' && character <= '9') {
    return static_cast<std::uint8_t>(character - '0');
  }
  const unsigned letter = character | 0x20U;
  return letter >= 'a' && letter <= 'f' ? static_cast<std::uint8_t>(letter - 'a' + 10) : no_digit;
}

/// Indexed by the first character and, above it, the second one: the byte that the pair stands for, or
/// `no_pair`. One look-up a byte instead of two and their checks; only some 3 KiB of it are ever touched.
constexpr std::uint16_t no_pair = 0x100;
using pair_table = std::array<std::uint16_t, 0x10000>;

constexpr pair_table make_pair_table() {
  pair_table table{};
  table.fill(no_pair);
  for (unsigned second = 0; second < 0x80; ++second) {
    for (unsigned first = 0; first < 0x80; ++first) {
      const std::uint8_t high = digit_value(first);
      const std::uint8_t low = digit_value(second);
      if (high != no_digit && low != no_digit) {
        table[second << 8U | first] = static_cast<std::uint16_t>(high << 4U | low);
      }
    }
  }
  return table;
}

constexpr pair_table byte_of_pair = make_pair_table();

/// The two digits at `text`: 0 to 255, or no_pair.
std::uint32_t read_byte(const char* text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const auto second = static_cast<unsigned char>(text[1]);
  return byte_of_pair[static_cast<unsigned>(second << 8U | first)];
}

/// The four digits at `text`: 0 to 65535, or `unreadable`.
std::uint32_t read_word(const char* text) {
  const std::uint32_t high = read_byte(text);
  const std::uint32_t low = read_byte(text + 2);
  return ((high | low) & no_pair) != 0 ? unreadable : (high << 8U | low);
}

struct record {
  const char* data;      ///< first data digit
  std::uint32_t length;  ///< data bytes
  std::uint32_t address;
  std::uint32_t type;
  std::uint32_t header_sum() const { return length + (address & 0xFFU) + (address >> 8U) + type; }
};

/// Reads what all records have in common. False when the line isn't a record or reaches beyond the picture.
bool read_header(std::string_view line, record& out) {
  if (line[0] != ':' || line.size() < shortest_record) {
    return false;
  }
  out.data = line.data() + data_column;
  out.length = read_byte(line.data() + length_column);
  if (out.length == no_pair || std::size_t{out.length} * 2 + shortest_record > line.size()) {
    return false;
  }
  out.address = read_word(line.data() + address_column);
  out.type = read_byte(line.data() + type_column);
  return out.address != unreadable && out.type != no_pair &&
         std::uint64_t{image_offset} + out.address + out.length <= end_limit;
}

void count_bytes(std::uint32_t length) {
  // Only a file of more than 4 GB gets near the end; its count stops there rather than turn negative.
  constexpr auto most = std::numeric_limits<std::int32_t>::max();
  const auto more = static_cast<std::int32_t>(length);
  image_byte_count = image_byte_count > most - more ? most : image_byte_count + more;
}

/// Data are read eight bytes at a time, with vectors (an extension that GCC and Clang have for every
/// processor): that takes half as long as a look-up for each byte.
constexpr std::uint32_t chunk_length = 8;
using digit_chunk [[gnu::vector_size(2 * chunk_length)]] = std::uint8_t;
using pair_chunk [[gnu::vector_size(2 * chunk_length)]] = std::uint16_t;  ///< two digits in each element
using byte_chunk [[gnu::vector_size(chunk_length)]] = std::uint8_t;

/// Reads the sixteen digits at `text` into `bytes`, and adds each byte to an element of `sums`. False, with
/// nothing stored, when one of them isn't hexadecimal.
bool read_chunk(const char* text, std::uint8_t* bytes, pair_chunk& sums) {
  digit_chunk characters;
  std::memcpy(&characters, text, sizeof characters);
  const digit_chunk figures = characters - '0';
  const digit_chunk letters = (characters | 0x20) - 'a';
  const auto is_figure = figures < 10;
  const auto is_letter = letters < 6;
  const auto is_digit = std::bit_cast<std::array<std::uint64_t, 2>>(is_figure | is_letter);
  if ((is_digit[0] & is_digit[1]) != ~std::uint64_t{0}) {
    return false;
  }
  const digit_chunk values = is_figure ? figures : letters + 10;
  const auto pairs = std::bit_cast<pair_chunk>(values);
  constexpr bool first_is_low = std::endian::native == std::endian::little;
  const pair_chunk first = first_is_low ? pairs & 0xFF : pairs >> 8;
  const pair_chunk second = first_is_low ? pairs >> 8 : pairs & 0xFF;
  const pair_chunk joined = first << 4 | second;
  const byte_chunk chunk = __builtin_convertvector(joined, byte_chunk);
  std::memcpy(bytes, &chunk, sizeof chunk);
  sums += joined;
  return true;
}

/// Stores the bytes as it reads them: a record that turns out bad leaves its good beginning behind.
bool store_data(const record& data) {
  count_bytes(data.length);
  note_written(image_offset + data.address, data.length);
  std::uint8_t* bytes = image_bytes.data() + image_offset + data.address;
  std::uint8_t* mask = image_mask.data() + image_offset + data.address;
  std::uint32_t i = 0;
  pair_chunk sums{};  // no element overflows: a record has at most 31 chunks
  while (i + chunk_length <= data.length && read_chunk(data.data + std::size_t{i} * 2, bytes + i, sums)) {
    std::memset(mask + i, 1, chunk_length);
    i += chunk_length;
  }
  std::uint32_t sum = data.header_sum();
  for (std::uint32_t element = 0; element < chunk_length; ++element) {
    sum += sums[element];
  }
  // The rest is less than a chunk, or begins with the chunk that has the unreadable digit.
  for (; i < data.length; ++i) {
    const std::uint32_t value = read_byte(data.data + std::size_t{i} * 2);
    if (value == no_pair) {
      return false;
    }
    bytes[i] = static_cast<std::uint8_t>(value);
    mask[i] = 1;
    sum += value;
  }
  const std::uint32_t checksum = read_byte(data.data + std::size_t{data.length} * 2);
  return checksum != no_pair && ((sum + checksum) & 0xFFU) == 0;
}

/// Files for targets with a flash window are addressed there; the picture begins at 0.
std::uint32_t without_flash_window(std::uint32_t offset) {
  const bool has_window = code_size > 0x100000 && block_size >= 1024;
  const bool is_inside =
      offset >= flash_window && offset - flash_window < static_cast<std::uint32_t>(code_size);
  return has_window && is_inside ? offset - flash_window : offset;
}

/// An address record that is damaged has no effect: the offset in force stays.
void set_offset(const record& address) {
  const std::uint32_t value = read_word(address.data);
  const std::uint32_t checksum = read_byte(address.data + 4);
  if (value == unreadable || checksum == no_pair) {
    return;
  }
  if (((address.header_sum() + (value >> 8U) + (value & 0xFFU) + checksum) & 0xFFU) != 0) {
    return;
  }
  image_offset = address.type == segment_address_record ? value << 4U : without_flash_window(value << 16U);
}

bool parse_line(std::string_view line) {
  record parsed;
  if (!read_header(line, parsed)) {
    return false;
  }
  switch (parsed.type) {
    case data_record:
      return store_data(parsed);
    case end_record:
      end_record_seen = true;
      return true;
    case segment_address_record:
    case linear_address_record:
      if (parsed.length == 2) {
        set_offset(parsed);
      }
      return true;
    default:
      return true;
  }
}

struct close_file {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using open_file = std::unique_ptr<std::FILE, close_file>;

/// Cuts a file into lines without copying them: a line lies in the buffer until the next one is asked for.
struct line_source {
  std::FILE* file;
  std::size_t begin = 0;
  std::size_t end = 0;
  bool has_nul = false;  ///< there was a NUL byte in what was read so far
  std::array<char, std::size_t{64} * 1024> buffer{};

  std::size_t available() const { return end - begin; }

  /// Moves the rest to the front and reads behind it. False at the end of the file.
  bool refill() {
    if (std::feof(file) != 0 || std::ferror(file) != 0) {
      return false;
    }
    std::memmove(buffer.data(), buffer.data() + begin, available());
    end -= begin;
    begin = 0;
    const std::size_t got = std::fread(buffer.data() + end, 1, buffer.size() - end, file);
    has_nul = has_nul || std::memchr(buffer.data() + end, '\0', got) != nullptr;
    end += got;
    return got != 0;
  }

  /// The next line with its line end, at most longest_line characters of it. Empty at the end of the file.
  std::string_view next() {
    const char* line_end = nullptr;
    std::size_t looked_at = 0;
    do {
      looked_at = std::min(available(), longest_line);
      line_end = static_cast<const char*>(std::memchr(buffer.data() + begin, '\n', looked_at));
    } while (line_end == nullptr && looked_at < longest_line && refill());
    const char* start = buffer.data() + begin;
    const std::size_t length =
        line_end != nullptr ? static_cast<std::size_t>(line_end - start) + 1 : looked_at;
    begin += length;
    return {start, length};
  }
};

void reset_reader() {
  image_byte_count = 0;
  end_record_seen = false;
  clear_image();
  image_offset = 0;
}

std::int32_t report_unreadable(const char* path) {
  host_print("Unable to read file %s\n", path);
  return hex_file_unreadable;
}

}  // namespace

std::int32_t read_intel_hex(const char* path) {
  host_log("> KARVEX : read_intel_hex(Filename = %s\n", path);
  reset_reader();
  const open_file file(std::fopen(path, "re"));
  if (!file) {
    return report_unreadable(path);
  }
  line_source lines{file.get()};
  for (std::int32_t line_number = 1; !end_record_seen; ++line_number) {
    const auto line = lines.next();
    if (line.empty()) {
      break;
    }
    // A NUL byte ends the text of a line, and a line that begins with one is skipped.
    const auto text = lines.has_nul ? line.substr(0, line.find('\0')) : line;
    if (!text.empty() && !parse_line(text)) {
      host_print("Warning, HEX parse error line %d\n", line_number);
      return hex_line_malformed;
    }
  }
  // A directory opens and then can't be read, and a disk can fail: half a firmware must not reach a board.
  if (std::ferror(file.get()) != 0) {
    return report_unreadable(path);
  }
  return image_byte_count;
}

}  // namespace karvex::loader
