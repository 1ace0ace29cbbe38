#pragma once

#include "foundation/Runtime.hpp"
#include "loader/platform/host.hpp"

namespace karvex::app {

/// The loader's host on a runtime and the program's log channels. The runtime must outlive its use.
loader::host_calls loaderHostOn(foundation::Runtime& runtime);

}  // namespace karvex::app
