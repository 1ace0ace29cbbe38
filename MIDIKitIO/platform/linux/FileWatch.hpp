#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

#include "foundation/run/Queue.hpp"
#include "foundation/run/ReadReadiness.hpp"

namespace midikit::io::alsa {

/// Calls a handler on a queue after something has changed in one of some folders. Changes that come together
/// are one call. A call that has begun may still be running when the watch has gone. Has a thread of its own,
/// which sleeps.
class FileWatch {
 public:
  /// What counts as a change; may be combined.
  using Kinds = std::uint32_t;
  static const Kinds contents;    ///< a file has come, or has been replaced
  static const Kinds attributes;  ///< its owner or its permissions are others
  static const Kinds closed;      ///< a file that was open for writing has been closed

  /// The queue must outlive the watch. Without a descriptor left, nothing is ever called.
  FileWatch(karvex::foundation::Queue& queue, std::function<void()> handler);
  ~FileWatch();
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;

  /// False if there is no such folder. Harmless a second time. Thread-safe.
  bool add(const std::filesystem::path& folder, Kinds kinds);

  /// Calls the handler once, as if something had changed.
  void poke();

 private:
  class Descriptor;

  karvex::foundation::Queue& queue_;
  std::function<void()> handler_;
  std::shared_ptr<Descriptor> descriptor_;
  std::unique_ptr<karvex::foundation::ReadReadiness> readiness_;
};

}  // namespace midikit::io::alsa
