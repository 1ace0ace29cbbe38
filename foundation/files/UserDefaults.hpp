#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace karvex::foundation {

/// Numbers that a program keeps from one run to the next, by key. All operations may be called on any thread.
class UserDefaults {
 public:
  virtual ~UserDefaults() = default;
  UserDefaults() = default;
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  /// None for a key that isn't there or whose value is no integer of 64 bits.
  [[nodiscard]] virtual std::optional<std::int64_t> integer(std::string_view key) const = 0;

  /// Without a value, the key goes. What can't be stored is dropped, and a line in the debug log says so.
  virtual void setInteger(std::string_view key, std::optional<std::int64_t> value) = 0;

  /// The user's own: the file karvex/defaults in $XDG_CONFIG_HOME, or in ~/.config without the variable.
  /// Without a home directory nothing is there and nothing is kept.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates.
  static std::shared_ptr<UserDefaults> standard();
};

}  // namespace karvex::foundation
