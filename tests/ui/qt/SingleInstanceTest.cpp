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
  const Handover handover{.url = "karvex://open?a=b\n" + QByteArray(100'000, '\xe9'),
                          .activationToken = "token"};
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

TEST_F(SingleInstanceTest, TakesOverWhatOneThatWasKilledLeft) {
  for (const auto* name : {"karvex.socket", "karvex.lock"}) {
    QFile stale(directory_.filePath(name));  // Something is in the way.
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
  }
  const auto first = start();
  int received = 0;
  first->listen([&](const Handover&) { ++received; });
  auto answer = std::async(std::launch::async, [&] { return start()->handOver({}); });
  EXPECT_TRUE(QTest::qWaitFor([&] { return received == 1; }));
  EXPECT_TRUE(answer.get());
}

TEST_F(SingleInstanceTest, TheNextIsFirstAsSoonAsTheFirstGivesUp) {
  const auto leaving = start();
  leaving->listen([](const Handover&) { ADD_FAILURE(); });
  leaving->giveUp();
  EXPECT_TRUE(start()->isFirst());
}

TEST_F(SingleInstanceTest, WhatTheFirstHangsUpOnIsNotHandedOver) {
  const auto first = start();
  first->listen([](const Handover&) { ADD_FAILURE(); });
  auto answer =
      std::async(std::launch::async, [&] { return start()->handOver({.url = QByteArray(1 << 20, 'x')}); });
  EXPECT_TRUE(
      QTest::qWaitFor([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
  EXPECT_FALSE(answer.get());
}

TEST_F(SingleInstanceTest, TakesNothingThatIsNoHandover) {
  const auto first = start();
  int received = 0;
  first->listen([&](const Handover&) { ++received; });
  QLocalSocket huge;
  huge.connectToServer(socketPath());
  ASSERT_TRUE(huge.waitForConnected());
  huge.write(QByteArray(400'000, '\x7f'));  // Claims a text of two thousand million bytes.
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
  for (const auto& directory : {directory_.filePath("missing"), QString()}) {
    SingleInstance one("karvex", directory);
    one.listen([](const Handover&) {});
    SingleInstance another("karvex", directory);
    EXPECT_TRUE(one.isFirst() && another.isFirst()) << directory.toStdString();
  }
}

}  // namespace
}  // namespace karvex::app
