// Ports on pseudo-terminals: real device nodes of a real kernel.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "device/SerialPort.hpp"
#include "device/platform/linux/TermiosTerminalNodes.hpp"
#include "foundation/SystemRuntime.hpp"
#include "tests/device/linux/PseudoTerminal.hpp"

namespace karvex::device {
namespace {

using namespace std::chrono_literals;
using foundation::AsyncStream;
using foundation::Task;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uid_t nobody = 65534;

/// Takes what a stream gives, on the global queue.
template <typename T>
class Collector {
 public:
  Collector(foundation::Runtime& runtime, AsyncStream<T> stream) {
    spawn(runtime.globalQueue(), collect(std::move(stream), state_));
  }

  /// Everything so far, once `isEnough` says so or the stream has ended.
  std::vector<T> waitUntil(const std::function<bool(const std::vector<T>&)>& isEnough) {
    std::unique_lock lock(state_->mutex);
    EXPECT_TRUE(
        state_->changed.wait_for(lock, 20s, [&] { return state_->hasEnded || isEnough(state_->values); }));
    return state_->values;
  }
  std::vector<T> waitFor(std::size_t count) {
    return waitUntil([count](const std::vector<T>& values) { return values.size() >= count; });
  }
  std::vector<T> waitForEnd() {
    return waitUntil([](const std::vector<T>&) { return false; });
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<T> values;
    bool hasEnded = false;
  };

  static Task<> collect(AsyncStream<T> stream, std::shared_ptr<State> state) {
    while (true) {
      auto value = co_await stream.next();
      const std::lock_guard lock(state->mutex);
      state->hasEnded = !value.has_value();
      if (value) {
        state->values.push_back(std::move(*value));
      }
      state->changed.notify_all();
      if (!value) {
        co_return;
      }
    }
  }

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

std::string textOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const PortException& exception) {
    return exception.what();
  }
  return "no error";
}

/// As another program would, without the rules of this one. Gives 0 or the error number.
int openPlainly(const std::string& path) {
  return ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK) >= 0 ? 0 : errno;
}

class SerialPortTerminalTest : public testing::Test {
 protected:
  ~SerialPortTerminalTest() override { port.close(); }

  void openRaw(PortMode mode = PortMode::receiveAndTransmit) {
    port.open(mode);
    port.configure({.baudRateSetting = BaudRateSetting::bothWays(BaudRate::baud115200)});
  }

  /// The flags of the port's descriptor in this process: of the file, and of the descriptor itself.
  std::pair<int, int> descriptorFlags() const {
    for (const auto& link : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code error;
      if (std::filesystem::read_symlink(link.path(), error) == terminal.path()) {
        const int descriptor = std::stoi(link.path().filename());
        return {::fcntl(descriptor, F_GETFL), ::fcntl(descriptor, F_GETFD)};
      }
    }
    return {-1, -1};
  }

  std::string refusalNaming(const std::string& program, pid_t process) const {
    return "Serial port " + terminal.path() + " can't be opened: it is in use by " + program + " (process " +
           std::to_string(process) + ")";
  }

  static std::string thisProgram() {
    std::string name;
    std::getline(std::ifstream("/proc/self/comm"), name);
    return name;
  }

  PseudoTerminal terminal;
  foundation::SystemRuntime runtime;
  TermiosTerminalNodes nodes{runtime.globalQueue()};
  SerialPort port{nodes, runtime, terminal.path()};
};

TEST_F(SerialPortTerminalTest, WhatAnotherProgramHasTakenIsRefusedWithItsName) {
  using Take = std::function<void(int)>;
  const std::vector<std::pair<const char*, Take>> ways = {
      {"exclusive mode", [](int descriptor) { ::ioctl(descriptor, TIOCEXCL); }},
      {"lock", [](int descriptor) { ::flock(descriptor, LOCK_EX); }},
      {"neither, as serial monitors do", [](int) {}},
  };
  for (const auto& [way, take] : ways) {
    PseudoTerminal fresh;
    SerialPort ours(nodes, runtime, fresh.path());
    std::string text;
    pid_t process = 0;
    {
      const OtherProgram other([&fresh, &take] {
        const int descriptor = ::open(fresh.path().c_str(), O_RDWR | O_NOCTTY);
        take(descriptor);
      });
      process = other.process();
      text = textOf([&ours] { ours.open(PortMode::receive); });
    }
    EXPECT_EQ(text, "Serial port " + fresh.path() + " can't be opened: it is in use by " + thisProgram() +
                        " (process " + std::to_string(process) + ")")
        << way;
  }
}

