#pragma once

#include <cstddef>
#include <type_traits>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io {

/// The records of a list that the platform has by index: `at` returns the reference, `make` the record of it.
/// The list may become shorter on the way; the platform returns the reference 0 for what isn't there any
/// more, and that is left out.
template <class At, class Make>
auto listObjects(std::size_t count, At at, Make make) {
  std::vector<std::invoke_result_t<Make, MIDIObjectRef>> objects;
  objects.reserve(count);
  for (std::size_t index = 0; index < count; ++index) {
    if (const MIDIObjectRef ref = at(index); ref != 0) {
      objects.push_back(make(ref));
    }
  }
  return objects;
}

}  // namespace midikit::io
