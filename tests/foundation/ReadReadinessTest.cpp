#include "foundation/run/ReadReadiness.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "foundation/run/SystemRuntime.hpp"

namespace karvex::foundation {
namespace {

using namespace std::chrono_literals;

class ReadReadinessTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
  void TearDown() override {
    ::close(ends[0]);
    closeWriteEnd();
  }

  void send(const std::string& text) const {
    ASSERT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void closeWriteEnd() { ::close(std::exchange(ends[1], -1)); }

  /// One byte at a time, so that there is more to read when the handler returns.
  ReadOutcome readByteInto(std::string& text) const {
    char byte = 0;
    if (::read(ends[0], &byte, 1) != 1) {
      return ReadOutcome::nothing;
    }
    text += byte;
    return ReadOutcome::data;
  }

  SystemRuntime runtime;
  std::array<int, 2> ends{};
};

TEST_F(ReadReadinessTest, TheHandlerIsCalledAsLongAsThereIsSomething) {
  std::string received;
  ReadReadiness readiness(ends[0], runtime.globalQueue(), [&] {
    const auto outcome = readByteInto(received);
    if (received == "first") {
      send(" second");
    } else if (received == "first second") {
      runtime.stopMain();
    }
    return outcome;
  });
  readiness.resume();
  send("first");
  runtime.runMain();
  EXPECT_EQ(received, "first second");
}

TEST_F(ReadReadinessTest, TheDescriptorStaysABlockingOne) {
  ReadReadiness readiness(ends[0], runtime.globalQueue(), [&] {
    runtime.stopMain();
    return ReadOutcome::gone;
  });
  readiness.resume();
  send("x");
  runtime.runMain();
  EXPECT_EQ(::fcntl(ends[0], F_GETFL) & O_NONBLOCK, 0);
}

TEST_F(ReadReadinessTest, AHungUpDescriptorDoesNotKeepAProcessorBusy) {
  std::string received;
  int empty = 0;
  const auto start = std::chrono::steady_clock::now();
  ReadReadiness readiness(ends[0], runtime.globalQueue(), [&] {
    const auto outcome = readByteInto(received);
    if (outcome == ReadOutcome::nothing && ++empty == 3) {
      runtime.stopMain();
    }
    return outcome;
  });
  readiness.resume();
  send("x");
  closeWriteEnd();
  runtime.runMain();
  EXPECT_EQ(received, "x");
  EXPECT_GE(std::chrono::steady_clock::now() - start, 2 * ReadReadiness::pauseAfterNothing);
}

TEST_F(ReadReadinessTest, NoCallFollowsOneThatFoundNothingLeft) {
  std::atomic<int> calls = 0;
  ReadReadiness readiness(ends[0], runtime.globalQueue(), [&] {
    ++calls;
    runtime.mainQueue().postAt(runtime.clock().now() + 20ms, [this] { runtime.stopMain(); });
    return ReadOutcome::gone;
  });
  readiness.resume();
  send("never read");
  runtime.runMain();
  EXPECT_EQ(calls, 1);
}

TEST_F(ReadReadinessTest, NoCallComesBeforeItIsResumed) {
  std::atomic<bool> isResumed = false;
  ReadReadiness readiness(ends[0], runtime.globalQueue(), [&] {
    EXPECT_TRUE(isResumed);
    runtime.stopMain();
    return ReadOutcome::gone;
  });
  send("x");
  runtime.mainQueue().postAt(runtime.clock().now() + 20ms, [&] {
    isResumed = true;
    readiness.resume();
  });
  runtime.runMain();
}

// As a port does that is closed while its handler waits for the port's lock.
TEST_F(ReadReadinessTest, TheEndDoesNotWaitForACallThatWaitsForItsOwner) {
  struct Shared {
    std::mutex mutex;
    std::promise<void> hasBegun;
    std::promise<bool> sawTheEnd;
    bool isOver = false;
  };
  const auto shared = std::make_shared<Shared>();
  std::unique_lock lock(shared->mutex);
  std::optional<ReadReadiness> readiness;
  readiness.emplace(ends[0], runtime.globalQueue(), [shared] {
    shared->hasBegun.set_value();
    const std::lock_guard wait(shared->mutex);
    shared->sawTheEnd.set_value(shared->isOver);
    return ReadOutcome::data;
  });
  readiness->resume();
  send("x");
  shared->hasBegun.get_future().wait();
  readiness.reset();
  shared->isOver = true;
  lock.unlock();
  EXPECT_TRUE(shared->sawTheEnd.get_future().get());
}

}  // namespace
}  // namespace karvex::foundation
