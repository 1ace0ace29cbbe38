// Ports on a node whose answers a test decides.

#include "device/SerialPort.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <functional>
#include <system_error>

#include "device/SerialPortManagement.hpp"
#include "foundation/Log.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace karvex::device {
namespace {

using namespace std::chrono_literals;
using foundation::AsyncStream;
using foundation::ReadOutcome;
using foundation::Task;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

/// The one node, as the test decides, and what was done to it.
struct Script final : public TerminalNodes {
  struct Source final : public ReadSource {
    Source(Script& of, Handler calls) : script(of), handler(std::move(calls)) {
      script.events.emplace_back("watch");
    }
    ~Source() override { script.onReadable = nullptr; }
    void resume() override { script.onReadable = handler; }
    Script& script;
    Handler handler;
  };
  struct Node final : public TerminalNode {
    explicit Node(Script& of) : script(of) {}
    ~Node() override { script.events.emplace_back("close"); }
    void configure(const SerialPortSettings& settings) override {
      if (script.refusesSettings) {
        throw PortException(PortError::mustBeOpen, "not open");
      }
      const SerialPortSettings request{.baudRateSetting = {BaudRate::baud134, BaudRate::baud134}};
      script.events.emplace_back(settings == request ? "134 baud, 8N1, raw" : "other settings");
    }
    std::ptrdiff_t read(std::span<std::uint8_t> into) override {
      const auto step = script.input.empty() ? "" : script.input.front();
      script.input.erase(script.input.begin(), script.input.begin() + (script.input.empty() ? 0 : 1));
      return std::copy_n(step.begin(), std::min(step.size(), into.size()), into.begin()) - into.begin();
    }
    std::ptrdiff_t write(std::span<const std::uint8_t> bytes) override {
      script.events.emplace_back(bytes.begin(), bytes.end());
      return script.writeResult;
    }
    bool isConnected() override { return script.isConnected; }
    std::unique_ptr<ReadSource> watch(ReadSource::Handler calls) override {
      if (script.refusesWatch) {
        throw std::system_error(EMFILE, std::generic_category());
      }
      return std::make_unique<Source>(script, std::move(calls));
    }
    void leaveOpen() override { script.events.emplace_back("leave open"); }
    Script& script;
  };

  OpenedTerminal open(const std::string& path, PortMode mode) override {
    if (refusal) {
      return *refusal;
    }
    events.push_back(fmt::format("open {} {}", path, static_cast<int>(mode)));
    return std::make_unique<Node>(*this);
  }

  std::optional<TerminalRefusal> refusal;
  bool refusesWatch = false, refusesSettings = false, isConnected = true;
  std::ptrdiff_t writeResult = -1;
  Texts input;                     ///< what each read gives; nothing when there is no more
  ReadSource::Handler onReadable;  ///< while it is watched
  Texts events;
};

/// The text of the error that an operation ends in, after its code; nothing if it ends well.
std::string errorOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const PortException& exception) {
    return fmt::format("{} {}", exception.code(), exception.what());
  }
  return "";
}

class SerialPortTest : public testing::Test {
 protected:
  Texts takeEvents() { return std::exchange(script.events, {}); }
  void runUntilIdle() {
    runtime.mainQueue().postAt(runtime.clock().now() + 1h, [this] { runtime.stopMain(); });
    runtime.runMain();
  }
  Task<> collect(AsyncStream<std::string> stream) {
    while (auto line = co_await stream.next()) {
      lines.push_back(std::move(*line));
    }
    lines.emplace_back("end");
  }

  Script script;
  foundation::VirtualRuntime runtime;
  SerialPort port{script, runtime, "/dev/p"};
  Texts lines;
};

TEST_F(SerialPortTest, WhatAPortMustBeForEachOperation) {
  std::uint8_t memory[4];
  const auto onlyTransmits = "2 Serial port /dev/p is open for transmitting only";
  const auto hasLeft = "5 The device at serial port /dev/p is no longer connected";
  // With what each of them ends in on a port that only transmits, of a device that has left.
  const std::pair<std::string, std::function<void()>> operations[] = {
      {onlyTransmits, [this] { port.readDataStream(); }},
      {onlyTransmits, [this] { port.readBytesStream(); }},
      {onlyTransmits, [this] { port.readLinesStream(); }},
      {hasLeft, [&] { port.readBytes(memory, sizeof memory); }},
      {hasLeft, [this] { port.readData(4); }},
      {hasLeft, [this] { port.readString(0); }},
      {hasLeft, [this] { port.readLine(); }},
      {"", [this] { port.configure({}); }},
      {"", [this] { port.writeBytes("ab", 2); }},
      {"", [this] { port.writeCharacter(U'a'); }},
  };
  for (const auto& [error, call] : operations) {
    EXPECT_EQ(errorOf(call), "2 Serial port /dev/p is not open");
    EXPECT_THAT(takeEvents(), IsEmpty());
    script.isConnected = false;
    port.open(PortMode::transmit);
    EXPECT_EQ(errorOf(call), error);
    port.close();
    EXPECT_EQ(takeEvents().size(), error.empty() ? 3U : 2U);
    script.isConnected = true;
    port.open(PortMode::receive);
    EXPECT_FALSE(script.onReadable) << "nothing is read for a stream before one is asked for";
    if (error == onlyTransmits) {
      call();
      EXPECT_TRUE(script.onReadable);
    }
    port.close();
    EXPECT_THAT(takeEvents(), ElementsAre("open /dev/p 0", "watch", "close"));
  }
}

