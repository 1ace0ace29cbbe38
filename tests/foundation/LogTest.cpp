#include "foundation/Log.hpp"

#include <gtest/gtest.h>

namespace karvex::foundation {
namespace {

struct Captured {
  std::string out;
  std::string err;
};

template <typename Act>
Captured capture(Act act) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  act();
  return {testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

TEST(LogTest, TheChannelsKeepApartAndKeepTheTextAsItStands) {
  const auto captured = capture([] {
    log::print("Unable to read file %s {} x\n");
    log::print("half");
    log::system("> KARVEX : step {} %d");
    log::system("> KARVEX : with line end\n");
    log::system("> KARVEX : two\n\n");
    log::debug("post");
  });
  EXPECT_EQ(captured.out, "Unable to read file %s {} x\nhalf");
  EXPECT_EQ(captured.err, "> KARVEX : step {} %d\n> KARVEX : with line end\n> KARVEX : two\n\npost\n");
}

TEST(LogTest, ARedirectedChannelGoesNowhereElseUntilItIsGivenBack) {
  std::string received;
  const auto captured = capture([&received] {
    log::redirectSystem([&received](std::string_view text) { received += text; });
    log::system("> KARVEX : kept\n");
    log::redirectSystem(nullptr);
    log::system("> KARVEX : shown");
  });
  EXPECT_EQ(received, "> KARVEX : kept");
  EXPECT_EQ(captured.err, "> KARVEX : shown\n");
}

TEST(LogTest, TheSystemLogIsNotDoubledOnAStandardErrorThatIsNoTerminal) {
  const auto captured = capture([] {
    log::setSystemSink(log::SystemSink::systemLog);
    log::system("> KARVEX : to the system log");
    log::setSystemSink(log::SystemSink::standardError);
  });
  EXPECT_EQ(captured.err, "");
}

}  // namespace
}  // namespace karvex::foundation
