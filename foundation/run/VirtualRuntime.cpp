#include "foundation/run/VirtualRuntime.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace karvex::foundation {
namespace {

/// The participant that the calling thread is, and the runtime that it belongs to. Null on foreign threads.
thread_local void* thisParticipant = nullptr;
thread_local const void* thisRuntime = nullptr;

/// A broken contract would hand the baton to two threads and show up as anything anywhere, so it ends the
/// program.
void require(bool holds, const char* contract) {
  if (!holds) {
    std::fprintf(stderr, "VirtualRuntime: %s\n", contract);
    std::abort();
  }
}

}  // namespace

VirtualRuntime::VirtualRuntime() {
  main_.hasBaton = true;
}

VirtualRuntime::~VirtualRuntime() {
  VirtualRuntime::finish();
}

void VirtualRuntime::finish() {
  // What is dropped dies behind the lock: a destructor in a job may well post.
  Ready dropped;
  Ready droppedFromMain;
  std::vector<Delivery> droppedDeliveries;
  Lock lock(mutex_);
  if (std::exchange(isEnding_, true)) {
    return;
  }
  dropped.swap(globalReady_);
  droppedFromMain.swap(mainReady_);
  for (auto entry = timed_.begin(); entry != timed_.end();) {
    const auto place = entry++;
    if (auto* delivery = std::get_if<Delivery>(&place->second)) {
      droppedDeliveries.push_back(std::move(*delivery));
      timed_.erase(place);
    }
  }
  // Threads that wait for what is dropped go on.
  lock.unlock();
  dropped.clear();
  droppedFromMain.clear();
  droppedDeliveries.clear();
  lock.lock();
  while (idleWorkers_.size() < workers_.size()) {
    // The sleepers go on one after the other; behind the last of them the baton comes back here.
    timed_.emplace(keyAt(TimePoint::max()), &main_);
    handBatonOn(main_);
    awaitBaton(lock, main_);
  }
  for (auto& worker : workers_) {
    giveBaton(*worker);
  }
  lock.unlock();
  for (auto& thread : threads_) {
    thread.join();
  }
}

void VirtualRuntime::runMain() {
  Lock lock(mutex_);
  require(main_.hasBaton, "runMain() belongs to the thread that made the runtime");
  mainMayRun_ = true;
  while (mainMayRun_) {
    mainIsIdle_ = true;
    handBatonOn(main_);
    awaitBaton(lock, main_);
    auto job = std::exchange(main_.job, nullptr);
    lock.unlock();
    job();
    job = nullptr;
    lock.lock();
  }
}

void VirtualRuntime::stopMain() {
  mainQueue_.post([this] {
    const Lock lock(mutex_);
    mainMayRun_ = false;
  });
}

TimePoint VirtualRuntime::VirtualClock::now() const {
  const Lock lock(runtime_.mutex_);
  return runtime_.now_;
}

void VirtualRuntime::VirtualClock::sleepUntil(TimePoint deadline) {
  Lock lock(runtime_.mutex_);
  if (deadline <= runtime_.now_) {
    return;
  }
  Participant& self = runtime_.current();
  runtime_.timed_.emplace(runtime_.keyAt(deadline), &self);
  runtime_.handBatonOn(self);
  runtime_.awaitBaton(lock, self);
}

void VirtualRuntime::VirtualQueue::post(Job job) {
  const Lock lock(runtime_.mutex_);
  if (runtime_.isEnding_) {
    return;
  }
  ready_.emplace(runtime_.keyAt(runtime_.now_), std::move(job));
  runtime_.scheduleIfFree();
}

void VirtualRuntime::VirtualQueue::postAt(TimePoint due, Job job) {
  const Lock lock(runtime_.mutex_);
  if (runtime_.isEnding_) {
    return;
  }
  const auto key = runtime_.keyAt(std::max(due, runtime_.now_));
  runtime_.timed_.emplace(key, Delivery{&ready_, std::move(job)});
  runtime_.scheduleIfFree();
}

OutsideWork::Ticket VirtualRuntime::VirtualOutsideWork::begin() {
  const Lock lock(runtime_.mutex_);
  works_[++lastTicket_] = {};
  return lastTicket_;
}

void VirtualRuntime::VirtualOutsideWork::setName(Ticket ticket, std::uint64_t name) {
  const Lock lock(runtime_.mutex_);
  if (auto* earlier = named(name)) {
    earlier->name = 0;
  }
  if (const auto found = works_.find(ticket); found != works_.end()) {
    found->second.name = name;
  }
}

void VirtualRuntime::VirtualOutsideWork::end(Ticket ticket) {
  const Lock lock(runtime_.mutex_);
  works_.erase(ticket);
  runtime_.scheduleIfFree();
}

void VirtualRuntime::VirtualOutsideWork::pause(std::uint64_t name) {
  const Lock lock(runtime_.mutex_);
  if (auto* work = named(name)) {
    work->isPaused = true;
  }
  runtime_.scheduleIfFree();
}

void VirtualRuntime::VirtualOutsideWork::resume(std::uint64_t name) {
  const Lock lock(runtime_.mutex_);
  if (auto* work = named(name)) {
    work->isPaused = false;
  }
}

