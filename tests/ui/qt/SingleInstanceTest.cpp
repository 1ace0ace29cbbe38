#include "app/SingleInstance.hpp"

#include <gmock/gmock.h>

#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>
#include <future>
#include <memory>
#include <vector>

namespace karvex::app {
namespace {

class SingleInstanceTest : public testing::Test {
 protected:
  std::unique_ptr<SingleInstance> start() {
    return std::make_unique<SingleInstance>("karvex", directory_.path());
  }
  QString socketPath() const { return directory_.filePath("karvex.socket"); }

  QTemporaryDir directory_;
};

TEST_F(SingleInstanceTest, ASecondStartHandsItsUrlToTheFirst) {
  const auto first = start();
  ASSERT_TRUE(first->isFirst());
  std::vector<Handover> received;
  first->listen([&](const Handover& handover) { received.push_back(handover); });
  const auto second = start();
  ASSERT_FALSE(second->isFirst());
  // A line end and a long text, as a URL could bring along, arrive as they are.
  const Handover handover{.url = "karvex://open?a=b\n" + QString(5000, u'é'), .activationToken = "token"};
  auto answer = std::async(std::launch::async, [&] { return second->handOver(handover); });
  ASSERT_TRUE(QTest::qWaitFor([&] { return !received.empty(); }));
  EXPECT_TRUE(
      QTest::qWaitFor([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
  EXPECT_TRUE(answer.get());
  EXPECT_EQ(received.front().url, handover.url);
  EXPECT_EQ(received.front().activationToken, "token");
}

TEST_F(SingleInstanceTest, TheNextIsFirstWhenTheFirstHasGone) {
  start().reset();
  EXPECT_TRUE(start()->isFirst());
}

TEST_F(SingleInstanceTest, TakesTheSocketOfOneThatWasKilledOver) {
  QFile stale(socketPath());
  ASSERT_TRUE(stale.open(QIODevice::WriteOnly));  // Something is in the way.
  stale.close();
  const auto first = start();
  int received = 0;
  first->listen([&](const Handover&) { ++received; });
  auto answer = std::async(std::launch::async, [&] { return start()->handOver({}); });
  EXPECT_TRUE(QTest::qWaitFor([&] { return received == 1; }));
  EXPECT_TRUE(answer.get());
}

TEST_F(SingleInstanceTest, TakesNothingThatIsNoHandover) {
  const auto first = start();
  int received = 0;
  first->listen([&](const Handover&) { ++received; });
  QLocalSocket huge;
  huge.connectToServer(socketPath());
  ASSERT_TRUE(huge.waitForConnected());
  huge.write(QByteArray(200'000, '\x7f'));  // Claims a text of two thousand million bytes.
  EXPECT_TRUE(QTest::qWaitFor([&] { return huge.state() == QLocalSocket::UnconnectedState; }));
  QLocalSocket cutOff;
  cutOff.connectToServer(socketPath());
  ASSERT_TRUE(cutOff.waitForConnected());
  cutOff.write(QByteArray(3, '\0'));
  cutOff.disconnectFromServer();
  QTest::qWait(50);
  EXPECT_EQ(received, 0);
}

TEST_F(SingleInstanceTest, WithoutADirectoryEveryStartIsAFirst) {
  const SingleInstance one("karvex", directory_.filePath("missing"));
  EXPECT_TRUE(one.isFirst());
}

}  // namespace
}  // namespace karvex::app
