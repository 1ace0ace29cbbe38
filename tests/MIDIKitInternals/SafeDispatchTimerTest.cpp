#include "MIDIKitInternals/SafeDispatchTimer.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "foundation/run/VirtualRuntime.hpp"

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
  timer->start();
  EXPECT_TRUE(timer->running());
  EXPECT_THAT(calls, IsEmpty()) << "only the queue runs the handler";
  timer->suspend();
  EXPECT_FALSE(timer->running());
  timer->restart(true);
  EXPECT_TRUE(timer->running());
}

TEST_F(SafeDispatchTimerTest, CallsInARhythm) {
  using Step = std::function<void()>;
  const Step start = [this] { timer->start(); };
  const Step suspend = [this] { timer->suspend(); };
  const Step restartNow = [this] { timer->restart(true); };
  const Step restartLater = [this] { timer->restart(false); };
  const Step block = [this] { runtime.clock().sleepFor(280ms); };
  const Step negate = [this] { timer->setEventHandler([this] { calls.push_back(-elapsed()); }); };
  const Step takeAway = [this] { timer->setEventHandler(nullptr); };
  const Step destroy = [this] { timer.reset(); };
  const struct {
    const char* what;
    std::vector<std::pair<std::chrono::milliseconds, Step>> steps;
    std::vector<std::int64_t> calls;  // in the 650 ms after the timer was made
  } rows[] = {
      {"at once, then at each interval", {{0ms, start}, {350ms, suspend}}, {0, 100, 200, 300}},
      {"that began when the timer was made", {{130ms, start}, {350ms, suspend}}, {130, 200, 300}},
      {"what fell due while it was suspended makes one call",
       {{0ms, start}, {150ms, suspend}, {480ms, start}},
       {0, 100, 480, 500, 600}},
      {"which a short suspension leaves alone",
       {{0ms, start}, {120ms, suspend}, {180ms, start}, {250ms, suspend}},
       {0, 100, 200}},
      {"asking twice changes nothing the second time",
       {{0ms, start}, {0ms, start}, {150ms, suspend}, {160ms, suspend}},
       {0, 100}},
      {"a restart begins a new one, now or one interval from now",
       {{30ms, restartNow}, {250ms, restartLater}, {360ms, suspend}, {500ms, restartNow}},
       {30, 130, 230, 350, 500, 600}},
      {"a blocked queue makes up for all calls with one",
       {{0ms, start}, {50ms, block}},
       {0, 330, 400, 500, 600}},
      {"a handler can be replaced and taken away",
       {{0ms, start}, {150ms, negate}, {250ms, takeAway}},
       {0, 100, -200}},
      {"a timer that has gone calls nobody", {{0ms, start}, {150ms, destroy}}, {0, 100}},
  };
  for (const auto& [what, steps, expected] : rows) {
    calls.clear();
    start_ = runtime.clock().now();
    makeTimer(Rate::hertz(10));
    for (const auto& [moment, step] : steps) {
      at(moment, step);
    }
    runUntil(650ms);
    EXPECT_EQ(calls, expected) << what;
    timer.reset();
  }
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
