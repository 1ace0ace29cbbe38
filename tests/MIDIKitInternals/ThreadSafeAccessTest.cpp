#include "MIDIKitInternals/ThreadSafeAccess.hpp"

#include <gmock/gmock.h>

#include <atomic>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace midikit::internals {
namespace {

using testing::ElementsAre;

/// Notes what is asked of it.
class NotingLock final : public ThreadLock {
 public:
  explicit NotingLock(std::vector<std::string>& notes) : notes_(notes) {}
  void readLock() override { notes_.emplace_back("read"); }
  void writeLock() override { notes_.emplace_back("write"); }
  void unlock() override { notes_.emplace_back("unlock"); }

 private:
  std::vector<std::string>& notes_;
};

TEST(ThreadSafeAccess, TakesTheLockThatEachAccessNeedsForAsLongAsItLasts) {
  std::vector<std::string> notes;
  ThreadSafeAccess access(1, std::make_unique<NotingLock>(notes));
  EXPECT_EQ(access.value(), 1);
  EXPECT_THAT(std::exchange(notes, {}), ElementsAre("read", "unlock"));

  access.setValue(2);
  EXPECT_THAT(std::exchange(notes, {}), ElementsAre("write", "unlock"));

  EXPECT_EQ(access.modify([&](int& value) {
    notes.emplace_back("change");
    return ++value;
  }),
            3);
  EXPECT_THAT(std::exchange(notes, {}), ElementsAre("write", "change", "unlock"));
  EXPECT_EQ(access.value(), 3);
}

TEST(ThreadSafeAccess, GivesTheLockBackWhenAChangeThrows) {
  ThreadSafeAccess access(1);
  EXPECT_THROW(access.modify([](int& value) {
    value = 2;
    throw std::runtime_error("stopped");
  }),
               std::runtime_error);
  access.setValue(access.value() + 1);
  EXPECT_EQ(access.value(), 3);
}

TEST(ThreadSafeAccess, AnOldValueMayUseTheAccessWhenItEnds) {
  struct Guarded {
    ThreadSafeAccess<std::shared_ptr<int>> access;
    int seen = 0;
  } guarded;
  guarded.access.setValue(std::shared_ptr<int>(new int(1), [&](const int* old) {
    guarded.seen = *old + *guarded.access.value();
    delete old;
  }));
  guarded.access.setValue(std::make_shared<int>(10));
  EXPECT_EQ(guarded.seen, 11);
}

TEST(ThreadSafeAccess, ReadersNeverSeeHalfAChange) {
  ThreadSafeAccess access(std::pair{0, 0});
  constexpr int rounds = 2000;
  std::atomic<int> torn = 0;
  {
    std::vector<std::jthread> threads;
    for (int writer = 0; writer < 2; ++writer) {
      threads.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) {
          access.modify([](auto& value) {
            ++value.first;
            ++value.second;
          });
        }
      });
    }
    for (int reader = 0; reader < 2; ++reader) {
      threads.emplace_back([&] {
        for (int round = 0; round < rounds; ++round) {
          const auto [first, second] = access.value();
          torn += first == second ? 0 : 1;
        }
      });
    }
  }
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(access.value(), (std::pair{2 * rounds, 2 * rounds}));
}

TEST(RWThreadLock, ReadersHoldItTogether) {
  RWThreadLock lock;
  std::latch bothInside(2);
  const auto read = [&] {
    lock.readLock();
    bothInside.arrive_and_wait();
    lock.unlock();
  };
  std::jthread other(read);
  read();
}

TEST(RWThreadLockDeathTest, AThreadThatWaitsForItselfStops) {
  const auto waitForItself = [] {
    RWThreadLock lock;
    lock.writeLock();
    lock.writeLock();
  };
  EXPECT_DEATH(waitForItself(), "Could not execute pthread_rwlock_wrlock, errno: ");
}

}  // namespace
}  // namespace midikit::internals
