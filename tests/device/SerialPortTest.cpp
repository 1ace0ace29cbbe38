#include "device/SerialPort.hpp"

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "foundation/VirtualRuntime.hpp"

namespace karvex::device {
namespace {

using namespace std::chrono_literals;
using foundation::AsyncStream;
using foundation::ReadOutcome;
using foundation::Task;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* portPath = "/dev/somewhere";

/// What the test decides of a node, and what was done to it.
struct Script {
  std::deque<std::string> input;  ///< what each read gives; nothing when there is no more
  bool isConnected = true;
  bool refusesWatch = false;
  std::ptrdiff_t writeResult = -1;
  bool hasSource = false;
  ReadSource::Handler onReadable;  ///< while it is watched
  std::vector<std::string> events;
  std::vector<SerialPortSettings> settings;
};

class ScriptedSource final : public ReadSource {
 public:
  ScriptedSource(Script& script, Handler onReadable) : script_(script), onReadable_(std::move(onReadable)) {
    script_.hasSource = true;
  }
  ~ScriptedSource() override {
    script_.hasSource = false;
    script_.onReadable = nullptr;
  }
  void resume() override { script_.onReadable = onReadable_; }

 private:
  Script& script_;
  Handler onReadable_;
};

class ScriptedNode final : public TerminalNode {
 public:
  explicit ScriptedNode(Script& script) : script_(script) {}
  ~ScriptedNode() override { script_.events.emplace_back(isLeftOpen_ ? "left open" : "closed"); }

  void configure(const SerialPortSettings& settings) override { script_.settings.push_back(settings); }
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
  void leaveOpen() override { isLeftOpen_ = true; }

 private:
  Script& script_;
  bool isLeftOpen_ = false;
};

class ScriptedNodes final : public TerminalNodes {
 public:
  explicit ScriptedNodes(Script& script) : script_(script) {}

  OpenedTerminal open(const std::string& path, PortMode) override {
    script_.events.push_back("open " + path);
    if (refusal) {
      return *refusal;
    }
    return std::make_unique<ScriptedNode>(script_);
  }

  std::optional<TerminalRefusal> refusal;

 private:
  Script& script_;
};

class SerialPortTest : public testing::Test {
 protected:
  std::unique_ptr<SerialPort> makePort(const std::string& path = portPath) {
    return std::make_unique<SerialPort>(nodes, runtime, path);
  }

  std::unique_ptr<SerialPort> openPort(PortMode mode = PortMode::receiveAndTransmit) {
    auto port = makePort();
    port->open(mode);
    return port;
  }

  void runUntilIdle() {
    runtime.mainQueue().postAt(runtime.clock().now() + 1h, [this] { runtime.stopMain(); });
    runtime.runMain();
  }

  foundation::VirtualRuntime runtime;
  Script script;
  ScriptedNodes nodes{script};
};

/// Which error an operation ends in; nothing if it ends well.
std::optional<PortError> errorOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const PortException& exception) {
    EXPECT_EQ(exception.code(), static_cast<std::int32_t>(exception.error()));
    return exception.error();
  }
  return std::nullopt;
}

std::string textOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const PortException& exception) {
    return exception.what();
  }
  return "no error";
}

struct Operation {
  const char* name;
  std::function<void(SerialPort&)> call;
};

const std::vector<Operation>& streamAccessors() {
  static const std::vector<Operation> operations = {
      {"readDataStream", [](SerialPort& port) { port.readDataStream(); }},
      {"readBytesStream", [](SerialPort& port) { port.readBytesStream(); }},
      {"readLinesStream", [](SerialPort& port) { port.readLinesStream(); }},
  };
  return operations;
}

const std::vector<Operation>& blockingReads() {
  static std::array<std::uint8_t, 4> memory{};
  static const std::vector<Operation> operations = {
      {"readBytes", [](SerialPort& port) { port.readBytes(memory.data(), memory.size()); }},
      {"readData", [](SerialPort& port) { port.readData(4); }},
      {"readString", [](SerialPort& port) { port.readString(4); }},
      {"readString of nothing", [](SerialPort& port) { port.readString(0); }},
      {"readUntil", [](SerialPort& port) { port.readUntil('x'); }},
      {"readLine", [](SerialPort& port) { port.readLine(); }},
      {"readByte", [](SerialPort& port) { port.readByte(); }},
  };
  return operations;
}

