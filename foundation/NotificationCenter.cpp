#include "foundation/NotificationCenter.hpp"

#include <utility>

namespace karvex::foundation {

NotificationCenter& NotificationCenter::defaultCenter() {
  static NotificationCenter center;
  return center;
}

void NotificationCenter::post(const std::string& name) {
  observersOf(name).notify();
}

Subscription NotificationCenter::observe(const std::string& name, std::function<void()> observer) {
  return observersOf(name).add(std::move(observer));
}

/// A copy shares its list with the original, so the lock need not be held while observers run.
Observers<> NotificationCenter::observersOf(const std::string& name) {
  const std::lock_guard lock(mutex_);
  return observers_[name];
}

}  // namespace karvex::foundation
