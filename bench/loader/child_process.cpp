#include "bench/loader/child_process.hpp"

#include <fmt/format.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace karvex::loader {

std::optional<child_run> run_child(std::vector<std::string> command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& word : command) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);

  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  const int failure = posix_spawnp(&child, arguments[0], nullptr, nullptr, arguments.data(), environ);
  if (failure == ENOENT) {
    return std::nullopt;
  }
  int status = 0;
  rusage usage{};
  if (failure != 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    throw std::runtime_error(fmt::format("{} failed", command.front()));
  }
  return child_run{.took = std::chrono::steady_clock::now() - start,
                   .peak_memory = static_cast<std::size_t>(usage.ru_maxrss) * 1024};
}

}  // namespace karvex::loader
