#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace karvex {

/// Compares a text with the file beside the test that holds it. With KARVEX_WRITE_PAGES set the file is
/// written anew: look at what `git diff` shows then.
inline void expectText(const std::filesystem::path& file, const std::string& actual) {
  if (std::getenv("KARVEX_WRITE_PAGES") != nullptr) {  // NOLINT(concurrency-mt-unsafe)
    std::ofstream(file, std::ios::binary) << actual;
  }
  std::ifstream stream(file, std::ios::binary);
  EXPECT_EQ(actual, std::string(std::istreambuf_iterator<char>(stream), {})) << file;
}

}  // namespace karvex
