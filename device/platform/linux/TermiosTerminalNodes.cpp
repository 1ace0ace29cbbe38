#include "device/platform/linux/TermiosTerminalNodes.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "device/PortName.hpp"
#include "device/platform/linux/SerialNodes.hpp"
#include "device/platform/linux/TerminalHolders.hpp"
#include "device/platform/linux/TerminalTermios.hpp"

namespace karvex::device {
namespace {

static_assert(static_cast<int>(PortMode::receive) == O_RDONLY &&
              static_cast<int>(PortMode::transmit) == O_WRONLY &&
              static_cast<int>(PortMode::receiveAndTransmit) == O_RDWR);

class DescriptorSource final : public ReadSource {
 public:
  DescriptorSource(int descriptor, foundation::Queue& queue, Handler handler)
      : readiness_(descriptor, queue, std::move(handler)) {}

  void resume() override { readiness_.resume(); }

 private:
  foundation::ReadReadiness readiness_;
};

/// An open descriptor that is taken for this program.
class TermiosTerminalNode final : public TerminalNode {
 public:
  TermiosTerminalNode(int descriptor, foundation::Queue& globalQueue)
      : descriptor_(descriptor), globalQueue_(globalQueue) {}
  TermiosTerminalNode(const TermiosTerminalNode&) = delete;
  TermiosTerminalNode& operator=(const TermiosTerminalNode&) = delete;

  /// Lock and exclusive mode are undone first: both outlast a close while a child process that is just being
  /// started, or the far side of a pseudo-terminal, still has the node.
  ~TermiosTerminalNode() override {
    if (!isLeftOpen_) {
      ::ioctl(descriptor_, TIOCNXCL);
      ::flock(descriptor_, LOCK_UN);
      ::close(descriptor_);
    }
  }

  void configure(const SerialPortSettings& settings) override {
    termios present{};
    ::tcgetattr(descriptor_, &present);
    for (const auto& step : termiosSteps(present, settings)) {
      ::tcsetattr(descriptor_, TCSANOW, &step);
    }
  }

  std::ptrdiff_t read(std::span<std::uint8_t> into) override {
    return ::read(descriptor_, into.data(), into.size());
  }

  std::ptrdiff_t write(std::span<const std::uint8_t> bytes) override {
    return ::write(descriptor_, bytes.data(), bytes.size());
  }

  bool isConnected() override {
    struct stat status{};
    return ::fstat(descriptor_, &status) == 0 && status.st_nlink == 1;
  }

  std::unique_ptr<ReadSource> watch(ReadSource::Handler onReadable) override {
    return std::make_unique<DescriptorSource>(descriptor_, globalQueue_, std::move(onReadable));
  }

  void leaveOpen() override { isLeftOpen_ = true; }

 private:
  const int descriptor_;
  foundation::Queue& globalQueue_;
  bool isLeftOpen_ = false;
};

/// Gives 0, or the error number. Locks first, because that alone is one step: of two that come here at the
/// same moment, one goes on.
int takeForThisProgram(int descriptor) {
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    return errno;
  }
  int isTaken = 0;
  if (::ioctl(descriptor, TIOCGEXCL, &isTaken) != 0) {
    return errno == ENOTTY ? 0 : errno;
  }
  if (isTaken != 0) {
    return EBUSY;
  }
  return ::ioctl(descriptor, TIOCEXCL) == 0 ? 0 : errno;
}

/// O_NONBLOCK has to do with the open alone.
int makeBlocking(int descriptor) {
  const int flags = ::fcntl(descriptor, F_GETFL);
  return flags >= 0 && ::fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0 ? 0 : errno;
}

TerminalRefusal::Cause causeOf(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ENXIO:
    case ENODEV:
      return TerminalRefusal::Cause::absent;
    case EBUSY:
    case EWOULDBLOCK:
      return TerminalRefusal::Cause::inUse;
    case EACCES:
    case EPERM:
      return TerminalRefusal::Cause::notPermitted;
    default:
      return TerminalRefusal::Cause::other;
  }
}

TerminalRefusal refusalFor(int error, const std::string& node, const std::string& path) {
  TerminalRefusal refusal{.cause = causeOf(error), .node = node == path ? "" : node};
  if (refusal.cause == TerminalRefusal::Cause::inUse) {
    refusal.detail = holdersOf(node);
  } else if (refusal.cause == TerminalRefusal::Cause::other) {
    refusal.detail = std::generic_category().message(error);
  }
  return refusal;
}

}  // namespace

/// Without O_NONBLOCK, the open of a terminal that isn't set to CLOCAL (USB ports are) would wait until a
/// modem at its other end answers. Behind the open such a terminal reads nothing until configure() sets
/// CLOCAL.
OpenedTerminal TermiosTerminalNodes::open(const std::string& path, PortMode mode) {
  std::string node = path;
  if (const auto serialNumber = serialNumberInPortName(path)) {
    const auto found = ttyNodeForSerialNumber(*serialNumber);
    if (!found) {
      return TerminalRefusal{.cause = TerminalRefusal::Cause::absent};
    }
    node = *found;
  }
  const int descriptor = ::open(node.c_str(), O_NOCTTY | O_NONBLOCK | O_CLOEXEC | static_cast<int>(mode));
  if (descriptor < 0) {
    return refusalFor(errno, node, path);
  }
  int error = makeBlocking(descriptor);
  if (error == 0) {
    error = takeForThisProgram(descriptor);
  }
  if (error != 0) {
    ::close(descriptor);  // Before the search, so that it doesn't find this one.
    return refusalFor(error, node, path);
  }
  auto taken = std::make_unique<TermiosTerminalNode>(descriptor, globalQueue_);
  // A program that has opened the node without a lock, as serial monitors do, reads from it all the same.
  if (auto others = otherHoldersOf(descriptor); !others.empty()) {
    return TerminalRefusal{.cause = TerminalRefusal::Cause::inUse,
                           .node = node == path ? "" : node,
                           .detail = std::move(others)};
  }
  return taken;
}

}  // namespace karvex::device
