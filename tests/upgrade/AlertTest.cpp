#include "upgrade/Alert.hpp"

#include <fmt/format.h>

#include "tests/ExpectedText.hpp"

namespace karvex::upgrade {
namespace {

/// Each text in full: support and translations go by the exact words, blanks included.
TEST(AlertTest, TheWordsOfEachAlert) {
  std::string words;
  for (const auto alert : alertsInOrder) {
    for (const auto* detail : {"", "DETAIL"}) {
      words += fmt::format("[{}]\n{}\n", titleOf(alert), messageOf(alert, detail));
    }
  }
  expectText(ALERTS, words);
}

}  // namespace
}  // namespace karvex::upgrade
