#include "app/diagnosis/SystemSurvey.hpp"

#include <fmt/format.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "device/platform/linux/RulesFile.hpp"
#include "device/platform/linux/UdevBoardSurvey.hpp"

namespace karvex::app {
namespace {

namespace fs = std::filesystem;

/// Programs that open the port of a board that comes, or probe it, by the name that the kernel has of them:
/// 15 characters at most.
constexpr std::array<std::string_view, 5> meddlers{"ModemManager", "mtp-probe", "gvfs-mtp-volume",
                                                   "gvfsd-mtp", "brltty"};

/// Calls `visit` for each entry; what can't be read has none.
template <typename Visit>
void forEachEntry(const fs::path& folder, Visit visit) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    visit(entry->path());
  }
}

std::string firstLineOf(const fs::path& file) {
  std::string line;
  std::getline(std::ifstream(file), line);
  return line;
}

/// PRETTY_NAME of os-release(5).
std::string distribution(const fs::path& root) {
  constexpr std::string_view key = "PRETTY_NAME=\"";
  std::ifstream file(root / "etc/os-release");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(key) && line.ends_with('"')) {
      return line.substr(key.size(), line.size() - key.size() - 1);
    }
  }
  return "an unnamed system";
}

std::string systemName(const fs::path& root) {
  utsname kernel{};
  uname(&kernel);
  return fmt::format("{}, {} {} {}", distribution(root), kernel.sysname, kernel.release, kernel.machine);
}

std::vector<std::string> meddlingPrograms(const fs::path& root) {
  std::vector<std::string> found;
  forEachEntry(root / "proc", [&found](const fs::path& process) {
    const auto number = process.filename().native();
    const auto name = firstLineOf(process / "comm");
    if (number.find_first_not_of("0123456789") == std::string::npos &&
        std::ranges::count(meddlers, name) != 0) {
      found.push_back(fmt::format("{} (process {})", name, number));
    }
  });
  std::ranges::sort(found);
  return found;
}

}  // namespace

SystemDiagnosis surveySystem(const fs::path& root) {
  const auto rules = device::findRulesFile(root);
  const auto midi = root / "dev/snd/seq";
  std::error_code error;
  return {.system = systemName(root),
          .isRoot = geteuid() == 0,
          .rulesFile = rules.path,
          .rulesAreOff = rules.isOff,
          .udevdRuns = fs::exists(root / "run/udev/control", error),
          .interferingPrograms = meddlingPrograms(root),
          .midiNode = midi,
          .midiObstacle = device::obstacleOf(midi)};
}

}  // namespace karvex::app