TEST_F(SerialPortTerminalTest, AProgramsOwnNameBringsNothingHarmfulIntoTheText) {
  const OtherProgram other([this] {
    ::prctl(PR_SET_NAME, "a\x1B[2J\xFF z");
    ::flock(::open(terminal.path().c_str(), O_RDWR | O_NOCTTY), LOCK_EX);
  });
  EXPECT_EQ(textOf([this] { port.open(PortMode::receive); }), refusalNaming("a?[2J? z", other.process()));
}

TEST_F(SerialPortTerminalTest, OtherProgramsAreKeptOutUntilTheClose) {
  const auto& path = terminal.path();
  const auto lock = [&path] {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_NOCTTY);
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
  };
  // Exclusive mode doesn't stop root.
  const auto openAsUser = [&path] {
    return ::geteuid() == 0 && ::setuid(nobody) != 0 ? errno : openPlainly(path);
  };
  ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
  port.open(PortMode::receive);
  EXPECT_EQ(inOtherProcess(openAsUser), EBUSY);
  if (::geteuid() == 0) {
    EXPECT_EQ(inOtherProcess(lock), EWOULDBLOCK);
  }
  port.close();
  EXPECT_EQ(inOtherProcess(openAsUser), 0);
  EXPECT_EQ(inOtherProcess(lock), 0);
}

TEST_F(SerialPortTerminalTest, AChildProcessThatIsJustBeingStartedDoesNotKeepAClosedPortTaken) {
  port.open(PortMode::receive);
  const OtherProgram child([] {}, OtherProgram::Kinship::child);
  port.close();
  EXPECT_EQ(textOf([this] { port.open(PortMode::receive); }), "no error");
}

TEST_F(SerialPortTerminalTest, APortThatIsDroppedWithoutACloseStaysTaken) {
  {
    SerialPort dropped(nodes, runtime, terminal.path());
    dropped.open(PortMode::receive);
  }
  EXPECT_EQ(textOf([this] { port.open(PortMode::receive); }), refusalNaming(thisProgram(), ::getpid()));
}

TEST_F(SerialPortTerminalTest, TheOpenDescriptorWaitsForInputAndIsNotHandedToChildren) {
  port.open(PortMode::receiveAndTransmit);
  const auto [ofFile, ofDescriptor] = descriptorFlags();
  EXPECT_EQ(ofFile & O_ACCMODE, O_RDWR);
  EXPECT_EQ(ofFile & O_NONBLOCK, 0);
  EXPECT_EQ(ofDescriptor & FD_CLOEXEC, FD_CLOEXEC);
  port.close();
  const auto becomesItsSessions = [this] {
    ::setsid();
    port.open(PortMode::receive);
    return ::open("/dev/tty", O_RDONLY | O_CLOEXEC) >= 0 ? 1 : 0;
  };
  EXPECT_EQ(inOtherProcess(becomesItsSessions), 0) << "or a signal from the line would end the program";
}

TEST_F(SerialPortTerminalTest, BlocksAreWhatCameInAndNeverTooLong) {
  openRaw();
  Collector<SerialPort::Block> blocks(runtime, port.readDataStream());
  std::string sent(4000, '\0');
  std::iota(sent.begin(), sent.end(), '\0');
  std::thread sender([&] { terminal.send(sent); });
  const auto received = [](const std::vector<SerialPort::Block>& all) {
    std::string bytes;
    for (const auto& block : all) {
      bytes.append(block.begin(), block.end());
    }
    return bytes;
  };
  const auto all = blocks.waitUntil([&](const auto& some) { return received(some).size() >= sent.size(); });
  sender.join();
  EXPECT_EQ(received(all), sent);
  EXPECT_THAT(all, Each(testing::SizeIs(testing::AllOf(testing::Ge(1U), testing::Le(1024U)))));
}

TEST_F(SerialPortTerminalTest, LinesAreWholeHoweverTheBytesCame) {
  openRaw();
  Collector<std::string> lines(runtime, port.readLinesStream());
  terminal.send("abc\n\xC3");
  EXPECT_THAT(lines.waitFor(1), ElementsAre("abc\n"));
  terminal.send("\xA9t\xE2\x82");
  terminal.send("\xAC\n\n\xFF\xFE\n");
  EXPECT_THAT(lines.waitFor(4),
              ElementsAre("abc\n", "\xC3\xA9t\xE2\x82\xAC\n", "\n",
                          "Error: Non string data. Perhaps you wanted data or bytes output?"));
  terminal.send("last\nunterminated");
  lines.waitFor(5);
  port.close();
  EXPECT_THAT(lines.waitForEnd(), testing::Contains("last\n").Times(1));
  EXPECT_THAT(lines.waitForEnd(), testing::SizeIs(5));
}

TEST_F(SerialPortTerminalTest, TheByteStreamIsOneStreamHoweverOftenItIsAskedFor) {
  openRaw();
  Collector<std::uint8_t> bytes(runtime, port.readBytesStream());
  auto again = port.readBytesStream();
  terminal.send("abc");
  EXPECT_THAT(bytes.waitFor(3), ElementsAre('a', 'b', 'c'));
  port.close();
  EXPECT_THAT(bytes.waitForEnd(), testing::SizeIs(3));
}

