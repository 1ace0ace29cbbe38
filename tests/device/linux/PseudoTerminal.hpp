#pragma once

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>
#include <system_error>

namespace karvex::device {

inline int orThrow(int result) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return result;
}

/// A terminal whose device side is in the test's hand.
class PseudoTerminal {
 public:
  PseudoTerminal() {
    orThrow(::grantpt(device_));
    orThrow(::unlockpt(device_));
    std::array<char, 64> name{};
    orThrow(-::ptsname_r(device_, name.data(), name.size()));
    path = name.data();
  }
  ~PseudoTerminal() { unplug(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// As much of it as the node takes without waiting.
  void send(std::string_view bytes) const { static_cast<void>(::write(device_, bytes.data(), bytes.size())); }
  std::string received() const {
    std::string bytes(256, '\0');
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(0, ::read(device_, bytes.data(), bytes.size()))));
    return bytes;
  }
  /// How the line is set, as its device side sees it.
  termios settings() const {
    termios settings{};
    orThrow(::tcgetattr(device_, &settings));
    return settings;
  }
  /// The device leaves. Harmless a second time.
  void unplug() { ::close(std::exchange(device_, -1)); }

  std::string path;  ///< of the node to open, for example /dev/pts/3

 private:
  int device_ = orThrow(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
};

/// Another program, for as long as the object lives: a process that has done `begin`, of system calls only,
/// and waits then. A child of this process is what a program is that this one is just starting.
class OtherProgram {
 public:
  enum class Kinship { none, child };

  explicit OtherProgram(const std::function<void()>& begin, Kinship kinship = Kinship::none) {
    std::array<int, 2> began{};
    orThrow(::pipe2(began.data(), O_CLOEXEC));
    child_ = orThrow(::fork());
    if (child_ == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      if (const pid_t grandchild = kinship == Kinship::none ? ::fork() : 0; grandchild != 0) {
        ::_exit(::waitpid(grandchild, nullptr, 0) == grandchild ? 0 : 1);
      }
      begin();
      const pid_t self = ::getpid();
      static_cast<void>(::write(began[1], &self, sizeof self));
      ::pause();
    }
    orThrow(::read(began[0], &process, sizeof process) == sizeof process ? 0 : -1);
    ::close(began[0]);
    ::close(began[1]);
  }
  ~OtherProgram() {
    ::kill(process, SIGKILL);
    ::waitpid(child_, nullptr, 0);
  }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  pid_t process = 0;

 private:
  pid_t child_;
};

/// What `attempt` returns in another process, 0 to 255; system calls only.
inline int inOtherProcess(const std::function<int()>& attempt) {
  const pid_t process = orThrow(::fork());
  if (process == 0) {
    ::_exit(attempt());
  }
  int status = 0;
  orThrow(::waitpid(process, &status, 0));
  return WEXITSTATUS(status);
}

}  // namespace karvex::device
