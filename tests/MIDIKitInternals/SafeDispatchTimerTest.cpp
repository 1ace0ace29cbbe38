#include "MIDIKitInternals/SafeDispatchTimer.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "foundation/SerialQueue.hpp"
#include "foundation/SystemRuntime.hpp"
#include "foundation/VirtualRuntime.hpp"

namespace midikit::internals {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Rate = SafeDispatchTimer::Rate;

TEST(SafeDispatchTimerRate, GivesTheInterval) {
  constexpr double slowest = 99999.99999999999;
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const struct {
    Rate rate;
    double interval;
  } rows[] = {
      {Rate::hertz(4), 0.25},
      {Rate::hertz(0.00002), 1 / 0.00002},
      {Rate::hertz(0.00001), slowest},
      {Rate::hertz(0), slowest},
      {Rate::hertz(-1), slowest},
      {Rate::hertz(1e12), 0.000000001},
      {Rate::seconds(2.5), 2.5},
      {Rate::seconds(1e6), 1e6},
      {Rate::seconds(0), 0.000000001},
      {Rate::seconds(-1), 0.000000001},
      {Rate::hertz(infinity), 0.000000001},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.rate.intervalInSeconds(), row.interval);
  }
}

/// A timer with an interval of 100 ms on the main queue, at 0 ms. `calls` holds the milliseconds of its
/// calls.
class SafeDispatchTimerTest : public testing::Test {
 protected:
  SafeDispatchTimerTest() { makeTimer(Rate::hertz(10)); }

  void makeTimer(Rate rate) {
    timer = std::make_unique<SafeDispatchTimer>(runtime.clock(), runtime.mainQueue(),
                                                SafeDispatchTimer::Schedule{.rate = rate, .leeway = 1ms},
                                                [this] { calls.push_back(elapsed()); });
  }
  std::int64_t elapsed() { return (runtime.clock().now() - start_) / 1ms; }
  void at(std::chrono::milliseconds moment, std::function<void()> job) {
    runtime.mainQueue().postAt(start_ + moment, std::move(job));
  }
  void runUntil(std::chrono::milliseconds moment) {
    at(moment, [this] { runtime.stopMain(); });
    runtime.runMain();
  }

  karvex::foundation::VirtualRuntime runtime;
  karvex::foundation::TimePoint start_ = runtime.clock().now();
  std::vector<std::int64_t> calls;
  std::unique_ptr<SafeDispatchTimer> timer;
};

TEST_F(SafeDispatchTimerTest, MakesNoCallBeforeItsStart) {
  EXPECT_FALSE(timer->running());
  EXPECT_EQ(timer->rate(), Rate::hertz(10));
  EXPECT_EQ(timer->leeway(), 1ms);
  runUntil(1s);
  EXPECT_THAT(calls, IsEmpty());
  timer.reset();
}

TEST_F(SafeDispatchTimerTest, CallsAtOnceAndThenAtEachInterval) {
  timer->start();
  EXPECT_TRUE(timer->running());
  EXPECT_THAT(calls, IsEmpty()) << "only the queue runs the handler";
  runUntil(350ms);
  EXPECT_THAT(calls, ElementsAre(0, 100, 200, 300));
}

TEST_F(SafeDispatchTimerTest, TheRhythmGoesOnFromTheMomentOfItsMaking) {
  at(130ms, [this] { timer->start(); });
  runUntil(350ms);
  EXPECT_THAT(calls, ElementsAre(130, 200, 300));
}

TEST_F(SafeDispatchTimerTest, WhatFellDueDuringASuspensionMakesOneCall) {
  timer->start();
  at(150ms, [this] { timer->suspend(); });
  at(480ms, [this] { timer->start(); });
  runUntil(650ms);
  EXPECT_THAT(calls, ElementsAre(0, 100, 480, 500, 600));
}

TEST_F(SafeDispatchTimerTest, AShortSuspensionLeavesTheRhythmAlone) {
  timer->start();
  at(120ms, [this] { timer->suspend(); });
  at(180ms, [this] { timer->start(); });
  runUntil(250ms);
  EXPECT_THAT(calls, ElementsAre(0, 100, 200));
}

