#include "app/rig/MakerCommands.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "foundation/net/TransferPolicy.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "loader/mcu_table.hpp"
#include "rig/maker/ListText.hpp"
#include "rig/service/EmbeddedService.hpp"
#include "ui/TerminationSignals.hpp"

namespace karvex::app {
namespace {

std::string sentenceOf(const rig::ListFault& fault, const std::string& list) {
  auto sentence = fault.line == 0 ? list : fmt::format("{}:{}", list, fault.line);
  if (!fault.place.empty()) {
    sentence += ": " + fault.place;
  }
  return sentence + ": " + fault.text;
}

void sayKnownMicrocontrollers() {
  std::string names;
  for (const auto& mcu : loader::mcu_table()) {
    names += fmt::format("{}{}", names.empty() ? "" : ", ", mcu.name);
  }
  say("Karvex knows these microcontrollers, in any letter case: " + names + ".");
}

/// Prints the faults of a list. False if there are any.
bool sayFaults(const rig::CheckedList& checked, const std::filesystem::path& list) {
  for (const auto& fault : checked.faults) {
    say(sentenceOf(fault, list.string()));
  }
  if (std::ranges::any_of(checked.faults, [](const auto& fault) { return fault.place.ends_with(".mcu"); })) {
    sayKnownMicrocontrollers();
  }
  if (!checked.faults.empty()) {
    say(fmt::format("{}{}.", counted(checked.faults.size(), "fault"),
                    checked.hasMoreFaults ? " and more" : ""));
  }
  return checked.faults.empty();
}

/// Of a file that is too large, enough comes to see that.
rig::CheckedList checkedListOf(const MakerOptions& options) {
  std::ifstream file(options.list, std::ios::binary);
  std::string text(foundation::TransferPolicy{}.largestAnswer + 1, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (!file && !file.eof()) {
    throw std::runtime_error(options.list.string() + " can't be read.");
  }
  text.resize(static_cast<std::size_t>(file.gcount()));
  return rig::checkList(text, options.firmware);
}

/// In one line, whatever the client sends.
void sayRequest(const rig::ServiceRequest& request) {
  say(fmt::format("{} {} {}", request.method, rig::inQuotes(request.path),
                  request.body.empty() ? "" : rig::inQuotes(request.body)));
}

void sayHowToReach(const rig::EmbeddedService& service) {
  constexpr std::string_view trusted = "/usr/local/share/ca-certificates/karvex-rig.crt";
  say(fmt::format(
      "The firmware service answers at {0}.\n"
      "\n"
      "A karvex that asks it is built with\n"
      "    cmake --preset release -D KARVEX_SERVICE_ADDRESS={0}\n"
      "It must trust the authority that this service has made for itself, {1}:\n"
      "    sudo cp {1} {2} && sudo update-ca-certificates\n"
      "The authority's key never leaves this process, and each start makes a new one. Afterwards,\n"
      "withdraw the trust:\n"
      "    sudo rm {2} && sudo update-ca-certificates\n"
      "\n"
      "Ctrl-C ends the service. What it is asked:",
      service.baseAddress(), service.caFile().string(), trusted));
}

}  // namespace

int runCheck(const MakerOptions& options) {
  const auto checked = checkedListOf(options);
  if (!sayFaults(checked, options.list)) {
    return exitFaultyList;
  }
  say(fmt::format("{}: {}, no fault{}.", options.list.string(), counted(checked.devices.size(), "device"),
                  options.firmware ? "" : " (the firmware files were not looked at)"));
  return exitLoaded;
}

std::optional<MakerEquipment> makerEquipment(const MakerOptions& options) {
  auto checked = checkedListOf(options);
  if (!sayFaults(checked, options.list)) {
    return std::nullopt;
  }
  return MakerEquipment{.devices = std::move(checked.devices), .firmwareFolder = *options.firmware};
}

int runServe(const ServeOptions& options) {
  const auto equipment = makerEquipment(options.maker);
  if (!equipment) {
    return exitFaultyList;
  }
  foundation::SystemRuntime runtime;
  rig::EmbeddedService service(runtime, equipment->firmwareFolder, options.port);
  service.setDevices(rig::servedFrom(equipment->devices, service.baseAddress()));
  service.setFaults(options.faults);
  sayHowToReach(service);
  service.setRequestListener(sayRequest);
  const ui::TerminationSignals terminationSignals([&runtime] { runtime.stopMain(); });
  runtime.runMain();
  service.stop();
  return exitLoaded;
}

}  // namespace karvex::app