const std::vector<Operation>& writesAndConfigure() {
  static const std::vector<Operation> operations = {
      {"configure", [](SerialPort& port) { port.configure({}); }},
      {"writeBytes", [](SerialPort& port) { port.writeBytes("ab", 2); }},
      {"writeData", [](SerialPort& port) { port.writeData(std::vector<std::uint8_t>{1, 2}); }},
      {"writeString", [](SerialPort& port) { port.writeString("ab"); }},
      {"writeCharacter", [](SerialPort& port) { port.writeCharacter(U'a'); }},
  };
  return operations;
}

TEST_F(SerialPortTest, EveryOperationOnAClosedPortNeedsItOpen) {
  const auto port = makePort();
  for (const auto& group : {streamAccessors(), blockingReads(), writesAndConfigure()}) {
    for (const auto& [name, call] : group) {
      EXPECT_EQ(errorOf([&] { call(*port); }), PortError::mustBeOpen) << name;
    }
  }
  EXPECT_THAT(script.events, IsEmpty());
  EXPECT_THAT(script.settings, IsEmpty());
}

TEST_F(SerialPortTest, APortWithoutAPathNeverReachesTheSystem) {
  const auto port = makePort("");
  EXPECT_EQ(errorOf([&] { port->open(PortMode::receive); }), PortError::invalidPath);
  EXPECT_THAT(script.events, IsEmpty());
}

TEST_F(SerialPortTest, ASecondOpenFailsAndLeavesTheFirstInUse) {
  const auto port = openPort();
  EXPECT_EQ(errorOf([&] { port->open(PortMode::receive); }), PortError::instanceAlreadyOpen);
  port->configure({.baudRateSetting = BaudRateSetting::bothWays(BaudRate::baud134)});
  EXPECT_THAT(script.settings,
              ElementsAre(SerialPortSettings{.baudRateSetting = {BaudRate::baud134, BaudRate::baud134}}));
  EXPECT_THAT(script.events, ElementsAre("open /dev/somewhere"));
  port->close();
}

TEST_F(SerialPortTest, AfterARefusalThePortIsClosedAndCanBeTriedAgain) {
  const auto port = makePort();
  nodes.refusal = TerminalRefusal{.cause = TerminalRefusal::Cause::inUse};
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ(errorOf([&] { port->open(PortMode::receive); }), PortError::failedToOpen);
  }
  EXPECT_EQ(errorOf([&] { port->configure({}); }), PortError::mustBeOpen);
  nodes.refusal.reset();
  EXPECT_EQ(errorOf([&] { port->open(PortMode::receive); }), std::nullopt);
  port->close();
}

TEST_F(SerialPortTest, APortThatCannotBeWatchedIsNotLeftOpen) {
  script.refusesWatch = true;
  const auto port = makePort();
  EXPECT_EQ(textOf([&] { port->open(PortMode::receive); }),
            "Serial port /dev/somewhere can't be opened: Too many open files");
  EXPECT_THAT(script.events, ElementsAre("open /dev/somewhere", "closed"));
  EXPECT_EQ(errorOf([&] { port->open(PortMode::transmit); }), std::nullopt) << "nothing to watch";
  port->close();
}

TEST_F(SerialPortTest, ClosingIsHarmlessAtAnyTimeAndThePortOpensAgain) {
  const auto port = makePort();
  port->close();
  for (int round = 0; round < 2; ++round) {
    port->open(PortMode::receiveAndTransmit);
    EXPECT_TRUE(script.hasSource);
    port->close();
    EXPECT_FALSE(script.hasSource);
    port->close();
  }
  EXPECT_THAT(script.events, ElementsAre("open /dev/somewhere", "closed", "open /dev/somewhere", "closed"));
}

