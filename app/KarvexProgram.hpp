#pragma once

#include "app/KarvexCore.hpp"

namespace karvex::app {

/// The desktop application, from its start to its end. It has no options: an argument is a URL that the
/// desktop hands over. A second start brings the window of the first to the front, hands its URL over and
/// ends. Gives the exit status. On the process's main thread.
int runKarvex(int argumentCount, char** arguments, const MakeMIDIService& makeMIDIService);

}  // namespace karvex::app
