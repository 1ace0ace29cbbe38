#include "foundation/files/TemporaryDirectory.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace karvex::foundation {
namespace {

namespace fs = std::filesystem;

/// Has the temporary directories made where nothing else is.
class TemporaryDirectoryTest : public testing::Test {
 protected:
  TemporaryDirectoryTest() {
    fs::create_directory(place);
    setenv("TMPDIR", place.c_str(), 1);
  }
  ~TemporaryDirectoryTest() override {
    unsetenv("TMPDIR");
    fs::remove_all(place);
  }

  static void fill(const fs::path& directory) {
    fs::create_directory(directory / "a");
    std::ofstream(directory / "a" / "file") << "text";
  }

  const fs::path place = fs::temp_directory_path() / ("karvex-test-" + std::to_string(getpid()));
};

TEST_F(TemporaryDirectoryTest, IsPrivateAndGoesWithTheObject) {
  {
    const TemporaryDirectory directory;
    fill(directory.path());
    EXPECT_EQ(directory.path().parent_path(), place);
    EXPECT_EQ(fs::status(directory.path()).permissions(), fs::perms(0700));
  }
  EXPECT_TRUE(fs::is_empty(place));
}

TEST_F(TemporaryDirectoryTest, GoesWithAProgramThatExitsBeforeTheObjectGoes) {
  const auto endInBetween = [](void (*end)(int)) {
    const TemporaryDirectory directory;
    fill(directory.path());
    end(7);
  };
  for (auto* const end : {std::exit, std::quick_exit}) {
    EXPECT_EXIT(endInBetween(end), testing::ExitedWithCode(7), "");
    EXPECT_TRUE(fs::is_empty(place));
  }
}

}  // namespace
}  // namespace karvex::foundation
