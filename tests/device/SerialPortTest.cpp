// Ports on a node whose answers a test decides.

#include "device/SerialPort.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "device/SerialPortManagement.hpp"
#include "foundation/Log.hpp"
#include "foundation/VirtualRuntime.hpp"

namespace karvex::device {
namespace {

using namespace std::chrono_literals;
using foundation::AsyncStream;
using foundation::ReadOutcome;
using foundation::Task;
using testing::ElementsAre;
using testing::IsEmpty;
using Texts = std::vector<std::string>;

/// What the test decides of a node, and what was done to it.
struct Script {
  std::optional<TerminalRefusal> refusal;
  bool refusesWatch = false;
  bool refusesSettings = false;
  bool isConnected = true;
  std::ptrdiff_t writeResult = -1;
  std::deque<std::string> input;   ///< what each read gives; nothing when there is no more
  ReadSource::Handler onReadable;  ///< while it is watched
  Texts events;
};

class ScriptedSource final : public ReadSource {
 public:
  ScriptedSource(Script& script, Handler onReadable) : script_(script), onReadable_(std::move(onReadable)) {
    script_.events.emplace_back("watch");
  }
  ~ScriptedSource() override { script_.onReadable = nullptr; }
  void resume() override { script_.onReadable = onReadable_; }

 private:
  Script& script_;
  Handler onReadable_;
};

class ScriptedNode final : public TerminalNode {
 public:
  explicit ScriptedNode(Script& script) : script_(script) {}
  ~ScriptedNode() override { script_.events.emplace_back("close"); }
  void configure(const SerialPortSettings& settings) override {
    if (script_.refusesSettings) {
      throw PortException(PortError::mustBeOpen, "not open");
    }
    const SerialPortSettings request{.baudRateSetting = {BaudRate::baud134, BaudRate::baud134}};
    script_.events.emplace_back(settings == request ? "134 baud, 8N1, raw" : "other settings");
  }
  std::ptrdiff_t read(std::span<std::uint8_t> into) override {
    if (script_.input.empty()) {
      return 0;
    }
    const auto step = std::exchange(script_.input.front(), "");
    script_.input.pop_front();
    EXPECT_LE(step.size(), into.size());
    std::copy(step.begin(), step.end(), into.begin());
    return static_cast<std::ptrdiff_t>(step.size());
  }
  std::ptrdiff_t write(std::span<const std::uint8_t> bytes) override {
    script_.events.emplace_back(bytes.begin(), bytes.end());
    return script_.writeResult;
  }
  bool isConnected() override { return script_.isConnected; }
  std::unique_ptr<ReadSource> watch(ReadSource::Handler onReadable) override {
    if (script_.refusesWatch) {
      throw std::system_error(EMFILE, std::generic_category());
    }
    return std::make_unique<ScriptedSource>(script_, std::move(onReadable));
  }
  void leaveOpen() override { script_.events.emplace_back("leave open"); }

 private:
  Script& script_;
};

class ScriptedNodes final : public TerminalNodes {
 public:
  explicit ScriptedNodes(Script& script) : script_(script) {}
  OpenedTerminal open(const std::string& path, PortMode mode) override {
    if (script_.refusal) {
      return *script_.refusal;
    }
    script_.events.push_back(fmt::format("open {} {}", path, static_cast<int>(mode)));
    return std::make_unique<ScriptedNode>(script_);
  }

