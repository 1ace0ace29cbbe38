#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records/ServerDeviceDescriptor.hpp"

namespace karvex::service {

/// What became of an answer of the service. Pure functions; the answer is any bytes.
struct DecodedDescriptors {
  /// The list, or nothing if any element of it can't be decoded: one bad element loses the whole list.
  std::optional<std::vector<records::ServerDeviceDescriptor>> descriptors;
  /// What to print of it, one line each without its line end; empty when all is well.
  std::vector<std::string> messages;
};

/// Reads the answer to the list request: a JSON array (RFC 8259) of descriptors.
DecodedDescriptors decodeDescriptors(std::string_view answer);

}  // namespace karvex::service
