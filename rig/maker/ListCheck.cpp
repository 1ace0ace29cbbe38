#include "rig/maker/ListCheck.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "foundation/net/TransferPolicy.hpp"
#include "rig/maker/ListRules.hpp"
#include "service/DescriptorDecoder.hpp"

namespace karvex::rig {
namespace {

/// More than anybody mends at a time.
constexpr std::size_t mostFaults = 200;

/// Keeps the faults in the order of their lines, and those of a line in the order in which they were found.
void insert(ListFault fault, std::vector<ListFault>& faults) {
  const auto place = std::ranges::upper_bound(faults, fault.line, {}, &ListFault::line);
  faults.insert(place, std::move(fault));
}

/// Adds the faults of the elements to those of the text, each with its line.
void addElementFaults(const service::ExaminedList& list, const FirmwareFolder* folder,
                      const ListSource& source, CheckedList& result) {
  ListRules rules(folder);
  for (std::size_t index = 0; index < list.elements.size() && result.faults.size() < mostFaults; ++index) {
    const auto element = fmt::format("[{}]", index);
    const auto add = [&](const std::string& key, const std::string& text) {
      const auto place = key.empty() ? element : element + "." + key;
      const auto line = source.lineOf(place);
      insert({.line = line != 0 ? line : source.lineOf(element), .place = place, .text = text},
             result.faults);
    };
    const auto& examined = list.elements[index];
    for (const auto& [key, reason] : examined.faults) {
      add(key, reason);
    }
    if (!examined.faults.empty() && examined.faults.front().key.empty()) {
      continue;  // It is no object.
    }
    for (const auto& [key, text] : rules.check(index, examined)) {
      add(key, text);
    }
    result.devices.push_back({.listed = examined.descriptor, .firmware = rules.firmware()});
  }
}

}  // namespace

CheckedList checkList(std::string_view text, const std::optional<std::filesystem::path>& folder) {
  const auto longest = foundation::TransferPolicy{}.largestAnswer;
  if (text.size() > longest) {
    return {.faults = {{.text = fmt::format("The list is larger than {} MiB, the most that Karvex accepts.",
                                            longest >> 20U)}}};
  }
  const ListSource source(text, mostFaults);
  CheckedList result{.faults = source.faults()};
  if (!source.isJson()) {
    return result;
  }
  const auto list = service::examineDescriptors(text, mostFaults);
  if (list.fault) {
    result.faults.push_back({.line = 1, .text = list.fault->reason});
  }
  const auto files = folder ? std::optional(FirmwareFolder(*folder)) : std::nullopt;
  addElementFaults(list, files ? &*files : nullptr, source, result);
  result.hasMoreFaults = result.faults.size() >= mostFaults;
  if (!result.faults.empty()) {
    result.devices.clear();
  }
  return result;
}

std::vector<ServedDevice> servedFrom(const std::vector<MakerDevice>& devices,
                                     const std::string& baseAddress) {
  std::vector<ServedDevice> served;
  served.reserve(devices.size());
  for (const auto& [listed, firmware] : devices) {
    served.push_back({.isValid = listed.isValid,
                      .midiName = listed.midiName,
                      .deviceSerialNumber = listed.deviceSerialNumber,
                      .mcu = listed.mcu,
                      .firmwareName = listed.firmwareName,
                      .firmwareVersion = listed.firmwareVersion,
                      .setupDelay = listed.setupDelay,
                      .serverURL = baseAddress,
                      .serverDirectory = "/firmware/",
                      .serverFile = firmware.place,
                      .sequenceNumber = listed.sequenceNumber,
                      .currentVersion = listed.currentVersion});
  }
  return served;
}

}  // namespace karvex::rig
