#include "MIDIKitInternals/Exception.hpp"

#include <cstdio>
#include <cstdlib>

namespace midikit::internals {
namespace {

const char* nameOf(Exception kind) {
  switch (kind) {
    case Exception::overflow:
      return "NSDecimalNumberOverflowException";
    case Exception::underflow:
      return "NSDecimalNumberUnderflowException";
    case Exception::divisionByZero:
      return "NSDecimalNumberDivideByZeroException";
  }
  std::abort();
}

}  // namespace

void raise(Exception kind, std::string_view reason) noexcept {
  std::fprintf(stderr, "%s: %.*s\n", nameOf(kind), static_cast<int>(reason.size()), reason.data());
  std::abort();
}

}  // namespace midikit::internals
