#pragma once

#include <sys/types.h>
#include <termios.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace karvex::device {

/// A terminal whose device side is in the test's hand.
class PseudoTerminal {
 public:
  PseudoTerminal();
  ~PseudoTerminal() { unplug(); }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// The node to open, for example /dev/pts/3.
  const std::string& path() const { return path_; }

  void send(std::string_view bytes) const;
  /// As much of it as the node takes without waiting.
  void sendWhatFits(std::string_view bytes) const;
  /// Waits for as many bytes from the node.
  std::string receive(std::size_t count) const;
  bool hasReceivedNothing() const;
  /// From now on, the device side reads packets instead of bytes (TIOCPKT, EXTPROC).
  void readPackets() const;
  /// What came since the last call: "line" for a change of the line's settings, or several changes that
  /// nothing came between; "bytes ..." for what was written. Doesn't wait.
  std::vector<std::string> packets() const;
  /// How the line is set, as its device side sees it.
  termios settings() const;
  /// The device leaves. Harmless a second time.
  void unplug();

 private:
  int device_;
  std::string path_;
};

/// Another program, for as long as the object lives: a process that has done `begin` and waits then. `begin`
/// may make system calls only. A child of this process is what a program is that this one is just starting.
class OtherProgram {
 public:
  enum class Kinship { none, child };

  explicit OtherProgram(const std::function<void()>& begin, Kinship kinship = Kinship::none);
  ~OtherProgram();
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  pid_t process() const { return process_; }

 private:
  pid_t child_;
  pid_t process_ = 0;
  int life_;
};

/// What `attempt` gives in another process, 0 to 255; system calls only.
int inOtherProcess(const std::function<int()>& attempt);

}  // namespace karvex::device
