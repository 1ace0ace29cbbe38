#include "MIDIKitIO/platform/linux/ThruConnectionFile.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <system_error>
#include <utility>

#include "MIDIKitIO/platform/engine/ThruParameters.hpp"
#include "MIDIKitIO/platform/linux/FileLock.hpp"
#include "foundation/Log.hpp"
#include "foundation/files/ReplaceFile.hpp"
#include "foundation/text/HexText.hpp"

namespace midikit::io::alsa {

namespace fs = std::filesystem;

using karvex::foundation::hexText;
using karvex::foundation::lowerCaseDigits;

namespace {

constexpr std::string_view firstLine = "karvex thru connections 1";

/// More than the longest file within the limits.
constexpr std::size_t longestFile = mostStoredConnections * 2 * (longestOwner + 256);

std::optional<std::string> bytesOf(std::string_view text) {
  std::string bytes;
  if (text.size() % 2 != 0) {
    return std::nullopt;
  }
  for (std::size_t place = 0; place < text.size(); place += 2) {
    const auto high = lowerCaseDigits.find(text[place]);
    const auto low = lowerCaseDigits.find(text[place + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) {
      return std::nullopt;
    }
    bytes += static_cast<char>(high << 4U | low);
  }
  return bytes;
}

std::optional<engine::ThruConnectionStore::Stored> connectionIn(std::string_view line) {
  const auto space = line.find(' ');
  if (space > 2 * longestOwner) {  // As is a line without a space.
    return std::nullopt;
  }
  auto owner = bytesOf(line.substr(0, space));
  const auto record = bytesOf(line.substr(space + 1));
  if (!owner || !record) {
    return std::nullopt;
  }
  const std::vector<std::uint8_t> bytes(record->begin(), record->end());
  auto parameters = engine::readThruParameters(bytes);
  if (!parameters) {
    return std::nullopt;
  }
  return engine::ThruConnectionStore::Stored{*std::move(owner), *parameters};
}

std::string contentOf(const fs::path& file) {
  std::error_code failure;
  if (!fs::is_regular_file(file, failure)) {
    return {};
  }
  std::ifstream stream(file, std::ios::binary);
  std::string text(longestFile, '\0');
  stream.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
  return text;
}

/// The file's connections as several programs change them: each reads, edits and writes under a lock.
class KeptInFile {
 public:
  explicit KeptInFile(fs::path file) : file_(std::move(file)) {}

  /// The file is replaced as a whole, so reading needs no lock; closing that would look like a change.
  StoredThruConnections operator()(const engine::ThruConnectionStore::Edit& edit) {
    const auto before = kept();
    auto all = before;
    edit(all);
    if (all == before) {
      return all;
    }
    std::error_code ignored;
    fs::create_directories(file_.parent_path(), ignored);
    const FileLock turn(file_.string() + ".lock", FileLock::Patience::waits);
    all = kept();
    edit(all);
    write(all);
    return all;
  }

 private:
  StoredThruConnections kept() const {
    return unwritten_ ? *unwritten_ : thruConnectionsIn(contentOf(file_));
  }

  void write(const StoredThruConnections& all) {
    const auto failure = karvex::foundation::replaceFile(file_, textOfThruConnections(all));
    unwritten_ = failure ? std::optional(all) : std::nullopt;
    if (failure) {
      karvex::foundation::log::debug("MIDI thru connections are not kept: " + file_.string() + ": " +
                                     failure.message());
    }
  }

  fs::path file_;
  std::optional<StoredThruConnections> unwritten_;  ///< what the file should hold, if it can't be written
};

}  // namespace

std::string textOfThruConnections(const StoredThruConnections& connections) {
  std::string text = std::string(firstLine) + '\n';
  for (const auto& connection : connections) {
    std::string bytes(sizeof(connection.parameters), '\0');
    std::memcpy(bytes.data(), &connection.parameters, bytes.size());
    text += hexText(connection.owner) + ' ' + hexText(bytes) + '\n';
  }
  return text;
}

StoredThruConnections thruConnectionsIn(std::string_view text) {
  StoredThruConnections connections;
  bool isFirst = true;
  while (!text.empty() && connections.size() < mostStoredConnections) {
    const auto end = std::min(text.find('\n'), text.size());
    const auto line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (isFirst && line != firstLine) {
      return {};
    }
    if (auto connection = isFirst ? std::nullopt : connectionIn(line)) {
      connections.push_back(*std::move(connection));
    }
    isFirst = false;
  }
  return connections;
}

std::optional<fs::path> thruConnectionFile(const char* stateHome, const char* home) {
  const fs::path name = fs::path("karvex") / "thru-connections";
  if (stateHome != nullptr && fs::path(stateHome).is_absolute()) {
    return fs::path(stateHome) / name;
  }
  if (home != nullptr && fs::path(home).is_absolute()) {
    return fs::path(home) / ".local" / "state" / name;
  }
  return std::nullopt;
}

std::shared_ptr<engine::ThruConnectionStore> openThruConnectionStore(const fs::path& file) {
  return std::make_shared<engine::ThruConnectionStore>(KeptInFile(file));
}

}  // namespace midikit::io::alsa
