#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace karvex::rig {

/// A firmware file of a list, in the maker's folder.
struct FoundFirmware {
  std::filesystem::path file;
  std::string place;  ///< below the folder, as the URL has it, percent escapes included
};

/// A maker's folder of firmware files, laid out as on the server or flat.
class FirmwareFolder {
 public:
  explicit FirmwareFolder(std::filesystem::path root) : root_(std::move(root)) {}

  /// The file that a URL leads to: the one below the folder whose path is the URL's, or else the end of it
  /// that is longest. "https://example.com/fw/1/a.hex" is fw/1/a.hex, 1/a.hex or a.hex. Nothing leads out of
  /// the folder, links included.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the file system.
  std::optional<FoundFirmware> find(std::string_view url) const;

 private:
  std::filesystem::path root_;
};

}  // namespace karvex::rig
