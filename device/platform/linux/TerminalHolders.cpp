#include "device/platform/linux/TerminalHolders.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace karvex::device {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostHolders = 3;
constexpr std::size_t mostLinks = 65'536;

/// Calls `visit` for each entry until it gives false. Processes and their files go at any moment, so an error
/// is no more than an end.
template <typename Visit>
void forEachEntry(const fs::path& directory, Visit visit) {
  std::error_code error;
  for (fs::directory_iterator entry(directory, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    if (!visit(entry->path())) {
      return;
    }
  }
}

bool isProcess(const fs::path& directory) {
  const auto name = directory.filename().native();
  return std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// A process names itself as it likes, so only what is harmless in a text is kept.
std::string programName(const fs::path& process) {
  std::string name;
  std::getline(std::ifstream(process / "comm"), name);
  std::replace_if(name.begin(), name.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return name.empty() ? "a program" : name;
}

bool hasOpen(const fs::path& process, const fs::path& node, std::size_t& linksLeft) {
  bool found = false;
  forEachEntry(process / "fd", [&](const fs::path& link) {
    std::error_code error;
    found = fs::read_symlink(link, error) == node;
    return !found && --linksLeft > 0;
  });
  return found;
}

/// The fourth field of "4711 (a name) S 4710 ..."; the name may hold anything.
std::string parentOf(const fs::path& process) {
  std::string line;
  std::getline(std::ifstream(process / "stat"), line);
  std::istringstream fields(line.substr(std::min(line.rfind(')') + 1, line.size())));
  std::string state;
  std::string parent;
  fields >> state >> parent;
  return parent;
}

bool isThisProgram(const fs::path& process) {
  const auto own = std::to_string(::getpid());
  std::error_code error;
  return process.filename() == own ||
         (parentOf(process) == own &&
          fs::read_symlink(process / "exe", error) == fs::read_symlink("/proc/self/exe", error));
}

std::string findHolders(const fs::path& target, bool (*isPassedOver)(const fs::path& process)) {
  std::vector<std::string> holders;
  std::size_t linksLeft = mostLinks;
  forEachEntry("/proc", [&](const fs::path& process) {
    if (isProcess(process) && hasOpen(process, target, linksLeft) && !isPassedOver(process)) {
      holders.push_back(fmt::format("{} (process {})", programName(process), process.filename().native()));
    }
    return linksLeft > 0 && holders.size() < mostHolders;
  });
  return fmt::format("{}", fmt::join(holders, " and "));
}

}  // namespace

std::string holdersOf(const std::string& node) {
  std::error_code error;
  const auto target = fs::canonical(node, error);
  return error ? "" : findHolders(target, [](const fs::path&) { return false; });
}

std::string otherHoldersOf(int descriptor) {
  std::error_code error;
  const auto target = fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error);
  return error ? "" : findHolders(target, isThisProgram);
}

}  // namespace karvex::device
