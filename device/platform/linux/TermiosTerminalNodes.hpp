#pragma once

#include "device/platform/TerminalNode.hpp"
#include "foundation/run/Queue.hpp"

namespace karvex::device {

/// The terminal device nodes of a Linux system.
///
/// A port name made by rule is never a path here: the node is looked up by the serial number in it, at each
/// open. Any other path is opened as it stands.
///
/// A node is taken by a lock on it (flock) and by the terminal's exclusive mode (TIOCEXCL). The exclusive
/// mode keeps out every program that doesn't run as root, and is respected here as root too; the lock decides
/// between programs of this kind that open at the same moment. A path that is no terminal has the lock alone.
class TermiosTerminalNodes final : public TerminalNodes {
 public:
  /// The queue is the global one. It must outlive the nodes.
  explicit TermiosTerminalNodes(foundation::Queue& globalQueue) : globalQueue_(globalQueue) {}

  OpenedTerminal open(const std::string& path, PortMode mode) override;

 private:
  foundation::Queue& globalQueue_;
};

}  // namespace karvex::device
