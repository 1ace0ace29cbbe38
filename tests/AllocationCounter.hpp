#pragma once

#include <cstddef>

namespace karvex::tests {

/// How often this process has asked for memory by `operator new` so far. Whoever links this has the process's
/// operators replaced. Any thread.
std::size_t allocationsSoFar();

}  // namespace karvex::tests
