#include "app/FailureLog.hpp"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "app/FailureRecorder.hpp"
#include "foundation/files/TemporaryDirectory.hpp"
#include "tests/ui/UiFixture.hpp"

namespace karvex::app {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

class FailureLogTest : public ui::UiFixture {
 protected:
  const foundation::TemporaryDirectory directory;
  const std::filesystem::path file = directory.path() / "state/karvex/failures.log";
  FailureLog log{file};
};

TEST_F(FailureLogTest, KeepsTheLastLinesAndNothingThatIsNoLine) {
  EXPECT_THAT(log.lines(), testing::IsEmpty());
  log.add("now", "one\ntwo\x1b[2J");
  EXPECT_THAT(FailureLog(file).lines(), ElementsAre("now one two\xEF\xBF\xBD[2J"));
  for (char time = 'a'; log.lines().front().front() != 'b'; ++time) {
    log.add(std::string(1, time), std::string(FailureLog::longestLine - 3, 'x') + "é");
  }
  EXPECT_THAT(log.lines(), SizeIs(FailureLog::mostLines));
  EXPECT_THAT(log.lines(), Each(SizeIs(FailureLog::longestLine - 1))) << "no half of a character";
  std::filesystem::resize_file(file, 1 << 20);
  EXPECT_THAT(log.lines(), testing::IsEmpty()) << "a file of somebody else";
  FailureLog(std::nullopt).add("now", "nowhere");
  FailureLog("/proc/no/such.log").add("now", "nowhere");
}

TEST_F(FailureLogTest, LiesAmongTheUsersStates) {
  EXPECT_EQ(standardFailureLogFile("/state", "/home/a"), "/state/karvex/failures.log");
  EXPECT_EQ(standardFailureLogFile("state", "/home/a"), "/home/a/.local/state/karvex/failures.log");
  EXPECT_EQ(standardFailureLogFile(nullptr, nullptr), std::nullopt);
}

TEST_F(FailureLogTest, EachFailureThatIsShownIsNotedOnce) {
  std::vector<std::string> noted;
  const FailureRecorder recorder(view, [&noted](auto failure) { noted.emplace_back(failure); });
  view.deviceListView.procedureComplete.set(true);
  view.deviceListView.procedureComplete.set(false);
  view.deviceListView.uploadErrorText.set("Error : Upload error");
  for (const bool isUp : {true, false, true}) {
    view.deviceListView.uploadErrorShowModal.set(isUp);
    view.deviceListView.selectedDeviceId.set(std::nullopt);
  }
  ASSERT_THAT(noted, SizeIs(2));
  EXPECT_THAT(noted, Each(testing::StartsWith("An error occurred during upload: Error : Upload error")));
  for (const char* const stopNotice : {"it stopped", "it stopped", ""}) {
    view.deviceListView.stopNotice.set(stopNotice);
  }
  ASSERT_THAT(noted, SizeIs(3));
  EXPECT_EQ(noted.back(), "it stopped");
}

}  // namespace
}  // namespace karvex::app
