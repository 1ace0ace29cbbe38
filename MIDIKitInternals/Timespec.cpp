#include "MIDIKitInternals/Timespec.hpp"

#include <time.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "MIDIKitInternals/Exception.hpp"

namespace midikit::internals {

Timespec Timespec::now() {
  timespec time{};
  if (clock_gettime(CLOCK_MONOTONIC_RAW, &time) != 0) {
    std::fprintf(stderr, "Could not execute clock_gettime, errno: %d\n", errno);
    std::abort();
  }
  return {time.tv_sec, time.tv_nsec};
}

Timespec Timespec::fromSeconds(double seconds) {
  constexpr double limit = 0x1p63;
  const double total = seconds * static_cast<double>(nanosecondsPerSecond);
  if (!(total < limit)) {
    raise(Exception::overflow, "Timespec overflowed");
  }
  if (total < -limit) {
    raise(Exception::underflow, "Timespec underflowed");
  }
  const auto nanoseconds = static_cast<std::int64_t>(total);
  return normalised(nanoseconds / nanosecondsPerSecond, nanoseconds % nanosecondsPerSecond);
}

}  // namespace midikit::internals
