#include "rig/service/ServedDevice.hpp"

#include <array>
#include <nlohmann/json.hpp>

#include "rig/service/ServiceFaults.hpp"

namespace karvex::rig {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::string_view, 12> keys = {
    "isValid",    "midiName",  "deviceSerialNumber", "mcu",        "firmwareName",   "firmwareVersion",
    "setupDelay", "serverURL", "serverDirectory",    "serverFile", "sequenceNumber", "currentVersion",
};

Json jsonOf(const ServedDevice& device) {
  Json json = Json::object();
  json["isValid"] = device.isValid;
  if (device.midiName) {
    json["midiName"] = *device.midiName;
  }
  json["deviceSerialNumber"] = device.deviceSerialNumber;
  json["mcu"] = device.mcu;
  json["firmwareName"] = device.firmwareName;
  json["firmwareVersion"] = device.firmwareVersion;
  json["setupDelay"] = device.setupDelay;
  json["serverURL"] = device.serverURL;
  json["serverDirectory"] = device.serverDirectory;
  json["serverFile"] = device.serverFile;
  json["sequenceNumber"] = device.sequenceNumber;
  json["currentVersion"] = device.currentVersion;
  return json;
}

/// Text where it should be none, and a number where it should be text, which may be left out.
Json otherType(const Json& value) {
  return value.is_boolean() || value.is_number() ? Json("seven") : Json(7);
}

}  // namespace

std::span<const std::string_view> servedDeviceKeys() {
  return keys;
}

std::string listText(std::span<const ServedDevice> devices) {
  Json list = Json::array();
  for (const auto& device : devices) {
    list.push_back(jsonOf(device));
  }
  return list.dump(2) + "\n";
}

std::string spoilList(const std::string& list, const ServiceFault& fault) {
  auto json = Json::parse(list, nullptr, /*allow_exceptions=*/false);
  if (!json.is_array()) {
    return list;
  }
  if (json.empty()) {
    json.push_back(jsonOf({.midiName = "Sample"}));
  }
  auto& last = json.back();
  if (!last.is_object()) {
    return list;
  }
  switch (fault.kind) {
    case Misbehaviour::missingKey:
      last.erase(fault.text);
      break;
    case Misbehaviour::nullValue:
      last[fault.text] = nullptr;
      break;
    case Misbehaviour::wrongType:
      last[fault.text] = otherType(last[fault.text]);
      break;
    case Misbehaviour::outOfRange:
      last["setupDelay"] = fault.number;
      break;
    case Misbehaviour::unknownMcu:
      last["mcu"] = fault.text;
      break;
    default:
      return list;
  }
  return json.dump(2) + "\n";
}

}  // namespace karvex::rig
