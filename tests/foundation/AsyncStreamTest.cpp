#include "foundation/run/AsyncStream.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "foundation/run/SystemRuntime.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace karvex::foundation {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class AsyncStreamTest : public testing::Test {
 protected:
  void runUntilIdle() {
    runtime.mainQueue().postAt(runtime.clock().now() + 1h, [this] { runtime.stopMain(); });
    runtime.runMain();
  }

  VirtualRuntime runtime;
  std::vector<std::string> taken;
};

Task<> takeAll(AsyncStream<std::string> stream, std::vector<std::string>& into) {
  while (auto value = co_await stream.next()) {
    into.push_back(std::move(*value));
  }
  into.emplace_back("end");
}

TEST_F(AsyncStreamTest, AConsumerGetsWhatCameBeforeAndAfterItAskedInOrder) {
  auto [stream, producer] = AsyncStream<std::string>::make(runtime.globalQueue());
  producer.yield("early");
  producer.yield("too");
  spawn(runtime.globalQueue(), takeAll(stream, taken));
  runUntilIdle();
  EXPECT_THAT(taken, ElementsAre("early", "too"));
  producer.yield("late");
  runUntilIdle();
  EXPECT_THAT(taken, ElementsAre("early", "too", "late"));
  producer.yield("last");
  producer.finish();
  producer.yield("behind the end");
  producer.finish();
  runUntilIdle();
  EXPECT_THAT(taken, ElementsAre("early", "too", "late", "last", "end"));
}

TEST_F(AsyncStreamTest, TheStreamEndsWithItsProducer) {
  {
    auto [stream, producer] = AsyncStream<std::string>::make(runtime.globalQueue());
    const auto moved = std::move(producer);
    spawn(runtime.globalQueue(), takeAll(stream, taken));
    runUntilIdle();
    EXPECT_THAT(taken, IsEmpty());
  }
  runUntilIdle();
  EXPECT_THAT(taken, ElementsAre("end"));
}

TEST_F(AsyncStreamTest, ValuesForNobodyAreNotKept) {
  const auto value = std::make_shared<int>(1);
  std::optional<AsyncStream<std::shared_ptr<int>>::Producer> producer;
  {
    auto [stream, itsProducer] = AsyncStream<std::shared_ptr<int>>::make(runtime.globalQueue());
    producer.emplace(std::move(itsProducer));
    producer->yield(value);
    EXPECT_EQ(value.use_count(), 2);
  }
  EXPECT_EQ(value.use_count(), 1) << "what nobody took goes with the consumer";
  producer->yield(value);
  EXPECT_EQ(value.use_count(), 1);
}

TEST_F(AsyncStreamTest, AConsumerThatWaitsIsDestroyedIfItsQueueIsGone) {
  const auto held = std::make_shared<int>(1);
  const auto wait = [](AsyncStream<std::string> stream, std::shared_ptr<int>) -> Task<> {
    co_await stream.next();
    ADD_FAILURE() << "there is nobody to go on";
  };
  {
    VirtualRuntime other;
    auto [stream, producer] = AsyncStream<std::string>::make(other.mainQueue());
    spawn(other.mainQueue(), wait(std::move(stream), held));
    other.stopMain();
    other.runMain();
    EXPECT_EQ(held.use_count(), 2);
    producer.yield("never taken");
  }
  EXPECT_EQ(held.use_count(), 1);
}

// Meant for the thread sanitizer: the consumer waits, is woken and destroyed while the producer is still at
// it.
TEST(AsyncStreamThreadsTest, NothingIsLostOrDoubledBetweenThreads) {
  SystemRuntime runtime;
  static constexpr int streams = 20;
  static constexpr int values = 500;
  std::atomic<int> ended = 0;
  std::vector<std::thread> producers;
  const auto check = [&runtime, &ended](AsyncStream<int> stream) -> Task<> {
    int expected = 0;
    while (const auto value = co_await stream.next()) {
      EXPECT_EQ(*value, expected++);
    }
    EXPECT_EQ(expected, values);
    if (++ended == streams) {
      runtime.stopMain();
    }
  };
  for (int i = 0; i < streams; ++i) {
    auto [stream, producer] = AsyncStream<int>::make(runtime.globalQueue());
    spawn(runtime.globalQueue(), check(std::move(stream)));
    producers.emplace_back([mine = std::move(producer)]() mutable {
      for (int value = 0; value < values; ++value) {
        mine.yield(value);
      }
      mine.finish();
    });
  }
  runtime.runMain();
  for (auto& thread : producers) {
    thread.join();
  }
}

}  // namespace
}  // namespace karvex::foundation
