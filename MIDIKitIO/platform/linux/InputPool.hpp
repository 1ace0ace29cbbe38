#pragma once

#include <optional>

namespace midikit::io::alsa {

/// What another program has for events that it hasn't read yet, in cells; an event of up to 28 bytes takes
/// one. When it overflows, the kernel throws away all that is in it, so who sends much looks first.
struct InputPool {
  int all = 0;
  int free = 0;
};

/// That of a client; none if it is no program's, or gone. `descriptor` is that of any client. alsa-lib tells
/// of one's own room alone.
std::optional<InputPool> inputPool(int descriptor, int client);

}  // namespace midikit::io::alsa
