#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/engine/ThruConnectionStore.hpp"

/// Where thru connections with an owner are kept when no program runs: a small text file, one connection to a
/// line.
namespace midikit::io::alsa {

using StoredThruConnections = std::vector<engine::ThruConnectionStore::Stored>;

/// Limits of what is read and written.
inline constexpr std::size_t mostStoredConnections = 256;
inline constexpr std::size_t longestOwner = 1024;

/// The file's text.
std::string textOfThruConnections(const StoredThruConnections& connections);

/// What a file's text holds. A line that isn't a connection is left out, and so is all behind the limit; a
/// text of another format is empty.
StoredThruConnections thruConnectionsIn(std::string_view text);

/// "karvex/thru-connections" below $XDG_STATE_HOME or, without it, ~/.local/state, by the values of both
/// variables. None if there is no absolute path to either.
std::optional<std::filesystem::path> thruConnectionFile(const char* stateHome, const char* home);

/// A store of what is in the file, which replaces the file as a whole at each change, under a lock, so that
/// programs that run at the same time keep each other's changes. A file that can't be written is told of in a
/// log line, and the connections live as long as the program.
std::shared_ptr<engine::ThruConnectionStore> openThruConnectionStore(const std::filesystem::path& file);

}  // namespace midikit::io::alsa
