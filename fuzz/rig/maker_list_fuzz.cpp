// Feeds the checker of makers' lists with any bytes.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "rig/maker/ListCheck.hpp"
#include "service/DescriptorDecoder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto checked = karvex::rig::checkList(text, std::nullopt);
  const auto decoded = karvex::service::decodeDescriptors(text);
  // A list without a fault is one that the program takes, device for device.
  if (checked.faults.empty() &&
      (!decoded.descriptors || decoded.descriptors->size() != checked.devices.size())) {
    std::abort();
  }
  // Whatever the bytes, a message is a line that any terminal can show.
  for (const auto& fault : checked.faults) {
    if (fault.text.empty() ||
        !std::ranges::all_of(fault.text, [](char letter) { return letter >= ' ' && letter <= '~'; })) {
      std::abort();
    }
  }
  return 0;
}
