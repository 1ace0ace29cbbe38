#include "ui/KarvexApp.hpp"

#include <fmt/format.h>

#include "foundation/Log.hpp"

namespace karvex::ui {
namespace {

/// No URL has control characters as they stand (RFC 3986, 2); a terminal would obey them.
std::string withoutControlCharacters(const std::string& url) {
  std::string line;
  for (const char character : url) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x20 || byte == 0x7F) {
      line += fmt::format("%{:02X}", byte);
    } else {
      line += character;
    }
  }
  return line;
}

}  // namespace

KarvexApp::KarvexApp(const upgrade::Platform& platform)
    : midiManager(midikit::io::ObservableMIDIManager::create({.service = platform.midiService,
                                                              .runtime = platform.runtime,
                                                              .clientName = "Brenvar_Firmware_loader",
                                                              .model = "V1.0",
                                                              .manufacturer = "Vesk Electronic"})) {}

void KarvexApp::openUrl(const std::string& url) {
  foundation::log::print("URL reçue : " + withoutControlCharacters(url) + '\n');
}

}  // namespace karvex::ui
