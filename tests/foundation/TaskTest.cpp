#include "foundation/run/Task.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "foundation/run/VirtualRuntime.hpp"

namespace karvex::foundation {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class TaskTest : public testing::Test {
 protected:
  void runFor(Duration span) {
    runtime.mainQueue().postAt(runtime.clock().now() + span, [this] { runtime.stopMain(); });
    runtime.runMain();
  }

  VirtualRuntime runtime;
  std::vector<std::string> events;
};

Task<std::string> fetch(VirtualRuntime& runtime, std::vector<std::string>& events) {
  co_await resumeOn(runtime.globalQueue());
  events.emplace_back("fetching");
  runtime.clock().sleepFor(2s);
  co_await resumeOn(runtime.mainQueue());
  co_return "answer";
}

TEST_F(TaskTest, AnAwaitedTaskGivesItsValueWhileItsQueueIsFree) {
  const auto run = [](VirtualRuntime& on, std::vector<std::string>& into) -> Task<> {
    into.emplace_back("begin");
    into.push_back(co_await fetch(on, into));
  };
  spawn(runtime.mainQueue(), run(runtime, events));
  runtime.mainQueue().postAt(TimePoint{} + 1s, [this] { events.emplace_back("main is free"); });
  runFor(3s);
  EXPECT_THAT(events, ElementsAre("begin", "fetching", "main is free", "answer"));
}

TEST_F(TaskTest, AnExceptionComesOutOfTheAwait) {
  const auto failing = [](VirtualRuntime& on) -> Task<int> {
    co_await resumeAt(on.mainQueue(), on.clock().now() + 10ms);
    throw std::runtime_error("no answer");
  };
  const auto run = [&failing](VirtualRuntime& on, std::vector<std::string>& into) -> Task<> {
    try {
      co_await failing(on);
      into.emplace_back("value");
    } catch (const std::runtime_error& error) {
      into.emplace_back(error.what());
    }
  };
  spawn(runtime.mainQueue(), run(runtime, events));
  runFor(1s);
  EXPECT_THAT(events, ElementsAre("no answer"));
}

TEST_F(TaskTest, ATaskWhoseQueueGoesIsDestroyedWithAllThatItHolds) {
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watch = held;
  {
    VirtualRuntime other;
    const auto inner = [](VirtualRuntime& on, std::shared_ptr<int> resource) -> Task<int> {
      co_await resumeAt(on.mainQueue(), on.clock().now() + 1h);
      co_return *resource;
    };
    const auto outer = [&inner](VirtualRuntime& on, std::shared_ptr<int> resource) -> Task<> {
      co_await inner(on, std::move(resource));
    };
    spawn(other.mainQueue(), outer(other, std::move(held)));
    other.mainQueue().postAt(TimePoint{} + 1s, [&other] { other.stopMain(); });
    other.runMain();
    EXPECT_FALSE(watch.expired());
  }
  EXPECT_TRUE(watch.expired());
}

TEST_F(TaskTest, ATaskThatNobodyAwaitsNeverStarts) {
  const auto run = [](std::vector<std::string>& into) -> Task<> {
    into.emplace_back("started");
    co_return;
  };
  {
    const auto forgotten = run(events);
  }
  runFor(1s);
  EXPECT_THAT(events, ElementsAre());
}

}  // namespace
}  // namespace karvex::foundation
