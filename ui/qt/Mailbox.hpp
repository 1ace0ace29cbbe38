#pragma once

#include <QMetaObject>
#include <QObject>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace karvex::ui::qt {

/// Hands values over to the toolkit's thread. What comes in faster than it is taken is passed over: the
/// newest wins. Made and destroyed on the toolkit's thread; nobody may put anything in any more when it is
/// destroyed.
template <typename T>
class Mailbox {
 public:
  /// `receive` is called on the toolkit's thread, from its event loop.
  explicit Mailbox(std::function<void(T)> receive) : receive_(std::move(receive)) {}
  Mailbox(const Mailbox&) = delete;
  Mailbox& operator=(const Mailbox&) = delete;

  /// Any thread; doesn't wait.
  void put(T value) {
    const std::lock_guard lock(mutex_);
    const bool isOnItsWay = newest_.has_value();
    newest_ = std::move(value);
    if (!isOnItsWay) {
      QMetaObject::invokeMethod(&context_, [this] { deliver(); }, Qt::QueuedConnection);
    }
  }

 private:
  void deliver() {
    std::optional<T> value;
    {
      const std::lock_guard lock(mutex_);
      value.swap(newest_);
    }
    receive_(std::move(*value));
  }

  std::function<void(T)> receive_;
  std::mutex mutex_;
  std::optional<T> newest_;
  QObject context_;  // What is on its way to it is dropped with it.
};

}  // namespace karvex::ui::qt
