#include <chrono>
#include <deque>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/kernel/KernelFixture.hpp"

namespace midikit::io {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;
using Room = SequencerPeer::Room;

/// How lists reach other programs that don't read as fast as this one sends.
class AlsaDeliveryTest : public KernelFixture {
 protected:
  /// `count` notes, each of them a list of its own, and their bytes.
  template <typename Send>
  static Bytes play(int count, const Send& send) {
    Bytes all;
    for (int note = 0; note < count; ++note) {
      const Bytes bytes = {0x90, static_cast<std::uint8_t>(note & 0x7F),
                           static_cast<std::uint8_t>(note / 128 + 1)};
      EXPECT_EQ(send(packet(bytes)), noErr);
      all.insert(all.end(), bytes.begin(), bytes.end());
    }
    return all;
  }
  Bytes playTo(Ref destination, int count) {
    return play(count, [&, port = outputPort()](const MIDIPacketList& list) {
      return service_->MIDISend(port, destination, list);
    });
  }
};

std::string contentOf(const char* file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

bool hasKernelQueue() {
  return contentOf("/proc/asound/seq/queues").find("MIDIKitIO") != std::string::npos;
}

/// The local timer interrupts of all processors within a second.
long timerInterrupts() {
  const auto count = [] {
    const auto text = contentOf("/proc/interrupts");
    std::istringstream numbers(text.substr(text.find("LOC:") + 4));
    long sum = 0;
    for (long number = 0; numbers >> number;) {
      sum += number;
    }
    return sum;
  };
  const long before = count();
  std::this_thread::sleep_for(1s);
  return count() - before;
}

TEST_F(AlsaDeliveryTest, TheKernelsQueueRunsOnlyWhileSomethingIsScheduled) {
  EXPECT_FALSE(hasKernelQueue());
  const long idle = timerInterrupts();
  SequencerPeer peer("Clock");
  peer.addDestination("clock in");
  ASSERT_TRUE(comesTrue([&] { return destination("clock in") != 0; }));
  const auto later = service_->machAbsoluteTime() + 200'000'000U;
  ASSERT_EQ(service_->MIDISend(outputPort(), destination("clock in"), packet({0xFA}, later)), noErr);
  EXPECT_TRUE(comesTrue([] { return hasKernelQueue(); }));
  const long busy = timerInterrupts();
  EXPECT_TRUE(comesTrue([] { return !hasKernelQueue(); }));
  EXPECT_LT(idle, busy / 2) << "timer interrupts a second";
  RecordProperty("idle", static_cast<int>(idle));
  std::cout << "timer interrupts a second: idle " << idle << ", with a queue " << busy << '\n';
}

TEST_F(AlsaDeliveryTest, AListenerThatDoesNotReadDelaysNobodyElse) {
  SequencerPeer stuck("Stuck", Room::usual);
  SequencerPeer quick("Quick");
  Ref ours = 0;
  ASSERT_EQ(service_->MIDISourceCreate(client_, "our source", ours), noErr);
  stuck.connectFrom(stuck.addDestination("stuck in"), *stuck.find("our source"));
  quick.connectFrom(quick.addDestination("quick in"), *quick.find("our source"));
  const auto begin = std::chrono::steady_clock::now();
  const auto notes =
      play(1000, [&](const MIDIPacketList& list) { return service_->MIDIReceived(ours, list); });
  EXPECT_EQ(quick.read(notes.size()), notes);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 3s);
  EXPECT_EQ(stuck.read(notes.size()), notes) << "what waited comes when it is read";
}

TEST_F(AlsaDeliveryTest, DestinationsThatDoNotReadDelayNobodyElse) {
  SequencerPeer quick("Quick");
  quick.addDestination("quick in");
  std::deque<SequencerPeer> stuck;  // More than there are threads.
  for (int count = 0; count < 12; ++count) {
    stuck.emplace_back("Stuck", Room::usual).addDestination("stuck " + std::to_string(count));
  }
  ASSERT_TRUE(comesTrue([&] { return destination("quick in") && destination("stuck 11"); }));
  Bytes notes;
  for (int count = 0; count < 12; ++count) {
    notes = playTo(destination("stuck " + std::to_string(count)), 250);
  }
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(quick.read(playTo(destination("quick in"), 250).size()), notes);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
  EXPECT_EQ(stuck.back().read(notes.size()), notes);
}

TEST_F(AlsaDeliveryTest, NothingIsLostToAProgramThatReadsLate) {
  SequencerPeer late("Late", Room::usual);
  late.addDestination("late in");
  ASSERT_TRUE(comesTrue([&] { return destination("late in") != 0; }));
  const auto notes = playTo(destination("late in"), 1000);
  std::this_thread::sleep_for(300ms);
  EXPECT_EQ(late.read(notes.size()), notes);
}

TEST_F(AlsaDeliveryTest, TheRestOfADumpDoesNotReachWhoeverTakesOverTheAddress) {
  for (const char* successor : {"Leaver", "Stranger"}) {
    auto leaver = std::make_optional<SequencerPeer>("Leaver", Room::usual);
    leaver->addDestination("leaver in");
    ASSERT_TRUE(comesTrue([&] { return destination("leaver in") != 0; }));
    const int number = leaver->client();
    ASSERT_EQ(service_->MIDISend(outputPort(), destination("leaver in"), packet(sysExOf(65536))), noErr);
    EXPECT_FALSE(leaver->read(100).empty());
    leaver.reset();
    SequencerPeer next(successor);
    next.addDestination("leaver in");
    ASSERT_EQ(next.client(), number) << "the kernel gives the lowest that is free";
    EXPECT_THAT(next.read(1), IsEmpty()) << successor;
    next.removePort(0);
    ASSERT_TRUE(comesTrue([&] { return destination("leaver in") == 0; }));
  }
}

}  // namespace
}  // namespace midikit::io