TEST_F(SerialPortTest, APortIsOpenedOnceAndAfterAFailureItIsAsBefore) {
  const auto open = [this] { return errorOf([this] { port.open(PortMode::receive); }); };
  port.close();
  script.refusal.emplace();
  EXPECT_EQ(open(), "-1 Serial port /dev/p can't be opened: the system names no reason");
  script.refusal.reset();
  script.refusesWatch = true;
  EXPECT_EQ(open(), "-1 Serial port /dev/p can't be opened: Too many open files");
  script.refusesWatch = false;
  EXPECT_THAT(takeEvents(), ElementsAre("open /dev/p 0", "close"));
  EXPECT_EQ(open(), "");
  EXPECT_EQ(open(), "6 Serial port /dev/p is open already");
  port.close();
  port.close();
  EXPECT_THAT(takeEvents(), ElementsAre("open /dev/p 0", "watch", "close"));
  EXPECT_EQ(errorOf([this] { port.create("")->open(PortMode::receive); }),
            "0 A serial port without a path can't be opened");
  {
    const auto dropped = port.create("/dev/q");
    dropped->open(PortMode::receiveAndTransmit);
    spawn(runtime.globalQueue(), collect(dropped->readLinesStream()));
  }
  EXPECT_THAT(takeEvents(), ElementsAre("open /dev/q 2", "watch", "leave open", "close"));
  runUntilIdle();
  EXPECT_THAT(lines, ElementsAre("end"));
}

TEST_F(SerialPortTest, BlockingReadsReturnWhatTheNodeGivesWithoutHaste) {
  port.open(PortMode::receive);
  std::uint8_t memory[4];
  script.input = {"ab", "", "ab", "c"};
  EXPECT_EQ(port.readBytes(memory, sizeof memory), 2);
  EXPECT_EQ(port.readBytes(memory, sizeof memory), 0);
  EXPECT_THAT(port.readData(4), ElementsAre('a', 'b'));
  EXPECT_EQ(port.readByte(), 'c');
  const auto start = runtime.clock().now();
  script.input = {"ab", "", "c\xC3\xA9", "not taken"};
  EXPECT_EQ(port.readString(5), "abc\xC3\xA9");
  script.input = {"ab", "c\xC3", "\xA9"};
  EXPECT_EQ(port.readString(5), "ab") << "a step that is cut in mid-character ends the text";
  script.input = {"a", "", "\x7F", "\n", "d"};
  EXPECT_EQ(port.readLine(), "a\x7F");
  EXPECT_EQ(port.readUntil('d'), "");
  EXPECT_EQ(runtime.clock().now() - start, 2 * SerialPort::pauseBeforeRepeat);
  const std::string noCharacter = "4 Serial port /dev/p received a byte that is no ASCII character";
  script.input = {"a", "\x80", "\n"};
  EXPECT_EQ(errorOf([this] { port.readLine(); }), noCharacter);
  script.input = {"\xC3"};
  EXPECT_EQ(errorOf([this] { port.readUntil(0xC3); }), noCharacter);
}

TEST_F(SerialPortTest, WritesAreUtf8AndTheirResultIsHandedBack) {
  const std::string noUtf8 = "3 Text for serial port /dev/p is not valid UTF-8";
  EXPECT_EQ(errorOf([this] { port.writeString("a\xFF"); }), noUtf8) << "also of a closed port";
  port.open(PortMode::transmit);
  EXPECT_EQ(errorOf([this] { port.writeString("a\xFF"); }), noUtf8);
  EXPECT_EQ(errorOf([this] { port.writeCharacter(0xD800); }), noUtf8);
  script.writeResult = 1;
  EXPECT_EQ(port.writeBytes("abc", 2), 1);
  EXPECT_EQ(port.writeData(std::vector<std::uint8_t>{'x', 0xFF}), 1);
  EXPECT_EQ(port.writeString("\xC3\xA9"), 1);
  script.writeResult = -1;
  EXPECT_EQ(port.writeCharacter(U'\u20AC'), -1);
  EXPECT_THAT(takeEvents(), ElementsAre("open /dev/p 1", "ab", "x\xFF", "\xC3\xA9", "\xE2\x82\xAC"));
}

