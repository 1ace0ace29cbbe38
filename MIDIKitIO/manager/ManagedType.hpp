#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace midikit::io {

/// The kinds of objects that a manager holds.
enum class ManagedType : std::uint8_t {
  inputConnection,
  outputConnection,
  input,
  output,
  nonPersistentThruConnection,
};
inline constexpr std::array allManagedTypes = {ManagedType::inputConnection, ManagedType::outputConnection,
                                               ManagedType::input, ManagedType::output,
                                               ManagedType::nonPersistentThruConnection};

/// Which of the objects of a kind are meant: the one with a tag, or all.
class TagSelection {
 public:
  static TagSelection withTag(std::string tag) { return TagSelection(std::move(tag)); }
  static TagSelection all() { return TagSelection(std::nullopt); }

  /// None means all.
  const std::optional<std::string>& tag() const { return tag_; }

  friend bool operator==(const TagSelection&, const TagSelection&) = default;

 private:
  explicit TagSelection(std::optional<std::string> tag) : tag_(std::move(tag)) {}

  std::optional<std::string> tag_;
};

}  // namespace midikit::io
