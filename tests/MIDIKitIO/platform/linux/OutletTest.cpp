#include "MIDIKitIO/platform/linux/Outlet.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <cerrno>
#include <string>
#include <vector>

#include "foundation/Log.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace midikit::io::alsa {
namespace {

using namespace std::chrono_literals;
using karvex::foundation::Duration;
using karvex::foundation::TimePoint;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using Bytes = std::vector<std::uint8_t>;

/// The other side: takes events while it has room, and writes down each with its time in milliseconds.
class FakeSink final : public EventSink {
 public:
  explicit FakeSink(karvex::foundation::Clock& clock) : clock_(clock) {}

  std::optional<int> makePort() override { return 1; }
  void removePort(int /*port*/) override { connected.reset(); }
  int connect(const Wire& wire) override {
    connected = wire.to;
    return 0;
  }
  bool isConnected(const Wire& wire) const override { return connected == wire.to; }
  int send(snd_seq_event_t& event, const Wire& wire, const Moment& moment) override {
    ++tries;
    if (!isConnected(wire)) {
      return -ENOTCONN;
    }
    if (room == 0) {
      return -EAGAIN;
    }
    --room;
    EventDecoder decoder;
    Bytes bytes;
    decoder.decode(event, bytes);
    const auto* schedule = moment.schedule;
    const auto when = clock_.now() + (schedule != nullptr ? schedule->delay : Duration::zero());
    lines.push_back(fmt::format("{}{} {:02X}", when.time_since_epoch() / 1ms, schedule != nullptr ? "k" : "",
                                fmt::join(bytes.size() > 3 ? Bytes{bytes.front()} : bytes, " ")));
    total += bytes.size();
    return 0;
  }
  QueueHold queue() override {
    auto made = hasQueues ? std::make_shared<const int>(1) : nullptr;
    held = made;
    return made;
  }

  std::optional<PortAddress> connected;
  std::size_t room = 1'000'000;
  bool hasQueues = true;
  std::weak_ptr<const int> held;
  std::size_t tries = 0;
  std::size_t total = 0;
  std::vector<std::string> lines;

 private:
  karvex::foundation::Clock& clock_;
};

class OutletTest : public testing::Test {
 protected:
  void send(const Bytes& bytes, Duration at = Duration::zero()) {
    MIDIPacketList list(MIDIPacketList::headerSize + MIDIPacketList::packetHeaderSize + bytes.size());
    ASSERT_TRUE(list.add(static_cast<std::uint64_t>(at.count()), bytes));
    queue_->post([outlet = outlet_, list] { outlet->send(list); });
    pass(0ms);
  }
  void pass(Duration span) { runtime_.clock().sleepFor(span + 1ns); }
  std::vector<std::string> lines() { return std::exchange(sink_->lines, {}); }