 private:
  Script& script_;
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
  ScriptedNodes nodes{script};
  SerialPort port{nodes, runtime, "/dev/p"};
  Texts lines;
};

TEST_F(SerialPortTest, WhatAPortMustBeForEachOperation) {
  std::array<std::uint8_t, 4> memory{};
  enum Kind { stream, blockingRead, other };
  const std::tuple<Kind, const char*, std::function<void()>> operations[] = {
      {stream, "readDataStream", [this] { port.readDataStream(); }},
      {stream, "readBytesStream", [this] { port.readBytesStream(); }},
      {stream, "readLinesStream", [this] { port.readLinesStream(); }},
      {blockingRead, "readBytes", [&] { port.readBytes(memory.data(), memory.size()); }},
      {blockingRead, "readData", [this] { port.readData(4); }},
      {blockingRead, "readString", [this] { port.readString(4); }},
      {blockingRead, "readString of nothing", [this] { port.readString(0); }},
      {blockingRead, "readUntil", [this] { port.readUntil('x'); }},
      {blockingRead, "readLine", [this] { port.readLine(); }},
      {blockingRead, "readByte", [this] { port.readByte(); }},
      {other, "configure", [this] { port.configure({}); }},
      {other, "writeBytes", [this] { port.writeBytes("ab", 2); }},
      {other, "writeData", [this] { port.writeData(std::vector<std::uint8_t>{1, 2}); }},
      {other, "writeString", [this] { port.writeString("ab"); }},
      {other, "writeCharacter", [this] { port.writeCharacter(U'a'); }},
  };
  for (const auto& [kind, name, call] : operations) {
    EXPECT_EQ(errorOf(call), "2 Serial port /dev/p is not open") << name;
    EXPECT_THAT(takeEvents(), IsEmpty());
    port.open(PortMode::transmit);
    script.isConnected = false;
    EXPECT_EQ(errorOf(call), kind == stream ? "2 Serial port /dev/p is open for transmitting only"
                             : kind == blockingRead
                                 ? "5 The device at serial port /dev/p is no longer connected"
                                 : "")
        << name;
    script.isConnected = true;
    port.close();
    EXPECT_EQ(takeEvents().size(), kind == other ? 3U : 2U) << name;

    port.open(PortMode::receive);
    EXPECT_FALSE(script.onReadable) << "nothing is read for a stream before one is asked for";
    if (kind == stream) {
      call();
      EXPECT_TRUE(script.onReadable) << name;
    }
    port.close();
    EXPECT_THAT(takeEvents(), ElementsAre("open /dev/p 0", "watch", "close"));
  }
}

TEST_F(SerialPortTest, APortIsOpenedOnceAndAfterAFailureItIsAsBefore) {
  const auto open = [this] { return errorOf([this] { port.open(PortMode::receive); }); };
  port.close();
  script.refusal = TerminalRefusal{.cause = TerminalRefusal::Cause::inUse};
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ(open(), "-1 Serial port /dev/p can't be opened: it is in use by another program");
  }
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
  std::array<std::uint8_t, 4> memory{};
  script.input = {"ab", "", "ab", "c"};
  EXPECT_EQ(port.readBytes(memory.data(), memory.size()), 2);
  EXPECT_EQ(port.readBytes(memory.data(), memory.size()), 0);
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
  script.input = {"a", "\x80", "\xC3"};
  EXPECT_EQ(errorOf([this] { port.readLine(); }), noCharacter);
  EXPECT_EQ(errorOf([this] { port.readUntil(0xC3); }), noCharacter);
}

TEST_F(SerialPortTest, WritesAreUtf8AndTheirResultIsHandedBack) {
  const auto writeBadText = [this] {
    for (const auto& write : std::vector<std::function<void()>>{[this] { port.writeString("a\xFF"); },
                                                                [this] { port.writeCharacter(0xD800); },
                                                                [this] { port.writeCharacter(0x110000); }}) {
      EXPECT_EQ(errorOf(write), "3 Text for serial port /dev/p is not valid UTF-8");
    }
  };
  writeBadText();
  port.open(PortMode::transmit);
  writeBadText();
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

TEST(SerialPortErrorTest, AFailedOpenNamesPortNodeAndCause) {
  using Cause = TerminalRefusal::Cause;
  const std::pair<TerminalRefusal, std::string> cases[] = {
      {{.cause = Cause::inUse, .node = "/dev/ttyACM0", .detail = "minicom (process 4711)"},
       " (/dev/ttyACM0) can't be opened: it is in use by minicom (process 4711)"},
      {{.cause = Cause::absent}, " can't be opened: it is not there, the device may have been unplugged"},
      {{.cause = Cause::notPermitted}, " can't be opened: this user has no permission to use it"},
      {{.cause = Cause::other}, " can't be opened: the system gives no reason"},
  };
  for (const auto& [refusal, text] : cases) {
    EXPECT_EQ(describe(refusal, "/dev/p"), "Serial port /dev/p" + text);
  }
}

class SerialPortManagementTest : public SerialPortTest {
 protected:
  SerialPortManagementTest() {
    foundation::log::redirectSystem([this](std::string_view line) { logged.emplace_back(line); });
  }
  ~SerialPortManagementTest() override { foundation::log::redirectSystem(nullptr); }
  /// The three flags as they are now, and what was logged.
  Texts outcome() {
    auto all = std::exchange(logged, {});
    all.insert(all.begin(), fmt::format("{:d}{:d}{:d}", management.halfkayModeDetected.get(),
                                        management.portBusyError.get(), management.showErrorModal.get()));
    return all;
  }

  SerialPortManagement management{nodes, runtime};
  Texts logged;
};

TEST_F(SerialPortManagementTest, TheCheckIsAnOpenAndACloseAndTouchesNoBoardInItsBootloader) {
  const std::string checking = "> KARVEX : Checking serial port availablity for port : /dev/p";
  EXPECT_TRUE(management.checkPortAvailability({}, "/dev/p"));
  EXPECT_THAT(takeEvents(), ElementsAre("open /dev/p 2", "watch", "close"));
  EXPECT_THAT(outcome(), ElementsAre("000", checking, "> KARVEX Serial port opened succesfully"));
  script.refusal = TerminalRefusal{};
  const std::string text = "Serial port /dev/p can't be opened: the system gives no reason";
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_FALSE(management.checkPortAvailability({}, "/dev/p"));
    EXPECT_EQ(management.errorText.get(), text);
    EXPECT_THAT(outcome(),
                ElementsAre("011", checking, "> KARVEX : Error opening or closing serial port " + text));
  }
  records::BootableDevice device;
  device.USBProductId = 0x0478;
  script.refusal.reset();
  EXPECT_FALSE(management.checkPortAvailability(device, "/dev/p"));
  EXPECT_THAT(outcome(), ElementsAre("111", "> KARVEX : Already in Halfkay mode... abort!"));
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(SerialPortManagementTest, TheRequestIsOneChangeOfSpeedAndAFailureInvertsItsFlag) {
  const std::string available = "> KARVEX : Serial port is fully available!";
  const std::string attempt = "> KARVEX : Attempting to open serial port /dev/p";
  const std::string success = "> KARVEX : Serial port /dev/p open success!";
  EXPECT_TRUE(management.requestHalfkayMode("/dev/p"));
  EXPECT_THAT(takeEvents(), ElementsAre("open /dev/p 0", "watch", "134 baud, 8N1, raw", "close"));
  EXPECT_THAT(outcome(), ElementsAre("000", available, attempt, success,
                                     "> KARVEX : Halfkay mode request Sent on port /dev/p"));
  script.refusesSettings = true;
  EXPECT_FALSE(management.requestHalfkayMode("/dev/p"));
  EXPECT_THAT(takeEvents(), ElementsAre("open /dev/p 0", "watch", "close"));
  EXPECT_THAT(outcome(), ElementsAre("001", available, attempt, success,
                                     "> KARVEX : Halfkay mode request failed : Reason : not open"));
  EXPECT_EQ(management.errorText.get(), "not open");
  script.refusal = TerminalRefusal{.detail = "why"};
  EXPECT_FALSE(management.requestHalfkayMode("/dev/p"));
  const std::string text = "Serial port /dev/p can't be opened: why";
  EXPECT_THAT(outcome(), ElementsAre("000", available, attempt,
                                     "> KARVEX : Could not open serial port /dev/p : Reason => " + text));
  EXPECT_EQ(management.errorText.get(), text);
}

}  // namespace
}  // namespace karvex::device
