#include "foundation/run/VirtualRuntime.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/Timer.hpp"

namespace karvex::foundation {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class VirtualRuntimeTest : public testing::Test {
 protected:
  void note(const std::string& what) {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::to_string(elapsed().count()) + " " + what);
  }
  std::chrono::milliseconds elapsed() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(runtime.clock().now() - start_);
  }
  void runFor(Duration span) {
    runtime.mainQueue().postAt(runtime.clock().now() + span, [this] { runtime.stopMain(); });
    runtime.runMain();
  }

  VirtualRuntime runtime;
  std::mutex mutex_;
  std::vector<std::string> events_;
  TimePoint start_ = runtime.clock().now();
};

TEST_F(VirtualRuntimeTest, ALongSleepTakesNoRealTime) {
  const auto realStart = std::chrono::steady_clock::now();
  runtime.clock().sleepFor(1h);
  EXPECT_EQ(elapsed(), 1h);
  EXPECT_LT(std::chrono::steady_clock::now() - realStart, 1s);
}

TEST_F(VirtualRuntimeTest, ThreadsWakeInTheOrderOfTheirDeadlinesAndThenOfTheirRequests) {
  auto& global = runtime.globalQueue();
  for (const auto& sleeper : {std::pair{"late", 30ms}, {"early", 10ms}, {"tie 1", 20ms}, {"tie 2", 20ms}}) {
    global.post([this, sleeper] {
      runtime.clock().sleepFor(sleeper.second);
      note(sleeper.first);
    });
  }
  runFor(1s);
  EXPECT_THAT(events_, ElementsAre("10 early", "20 tie 1", "20 tie 2", "30 late"));
}

TEST_F(VirtualRuntimeTest, JobsForABlockedMainThreadWaitWhileGlobalJobsGoOn) {
  runtime.mainQueue().post([this] {
    runtime.globalQueue().post([this] {
      note("worker");
      runtime.mainQueue().post([this] { note("from worker"); });
    });
    note("blocked");
    runtime.clock().sleepFor(100ms);
    note("free");
  });
  runFor(1s);
  EXPECT_THAT(events_, ElementsAre("0 blocked", "0 worker", "100 free", "100 from worker"));
}

TEST_F(VirtualRuntimeTest, ARepeatingTimerLeavesOutWhatFellDueWhileItsQueueWasBlocked) {
  const auto timer = Timer::repeating(runtime.clock(), runtime.mainQueue(), 250ms, [this] { note("tick"); });
  runtime.mainQueue().postAt(start_ + 300ms, [this] { runtime.clock().sleepFor(900ms); });
  runFor(1600ms);
  EXPECT_THAT(events_, ElementsAre("250 tick", "1200 tick", "1250 tick", "1500 tick"));
}

TEST_F(VirtualRuntimeTest, ATimerThatIsCancelledOrGoneNeverFires) {
  auto cancelled = Timer::oneShot(runtime.clock(), runtime.mainQueue(), 10ms, [this] { note("cancelled"); });
  {
    const auto gone = Timer::oneShot(runtime.clock(), runtime.mainQueue(), 10ms, [this] { note("gone"); });
  }
  const auto kept = Timer::oneShot(runtime.clock(), runtime.mainQueue(), 10ms, [this] { note("kept"); });
  Timer self;
  self = Timer::repeating(runtime.clock(), runtime.mainQueue(), 20ms, [this, &self] {
    note("once");
    self.cancel();
  });
  cancelled.cancel();
  runFor(100ms);
  EXPECT_THAT(events_, ElementsAre("10 kept", "20 once"));
}

TEST_F(VirtualRuntimeTest, ASerialQueueNeverRunsTwoJobsAtOnce) {
  SerialQueue queue(runtime.globalQueue());
  for (const auto* name : {"first", "second"}) {
    queue.post([this, &queue, name = std::string(name)] {
      note(name + (queue.isCurrent() ? " begins" : " is lost"));
      runtime.clock().sleepFor(10ms);
      note(name + " ends");
    });
  }
  queue.postAt(start_ + 5ms, [this] { note("delayed"); });
  runFor(100ms);
  EXPECT_FALSE(queue.isCurrent());
  EXPECT_THAT(events_, ElementsAre("0 first begins", "10 first ends", "10 second begins", "20 second ends",
                                   "20 delayed"));
}

TEST_F(VirtualRuntimeTest, TheSameInputGivesTheSameOrderEveryTime) {
  const auto run = [] {
    VirtualRuntime own;
    std::mutex mutex;
    std::string order;
    for (int job = 0; job < 40; ++job) {
      own.globalQueue().post([&, job] {
        for (int step = 0; step < 5; ++step) {
          own.clock().sleepFor(std::chrono::milliseconds((job * 7 + step * 3) % 11));
          const std::lock_guard lock(mutex);
          order += std::to_string(job) + ",";
        }
      });
    }
    own.mainQueue().postAt(TimePoint{} + 1s, [&own] { own.stopMain(); });
    own.runMain();
    return order;
  };
  const auto first = run();
  for (int repeat = 0; repeat < 5; ++repeat) {
    ASSERT_EQ(run(), first);
  }
}

TEST_F(VirtualRuntimeTest, APostFromAForeignThreadWakesTheIdleMainThread) {
  std::thread foreign([this] {
    runtime.mainQueue().post([this] {
      note("foreign");
      runtime.stopMain();
    });
  });
  runtime.runMain();
  foreign.join();
  EXPECT_THAT(events_, ElementsAre("0 foreign"));
}

TEST_F(VirtualRuntimeTest, TimeStandsStillWhileOutsideWorkIsActiveAndGoesOnWhenItsFarSideWaits) {
  auto& outside = runtime.outsideWork();
  const auto ticket = outside.begin();
  outside.setName(ticket, 4711);
  const auto timer = Timer::oneShot(runtime.clock(), runtime.mainQueue(), 10s, [this] { note("timer"); });
  std::thread farSide([&] {
    runtime.mainQueue().post([this] { note("post"); });
    std::promise<void> resumed;
    runtime.globalQueue().postAt(start_ + 5s, [&] {
      outside.resume(4711);
      note("resumed");
      resumed.set_value();
    });
    outside.pause(1);  // Nobody's name: nothing happens.
    outside.pause(4711);
    resumed.get_future().wait();
    runtime.mainQueue().post([this] { note("answer"); });
    outside.end(ticket);
    outside.end(ticket);
  });
  runFor(11s);
  farSide.join();
  EXPECT_THAT(events_, ElementsAre("0 post", "5000 resumed", "5000 answer", "10000 timer"));
}

TEST(VirtualRuntimeEnd, WaitsForSleepersAndDropsWhatHasNotBegun) {
  bool sleeperEnded = false;
  bool neverRan = true;
  {
    VirtualRuntime runtime;
    runtime.globalQueue().post([&] {
      runtime.clock().sleepFor(5s);
      sleeperEnded = true;
      runtime.globalQueue().post([&] { neverRan = false; });
    });
    runtime.globalQueue().postAt(TimePoint{} + 1s, [&] { neverRan = false; });
    runtime.clock().sleepFor(1ms);
  }
  EXPECT_TRUE(sleeperEnded);
  EXPECT_TRUE(neverRan);
}

}  // namespace
}  // namespace karvex::foundation
