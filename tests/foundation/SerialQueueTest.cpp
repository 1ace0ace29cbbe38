#include "foundation/run/SerialQueue.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "foundation/run/SystemRuntime.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace karvex::foundation {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(LatchTest, OnVirtualTimeWhoWaitsLetsTheOthersRun) {
  VirtualRuntime runtime;
  const auto start = runtime.clock().now();
  const auto gate = runtime.makeLatch();
  runtime.globalQueue().post([&] {
    runtime.clock().sleepFor(20ms);
    gate->open();
  });
  std::vector<std::string> passed;
  runtime.globalQueue().post([&] {
    gate->wait();
    passed.emplace_back("job");
  });
  gate->wait();
  passed.emplace_back("main thread");
  EXPECT_EQ(runtime.clock().now() - start, 20ms);
  gate->wait();
  runtime.clock().sleepFor(1ms);
  EXPECT_THAT(passed, ElementsAre("main thread", "job")) << "in the order in which they came to the gate";
}

TEST(LatchTest, AForeignThreadCanWaitAndOpen) {
  VirtualRuntime runtime;
  const auto there = runtime.makeLatch();
  const auto back = runtime.makeLatch();
  std::thread foreign([&] {
    there->wait();
    back->open();
  });
  there->open();
  back->wait();
  foreign.join();
}

template <typename AnyRuntime>
class FinishTest : public testing::Test {};
using Runtimes = testing::Types<SystemRuntime, VirtualRuntime>;
TYPED_TEST_SUITE(FinishTest, Runtimes);

/// From the beginning of finish() on, what is posted is dropped on the spot.
bool isFinishing(Runtime& runtime) {
  const auto hasRun = std::make_shared<std::atomic<bool>>(false);
  runtime.globalQueue().post([hasRun] { *hasRun = true; });
  return hasRun.use_count() == 1 && !*hasRun;
}

TYPED_TEST(FinishTest, AJobThatWaitsForItsTurnEndsWithTheRuntime) {
  TypeParam runtime;
  SerialQueue queue(runtime.globalQueue());
  std::vector<std::string> order;
  const auto hasBegun = runtime.makeLatch();
  queue.post([&] {
    hasBegun->open();
    while (!isFinishing(runtime)) {
      runtime.clock().sleepFor(1ms);
    }
    order.emplace_back("begun");
  });
  hasBegun->wait();
  const auto isAboutToWait = runtime.makeLatch();
  runtime.globalQueue().post([&] {
    queue.post([&] { order.emplace_back("never"); });
    isAboutToWait->open();
    queue.runSynchronously(runtime, [&] { order.emplace_back("waited"); });
  });
  isAboutToWait->wait();
  runtime.finish();
  EXPECT_THAT(order, ElementsAre("begun", "waited"));
}

TEST(SerialQueueTest, AThreadRunsWhatItPostsItselfWhereTheQueueIsIdle) {
  VirtualRuntime runtime;
  SerialQueue queue(runtime.globalQueue());
  SerialQueue other(runtime.globalQueue());
  std::vector<std::string> order;
  const auto noter = [&, caller = std::this_thread::get_id()](std::string what) {
    return [&, caller, what = std::move(what)] {
      order.push_back(what + (std::this_thread::get_id() == caller ? " here" : " there"));
    };
  };
  EXPECT_TRUE(queue.runIfIdle([&] {
    EXPECT_TRUE(queue.isCurrent());
    EXPECT_FALSE(queue.runIfIdle([] { FAIL() << "at the same time"; }));
    noter("at once")();
  }));
  {
    const RunAfterwards afterwards;
    queue.post(noter("first"));
    queue.post(noter("second"));
    other.post(noter("other"));
    EXPECT_FALSE(queue.runIfIdle(noter("overtaking")));
    noter("end")();
  }
  runtime.clock().sleepFor(1ms);
  queue.post(noter("later"));
  runtime.clock().sleepFor(1ms);
  EXPECT_THAT(order, ElementsAre("at once here", "end here", "first here", "other here", "second there",
                                 "later there"));
}

TEST(SerialQueueTest, SynchronousWorkTakesItsTurnBehindWhatWaits) {
  VirtualRuntime runtime;
  SerialQueue queue(runtime.globalQueue(), "a label");
  std::vector<std::string> order;
  EXPECT_EQ(queue.runSynchronously(runtime, [&] { return queue.isCurrent() ? 7 : 0; }), 7);
  EXPECT_FALSE(queue.isCurrent());

  queue.post([&] {
    runtime.clock().sleepFor(10ms);
    order.emplace_back("posted before");
  });
  runtime.globalQueue().postAt(runtime.clock().now() + 1ms,
                               [&] { queue.post([&] { order.emplace_back("posted behind"); }); });
  const auto caller = std::this_thread::get_id();
  queue.runSynchronously(runtime, [&] {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    runtime.clock().sleepFor(10ms);
    order.emplace_back("synchronous");
  });
  runtime.clock().sleepFor(1ms);
  EXPECT_THAT(order, ElementsAre("posted before", "synchronous", "posted behind"));
  EXPECT_EQ(queue.label(), "a label");
}

TEST(SerialQueueTest, WhatSynchronousWorkThrowsReachesTheCallerAndTheQueueGoesOn) {
  VirtualRuntime runtime;
  SerialQueue queue(runtime.globalQueue());
  EXPECT_THROW(queue.runSynchronously(runtime, [] { throw std::runtime_error("failed"); }),
               std::runtime_error);
  bool hasRun = false;
  queue.post([&] { hasRun = true; });
  runtime.clock().sleepFor(1ms);
  EXPECT_TRUE(hasRun);
}

TEST(SerialQueueTest, AQueueIsCurrentInsideOfAnotherOneToo) {
  VirtualRuntime runtime;
  SerialQueue outer(runtime.globalQueue());
  SerialQueue inner(runtime.globalQueue());
  outer.runSynchronously(runtime, [&] {
    inner.runSynchronously(runtime, [&] { EXPECT_TRUE(outer.isCurrent() && inner.isCurrent()); });
    EXPECT_FALSE(inner.isCurrent());
  });
}

TEST(SerialQueueDeathTest, AJobThatWouldWaitForItselfEndsTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  VirtualRuntime runtime;
  SerialQueue queue(runtime.globalQueue(), "org.example.queue");
  EXPECT_DEATH(queue.runSynchronously(runtime, [&] { queue.runSynchronously(runtime, [] {}); }),
               "SerialQueue org.example.queue: a job of the queue waits for itself");
}

TEST(SerialQueueTest, OnlyOneThreadAtATimeHasItsTurn) {
  SystemRuntime runtime;
  SerialQueue queue(runtime.globalQueue());
  constexpr int threadCount = 4;
  constexpr int each = 500;
  int ran = 0;  // Guarded by nothing but the queue: a thread sanitizer run proves that it suffices.
  std::vector<std::thread> threads;
  for (int thread = 0; thread < threadCount; ++thread) {
    threads.emplace_back([&] {
      for (int i = 0; i < each; ++i) {
        queue.post([&] { ++ran; });
        queue.runSynchronously(runtime, [&] { ++ran; });
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(queue.runSynchronously(runtime, [&] { return ran; }), 2 * threadCount * each);
}

}  // namespace
}  // namespace karvex::foundation
