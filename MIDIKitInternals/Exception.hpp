#pragma once

#include <string_view>

namespace midikit::internals {

/// A breach of a contract that the program can't go on from. Raising one is no way of validating input: what
/// comes from outside is masked or tested before it reaches a checked operation.
enum class Exception { overflow, underflow, divisionByZero };

/// Prints the kind and `reason` on standard error and stops the program (`std::abort`). Any thread.
[[noreturn]] void raise(Exception kind, std::string_view reason) noexcept;

}  // namespace midikit::internals
