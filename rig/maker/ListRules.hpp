#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "rig/BoardKind.hpp"
#include "rig/maker/ListCheck.hpp"
#include "service/DescriptorDecoder.hpp"

namespace karvex::rig {

/// What a list must keep beyond its types. Elements are given in their order.
class ListRules {
 public:
  /// A fault, and the key of the element that it is at.
  struct Finding {
    std::string key;
    std::string text;
  };

  /// The folder must outlive the rules; null if there is none.
  explicit ListRules(const FirmwareFolder* folder) : folder_(folder) {}

  /// What is wrong with the element at that place of the list. Keys that could not be decoded are passed
  /// over.
  ///
  /// Thread-safe: no.
  /// Realtime-safe: no, it allocates and reads files.
  std::vector<Finding> check(std::size_t index, const service::ExaminedDescriptor& element);

  /// The firmware of the element that was checked last; empty if it wasn't found.
  const FoundFirmware& firmware() const { return firmware_; }

 private:
  void find(std::string key, std::string text);
  bool isDecoded(std::string_view key) const;
  void checkTexts();
  void checkMcu();
  void checkSerialNumber();
  void checkOrder();
  void checkUrl();
  void checkFirmware(const std::string& url, bool hasUrlFault);

  const FirmwareFolder* folder_;
  const service::ExaminedDescriptor* element_ = nullptr;
  std::size_t index_ = 0;
  std::vector<Finding> findings_;
  FoundFirmware firmware_;
  std::map<std::string, std::size_t, std::less<>> serialNumbers_;  ///< and the first element that has each
  std::optional<std::int64_t> lastSequenceNumber_;
  std::map<std::pair<std::filesystem::path, const BoardKind*>, std::optional<std::string>> complaints_;
};

}  // namespace karvex::rig
