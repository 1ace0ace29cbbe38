// Feeds the cleaning of USB strings with any bytes.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "device/platform/linux/UsbText.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace karvex::device;
  const std::string_view raw(reinterpret_cast<const char*>(data), size);
  const auto name = productNameFromUsb(raw);
  // What came out clean must be clean, and clean text must pass as it stands.
  const bool isStable = productNameFromUsb(name) == name && serialNumberFromUsb(name) == name;
  const auto serialNumber = serialNumberFromUsb(raw);
  const bool isUnchanged = !serialNumber || (*serialNumber == raw && name == raw);
  if (!isStable || !isUnchanged || name.size() > longestUsbString * 3) {
    std::abort();
  }
  return 0;
}
