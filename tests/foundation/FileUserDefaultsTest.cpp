#include "foundation/files/FileUserDefaults.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "foundation/Log.hpp"
#include "foundation/files/TemporaryDirectory.hpp"

namespace karvex::foundation {
namespace {

namespace fs = std::filesystem;

class FileUserDefaultsTest : public testing::Test {
 protected:
  void write(const std::string& content) const { std::ofstream(file, std::ios::binary) << content; }
  std::string content() const {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TemporaryDirectory directory;
  const fs::path file = directory.path() / "folder" / "defaults";
};

TEST_F(FileUserDefaultsTest, EveryKeyKeepsItsNumberForTheNextProgram) {
  const std::vector<std::string> keys = {"", "key", "key=", "key%3D", "two\nlines", "\xC3\xA9", "a b"};
  for (std::size_t index = 0; index < keys.size(); ++index) {
    EXPECT_EQ(FileUserDefaults(file).integer(keys[index]), std::nullopt) << keys[index];
    FileUserDefaults(file).setInteger(keys[index], INT64_MIN + static_cast<std::int64_t>(index));
  }
  for (std::size_t index = 0; index < keys.size(); ++index) {
    EXPECT_EQ(FileUserDefaults(file).integer(keys[index]), INT64_MIN + static_cast<std::int64_t>(index));
  }
  FileUserDefaults(file).setInteger("key", std::nullopt);
  EXPECT_EQ(FileUserDefaults(file).integer("key"), std::nullopt);
  EXPECT_TRUE(FileUserDefaults(file).integer("key="));
}

TEST_F(FileUserDefaultsTest, WhatIsNoNumberReadsAsNoneAndOtherLinesStay) {
  fs::create_directories(file.parent_path());
  const std::string foreign = "no line of ours\nother=text\nkey2=1\n";
  for (const std::string value : {"", "x", "1x", " 1", "+1", "1.5", "9223372036854775808", "1\r"}) {
    write(foreign + "key=" + value);
    EXPECT_EQ(FileUserDefaults(file).integer("key"), std::nullopt) << value;
    FileUserDefaults(file).setInteger("key", 7);
    EXPECT_EQ(content(), foreign + "key=7\n");
  }
}

TEST_F(FileUserDefaultsTest, WhatCantBeKeptLeavesEverythingAndIsLogged) {
  std::string logged;
  log::redirectDebug([&](std::string_view line) { logged = line; });
  const auto isRefused = [&](const std::string& key) {
    logged.clear();
    FileUserDefaults(file).setInteger(key, 1);
    return FileUserDefaults(file).integer(key) == std::nullopt &&
           logged.find("User defaults are not kept: " + file.string()) == 0;
  };
  EXPECT_TRUE(isRefused(std::string(FileUserDefaults::longestKey + 1, 'k')));
  fs::create_directories(file.parent_path());
  write("key=1\n" + std::string(FileUserDefaults::longestFile, ' '));
  EXPECT_TRUE(isRefused("key")) << "a file that is too long";
  EXPECT_GT(fs::file_size(file), FileUserDefaults::longestFile);
  fs::remove(file);
  fs::create_directories(file);
  EXPECT_TRUE(isRefused("key")) << "a folder in the file's place";
  fs::remove_all(directory.path());
  std::ofstream(directory.path()) << "no folder";
  EXPECT_TRUE(isRefused("key"));
  fs::remove(directory.path());
  log::redirectDebug(nullptr);
}

TEST_F(FileUserDefaultsTest, WritersAtOnceUndoNothingOfEachOther) {
  constexpr int keys = 25;
  std::vector<std::thread> writers;
  for (const std::string writer : {"a", "b"}) {
    writers.emplace_back([this, writer] {
      for (int key = 0; key < keys; ++key) {
        FileUserDefaults(file).setInteger(writer + std::to_string(key), key);
      }
    });
  }
  for (auto& writer : writers) {
    writer.join();
  }
  for (const std::string writer : {"a", "b"}) {
    for (int key = 0; key < keys; ++key) {
      EXPECT_EQ(FileUserDefaults(file).integer(writer + std::to_string(key)), key);
    }
  }
}

TEST(StandardUserDefaultsTest, StandsWhereTheUserKeepsConfiguration) {
  EXPECT_EQ(standardUserDefaultsFile("/config", "/home/me"), "/config/karvex/defaults");
  EXPECT_EQ(standardUserDefaultsFile(nullptr, "/home/me"), "/home/me/.config/karvex/defaults");
  EXPECT_EQ(standardUserDefaultsFile("relative", "/home/me"), "/home/me/.config/karvex/defaults");
  EXPECT_EQ(standardUserDefaultsFile(nullptr, ""), std::nullopt);
}

}  // namespace
}  // namespace karvex::foundation