TEST_F(SerialPortTest, LinesAreWholeHoweverTheBytesComeAndEndWithTheDeviceOrTheClose) {
  for (const bool deviceLeaves : {true, false}) {
    port.open(PortMode::receive);
    spawn(runtime.globalQueue(), collect(port.readLinesStream()));
    port.readBytesStream();  // The same stream again: it takes nothing from the lines.
    script.input = {"abc\n\xC3", "", "\xA9t\n\n\xFF\n", "unterminated"};
    const auto onReadable = script.onReadable;
    for (const auto outcome :
         {ReadOutcome::data, ReadOutcome::nothing, ReadOutcome::data, ReadOutcome::data}) {
      EXPECT_EQ(onReadable(), outcome);
    }
    runUntilIdle();
    const std::string noText = "Error: Non string data. Perhaps you wanted data or bytes output?";
    EXPECT_THAT(std::exchange(lines, {}), ElementsAre("abc\n", "\xC3\xA9t\n", "\n", noText));
    script.isConnected = !deviceLeaves;
    if (!deviceLeaves) {
      port.close();
      script.input = {"never read"};
    }
    EXPECT_EQ(onReadable(), ReadOutcome::gone);
    runUntilIdle();
    EXPECT_THAT(std::exchange(lines, {}), ElementsAre("end"));
    EXPECT_EQ(script.input.size(), deviceLeaves ? 0U : 1U);
    script.isConnected = true;
    port.close();
  }
}

class SerialPortManagementTest : public SerialPortTest {
 protected:
  SerialPortManagementTest() {
    foundation::log::redirectSystem([this](std::string_view line) { script.events.emplace_back(line); });
  }
  ~SerialPortManagementTest() override { foundation::log::redirectSystem(nullptr); }
  /// What was done and logged, then the three flags as they are now, and the text of the last error.
  std::string outcome() {
    return fmt::format("{}|{:d}{:d}{:d} {}", fmt::join(takeEvents(), "|"),
                       management.halfkayModeDetected.get(), management.portBusyError.get(),
                       management.showErrorModal.get(), management.errorText.get());
  }

  SerialPortManagement management{script, runtime};
};

TEST_F(SerialPortManagementTest, TheCheckIsAnOpenAndACloseAndTouchesNoBoardInItsBootloader) {
  using Cause = TerminalRefusal::Cause;
  const std::string checking = "> KARVEX : Checking serial port availablity for port : /dev/p|";
  EXPECT_TRUE(management.checkPortAvailability({}, "/dev/p"));
  EXPECT_EQ(outcome(), checking + "open /dev/p 2|watch|> KARVEX Serial port opened succesfully|close|000 ");
  const std::pair<TerminalRefusal, std::string> refusals[] = {
      {{Cause::inUse, "/dev/n", "x (process 1)"}, " (/dev/n) can't be opened: it is in use by x (process 1)"},
      {{Cause::inUse, "", ""}, " can't be opened: it is in use by another program"},
      {{Cause::absent, "", ""}, " can't be opened: it is not there, the device may have been unplugged"},
      {{Cause::notPermitted, "", ""}, " can't be opened: this user has no permission to use it"},
      {{}, " can't be opened: the system names no reason"},
  };
  for (const auto& [refusal, reason] : refusals) {
    script.refusal = refusal;
    EXPECT_FALSE(management.checkPortAvailability({}, "/dev/p"));
    const auto text = "Serial port /dev/p" + reason;
    EXPECT_EQ(outcome(),
              checking + "> KARVEX : Error opening or closing serial port " + text + "|011 " + text);
  }
  script.refusal.reset();
  management.errorText.set("");
  records::BootableDevice device;
  device.USBProductId = 0x0478;
  EXPECT_FALSE(management.checkPortAvailability(device, "/dev/p"));
  EXPECT_EQ(outcome(), "> KARVEX : Already in Halfkay mode... abort!|111 ");
}

TEST_F(SerialPortManagementTest, TheRequestIsOneChangeOfSpeedAndAFailureInvertsItsFlag) {
  const std::string attempt =
      "> KARVEX : Serial port is fully available!|"
      "> KARVEX : Attempting to open serial port /dev/p|";
  const std::string opened = attempt + "open /dev/p 0|watch|> KARVEX : Serial port /dev/p open success!|";
  EXPECT_TRUE(management.requestHalfkayMode("/dev/p"));
  EXPECT_EQ(outcome(), opened +
                           "134 baud, 8N1, raw|close|"
                           "> KARVEX : Halfkay mode request Sent on port /dev/p|000 ");
  script.refusesSettings = true;
  EXPECT_FALSE(management.requestHalfkayMode("/dev/p"));
  EXPECT_EQ(outcome(),
            opened + "> KARVEX : Halfkay mode request failed : Reason : not open|close|001 not open");
  script.refusal = TerminalRefusal{.detail = "why"};
  EXPECT_FALSE(management.requestHalfkayMode("/dev/p"));
  const std::string text = "Serial port /dev/p can't be opened: why";
  EXPECT_EQ(outcome(),
            attempt + "> KARVEX : Could not open serial port /dev/p : Reason => " + text + "|000 " + text);
}

}  // namespace
}  // namespace karvex::device
