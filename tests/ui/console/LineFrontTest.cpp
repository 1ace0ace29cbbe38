#include "ui/console/LineFront.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "tests/ui/UiBench.hpp"

namespace karvex::ui::console {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::StartsWith;

class LineFrontTest : public UiBench {
 protected:
  /// Two alerts come up at once, so that one of them shows only when the other has been answered.
  void raiseTwoAlerts() {
    runtime.mainQueue().post([this] {
      view.deviceListView.portBusyError.set(true);
      view.deviceListView.downloadErrorShowModal.set(true);
    });
    runFor(1s);
  }

  LineFront::Options options(bool answersAlerts) {
    return {.answersAlerts = answersAlerts,
            .write = [this](std::string_view line) { lines.emplace_back(line); }};
  }

  std::vector<std::string> lines;
};

TEST_F(LineFrontTest, EveryAlertIsAnsweredIfItIsToldTo) {
  const LineFront front(view, actions, options(true));
  raiseTwoAlerts();
  EXPECT_FALSE(view.deviceListView.portBusyError.get());
  EXPECT_FALSE(view.deviceListView.downloadErrorShowModal.get());
  EXPECT_THAT(lines, Contains("! Device Port currently in use! "));
  EXPECT_THAT(lines, Contains("! Could not download Firmware file"));
  EXPECT_THAT(lines, Contains("OK"));
}

TEST_F(LineFrontTest, OtherwiseAlertsStay) {
  const LineFront front(view, actions, options(false));
  raiseTwoAlerts();
  EXPECT_TRUE(view.deviceListView.portBusyError.get());
  EXPECT_TRUE(view.deviceListView.downloadErrorShowModal.get());
}

TEST_F(LineFrontTest, WritesTheListAsItComes) {
  const LineFront front(view, actions, options(false));
  actions.appear();
  runFor(1s);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_THAT(lines[0], StartsWith("  Device"));
  EXPECT_THAT(lines[2], testing::HasSubstr(app::serialNumberOf(1)));
}

}  // namespace
}  // namespace karvex::ui::console