TEST_F(SafeDispatchTimerTest, AskingTwiceChangesNothingTheSecondTime) {
  timer->start();
  timer->start();
  runUntil(150ms);
  EXPECT_THAT(calls, ElementsAre(0, 100));
  timer->suspend();
  timer->suspend();
  EXPECT_FALSE(timer->running());
  runUntil(500ms);
  EXPECT_THAT(calls, ElementsAre(0, 100));
}

TEST_F(SafeDispatchTimerTest, ARestartBeginsANewRhythmNowOrOneIntervalFromNow) {
  at(30ms, [this] { timer->restart(true); });
  at(250ms, [this] { timer->restart(false); });
  runUntil(360ms);
  EXPECT_THAT(calls, ElementsAre(30, 130, 230, 350));
  timer->suspend();
  at(500ms, [this] { timer->restart(true); });
  runUntil(610ms);
  EXPECT_TRUE(timer->running());
  EXPECT_THAT(calls, ElementsAre(30, 130, 230, 350, 500, 600));
}

TEST_F(SafeDispatchTimerTest, ABlockedQueueMakesUpForAllCallsWithOne) {
  timer->start();
  at(50ms, [this] { runtime.clock().sleepFor(280ms); });
  runUntil(450ms);
  EXPECT_THAT(calls, ElementsAre(0, 330, 400));
}

TEST_F(SafeDispatchTimerTest, AHandlerThatTakesLongIsCalledAgainOnce) {
  timer->setEventHandler([this] {
    calls.push_back(elapsed());
    runtime.clock().sleepFor(calls.size() == 1 ? 250ms : 0ms);
  });
  timer->start();
  runUntil(420ms);
  EXPECT_THAT(calls, ElementsAre(0, 250, 300, 400));
}

TEST_F(SafeDispatchTimerTest, AHandlerCanBeReplacedAndTakenAway) {
  timer->start();
  at(150ms, [this] { timer->setEventHandler([this] { calls.push_back(-elapsed()); }); });
  at(250ms, [this] { timer->setEventHandler(nullptr); });
  runUntil(450ms);
  EXPECT_THAT(calls, ElementsAre(0, 100, -200));
}

TEST_F(SafeDispatchTimerTest, AHandlerMaySuspendRestartAndDestroyItsTimer) {
  timer->setEventHandler([this] {
    calls.push_back(elapsed());
    if (calls.size() == 1) {
      timer->suspend();
      timer->restart(false);
    } else {
      timer.reset();
    }
  });
  timer->start();
  runUntil(1s);
  EXPECT_THAT(calls, ElementsAre(0, 100));
}

TEST_F(SafeDispatchTimerTest, ATimerThatHasGoneCallsNobody) {
  timer->start();
  at(150ms, [this] { timer.reset(); });
  runUntil(1s);
  EXPECT_THAT(calls, ElementsAre(0, 100));
}

TEST_F(SafeDispatchTimerTest, IntervalsBeyondAllTimeStillMakeTheFirstCall) {
  for (const double seconds : {1e300, std::numeric_limits<double>::infinity()}) {
    calls.clear();
    makeTimer(Rate::seconds(seconds));
    timer->restart(true);
    runUntil(std::chrono::milliseconds(elapsed()) + 1h);
    EXPECT_EQ(calls.size(), 1U);
    timer->restart(false);
  }
}

/// On the machine's own threads, since those of virtual time never run beside each other: the thread
/// sanitizer sees what owner and queue share.
TEST(SafeDispatchTimerThreads, OwnerAndQueueMayBeDifferentThreads) {
  std::atomic<int> calls = 0;
  karvex::foundation::SystemRuntime runtime;
  karvex::foundation::SerialQueue queue(runtime.globalQueue());
  const auto count = [&calls] { ++calls; };
  SafeDispatchTimer timer(runtime.clock(), queue, {.rate = Rate::hertz(1e6)}, count);
  for (int round = 0; round < 50; ++round) {
    timer.start();
    for (const int before = calls; calls < before + 3;) {
      std::this_thread::yield();
    }
    timer.setEventHandler(count);
    timer.suspend();
    timer.restart(round % 2 == 0);
  }
  EXPECT_GE(calls, 150);
}

}  // namespace
}  // namespace midikit::internals
