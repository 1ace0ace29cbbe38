#pragma once

#include <cstddef>

namespace karvex::tests {

/// How often this process has asked for memory by `operator new` so far. A program that links this has its
/// operators replaced. Any thread.
std::size_t allocationsSoFar();

/// The same for the calling thread alone.
std::size_t allocationsOfThisThread();

}  // namespace karvex::tests
