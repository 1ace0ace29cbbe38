#include "device/platform/linux/RulesFile.hpp"

#include <array>
#include <string_view>
#include <system_error>

namespace karvex::device {
namespace {

namespace fs = std::filesystem;

/// The places that udev reads rules from, the one that goes first ahead (udev(7)).
constexpr std::array folders{"etc/udev/rules.d", "run/udev/rules.d", "usr/local/lib/udev/rules.d",
                             "usr/lib/udev/rules.d", "lib/udev/rules.d"};

/// Who writes rules of their own may number them differently.
constexpr std::string_view ending = "-karvex.rules";

fs::path rulesIn(const fs::path& folder) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    if (entry->path().filename().native().ends_with(ending)) {
      return entry->path();
    }
  }
  return {};
}

}  // namespace

RulesFile findRulesFile(const fs::path& root) {
  RulesFile found;
  for (const auto* folder : folders) {
    found.path = rulesIn(root / folder);
    if (!found.path.empty()) {
      // A link to /dev/null turns rules off just as an empty file does.
      std::error_code error;
      found.isOff = !fs::is_regular_file(found.path, error) || fs::is_empty(found.path, error);
      break;
    }
  }
  return found;
}

}  // namespace karvex::device
