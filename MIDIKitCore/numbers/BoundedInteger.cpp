#include "MIDIKitCore/numbers/BoundedInteger.hpp"

#include "MIDIKitInternals/Exception.hpp"

namespace midikit::core::detail {

using internals::Exception;
using internals::raise;

void raiseOverflow(std::string_view typeName) noexcept {
  raise(Exception::overflow, std::string(typeName).append(" integer overflowed"));
}

void raiseUnderflow(std::string_view typeName) noexcept {
  raise(Exception::underflow, std::string(typeName).append(" integer underflowed"));
}

void raiseDivisionByZero(std::string_view typeName) noexcept {
  raise(Exception::divisionByZero, std::string(typeName).append(" integer divided by zero"));
}

std::string debugText(std::string_view typeName, std::string_view digits) {
  return std::string(typeName).append("(").append(digits).append(")");
}

}  // namespace midikit::core::detail
