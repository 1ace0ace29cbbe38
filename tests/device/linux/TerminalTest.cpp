// Ports on pseudo-terminals: real device nodes of a real kernel.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <future>
#include <semaphore>
#include <thread>

#include "device/SerialPort.hpp"
#include "device/platform/linux/TerminalTermios.hpp"
#include "device/platform/linux/TermiosTerminalNodes.hpp"
#include "foundation/run/SystemRuntime.hpp"

namespace karvex::device {
namespace {

using foundation::AsyncStream;
using foundation::Task;
using testing::HasSubstr;

int orThrow(int result) {
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

  explicit OtherProgram(const std::function<int()>& begin, Kinship kinship = Kinship::none) {
    std::array<int, 2> pipe{};
    orThrow(::pipe2(pipe.data(), O_CLOEXEC));
    child_ = orThrow(::fork());
    if (child_ == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      if (const pid_t grandchild = kinship == Kinship::none ? ::fork() : 0; grandchild != 0) {
        ::_exit(::waitpid(grandchild, nullptr, 0) == grandchild ? 0 : 1);
      }
      const Beginning begun{::getpid(), begin()};
      static_cast<void>(::write(pipe[1], &begun, sizeof begun));
      ::pause();
    }
    orThrow(::read(pipe[0], &has, sizeof has) == sizeof has ? 0 : -1);
    ::close(pipe[0]);
    ::close(pipe[1]);
  }
  ~OtherProgram() {
    ::kill(has.process, SIGKILL);
    ::waitpid(child_, nullptr, 0);
  }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  struct Beginning {
    pid_t process;
    int result;  ///< of `begin`
  } has{};

 private:
  pid_t child_;
};

std::string textOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const PortException& exception) {
    return exception.what();
  }
  return "";
}

class TerminalTest : public testing::Test {
 protected:
  ~TerminalTest() override { port.close(); }

  std::string textOfOpen() {
    return textOf([this] { port.open(PortMode::receiveAndTransmit); });
  }
  void openRaw() {
    port.open(PortMode::receiveAndTransmit);
    port.configure({.baudRateSetting = BaudRateSetting::bothWays(BaudRate::baud115200)});
  }
  int openPlainly() const { return ::open(terminal.path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK); }
  std::string refusalNaming(const std::string& program, pid_t process) const {
    return "Serial port " + terminal.path + " can't be opened: it is in use by " + program + " (process " +
           std::to_string(process) + ")";
  }

  /// Takes the lines that come in, on the global queue. They have a name because GCC 12 mistreats what
  /// co_await returns without one.
  Task<> collect(AsyncStream<std::string> stream) {
    while (const auto line = co_await stream.next()) {
      lineCame.release();
    }
    streamEnded.release();
  }

  PseudoTerminal terminal;
  std::counting_semaphore<> lineCame{0}, streamEnded{0};
  foundation::SystemRuntime runtime;
  TermiosTerminalNodes nodes{runtime.globalQueue()};
  SerialPort port{nodes, runtime, terminal.path};
};

TEST_F(TerminalTest, WithinThisProgramAPortIsTakenUntilItIsClosed) {
  const auto other = port.create(terminal.path);
  other->open(PortMode::receive);
  EXPECT_EQ(textOfOpen(), refusalNaming(program_invocation_short_name, ::getpid()));
  {
    const OtherProgram child([] { return 0; }, OtherProgram::Kinship::child);  // That is just being started.
    other->close();
    EXPECT_EQ(textOfOpen(), "");
    port.close();
  }
  port.create(terminal.path)->open(PortMode::receive);
  EXPECT_EQ(textOfOpen(), refusalNaming(program_invocation_short_name, ::getpid()))
      << "by the one that was dropped without a close";
  terminal.unplug();
  EXPECT_THAT(textOfOpen(), HasSubstr("it is not there"));
}

TEST_F(TerminalTest, WhatAnotherProgramHasOpenIsRefusedWithItsNameMadeHarmless) {
  using Take = std::function<int(int)>;
  const std::pair<const char*, Take> ways[] = {
      {"lock", [](int descriptor) { return ::flock(descriptor, LOCK_EX); }},
      {"nothing, as serial monitors do", [](int) { return 0; }},
      {"exclusive mode", [](int descriptor) { return ::ioctl(descriptor, TIOCEXCL); }},
  };
  for (const auto& [way, take] : ways) {
    EXPECT_EQ(textOfOpen(), "");
    port.close();
    const OtherProgram other([this, wayIn = &take] {
      ::prctl(PR_SET_NAME, "a\x1B[2J\xFF z");
      return (*wayIn)(openPlainly());
    });
    EXPECT_EQ(textOfOpen(), refusalNaming("a?[2J? z", other.has.process)) << way;
  }
  EXPECT_THAT(textOfOpen(), HasSubstr("another program"))
      << "exclusive still, and nobody seen to have it open";
}