TEST_F(SerialPortTerminalTest, WhatComesInBeforeAStreamIsAskedForIsKept) {
  openRaw();
  terminal.send("-early\n");
  EXPECT_EQ(port.readByte(), '-');
  port.configure({.sendTwoStopBits = true});
  Collector<std::string> lines(runtime, port.readLinesStream());
  EXPECT_THAT(lines.waitFor(1), ElementsAre("early\n"));
}

TEST_F(SerialPortTerminalTest, ABlockingReadWaitsForItsBytesAndLetsWritesPass) {
  openRaw();
  auto line = std::async(std::launch::async, [this] { return port.readLine(); });
  EXPECT_EQ(port.writeString("hello"), 5);
  EXPECT_EQ(terminal.receive(5), "hello");
  terminal.send("in two ");
  terminal.send("pieces\n");
  EXPECT_EQ(line.get(), "in two pieces");
}

TEST_F(SerialPortTerminalTest, ABlockingReadThatWaitsEndsWithTheDevice) {
  openRaw();
  auto text = std::async(std::launch::async, [this] { return textOf([this] { port.readByte(); }); });
  terminal.unplug();
  EXPECT_THAT(text.get(), testing::HasSubstr("is no longer connected"));
}

TEST_F(SerialPortTerminalTest, ABlockingReadThatWaitsOverAClosePutsTheNodeBackWhenItReturns) {
  openRaw();
  auto text = std::async(std::launch::async, [this] { return textOf([this] { port.readLine(); }); });
  port.close();
  terminal.send("x");  // Or else it would wait for ever.
  EXPECT_EQ(text.get(), "Serial port " + terminal.path() + " is not open");
  EXPECT_EQ(textOf([this] { openRaw(); }), "no error");
}

TEST_F(SerialPortTerminalTest, ADeviceThatLeavesEndsStreamsAndBlockingReads) {
  openRaw();
  Collector<std::string> lines(runtime, port.readLinesStream());
  terminal.send("one\n");
  EXPECT_THAT(lines.waitFor(1), ElementsAre("one\n"));
  terminal.unplug();
  EXPECT_THAT(lines.waitForEnd(), ElementsAre("one\n"));
  const auto text = "The device at serial port " + terminal.path() + " is no longer connected";
  EXPECT_EQ(textOf([this] { port.readByte(); }), text);
  EXPECT_EQ(port.writeString("x"), -1);
  port.configure({});
  port.close();
  EXPECT_THAT(textOf([this] { port.open(PortMode::receive); }), testing::HasSubstr("it is not there"));
}

/// A path that is no terminal: a lock is all that protects it.
class SerialPortFifoTest : public SerialPortTerminalTest {
 protected:
  void SetUp() override { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); }
  void TearDown() override {
    fifo.close();
    ::unlink(path.c_str());
  }

  const std::string path =
      std::filesystem::temp_directory_path() / ("karvex-fifo-" + std::to_string(::getpid()));
  SerialPort fifo{nodes, runtime, path};
};

TEST_F(SerialPortFifoTest, TheOpenNeitherWaitsNorLetsASecondOneIn) {
  fifo.open(PortMode::receive);  // Would wait for a writer.
  SerialPort second(nodes, runtime, path);
  EXPECT_THAT(textOf([&second] { second.open(PortMode::receive); }),
              testing::HasSubstr("it is in use by " + thisProgram()));
  fifo.configure({});
}

TEST_F(SerialPortFifoTest, ANodeThatIsUnlinkedIsADeviceThatLeft) {
  fifo.open(PortMode::receiveAndTransmit);
  EXPECT_EQ(fifo.writeString("ab"), 2);
  ::unlink(path.c_str());
  EXPECT_THAT(textOf([this] { fifo.readByte(); }), testing::HasSubstr("is no longer connected"));
}

// Meant for the thread sanitizer: the port is closed while its handler reads, waits or is about to be called.
TEST_F(SerialPortTerminalTest, OpeningAndClosingUnderLoadIsAlwaysPossible) {
  std::atomic<bool> isOver = false;
  std::thread device([&] {
    while (!isOver) {
      terminal.sendWhatFits("line\n");
    }
  });
  for (int round = 0; round < 1000; ++round) {
    openRaw();
    Collector<std::string> lines(runtime, port.readLinesStream());
    if (round % 2 == 0) {
      EXPECT_THAT(lines.waitFor(1), testing::Not(IsEmpty()));
    }
    port.close();
    lines.waitForEnd();
  }
  isOver = true;
  device.join();
}

}  // namespace
}  // namespace karvex::device
