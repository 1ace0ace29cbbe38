// What goes to a terminal as text, and what comes from it as keys.

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

#include "ui/LineText.hpp"
#include "ui/console/Keys.hpp"
#include "ui/console/Screen.hpp"
#include "ui/console/StyledText.hpp"

namespace karvex::ui::console {
namespace {

using namespace std::string_literals;

TEST(PrintableTest, NothingOfWhatADeviceIsCalledSteersTheTerminal) {
  const std::string bad = "\xEF\xBF\xBD";
  const struct {
    std::string text;
    std::string printed;
  } cases[] = {
      {"", ""},
      {"Pedal é €  🎹", "Pedal é €  🎹"},
      {"a\x1b[2Jb", "a" + bad + "[2Jb"},
      {"\0\a\t\n\r\x7f"s, bad + bad + bad + bad + bad + bad},
      {"\xC2\x9B"
       "2J",
       bad + "2J"},              // CSI as one C1 character
      {"\xC2\xA0", "\xC2\xA0"},  // the first character behind C1
      {"\x9B"
       "2J",
       bad + "2J"},                       // a continuation byte by itself
      {"a\xC3", "a" + bad},               // cut off
      {"\xC3\x1b", bad + bad},            // an escape in the place of a continuation byte
      {"\xE2\x82z", bad + bad + "z"},     // cut off in the middle of a text
      {"\xC0\x9B", bad + bad},            // overlong
      {"\xED\xA0\x80", bad + bad + bad},  // a surrogate
      {"\xFF\xF5", bad + bad},
      {"a\u202Eb\u2069\u200F", "a" + bad + "b" + bad + bad},  // from right to left, and back
      {"a\u2028b", "a" + bad + "b"},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(lineOf(example.text), example.printed) << testing::PrintToString(example.text);
  }
}

TEST(FittedTest, TakesExactlyTheColumns) {
  const struct {
    std::string_view text;
    std::size_t columns;
    std::string_view fitted;
  } cases[] = {
      {"", 0, ""},
      {"", 2, "  "},
      {"abc", 5, "abc  "},
      {"abc", 3, "abc"},
      {"abcd", 3, "ab…"},
      {"abcd", 1, "…"},
      {"abc  ", 4, "abc "},
      {"abcd  ", 3, "ab…"},
      {"abcd", 0, ""},
      {"é€🎹", 4, "é€🎹"},
      {"é€🎹x", 4, "é€… "},
      {"é€🎹x", 2, "é…"},
      {"🎹", 3, "🎹 "},
      {"鍵盤", 4, "鍵盤"},
      {"鍵盤", 3, "鍵…"},
      {"鍵盤", 2, "… "},
      {"鍵盤", 1, "…"},
      {"ｋey", 3, "ｋ…"},
      {"ｋey", 2, "… "},
      // "é" of two characters: the accent stays with its letter, and takes no column.
      {"e\xCC\x81x", 2, "e\xCC\x81x"},
      {"e\xCC\x81xyz", 2, "e\xCC\x81…"},
      // A joiner, and the sign that asks for a picture.
      {"a\xE2\x80\x8D\xEF\xB8\x8F", 2, "a\xE2\x80\x8D\xEF\xB8\x8F "},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(fitted(example.text, example.columns), example.fitted);
    EXPECT_EQ(columnsOf(fitted(example.text, example.columns)), example.columns);
  }
}

TEST(WrappedTest, BreaksAtBlanksWhereThereAreAny) {
  const struct {
    std::string_view text;
    std::size_t columns;
    std::vector<std::string> lines;
  } cases[] = {
      {"", 3, {""}},
      {"abc", 3, {"abc"}},
      {"abc ", 4, {"abc "}},
      {"abc  ", 3, {"abc"}},
      {"one two", 3, {"one", "two"}},
      {"one two", 4, {"one", "two"}},
      {"one two", 6, {"one", "two"}},
      {"  one two", 5, {"  one", "two"}},
      {"abcdefg", 3, {"abc", "def", "g"}},
      {"a bcdefg", 3, {"a", "bcd", "efg"}},
      {"     abc", 3, {"   ", "abc"}},
      {"鍵盤x", 3, {"鍵", "盤x"}},
      {"鍵盤", 1, {"鍵", "盤"}},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(wrapped(example.text, example.columns), example.lines) << example.text;
  }
}

TEST(StyledTextTest, EachStyleEndsWithItsSpan) {
  const StyledLine line{
      {{"a", std::nullopt}, {"b", Tone::red}, {"c", Tone::white, true}, {"d", Tone::white}}};
  const struct {
    const char* noColor;
    const char* terminal;
    const char* text;
  } cases[] = {
      {nullptr, "xterm", "a\x1b[0;31mb\x1b[0m\x1b[0;1mc\x1b[0md"},
      {"", "xterm-256color", "a\x1b[0;38;5;160mb\x1b[0m\x1b[0;1mc\x1b[0md"},
      {"1", "xterm-256color", "ab\x1b[0;1mc\x1b[0md"},
      {nullptr, nullptr, "a\x1b[0;31mb\x1b[0m\x1b[0;1mc\x1b[0md"},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(withSequences(line, coloursOf(example.noColor, example.terminal)), example.text);
  }
  EXPECT_EQ(withSequences({{{"a", Tone::green, true}}, true}, Colours::few), "\x1b[0;7;1;32ma\x1b[0m");
}

TEST(KeysTest, TheKeysInTheBytesOfATerminal) {
  using enum Key;
  const struct {
    std::string_view bytes;
    std::vector<Key> keys;
  } cases[] = {
      {"", {}},
      {"kjursxq", {up, down, upload, refresh, sync, close, quit}},
      {"\r\n\x1b", {enter, enter, escape}},
      {"\x03\x04", {quit, quit}},
      {"\x1b[A\x1b[B\x1bOA\x1bOB", {up, down, up, down}},
      {"\x1b[B\x1b[Bu\r", {down, down, upload, enter}},
      {"azUQ7 \x7f\xC3\xA9", {}},
      // Other keys that come as sequences are no Escape, and their bytes no keys of their own.
      {"\x1b[C\x1b[D\x1b[H\x1b[3~\x1b[15~\x1bOP\x1b[1;5C", {}},
      {"\x1b[200~", {}},
      {"\x1b[", {escape}},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(keysIn(example.bytes), example.keys) << testing::PrintToString(example.bytes);
  }
}

TEST(ProgressBarTest, IsFullOnlyAtTheEnd) {
  const struct {
    upgrade::LoadProgress progress;
    const char* bar;
  } cases[] = {
      {{.blocksSent = 0, .blocksToSend = 24}, "[........] 0/24 blocks"},
      {{.blocksSent = 12, .blocksToSend = 24}, "[####....] 12/24 blocks"},
      {{.blocksSent = 23, .blocksToSend = 24}, "[#######.] 23/24 blocks"},
      {{.blocksSent = 24, .blocksToSend = 24}, "[########] 24/24 blocks"},
      {{.blocksSent = 4294967295, .blocksToSend = 4294967295}, "[########] 4294967295/4294967295 blocks"},
      {{.blocksSent = 9, .blocksToSend = 3}, "[########] 3/3 blocks"},
      {{.blocksSent = 0, .blocksToSend = 0}, "[........]"},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(progressBar(example.progress, 8), example.bar);
  }
}

}  // namespace
}  // namespace karvex::ui::console