void VirtualRuntime::VirtualOutsideWork::resumeTicket(Ticket ticket) {
  const Lock lock(runtime_.mutex_);
  if (const auto found = works_.find(ticket); found != works_.end()) {
    found->second.isPaused = false;
  }
}

bool VirtualRuntime::VirtualOutsideWork::isActive() const {
  return std::any_of(works_.begin(), works_.end(), [](const auto& work) { return !work.second.isPaused; });
}

VirtualRuntime::VirtualOutsideWork::Work* VirtualRuntime::VirtualOutsideWork::named(std::uint64_t name) {
  const auto found = std::find_if(works_.begin(), works_.end(),
                                  [name](const auto& work) { return work.second.name == name; });
  return name != 0 && found != works_.end() ? &found->second : nullptr;
}

std::shared_ptr<Latch> VirtualRuntime::makeLatch() {
  return std::make_shared<VirtualLatch>(*this);
}

void VirtualRuntime::VirtualLatch::wait() {
  Lock lock(runtime_.mutex_);
  auto* self = runtime_.currentOrNull();
  if (self == nullptr) {
    opened_.wait(lock, [this] { return isOpen_; });
  } else if (!isOpen_) {
    waiting_.push_back(self);
    runtime_.handBatonOn(*self);
    runtime_.awaitBaton(lock, *self);
  }
}

void VirtualRuntime::VirtualLatch::open() {
  const Lock lock(runtime_.mutex_);
  isOpen_ = true;
  for (auto* participant : std::exchange(waiting_, {})) {
    runtime_.timed_.emplace(runtime_.keyAt(runtime_.now_), participant);
  }
  opened_.notify_all();
  runtime_.scheduleIfFree();
}

VirtualRuntime::Participant* VirtualRuntime::currentOrNull() {
  if (thisParticipant != nullptr) {
    require(thisRuntime == this, "a thread of one runtime uses the clock or a latch of another one");
    return static_cast<Participant*>(thisParticipant);
  }
  return std::this_thread::get_id() == mainThread_ ? &main_ : nullptr;
}

VirtualRuntime::Participant& VirtualRuntime::current() {
  auto* participant = currentOrNull();
  require(participant != nullptr, "only threads of a runtime can sleep on its clock");
  return *participant;
}

void VirtualRuntime::handBatonOn(Participant& from) {
  from.hasBaton = false;
  giveBatonToFirst();
}

/// Finds what is due first and gives the baton to the thread that it is for. Called with the lock held, while
/// nobody has the baton.
void VirtualRuntime::giveBatonToFirst() {
  while (true) {
    std::optional<Key> first;
    const auto consider = [&first](const auto& waiting) {
      if (!waiting.empty() && (!first || waiting.begin()->first < *first)) {
        first = waiting.begin()->first;
      }
    };
    consider(timed_);
    consider(globalReady_);
    if (mainIsIdle_) {
      consider(mainReady_);
    }
    const bool mustWait = first && first->first > now_ && outsideWork_.isActive();
    batonIsFree_ = !first || mustWait;
    if (batonIsFree_) {
      return;
    }
    if (first->first != TimePoint::max()) {
      now_ = std::max(now_, first->first);
    }
    if (auto timed = timed_.extract(*first); !timed.empty()) {
      if (auto* sleeper = std::get_if<Participant*>(&timed.mapped())) {
        return giveBaton(**sleeper);
      }
      auto& delivery = std::get<Delivery>(timed.mapped());
      delivery.to->emplace(*first, std::move(delivery.job));
    } else if (auto global = globalReady_.extract(*first); !global.empty()) {
      return giveBatonForGlobalJob(std::move(global.mapped()));
    } else {
      main_.job = std::move(mainReady_.extract(*first).mapped());
      mainIsIdle_ = false;
      return giveBaton(main_);
    }
  }
}

void VirtualRuntime::giveBaton(Participant& to) {
  to.hasBaton = true;
  to.resume.notify_one();
}

/// Uses a thread that is idle, or makes one: a blocked job must never keep another one from starting.
void VirtualRuntime::giveBatonForGlobalJob(Job job) {
  if (!idleWorkers_.empty()) {
    Participant& worker = *idleWorkers_.back();
    idleWorkers_.pop_back();
    worker.job = std::move(job);
    return giveBaton(worker);
  }
  auto& worker = *workers_.emplace_back(std::make_unique<Participant>());
  worker.job = std::move(job);
  worker.hasBaton = true;
  threads_.emplace_back([this, &worker] { workerLoop(worker); });
}

/// A post from outside, while nobody runs, has to start the next one itself.
void VirtualRuntime::scheduleIfFree() {
  if (batonIsFree_) {
    giveBatonToFirst();
  }
}

void VirtualRuntime::awaitBaton(Lock& lock, Participant& self) {
  self.resume.wait(lock, [&self] { return self.hasBaton; });
}

void VirtualRuntime::workerLoop(Participant& self) {
  thisParticipant = &self;
  thisRuntime = this;
  Lock lock(mutex_);
  while (true) {
    awaitBaton(lock, self);
    if (!self.job) {
      return;
    }
    auto job = std::exchange(self.job, nullptr);
    lock.unlock();
    job();
    job = nullptr;
    lock.lock();
    idleWorkers_.push_back(&self);
    handBatonOn(self);
  }
}

}  // namespace karvex::foundation
