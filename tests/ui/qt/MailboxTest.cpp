#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QThread>
#include <thread>
#include <vector>

#include "ui/qt/Mailbox.hpp"

namespace karvex::ui::qt {
namespace {

TEST(Mailbox, TheNewestWinsAndComesOnTheToolkitsThread) {
  std::vector<int> received;
  const auto* home = QThread::currentThread();
  Mailbox<int> mailbox([&](int value) {
    EXPECT_EQ(QThread::currentThread(), home);
    received.push_back(value);
  });
  std::thread([&] {
    for (int value = 1; value <= 1000; ++value) {
      mailbox.put(value);
    }
  }).join();
  QCoreApplication::processEvents();
  EXPECT_THAT(received, testing::ElementsAre(1000));
  mailbox.put(1001);
  QCoreApplication::processEvents();
  EXPECT_THAT(received, testing::ElementsAre(1000, 1001));
}

TEST(Mailbox, WhatComesInDuringADeliveryIsDeliveredNext) {
  std::vector<int> received;
  Mailbox<int>* self = nullptr;
  Mailbox<int> mailbox([&](int value) {
    received.push_back(value);
    if (value < 3) {
      self->put(value + 1);
    }
  });
  self = &mailbox;
  mailbox.put(1);
  for (int round = 0; round < 3; ++round) {
    QCoreApplication::processEvents();
  }
  EXPECT_THAT(received, testing::ElementsAre(1, 2, 3));
}

TEST(Mailbox, WhatIsOnItsWayIsDroppedWithIt) {
  bool isReceived = false;
  {
    Mailbox<int> mailbox([&](int) { isReceived = true; });
    mailbox.put(1);
  }
  QCoreApplication::processEvents();
  EXPECT_FALSE(isReceived);
}

}  // namespace
}  // namespace karvex::ui::qt