TEST_F(SerialPortTest, APortThatIsDroppedWithoutACloseStaysOpenAndItsStreamsEnd) {
  bool ended = false;
  const auto wait = [&ended](AsyncStream<SerialPort::Block> stream) -> Task<> {
    ended = !(co_await stream.next()).has_value();
  };
  auto port = openPort();
  spawn(runtime.globalQueue(), wait(port->readDataStream()));
  port.reset();
  EXPECT_THAT(script.events, ElementsAre("open /dev/somewhere", "left open"));
  EXPECT_FALSE(script.hasSource);
  runUntilIdle();
  EXPECT_TRUE(ended);
}

TEST_F(SerialPortTest, APortThatOnlyTransmitsHasNoStreams) {
  const auto port = openPort(PortMode::transmit);
  EXPECT_FALSE(script.hasSource);
  for (const auto& [name, call] : streamAccessors()) {
    EXPECT_EQ(errorOf([&] { call(*port); }), PortError::mustBeOpen) << name;
    EXPECT_EQ(textOf([&] { call(*port); }), "Serial port /dev/somewhere is open for transmitting only");
  }
  port->close();
}

TEST_F(SerialPortTest, ADeviceThatHasLeftFailsEveryBlockingRead) {
  const auto port = openPort();
  script.isConnected = false;
  script.input = {"never read"};
  for (const auto& [name, call] : blockingReads()) {
    EXPECT_EQ(errorOf([&] { call(*port); }), PortError::deviceNotConnected) << name;
  }
  EXPECT_EQ(script.input.size(), 1U);
  EXPECT_EQ(textOf([&] { port->readByte(); }),
            "The device at serial port /dev/somewhere is no longer connected");
  port->close();
}

TEST_F(SerialPortTest, BlockingReadsGiveWhatTheNodeGives) {
  const auto port = openPort();
  const auto given = [this](std::deque<std::string> input) { script.input = std::move(input); };

  given({"ab"});
  std::array<std::uint8_t, 4> memory{};
  EXPECT_EQ(port->readBytes(memory.data(), memory.size()), 2);
  EXPECT_EQ(port->readBytes(memory.data(), memory.size()), 0);

  given({"ab", "c"});
  EXPECT_THAT(port->readData(4), ElementsAre('a', 'b'));

  given({"ab", "", "c\xC3\xA9", "not taken"});
  EXPECT_EQ(port->readString(5), "abc\xC3\xA9");
  given({"ab", "c\xC3", "\xA9"});
  EXPECT_EQ(port->readString(5), "ab") << "a step that is cut in mid-character ends the text";

  given({"a", "", "b", "c", "\n", "d"});
  EXPECT_EQ(port->readLine(), "abc");
  EXPECT_EQ(port->readUntil('d'), "");

  given({"a", "\xC3"});
  EXPECT_EQ(errorOf([&] { port->readLine(); }), PortError::unableToConvertByteToCharacter);
  given({"\x80"});
  EXPECT_EQ(errorOf([&] { port->readUntil(0x80); }), PortError::unableToConvertByteToCharacter);
  port->close();
}

TEST_F(SerialPortTest, AReadThatGivesNothingIsRepeatedWithoutHaste) {
  const auto port = openPort();
  script.input = {"", "", "x"};
  const auto start = runtime.clock().now();
  EXPECT_EQ(port->readByte(), 'x');
  EXPECT_EQ(runtime.clock().now() - start, 2 * SerialPort::pauseBeforeRepeat);
  port->close();
}

TEST_F(SerialPortTest, WritesAreUtf8AndTheirResultIsHandedBack) {
  const auto port = openPort();
  script.events.clear();
  script.writeResult = 1;
  EXPECT_EQ(port->writeBytes("abc", 2), 1);
  EXPECT_EQ(port->writeData(std::vector<std::uint8_t>{'x', 0xFF}), 1);
  EXPECT_EQ(port->writeString("\xC3\xA9"), 1);
  script.writeResult = -1;
  EXPECT_EQ(port->writeCharacter(U'\u20AC'), -1);
  EXPECT_THAT(script.events, ElementsAre("ab", "x\xFF", "\xC3\xA9", "\xE2\x82\xAC"));

  script.events.clear();
  const auto closed = makePort();
  for (auto* either : {port.get(), closed.get()}) {
    EXPECT_EQ(errorOf([&] { either->writeString("a\xFF"); }), PortError::stringsMustBeUTF8);
    EXPECT_EQ(errorOf([&] { either->writeCharacter(0xD800); }), PortError::stringsMustBeUTF8);
    EXPECT_EQ(errorOf([&] { either->writeCharacter(0x110000); }), PortError::stringsMustBeUTF8);
  }
  EXPECT_THAT(script.events, IsEmpty());
  port->close();
}

