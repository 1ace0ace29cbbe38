#include "foundation/Observers.hpp"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

#include "foundation/NotificationCenter.hpp"
#include "foundation/Published.hpp"

namespace karvex::foundation {
namespace {

using testing::ElementsAre;

TEST(PublishedTest, EveryChangeReachesTheObserversAlsoOneThatChangesNothing) {
  Published<int> value(1);
  std::vector<int> seen;
  const auto subscription = value.observe([&seen](int now) { seen.push_back(now); });
  value.set(2);
  value.set(2);
  value.update([](int& current) { current += 5; });
  EXPECT_THAT(seen, ElementsAre(2, 2, 7));
  EXPECT_EQ(value.get(), 7);
}

TEST(PublishedTest, AnObserverCanChangeTheValueAndUnsubscribe) {
  Published<int> value;
  std::vector<std::string> seen;
  Subscription first;
  first = value.observe([&](int now) {
    seen.push_back("first " + std::to_string(now));
    first = Subscription();
    value.set(now + 1);
  });
  const auto second = value.observe([&seen](int now) { seen.push_back("second " + std::to_string(now)); });
  value.set(1);
  value.set(5);
  EXPECT_THAT(seen, ElementsAre("first 1", "second 2", "second 1", "second 5"));
}

TEST(PublishedTest, ASubscriptionMayOutliveTheValue) {
  Subscription subscription;
  {
    Published<int> value;
    subscription = value.observe([](int) {});
  }
}

TEST(PublishedTest, WritersAndReadersOnManyThreadsLoseNothing) {
  Published<std::vector<int>> list;
  std::atomic<int> notified = 0;
  const auto subscription = list.observe([&notified](const std::vector<int>&) { ++notified; });
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&list] {
      for (int i = 0; i < 200; ++i) {
        list.update([i](std::vector<int>& now) { now.push_back(i); });
        const auto temporary = list.observe([](const std::vector<int>&) {});
        EXPECT_FALSE(list.get().empty());
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(list.get().size(), 800U);
  EXPECT_EQ(notified, 800);
}

TEST(NotificationCenterTest, APostReachesThoseWhoObserveThatNameOnce) {
  NotificationCenter center;
  int scans = 0;
  int others = 0;
  auto scan = center.observe("scan_devices_notification", [&scans] { ++scans; });
  const auto other = center.observe("other", [&others] { ++others; });
  center.post("scan_devices_notification");
  center.post("nobody listens");
  EXPECT_EQ(scans, 1);
  EXPECT_EQ(others, 0);
  scan = Subscription();
  center.post("scan_devices_notification");
  EXPECT_EQ(scans, 1);
  EXPECT_EQ(&NotificationCenter::defaultCenter(), &NotificationCenter::defaultCenter());
}

}  // namespace
}  // namespace karvex::foundation
