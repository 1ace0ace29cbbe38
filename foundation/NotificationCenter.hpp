#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "foundation/Observers.hpp"

namespace karvex::foundation {

/// Notifications by name inside the process. Posting calls the observers of that name on the posting thread,
/// in the order in which they came. All operations may be called on any thread.
class NotificationCenter {
 public:
  /// The one that the parts of a program share.
  static NotificationCenter& defaultCenter();

  /// Calls everybody who observes `name`.
  void post(const std::string& name);

  /// Calls `observer` at every post of `name` for as long as the result lives.
  [[nodiscard]] Subscription observe(const std::string& name, std::function<void()> observer);

 private:
  Observers<> observersOf(const std::string& name);

  std::mutex mutex_;
  std::map<std::string, Observers<>> observers_;
};

}  // namespace karvex::foundation
