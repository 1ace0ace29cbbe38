#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "foundation/run/Runtime.hpp"

namespace karvex::foundation {

/// A runtime whose time is a number. Its threads are real, so code may block as it likes, but only one of
/// them runs at any moment: the one that holds the baton. Who sleeps or has nothing to do gives the baton up,
/// and it goes to whatever is due first; time jumps there. Things that are due at the same moment go in the
/// order in which they were asked for. So the same input gives the same order of events on every machine, and
/// a wait of 25 s costs as much as two function calls.
///
/// The thread that makes a VirtualRuntime is its main thread and holds the baton from the start, also outside
/// runMain(). Other threads may post to the queues; when they do, the order is theirs to answer for.
class VirtualRuntime final : public Runtime {
 public:
  VirtualRuntime();

  /// Lets the global jobs that are under way run to their end (their sleeps included), and drops what waits.
  ~VirtualRuntime() override;
  VirtualRuntime(const VirtualRuntime&) = delete;
  VirtualRuntime& operator=(const VirtualRuntime&) = delete;

  Clock& clock() override { return clock_; }
  Queue& mainQueue() override { return mainQueue_; }
  Queue& globalQueue() override { return globalQueue_; }
  OutsideWork& outsideWork() override { return outsideWork_; }
  std::shared_ptr<Latch> makeLatch() override;
  void runMain() override;
  void stopMain() override;
  void finish() override;

 private:
  /// When something is due, and the number of its request among all requests.
  using Key = std::pair<TimePoint, std::uint64_t>;
  using Ready = std::map<Key, Job>;

  /// A thread that takes part. `job` is what it was given the baton for, if it was idle.
  struct Participant {
    std::condition_variable resume;
    bool hasBaton = false;
    Job job;
  };

  struct Delivery {
    Ready* to;
    Job job;
  };
  using Timed = std::variant<Participant*, Delivery>;

  class VirtualClock final : public Clock {
   public:
    explicit VirtualClock(VirtualRuntime& runtime) : runtime_(runtime) {}
    TimePoint now() const override;
    void sleepUntil(TimePoint deadline) override;

   private:
    VirtualRuntime& runtime_;
  };

  class VirtualQueue final : public Queue {
   public:
    VirtualQueue(VirtualRuntime& runtime, Ready& ready) : runtime_(runtime), ready_(ready) {}
    void post(Job job) override;
    void postAt(TimePoint due, Job job) override;

   private:
    VirtualRuntime& runtime_;
    Ready& ready_;
  };

  class VirtualOutsideWork final : public OutsideWork {
   public:
    explicit VirtualOutsideWork(VirtualRuntime& runtime) : runtime_(runtime) {}
    Ticket begin() override;
    void setName(Ticket ticket, std::uint64_t name) override;
    void end(Ticket ticket) override;
    void pause(std::uint64_t name) override;
    void resume(std::uint64_t name) override;
    void resumeTicket(Ticket ticket) override;
    bool isActive() const;

   private:
    struct Work {
      std::uint64_t name = 0;
      bool isPaused = false;
    };
    Work* named(std::uint64_t name);

    VirtualRuntime& runtime_;
    Ticket lastTicket_ = 0;
    std::map<Ticket, Work> works_;
  };

  using Lock = std::unique_lock<std::mutex>;

  /// Who takes part gives the baton up while it waits; a foreign thread just blocks.
  class VirtualLatch final : public Latch {
   public:
    explicit VirtualLatch(VirtualRuntime& runtime) : runtime_(runtime) {}
    void wait() override;
    void open() override;

   private:
    VirtualRuntime& runtime_;
    bool isOpen_ = false;
    std::vector<Participant*> waiting_;
    std::condition_variable opened_;  ///< for foreign threads
  };

  Participant* currentOrNull();
  Participant& current();
  Key keyAt(TimePoint due) { return {due, nextOrder_++}; }
  void handBatonOn(Participant& from);
  void giveBatonToFirst();
  void giveBaton(Participant& to);
  void giveBatonForGlobalJob(Job job);
  void scheduleIfFree();
  void awaitBaton(Lock& lock, Participant& self);
  void workerLoop(Participant& self);

  mutable std::mutex mutex_;
  TimePoint now_{};
  std::uint64_t nextOrder_ = 0;
  bool batonIsFree_ = false;
  bool mainIsIdle_ = false;
  bool mainMayRun_ = false;
  bool isEnding_ = false;
  std::map<Key, Timed> timed_;
  Ready mainReady_;
  Ready globalReady_;
  Participant main_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  std::vector<std::unique_ptr<Participant>> workers_;
  std::vector<Participant*> idleWorkers_;
  std::vector<std::thread> threads_;
  VirtualClock clock_{*this};
  VirtualOutsideWork outsideWork_{*this};
  VirtualQueue mainQueue_{*this, mainReady_};
  VirtualQueue globalQueue_{*this, globalReady_};
};

}  // namespace karvex::foundation
