#include "foundation/run/SystemRuntime.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/Timer.hpp"

namespace karvex::foundation {
namespace {

using namespace std::chrono_literals;

TEST(SystemRuntimeTest, TheMainQueueRunsOnTheThreadThatRunsItAndInOrder) {
  SystemRuntime runtime;
  std::vector<int> order;
  const auto mainThread = std::this_thread::get_id();
  for (int i = 0; i < 100; ++i) {
    runtime.mainQueue().post([&, i] {
      EXPECT_EQ(std::this_thread::get_id(), mainThread);
      order.push_back(i);
    });
  }
  runtime.stopMain();
  runtime.mainQueue().post([&order] { order.push_back(-1); });
  runtime.runMain();
  ASSERT_EQ(order.size(), 100U);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  runtime.stopMain();
  runtime.runMain();
  EXPECT_EQ(order.back(), -1) << "what stood behind the stop runs the next time";
}

TEST(SystemRuntimeTest, GlobalJobsThatBlockDoNotKeepEachOtherFromRunning) {
  SystemRuntime runtime;
  std::mutex mutex;
  std::condition_variable allAreHere;
  int here = 0;
  bool met = true;
  std::atomic<int> done = 0;
  constexpr int jobs = 6;
  for (int i = 0; i < jobs; ++i) {
    runtime.globalQueue().post([&] {
      std::unique_lock lock(mutex);
      ++here;
      allAreHere.notify_all();
      met = allAreHere.wait_for(lock, 20s, [&here] { return here == jobs; }) && met;
      lock.unlock();
      if (++done == jobs) {
        runtime.stopMain();
      }
    });
  }
  runtime.runMain();
  EXPECT_TRUE(met);
}

TEST(SystemRuntimeTest, TimersKeepToTheClock) {
  SystemRuntime runtime;
  const auto start = runtime.clock().now();
  int ticks = 0;
  const auto timer = Timer::repeating(runtime.clock(), runtime.mainQueue(), 10ms, [&] {
    if (++ticks == 3) {
      runtime.stopMain();
    }
  });
  runtime.runMain();
  EXPECT_GE(runtime.clock().now() - start, 30ms);
}

TEST(SystemRuntimeTest, ASerialQueueKeepsOrderUnderManyPosters) {
  SystemRuntime runtime;
  SerialQueue queue(runtime.globalQueue());
  constexpr int posters = 4;
  constexpr int each = 500;
  std::array<int, posters> last{};
  last.fill(-1);
  int ran = 0;  // Guarded by nothing but the queue: a thread sanitizer run proves that it suffices.
  std::vector<std::thread> threads;
  for (std::size_t poster = 0; poster < posters; ++poster) {
    threads.emplace_back([&, poster] {
      for (int i = 0; i < each; ++i) {
        queue.post([&, poster, i] {
          EXPECT_EQ(std::exchange(last[poster], i), i - 1);
          if (++ran == posters * each) {
            runtime.stopMain();
          }
        });
      }
    });
  }
  runtime.runMain();
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(ran, posters * each);
}

TEST(SystemRuntimeTest, BehindItsFinishNoGlobalJobRuns) {
  SystemRuntime runtime;
  std::promise<void> started;
  bool hasEnded = false;
  bool neverRan = true;
  runtime.globalQueue().post([&] {
    started.set_value();
    runtime.clock().sleepFor(50ms);
    hasEnded = true;
    runtime.globalQueue().post([&] { neverRan = false; });
  });
  runtime.globalQueue().postAt(runtime.clock().now() + 80ms, [&] { neverRan = false; });
  started.get_future().wait();
  runtime.finish();
  EXPECT_TRUE(hasEnded);
  runtime.globalQueue().post([&] { neverRan = false; });
  runtime.clock().sleepFor(100ms);
  EXPECT_TRUE(neverRan);
}

}  // namespace
}  // namespace karvex::foundation
