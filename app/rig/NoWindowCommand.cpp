// What takes the place of the window where the programs are built without one.

#include <stdexcept>

#include "app/rig/WindowCommand.hpp"

namespace karvex::app {

bool hasDisplay() {
  return false;
}

RunRecord runInWindow(const CommonOptions&, const ApplicationOptions&, const RunRecorder::EndListener&) {
  throw std::runtime_error("It was built without the window; use --front console.");
}

}  // namespace karvex::app
