// Measures read_intel_hex on a large and on a small file: against the least that any reader has to do, and
// against the tools that turn such a file into a picture too. Prints ratios and never fails by the clock.
//
// Run: intel_hex_bench [ROUNDS]

#include "loader/intel_hex.hpp"

#include <fmt/format.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/loader/child_process.hpp"
#include "bench/loader/hex_sample.hpp"
#include "loader/firmware_image.hpp"
#include "loader/mcu_table.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {
namespace {

using milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::size_t mebibyte = 0x100000;
constexpr std::size_t large_size = 8 * mebibyte;
constexpr std::size_t small_size = 256;  ///< sixteen records
constexpr int usual_rounds = 31;

// With these words the program starts itself, to read one file or to clear the picture, once and nothing
// else.
constexpr std::string_view read_once = "--once";
constexpr std::string_view clear_once = "--clear-once";

class temporary_directory {
 public:
  temporary_directory() {
    std::string name = (std::filesystem::temp_directory_path() / "karvex-bench-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::runtime_error(fmt::format("can't make the directory {}", name));
    }
    path_ = name;
  }
  ~temporary_directory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  temporary_directory(const temporary_directory&) = delete;
  temporary_directory& operator=(const temporary_directory&) = delete;

  std::string file(std::string_view name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

/// The times that one thing took in all rounds.
class series {
 public:
  explicit series(std::string name) : name_(std::move(name)) {}

  template <typename Work>
  void measure(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    add(std::chrono::steady_clock::now() - start);
  }
  void add(milliseconds took) { times_.push_back(took); }

  milliseconds fastest() const { return *std::min_element(times_.begin(), times_.end()); }
  milliseconds median() const {
    auto sorted = times_;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
  }
  const std::string& name() const { return name_; }

 private:
  std::string name_;
  std::vector<milliseconds> times_;
};

void print_times(const series& times) {
  fmt::print("  {:<46} {:9.3f} ms {:9.3f} ms\n", times.name(), times.median().count(),
             times.fastest().count());
}

void print_ratio(std::string_view name, const series& above, const series& below, std::string_view wanted) {
  fmt::print("  {:<46} {:9.2f}    {:9.2f}    (wanted: {})\n", name, above.median() / below.median(),
             above.fastest() / below.fastest(), wanted);
}

/// The part of the bound that is the text's: it comes into a small buffer through the same calls as in the
/// reader, so with the kernel's copy, and each byte is looked at once in the fastest way that a C library
/// has, a search for a byte that isn't there. No picture is written.
void pass_over_text(const char* path) {
  static std::array<char, std::size_t{64} * 1024> buffer;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "re"), std::fclose);
  if (!file) {
    throw std::runtime_error(fmt::format("can't read {}", path));
  }
  while (std::feof(file.get()) == 0 && std::ferror(file.get()) == 0) {
    const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file.get());
    if (std::memchr(buffer.data(), '\0', got) != nullptr) {
      throw std::runtime_error(fmt::format("{} isn't the text that was written", path));
    }
  }
}

void read_sample(const std::string& path, std::size_t size) {
  if (read_intel_hex(path.c_str()) != static_cast<std::int32_t>(size)) {
    throw std::runtime_error(fmt::format("{} was read wrongly", path));
  }
}

/// A fast reader that gives the wrong picture is no reader.
void check_reader(const std::string& path, std::size_t size) {
  read_sample(path, size);
  if (!image_is_sample(size)) {
    throw std::runtime_error(fmt::format("{} gave a wrong picture", path));
  }
}

void print_header(std::string_view title, int rounds) {
  fmt::print("\n{}, {} interleaved rounds\n  {:<46} {:>12} {:>12}\n", title, rounds, "", "median", "fastest");
}

void compare_with_bound(const std::string& large, const std::string& small, int rounds) {
  series clears("two clears");
  series bound("two clears and a pass over the text");
  series read_large("read_intel_hex");
  series read_small("read_intel_hex of 16 records");
  for (int round = 0; round < rounds; ++round) {
    bound.measure([&] {
      clear_image();
      pass_over_text(large.c_str());
    });
    read_large.measure([&] { read_sample(large, large_size); });
    clears.measure(clear_image);
    read_small.measure([&] { read_sample(small, small_size); });
  }
  print_header("In the process", rounds);
  for (const series* times : {&clears, &bound, &read_large, &read_small}) {
    print_times(*times);
  }
  print_ratio("read / bound", read_large, bound, "at most 3");
  print_ratio("read of 16 records / two clears", read_small, clears, "little more than 1");
}

