// Feeds the decoder of the service's answer with any bytes.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "service/DescriptorDecoder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto decoded = karvex::service::decodeDescriptors({reinterpret_cast<const char*>(data), size});
  // Either a list or something to print, never both and never neither.
  if (decoded.descriptors.has_value() != decoded.messages.empty()) {
    std::abort();
  }
  return 0;
}