TEST_F(TerminalTest, OtherProgramsAreKeptOutUntilTheClose) {
  const auto lock = [this] { return ::flock(openPlainly(), LOCK_EX | LOCK_NB) == 0 ? 0 : errno; };
  const auto openAsUser = [this] {  // Exclusive mode doesn't stop root.
    return (::geteuid() == 0 && ::setuid(65534) != 0) || openPlainly() < 0 ? errno : 0;
  };
  ASSERT_EQ(::chmod(terminal.path.c_str(), 0666), 0);
  port.open(PortMode::receive);
  EXPECT_EQ(OtherProgram(openAsUser).has.result, EBUSY);
  if (::geteuid() == 0) {
    EXPECT_EQ(OtherProgram(lock).has.result, EWOULDBLOCK);
  }
  port.close();
  EXPECT_EQ(OtherProgram(openAsUser).has.result, 0);
  EXPECT_EQ(OtherProgram(lock).has.result, 0);
}

TEST_F(TerminalTest, TheOpenDescriptorWaitsForInputAndIsNobodyElses) {
  const int descriptor = ::dup(0);  // The next one, too.
  ::close(descriptor);
  port.open(PortMode::receiveAndTransmit);
  EXPECT_EQ(::fcntl(descriptor, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR);
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
  port.close();
  const auto openAsLeader = [this] {
    ::setsid();
    const auto opened = nodes.open(terminal.path, PortMode::receive);
    return opened.index() == 0 && ::open("/dev/tty", O_RDONLY | O_CLOEXEC) < 0 ? 0 : 1;
  };
  EXPECT_EQ(OtherProgram(openAsLeader).has.result, 0) << "it became the controlling terminal";
}

TEST_F(TerminalTest, BlockingReadsGetWhatCameInBeforeTheSettingsAndLetWritesPass) {
  terminal.send("-early\n");
  openRaw();
  terminal.received();  // The echo from before.
  const termios line = terminal.settings();
  EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B115200));
  EXPECT_EQ(port.readByte(), '-');
  port.configure({.sendTwoStopBits = true});
  EXPECT_EQ(port.readLine(), "early");
  auto late = std::async(std::launch::async, [this] { return port.readLine(); });
  EXPECT_EQ(port.writeString("h\n\xC3\xA9"), 4);
  EXPECT_EQ(terminal.received(), "h\n\xC3\xA9");
  terminal.send("in two ");
  terminal.send("pieces\n");
  EXPECT_EQ(late.get(), "in two pieces");
  port.configure({.minimumBytesToRead = 0, .timeout = 1});
  EXPECT_TRUE(port.readData(4).empty()) << "a tenth of a second passed";
  EXPECT_EQ(terminal.received(), "") << "no echo";
}

TEST_F(TerminalTest, ABlockingReadThatWaitsOverACloseReturnsTheNode) {
  openRaw();
  auto text = std::async(std::launch::async, [this] { return textOf([this] { port.readLine(); }); });
  port.close();
  terminal.send("x");  // Or else it would wait for ever.
  EXPECT_EQ(text.get(), "Serial port " + terminal.path + " is not open");
  EXPECT_EQ(textOfOpen(), "");
}

TEST_F(TerminalTest, ADeviceThatLeavesEndsStreamsAndBlockingReads) {
  openRaw();
  auto text = std::async(std::launch::async, [this] { return textOf([this] { port.readByte(); }); });
  spawn(runtime.globalQueue(), collect(port.readLinesStream()));
  terminal.unplug();
  EXPECT_EQ(text.get(), "The device at serial port " + terminal.path + " is no longer connected");
  streamEnded.acquire();
  EXPECT_EQ(port.writeString("x"), -1);
  port.configure({});
}

// Meant for the thread sanitizer: the port is closed while its handler reads, waits or is about to be called.
TEST_F(TerminalTest, OpeningAndClosingUnderLoadIsAlwaysPossible) {
  std::atomic<bool> isOver = false;
  std::thread device([&] {
    while (!isOver) {
      terminal.send("line\n");
    }
  });
  for (int round = 0; round < 500; ++round) {
    openRaw();
    spawn(runtime.globalQueue(), collect(port.readLinesStream()));
    if (round % 2 == 0) {
      lineCame.acquire();
    }
    port.close();
    streamEnded.acquire();
  }
  isOver = true;
  device.join();
}