/// A whole process that is measured; not on every machine is each of them there.
struct contender {
  series times;
  std::vector<std::string> command;
  bool is_installed = true;

  void run() {
    const auto finished = run_child(command);
    is_installed = finished.has_value();
    if (finished) {
      times.add(finished->took);
    }
  }
};

/// Removes the picture again, so that the disk doesn't come into it: a file that is written anew in place is
/// flushed by some file systems when it's closed.
void run_tool(contender& tool, const std::string& picture) {
  tool.run();
  if (tool.is_installed && std::filesystem::file_size(picture) != large_size) {
    throw std::runtime_error(fmt::format("{} gave a picture of another size", tool.times.name()));
  }
  std::filesystem::remove(picture);
}

/// A new process pays for the first touch of each page of the two arrays, whoever clears them; so the call by
/// itself is compared with the tools too, and the price of a process that only clears is shown.
void compare_with_tools(const std::string& program, const std::string& path, const std::string& picture,
                        int rounds) {
  series call("read_intel_hex, the call by itself");
  contender own{series("process that reads"), {program, std::string(read_once), path}};
  contender clears{series("process that only clears"), {program, std::string(clear_once)}};
  std::array<contender, 2> tools = {{
      {series("objcopy"), {"objcopy", "-I", "ihex", "-O", "binary", path, picture}},
      {series("srec_cat"), {"srec_cat", path, "-intel", "-o", picture, "-binary"}},
  }};
  for (int round = 0; round < rounds; ++round) {
    call.measure([&] { read_sample(path, large_size); });
    own.run();
    clears.run();
    for (contender& tool : tools) {
      run_tool(tool, picture);
    }
  }
  print_header("Against whole processes", rounds);
  for (const series* times : {&call, &own.times, &clears.times}) {
    print_times(*times);
  }
  for (const contender& tool : tools) {
    const std::string& name = tool.times.name();
    if (!tool.is_installed) {
      fmt::print("  {} is not installed: not compared\n", name);
      continue;
    }
    print_times(tool.times);
    print_ratio(name + " / the call", tool.times, call, "at least 8");
    print_ratio(name + " / process that reads", tool.times, own.times, "at least 8");
  }
}

/// To be called before this process has touched the picture: see child_run.
void print_peak_memory(const std::string& program, const std::string& path) {
  const auto run = run_child({program, std::string(read_once), path});
  if (!run) {
    throw std::runtime_error(fmt::format("can't start {}", program));
  }
  fmt::print(
      "Peak memory of a process that reads it, beyond the two arrays: {:.1f} MiB (wanted: less than 4)\n",
      (static_cast<double>(run->peak_memory) - 2.0 * image_size) / mebibyte);
}

/// The reader needs no more of its host.
void install_quiet_host() {
  install_host({
      .log = [](void*, const char*) {},
      .print = [](void*, const char* text) { std::fputs(text, stderr); },
  });
}

void run_all(const std::string& program, int rounds) {
  const temporary_directory directory;
  const std::string large = directory.file("large.hex");
  const std::string small = directory.file("small.hex");
  write_hex_sample(large, large_size);
  write_hex_sample(small, small_size);
  fmt::print("An image of {} MiB in {:.1f} MiB of text\n", large_size / mebibyte,
             static_cast<double>(std::filesystem::file_size(large)) / mebibyte);
  print_peak_memory(program, large);
  check_reader(large, large_size);
  check_reader(small, small_size);
  compare_with_bound(large, small, rounds);
  compare_with_tools(program, large, directory.file("picture.bin"), std::max(1, rounds / 3));
}

}  // namespace
}  // namespace karvex::loader

int main(int count, char** arguments) {
  using namespace karvex::loader;
  try {
    install_quiet_host();
    select_mcu("TEENSY_MICROMOD");
    if (count == 3 && arguments[1] == read_once) {
      read_sample(arguments[2], large_size);
    } else if (count == 2 && arguments[1] == clear_once) {
      clear_image();
    } else {
      run_all(arguments[0], count == 2 ? std::max(1, std::stoi(arguments[1])) : usual_rounds);
    }
  } catch (const std::exception& problem) {
    fmt::print(stderr, "{}\n", problem.what());
    return 1;
  }
}