TEST_F(SerialPortTest, ASourceWithNothingToReadEndsTheStreamsOnlyIfTheDeviceHasLeft) {
  std::vector<std::string> lines;
  const auto collect = [&lines](AsyncStream<std::string> stream) -> Task<> {
    while (auto line = co_await stream.next()) {
      lines.push_back(std::move(*line));
    }
    lines.emplace_back("end");
  };
  const auto port = openPort();
  spawn(runtime.globalQueue(), collect(port->readLinesStream()));
  script.input = {"one\n", "", "two\nthr"};
  EXPECT_EQ(script.onReadable(), ReadOutcome::data);
  EXPECT_EQ(script.onReadable(), ReadOutcome::nothing);
  EXPECT_EQ(script.onReadable(), ReadOutcome::data);
  runUntilIdle();
  EXPECT_THAT(lines, ElementsAre("one\n", "two\n"));
  script.isConnected = false;
  EXPECT_EQ(script.onReadable(), ReadOutcome::gone);
  runUntilIdle();
  EXPECT_THAT(lines, ElementsAre("one\n", "two\n", "end"));
  port->close();
}

TEST_F(SerialPortTest, NothingIsReadForTheStreamsBeforeOneIsAskedFor) {
  for (const auto& [name, call] : streamAccessors()) {
    const auto port = openPort();
    EXPECT_TRUE(script.hasSource) << name;
    EXPECT_FALSE(script.onReadable) << name;
    call(*port);
    EXPECT_TRUE(script.onReadable) << name;
    port->close();
  }
}

TEST_F(SerialPortTest, AHandlerThatComesBehindTheCloseReadsNothing) {
  const auto port = openPort();
  const auto stream = port->readDataStream();
  const auto late = script.onReadable;
  port->close();
  EXPECT_THAT(script.events, ElementsAre("open /dev/somewhere", "closed"))
      << "the handler holds nothing open";
  script.input = {"never read"};
  EXPECT_EQ(late(), ReadOutcome::gone);
  EXPECT_EQ(script.input.size(), 1U);
}

TEST(SerialPortErrorTest, AFailedOpenNamesPortNodeAndCause) {
  using Cause = TerminalRefusal::Cause;
  constexpr const char* board = "/dev/cu.usbmodem12341";
  const std::vector<std::pair<TerminalRefusal, std::string>> cases = {
      {{.cause = Cause::inUse, .node = "/dev/ttyACM0", .detail = "minicom (process 4711)"},
       "Serial port /dev/cu.usbmodem12341 (/dev/ttyACM0) can't be opened: it is in use by minicom (process "
       "4711)"},
      {{.cause = Cause::inUse},
       "Serial port /dev/cu.usbmodem12341 can't be opened: it is in use by another program"},
      {{.cause = Cause::absent},
       "Serial port /dev/cu.usbmodem12341 can't be opened: it is not there, the device may have been "
       "unplugged"},
      {{.cause = Cause::notPermitted, .node = "/dev/ttyACM0"},
       "Serial port /dev/cu.usbmodem12341 (/dev/ttyACM0) can't be opened: this user has no permission to use "
       "it"},
      {{.cause = Cause::other, .detail = "Input/output error"},
       "Serial port /dev/cu.usbmodem12341 can't be opened: Input/output error"},
      {{.cause = Cause::other},
       "Serial port /dev/cu.usbmodem12341 can't be opened: the system gives no reason"},
  };
  for (const auto& [refusal, text] : cases) {
    EXPECT_EQ(describe(refusal, board), text);
  }
}

}  // namespace
}  // namespace karvex::device
