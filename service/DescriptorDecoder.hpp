#pragma once

#include <cstddef>
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
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
DecodedDescriptors decodeDescriptors(std::string_view answer);

/// One reason why a list can't be decoded.
struct DescriptorFault {
  std::string key;     ///< of the element; empty if the fault is the element's or the list's as a whole
  std::string reason;  ///< a sentence
};

/// One element of a list, as far as it can be decoded.
struct ExaminedDescriptor {
  records::ServerDeviceDescriptor descriptor;  ///< what has a fault keeps its default
  std::vector<DescriptorFault> faults;         ///< in the order of the record's fields
};

/// A list that is read on after its first fault.
struct ExaminedList {
  std::optional<DescriptorFault> fault;  ///< of the list as a whole: then there are no elements
  std::vector<ExaminedDescriptor> elements;
};

/// Reads a list as decodeDescriptors() does, for anyone who wants to know all of its faults. It ends after
/// the element that brings the number of faults to `mostFaults`, so hostile bytes make no flood of them.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
ExaminedList examineDescriptors(std::string_view list, std::size_t mostFaults);

}  // namespace karvex::service
