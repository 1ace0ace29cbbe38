#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace karvex::loader {

/// How a whole process went, from before its start to its end.
struct child_run {
  std::chrono::duration<double, std::milli> took;
  /// Most memory that was resident at once, in bytes. The kernel lets a process inherit this mark over fork
  /// and exec, so it says something only when the parent never had more than the child.
  std::size_t peak_memory;
};

/// Runs a program (looked for in PATH when its name has no slash) and waits for it. Nothing when there is no
/// such program; throws std::runtime_error when it fails.
std::optional<child_run> run_child(std::vector<std::string> command);

}  // namespace karvex::loader
