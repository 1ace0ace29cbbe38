#include "ui/console/LineFront.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "tests/ui/UiFixture.hpp"

namespace karvex::ui::console {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::StartsWith;

class LineFrontTest : public UiFixture {
 protected:
  std::vector<std::string> lines;
  const LineFront front{view, [this](std::string_view line) { lines.emplace_back(line); }};
};

TEST_F(LineFrontTest, WritesEachAlertAndItsAnswerAndAnswersNone) {
  view.deviceListView.portBusyError.set(true);
  view.deviceListView.downloadErrorShowModal.set(true);
  runFor(1s);
  EXPECT_THAT(lines, Contains("! Device Port currently in use! "));
  EXPECT_THAT(lines, testing::Not(Contains("OK")));
  view.deviceListView.portBusyError.set(false);
  EXPECT_THAT(lines, Contains("! Could not download Firmware file"));
  view.deviceListView.downloadErrorShowModal.set(false);
  EXPECT_EQ(lines.back(), "OK");
}

TEST_F(LineFrontTest, WritesTheListAsItComes) {
  actions.appear();
  runFor(1s);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_THAT(lines[0], StartsWith("  Device"));
  EXPECT_THAT(lines[2], testing::HasSubstr(app::serialNumberOf(1)));
}

}  // namespace
}  // namespace karvex::ui::console