/// A path that is no terminal: a lock is all that protects it.
TEST_F(TerminalTest, APathThatIsNoTerminalIsOpenedWithoutWaitingAndTaken) {
  const std::string path =
      std::filesystem::temp_directory_path() / ("karvex-fifo-" + std::to_string(::getpid()));
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const auto fifo = port.create(path);
  fifo->open(PortMode::receive);  // Would wait for a writer.
  fifo->configure({});
  EXPECT_THAT(textOf([&] { port.create(path)->open(PortMode::receive); }),
              HasSubstr(std::string("in use by ") + program_invocation_short_name));
  ::unlink(path.c_str());
  EXPECT_THAT(textOf([&] { fifo->readByte(); }), HasSubstr("is no longer connected"));
  fifo->close();
}

/// What a setting makes of any flags that were there before: it clears a fixed set of them and sets these.
TEST(TerminalTermiosTest, EachSettingChangesItsFlagsAndLeavesAllOthersAsTheyWere) {
  using Settings = SerialPortSettings;
  // Each with what it sets in the flags of input, control and output.
  const std::tuple<Settings, tcflag_t, tcflag_t, tcflag_t> cases[] = {
      {Settings{}, 0, CS8, 0},
      {Settings{.useSoftwareFlowControl = true}, IXON | IXOFF | IXANY, CS8, 0},
      {Settings{.useHardwareFlowControl = true}, 0, CS8 | CRTSCTS, 0},
      {Settings{.sendTwoStopBits = true}, 0, CS8 | CSTOPB, 0},
      {Settings{.parityType = ParityType::even}, 0, CS8 | PARENB, 0},
      {Settings{.parityType = ParityType::odd}, 0, CS8 | PARENB | PARODD, 0},
      {Settings{.processOutput = true}, 0, CS8, OPOST},
      {Settings{.dataBitsSize = DataBitsSize::bits5}, 0, CS5, 0},
      {Settings{.dataBitsSize = DataBitsSize::bits6}, 0, CS6, 0},
      {Settings{.dataBitsSize = DataBitsSize::bits7}, 0, CS7, 0},
  };
  /// Also without the C library's mark in c_iflag for an input speed of 0.
  constexpr tcflag_t all = ~(tcflag_t{0x80000000} | CBAUD);
  const auto changed = [](tcflag_t before, tcflag_t cleared, tcflag_t set) {
    return (before & ~cleared) | set;
  };
  for (const auto& [settings, input, control, output] : cases) {
    for (const tcflag_t before : {tcflag_t{0}, all}) {
      const auto wanted = termiosWith({before, before, before, before}, settings);
      EXPECT_EQ(wanted.c_iflag, changed(before, INLCR | IGNCR | ICRNL | IXON | IXOFF | IXANY, input));
      EXPECT_EQ(wanted.c_cflag,
                changed(before, CBAUD | CSIZE | CSTOPB | CRTSCTS, B9600 | CREAD | CLOCAL | control));
      EXPECT_EQ(wanted.c_oflag, changed(before, OPOST, output));
      EXPECT_EQ(wanted.c_lflag, changed(before, ICANON | ISIG | ECHO | ECHOE, 0));
    }
  }
}

TEST(TerminalTermiosTest, TheControlCharactersTheRatesAndTheDetourOfANodeThatIsAt134Already) {
  termios present{};
  std::fill(std::begin(present.c_cc), std::end(present.c_cc), cc_t{7});
  std::vector<cc_t> expected(std::size(present.c_cc));
  expected[VMIN] = 255;
  expected[VTIME] = 3;
  EXPECT_THAT(termiosWith(present, {.minimumBytesToRead = 255, .timeout = 3}).c_cc,
              testing::ElementsAreArray(expected));

  std::vector<speed_t> speeds;
  for (int rate = 0; rate < static_cast<int>(baudRateCount); ++rate) {
    const SerialPortSettings settings{.baudRateSetting = BaudRateSetting::bothWays(BaudRate{rate})};
    present = termiosWith({}, settings);
    speeds.push_back(cfgetospeed(&present));
    EXPECT_EQ(cfgetispeed(&present), speeds.back());
    EXPECT_EQ(termiosSteps(present, {}).size(), 1U);
    auto steps = termiosSteps(present, settings);
    ASSERT_EQ(steps.size(), speeds.back() == B134 ? 2U : 1U);
    EXPECT_EQ(steps.back().c_cflag, present.c_cflag);
    EXPECT_TRUE(steps.size() == 1 || cfgetospeed(steps.data()) == B9600);
    cfsetospeed(steps.data(), speeds.back());
    EXPECT_EQ(steps.front().c_cflag, present.c_cflag) << "the detour differs in its speed alone";
  }
  // Nineteen constants that grow from B0 to B230400: there is no other that fits between them.
  EXPECT_TRUE(std::is_sorted(speeds.begin(), speeds.end(), std::less_equal<>()));
  EXPECT_EQ(speeds.front(), static_cast<speed_t>(B0));
  EXPECT_EQ(speeds.back(), static_cast<speed_t>(B230400));
}

}  // namespace
}  // namespace karvex::device
