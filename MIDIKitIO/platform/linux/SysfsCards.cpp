#include "MIDIKitIO/platform/linux/SysfsCards.hpp"

#include <fstream>
#include <optional>
#include <string>
#include <system_error>

namespace midikit::io::alsa {

namespace fs = std::filesystem;

namespace {

/// The kernel shows an attribute in one page.
constexpr std::streamsize longestAttribute = 4096;

std::optional<std::string> attribute(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text(static_cast<std::size_t>(longestAttribute), '\0');
  stream.read(text.data(), longestAttribute);
  if (!stream.is_open() || stream.bad()) {
    return std::nullopt;
  }
  text.resize(static_cast<std::size_t>(stream.gcount()));
  if (text.ends_with('\n')) {
    text.pop_back();
  }
  return text;
}

/// The card hangs on an interface of the USB device, so the device is one level up.
std::optional<UsbFacts> usbAbove(const fs::path& card) {
  std::error_code failure;
  const auto interface = fs::canonical(card / "device", failure);
  if (failure) {
    return std::nullopt;
  }
  const auto device = interface.parent_path();
  auto vendorId = attribute(device / "idVendor");
  auto productId = attribute(device / "idProduct");
  if (!vendorId || !productId) {
    return std::nullopt;
  }
  return UsbFacts{.vendorId = *std::move(vendorId),
                  .productId = *std::move(productId),
                  .path = device.filename().string(),
                  .serialNumber = attribute(device / "serial"),
                  .manufacturer = attribute(device / "manufacturer"),
                  .product = attribute(device / "product")};
}

}  // namespace

CardFacts readCard(const fs::path& directory, int card) {
  const auto place = directory / ("card" + std::to_string(card));
  return {.id = attribute(place / "id").value_or(std::string()), .usb = usbAbove(place)};
}

}  // namespace midikit::io::alsa
