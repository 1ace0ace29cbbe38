#pragma once

#include <string>
#include <string_view>

namespace midikit::core {

/// A serialised value that lies outside its type: the encoded data is corrupt. It goes to whoever asked for
/// the decoding; nothing is raised or thrown.
struct DecodingError {
  std::string_view typeName;  ///< name of the type that was asked for; a text of static storage

  /// "Encoded value is not a valid UInt7."
  std::string description() const {
    return std::string("Encoded value is not a valid ").append(typeName).append(".");
  }

  constexpr bool operator==(const DecodingError&) const = default;
};

}  // namespace midikit::core
