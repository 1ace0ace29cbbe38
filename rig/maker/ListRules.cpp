#include "rig/maker/ListRules.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "foundation/net/TransferPolicy.hpp"
#include "foundation/net/Url.hpp"
#include "loader/mcu_table.hpp"
#include "rig/ExpectedFlash.hpp"
#include "rig/maker/ListText.hpp"

namespace karvex::rig {
namespace {

using records::ServerDeviceDescriptor;

struct TextField {
  const char* key;
  std::string ServerDeviceDescriptor::* text;
  bool mayBeEmpty;
};

constexpr std::array<TextField, 5> texts = {{
    {"deviceSerialNumber", &ServerDeviceDescriptor::deviceSerialNumber, false},
    {"firmwareName", &ServerDeviceDescriptor::firmwareName, false},
    {"firmwareVersion", &ServerDeviceDescriptor::firmwareVersion, false},
    {"serverFile", &ServerDeviceDescriptor::serverFile, false},
    {"currentVersion", &ServerDeviceDescriptor::currentVersion, true},
}};

/// True if a slash is missing between two parts of a URL. A query joins its parts as it likes.
bool lacksSlash(const std::string& first, const std::string& second) {
  return !second.empty() && !first.ends_with('/') && !second.starts_with('/') &&
         first.find('?') == std::string::npos;
}

bool isOnThisMachine(const std::string& url) {
  const auto host = foundation::hostOf(url);
  return host == "localhost" || host == "127.0.0.1" || host == "[::1]";
}

/// What is wrong with a URL that was joined, or nothing.
std::optional<std::string> complaintAboutUrl(const std::string& url) {
  if (!foundation::isUrl(url)) {
    return fmt::format("{} is not a URL: write blanks and non-ASCII letters as percent escapes.",
                       inQuotes(url));
  }
  if (!foundation::isWebUrl(url) || foundation::hostOf(url).empty()) {
    return fmt::format("{} is never fetched: a firmware's URL begins with https:// and a host.",
                       inQuotes(url));
  }
  if (!foundation::isSecureUrl(url) && !isOnThisMachine(url)) {
    return fmt::format("{} could be altered on its way; use https://.", inQuotes(url));
  }
  return std::nullopt;
}

/// What is wrong with a file for that kind of board, or nothing.
std::optional<std::string> complaintAbout(const FoundFirmware& firmware, const BoardKind& kind) {
  const auto name = inQuotes(firmware.place);
  const auto most = foundation::TransferPolicy{}.largestDownload;
  std::error_code error;
  if (std::filesystem::file_size(firmware.file, error) > most) {
    return fmt::format("{} is larger than {} MiB, the most that Karvex fetches.", name, most >> 20U);
  }
  const auto reading = error ? std::nullopt : readHex(firmware.file, kind);
  if (!reading) {
    return fmt::format("{} can't be read.", name);
  }
  if (reading->badLine != 0) {
    return fmt::format("{} is not Intel HEX: see its line {}.", name, reading->badLine);
  }
  if (reading->firstBeyond) {
    return fmt::format("{} has data at 0x{:X}, but a {} has room for 0x{:X} bytes.", name,
                       *reading->firstBeyond, kind.mcu, kind.flashSize);
  }
  if (reading->dataBytes == 0) {
    return fmt::format("{} holds no data.", name);
  }
  if (!reading->hasEndRecord) {
    return fmt::format("{} has no end record; it may be the beginning of a longer file.", name);
  }
  return std::nullopt;
}

}  // namespace

void ListRules::find(std::string key, std::string text) {
  findings_.push_back({.key = std::move(key), .text = std::move(text)});
}

bool ListRules::isDecoded(std::string_view key) const {
  return std::ranges::find(element_->faults, key, &service::DescriptorFault::key) == element_->faults.end();
}

std::vector<ListRules::Finding> ListRules::check(std::size_t index,
                                                 const service::ExaminedDescriptor& element) {
  element_ = &element;
  index_ = index;
  findings_.clear();
  firmware_ = {};
  checkTexts();
  checkSerialNumber();
  checkMcu();
  checkOrder();
  checkUrl();
  return std::exchange(findings_, {});
}

void ListRules::checkMcu() {
  const auto& mcu = element_->descriptor.mcu;
  const bool isKnown = mcu.find('\0') == std::string::npos && loader::find_mcu(mcu.c_str()) != nullptr;
  if (isDecoded("mcu") && !isKnown) {
    find("mcu", fmt::format("Karvex does not know the microcontroller {} and would quit.", inQuotes(mcu)));
  }
}

void ListRules::checkTexts() {
  for (const auto& [key, text, mayBeEmpty] : texts) {
    const auto& value = element_->descriptor.*text;
    if (!isDecoded(key)) {
      continue;
    }
    if (value.empty() && !mayBeEmpty) {
      find(key, "The text is empty.");
    }
    if (hasControlCharacter(value)) {
      find(key, fmt::format("{} has a control character.", inQuotes(value)));
    }
  }
}

void ListRules::checkSerialNumber() {
  const auto& number = element_->descriptor.deviceSerialNumber;
  if (!isDecoded("deviceSerialNumber") || number.empty()) {
    return;
  }
  if (number.starts_with(' ') || number.ends_with(' ')) {
    find("deviceSerialNumber",
         fmt::format("{} begins or ends with a blank; no serial number does.", inQuotes(number)));
  }
  const auto [first, isNew] = serialNumbers_.emplace(number, index_);
  if (!isNew) {
    find("deviceSerialNumber",
         fmt::format("{} is the serial number of [{}] too.", inQuotes(number), first->second));
  }
}

void ListRules::checkOrder() {
  if (!isDecoded("sequenceNumber")) {
    return;
  }
  const auto number = element_->descriptor.sequenceNumber;
  if (lastSequenceNumber_ && number <= *lastSequenceNumber_) {
    find("sequenceNumber",
         fmt::format("{} comes after {}: the order of the list is the order of the upgrade.", number,
                     *lastSequenceNumber_));
  }
  lastSequenceNumber_ = number;
}

void ListRules::checkUrl() {
  const auto& device = element_->descriptor;
  if (!isDecoded("serverURL") || !isDecoded("serverDirectory") || !isDecoded("serverFile") ||
      device.serverFile.empty()) {
    return;
  }
  const auto url = device.serverURL + device.serverDirectory + device.serverFile;
  const auto before = findings_.size();
  if (lacksSlash(device.serverURL, device.serverDirectory + device.serverFile)) {
    find("serverURL", fmt::format("A slash is missing after serverURL: {}.", inQuotes(url)));
  } else if (lacksSlash(device.serverURL + device.serverDirectory, device.serverFile)) {
    find("serverDirectory", fmt::format("A slash is missing after serverDirectory: {}.", inQuotes(url)));
  } else if (auto complaint = complaintAboutUrl(url)) {
    find("serverURL", std::move(*complaint));
  }
  if (folder_ != nullptr) {
    const bool hasUrlFault = findings_.size() > before;
    checkFirmware(url, hasUrlFault);
  }
}

void ListRules::checkFirmware(const std::string& url, bool hasUrlFault) {
  auto found = folder_->find(url);
  if (!found) {
    if (hasUrlFault) {
      return;  // Which file is meant can't be said.
    }
    find("serverFile", fmt::format("The folder has no file for {}.", inQuotes(url)));
    return;
  }
  firmware_ = std::move(*found);
  const auto* kind = findBoardKind(element_->descriptor.mcu);
  if (kind == nullptr) {
    return;
  }
  const auto [known, isNew] = complaints_.try_emplace({firmware_.file, kind});
  if (isNew) {
    known->second = complaintAbout(firmware_, *kind);
  }
  if (known->second) {
    find("serverFile", *known->second);
  }
}

}  // namespace karvex::rig
