#pragma once

#include <exception>

namespace midikit::io::receive {

/// A line in the debug log about what a user's callable has thrown.
void logThrown(const char* what) noexcept;

/// Calls what the user of the layer supplied. What that throws ends here, because there is nobody above it on
/// eventQueue but the end of the program.
template <class Call>
void callUser(const Call& call) noexcept {
  try {
    call();
  } catch (const std::exception& error) {
    logThrown(error.what());
  } catch (...) {
    logThrown("no std::exception");
  }
}

}  // namespace midikit::io::receive
