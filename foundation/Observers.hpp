#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace karvex::foundation {

/// Keeps an observer in its list; the observer is taken out when this goes. It may outlive the list.
class Subscription {
 public:
  /// A subscription to nothing.
  Subscription() = default;
  /// `remove` takes the observer out. It is called once, on the thread that destroys the subscription.
  explicit Subscription(std::function<void()> remove) : remove_(std::move(remove)) {}
  Subscription(Subscription&& other) noexcept : remove_(std::exchange(other.remove_, nullptr)) {}
  Subscription& operator=(Subscription&& other) noexcept {
    std::swap(remove_, other.remove_);
    return *this;
  }
  ~Subscription() {
    if (remove_) {
      remove_();
    }
  }

 private:
  std::function<void()> remove_;
};

/// Callbacks, called in the order in which they were added. All operations may be called on any thread, also
/// from inside a callback: no lock is held while one runs. So a callback that another thread takes out just
/// then may run once more.
template <typename... Args>
class Observers {
 public:
  /// What is called. It must not throw: the callbacks behind it would be left out.
  using Callback = std::function<void(const Args&...)>;

  /// Puts a callback at the end of the list, for as long as the subscription lives.
  [[nodiscard]] Subscription add(Callback callback) {
    const std::lock_guard lock(list_->mutex);
    const auto number = list_->next++;
    list_->callbacks.emplace(number, std::make_shared<Callback>(std::move(callback)));
    return Subscription([weak = std::weak_ptr(list_), number] {
      if (const auto list = weak.lock()) {
        list->remove(number);
      }
    });
  }

  /// Calls those that are in the list when this begins, one after the other, on the calling thread.
  void notify(const Args&... args) const {
    for (const auto& callback : list_->snapshot()) {
      (*callback)(args...);
    }
  }

 private:
  struct List {
    void remove(std::uint64_t number) {
      std::shared_ptr<Callback> removed;  // Destroyed behind the lock: its captures may do anything.
      const std::lock_guard lock(mutex);
      if (auto node = callbacks.extract(number); !node.empty()) {
        removed = std::move(node.mapped());
      }
    }
    std::vector<std::shared_ptr<Callback>> snapshot() {
      const std::lock_guard lock(mutex);
      std::vector<std::shared_ptr<Callback>> copy;
      copy.reserve(callbacks.size());
      for (const auto& [number, callback] : callbacks) {
        copy.push_back(callback);
      }
      return copy;
    }

    std::mutex mutex;
    std::uint64_t next = 0;
    std::map<std::uint64_t, std::shared_ptr<Callback>> callbacks;
  };

  std::shared_ptr<List> list_ = std::make_shared<List>();
};

}  // namespace karvex::foundation
