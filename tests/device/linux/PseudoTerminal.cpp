#include "tests/device/linux/PseudoTerminal.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace karvex::device {
namespace {

constexpr int patience = 20'000;  // ms, for what comes at once unless something is broken

int orThrow(int result) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return result;
}

}  // namespace

PseudoTerminal::PseudoTerminal()
    : device_(orThrow(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK))) {
  std::array<char, 64> name{};
  orThrow(::grantpt(device_));
  orThrow(::unlockpt(device_));
  orThrow(-::ptsname_r(device_, name.data(), name.size()));
  path_ = name.data();
}

void PseudoTerminal::send(std::string_view bytes) const {
  pollfd writable{.fd = device_, .events = POLLOUT, .revents = 0};
  while (!bytes.empty() && ::poll(&writable, 1, patience) == 1) {
    bytes.remove_prefix(
        static_cast<std::size_t>(orThrow(static_cast<int>(::write(device_, bytes.data(), bytes.size())))));
  }
}

void PseudoTerminal::sendWhatFits(std::string_view bytes) const {
  if (::write(device_, bytes.data(), bytes.size()) < 0 && errno != EAGAIN) {
    orThrow(-1);
  }
}

std::string PseudoTerminal::receive(std::size_t count) const {
  std::string bytes;
  pollfd readable{.fd = device_, .events = POLLIN, .revents = 0};
  while (bytes.size() < count && ::poll(&readable, 1, patience) == 1) {
    std::array<char, 256> block{};
    bytes.append(block.data(), static_cast<std::size_t>(
                                   orThrow(static_cast<int>(::read(device_, block.data(), block.size())))));
  }
  return bytes;
}

bool PseudoTerminal::hasReceivedNothing() const {
  pollfd readable{.fd = device_, .events = POLLIN, .revents = 0};
  return ::poll(&readable, 1, 0) == 0 || (readable.revents & POLLIN) == 0;
}

void PseudoTerminal::readPackets() const {
  const int on = 1;
  orThrow(::ioctl(device_, TIOCPKT, &on));
  termios told = settings();
  told.c_lflag |= EXTPROC;
  orThrow(::tcsetattr(device_, TCSANOW, &told));
  packets();  // Of this change.
}

std::vector<std::string> PseudoTerminal::packets() const {
  std::vector<std::string> all;
  std::array<char, 256> packet{};
  while (true) {
    const auto length = ::read(device_, packet.data(), packet.size());
    if (length < 1) {
      return all;
    }
    const std::string rest(packet.data() + 1, static_cast<std::size_t>(length - 1));
    const int status = static_cast<unsigned char>(packet.front());
    if (status == TIOCPKT_DATA) {
      all.push_back("bytes " + rest);
    } else {
      all.push_back((status & TIOCPKT_IOCTL) != 0 ? "line" : "status " + std::to_string(status));
    }
  }
}

termios PseudoTerminal::settings() const {
  termios settings{};
  orThrow(::tcgetattr(device_, &settings));
  return settings;
}

void PseudoTerminal::unplug() {
  if (device_ >= 0) {
    ::close(std::exchange(device_, -1));
  }
}

OtherProgram::OtherProgram(const std::function<void()>& begin, Kinship kinship) {
  std::array<int, 2> began{};
  std::array<int, 2> life{};
  orThrow(::pipe2(began.data(), O_CLOEXEC));
  orThrow(::pipe2(life.data(), O_CLOEXEC));
  child_ = orThrow(::fork());
  if (child_ == 0) {
    ::close(life[1]);
    if (const pid_t grandchild = kinship == Kinship::none ? ::fork() : 0; grandchild != 0) {
      ::close(began[1]);
      ::_exit(::waitpid(grandchild, nullptr, 0) == grandchild ? 0 : 1);
    }
    begin();
    char byte = 0;
    const pid_t self = ::getpid();
    const bool isKnown = ::write(began[1], &self, sizeof self) == sizeof self;
    ::_exit(isKnown && ::read(life[0], &byte, 1) == 0 ? 0 : 1);
  }
  ::close(began[1]);
  ::close(life[0]);
  life_ = life[1];
  const auto known = ::read(began[0], &process_, sizeof process_);
  ::close(began[0]);
  orThrow(known == sizeof process_ ? 0 : -1);
}

OtherProgram::~OtherProgram() {
  ::close(life_);
  ::waitpid(child_, nullptr, 0);
}

int inOtherProcess(const std::function<int()>& attempt) {
  const pid_t process = orThrow(::fork());
  if (process == 0) {
    ::_exit(attempt());
  }
  int status = 0;
  orThrow(::waitpid(process, &status, 0));
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace karvex::device