  karvex::foundation::VirtualRuntime runtime_;
  std::shared_ptr<FakeSink> sink_ = std::make_shared<FakeSink>(runtime_.clock());
  std::shared_ptr<OutputGate> gate_ = std::make_shared<OutputGate>();
  std::shared_ptr<karvex::foundation::SerialQueue> queue_ =
      std::make_shared<karvex::foundation::SerialQueue>(runtime_.globalQueue());
  std::optional<PortAddress> place_ = PortAddress{20, 0};
  std::optional<std::int64_t> rate_;
  std::shared_ptr<Outlet> outlet_ = std::make_shared<Outlet>(
      OutletContext{runtime_, sink_, gate_}, queue_,
      Outlet::Route{.place = [this] { return place_; }, .sysExRate = [this] { return rate_; }});
};

TEST_F(OutletTest, PacketsGoOutInTheOrderOfTheirTime) {
  send({0xF8}, 300ms);
  send({0xFA});
  send({0xFC}, 150ms);
  pass(100ms);
  EXPECT_FALSE(sink_->held.expired());
  send({0xFB});
  pass(1s);
  EXPECT_THAT(lines(), ElementsAre("0 FA", "150k FC", "100 FB", "300k F8"));
  EXPECT_FALSE(sink_->held.expired());
  pass(1s);
  EXPECT_TRUE(sink_->held.expired()) << "the kernel's queue runs on for a second";

  sink_->hasQueues = false;
  send({0xF8}, 2500ms);
  pass(1s);
  EXPECT_THAT(lines(), ElementsAre("2500 F8")) << "without one the timer does it";
}

TEST_F(OutletTest, WhatHasNoRoomWaitsAndIsTriedLessAndLessOften) {
  sink_->room = 0;
  send({0x90, 1, 1});
  send({0x90, 2, 1});
  pass(10s);
  EXPECT_LT(sink_->tries, 120U);
  EXPECT_GT(sink_->tries, 40U);
  sink_->room = 10;
  pass(251ms);
  EXPECT_THAT(lines(), SizeIs(2));
  sink_->room = 0;
  send({0x90, 3, 1});
  sink_->room = 2;
  send({0x90, 4, 1});
  pass(3ms);
  EXPECT_THAT(lines(), ElementsAre(EndsWith("03 01"), EndsWith("04 01"))) << "and with short pauses again";
}

TEST_F(OutletTest, AFullBacklogLeavesOutWholeMessagesAndSaysSoOnce) {
  std::vector<std::string> said;
  karvex::foundation::log::redirectDebug([&](std::string_view line) { said.emplace_back(line); });
  Bytes dump(Outlet::longestMessage / 2, 1);
  dump.front() = 0xF0;
  dump.back() = 0xF7;
  sink_->room = 0;
  for (int count = 0; count < 10; ++count) {
    const auto half = dump.begin() + static_cast<std::ptrdiff_t>(dump.size() / 2);
    send({dump.begin(), half});
    send({half, dump.end()});
    send({0x90, 1, 1});
  }
  sink_->room = 1'000'000;
  pass(1s);
  karvex::foundation::log::redirectDebug(nullptr);
  EXPECT_THAT(said, ElementsAre("MIDI output is dropped: the other side doesn't read"));
  const auto dumps = sink_->total / dump.size();
  const auto notes = (sink_->total % dump.size()) / 3;
  EXPECT_EQ(sink_->total, dumps * dump.size() + notes * 3) << "nothing is cut";
  EXPECT_GE(dumps, 3U);
  EXPECT_LE(sink_->total, Outlet::backlogLimit + Outlet::longestMessage);
}

TEST_F(OutletTest, WhatWaitsForOneThatLeftReachesNobody) {
  const struct {
    const char* description;
    std::optional<PortAddress> after;  ///< where the destination is then
    bool isSomeoneElseThere;           ///< at the same address, so without a connection
  } table[] = {
      {"it is nowhere", std::nullopt, false},
      {"it is elsewhere", PortAddress{21, 0}, false},
      {"another has its address", PortAddress{20, 0}, true},
  };
  for (const auto& row : table) {
    place_ = PortAddress{20, 0};
    sink_->room = 0;
    send({0x90, 1, 1});
    Bytes start(300, 1);
    start.front() = 0xF0;
    send(start);
    place_ = row.after;
    sink_->connected = row.isSomeoneElseThere ? std::nullopt : sink_->connected;
    sink_->room = 100;
    pass(1s);
    send({5, 6, 0xF7});
    EXPECT_THAT(lines(), IsEmpty()) << row.description;
    place_ = place_.value_or(PortAddress{20, 0});
    send({0x90, 2, 2});
    EXPECT_THAT(lines(), SizeIs(1)) << row.description << ": what comes then is for whoever is there";
  }
}

TEST_F(OutletTest, DriversGetLongMessagesAtTheirRate) {
  rate_ = 1000;
  Bytes dump(5 * 1024, 1);
  dump.front() = 0xF0;
  dump.back() = 0xF7;
  send(dump);
  EXPECT_EQ(sink_->total, 2048U) << "as much as its buffer has room for";
  pass(1s);
  EXPECT_NEAR(static_cast<double>(sink_->total), 3048, 256);
  gate_->close();
  pass(10s);
  EXPECT_LT(sink_->total, dump.size()) << "nothing goes out once the gate is closed";
}

}  // namespace
}  // namespace midikit::io::alsa
