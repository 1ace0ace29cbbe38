#pragma once

#include <functional>

#include "foundation/run/Runtime.hpp"
#include "loader/platform/host.hpp"

namespace karvex::app {

/// The loader's host on a runtime and the program's log channels. The runtime must outlive its use.
loader::host_calls loaderHostOn(foundation::Runtime& runtime);

/// What is done before the loader ends the process, on the thread of the load; one action at a time, as there
/// is one load at a time. None at first.
void beforeProcessEnd(std::function<void()> action);

}  // namespace karvex::app
