#include "ui/KarvexApp.hpp"

#include "foundation/Log.hpp"

namespace karvex::ui {

KarvexApp::KarvexApp(const upgrade::Platform& platform)
    : midiManager(midikit::io::ObservableMIDIManager::create({.service = platform.midiService,
                                                              .runtime = platform.runtime,
                                                              .clientName = "Brenvar_Firmware_loader",
                                                              .model = "V1.0",
                                                              .manufacturer = "Vesk Electronic"})) {}

void KarvexApp::openUrl(const std::string& url) {
  foundation::log::print("URL reçue : " + url + '\n');
}

}  // namespace karvex::ui
