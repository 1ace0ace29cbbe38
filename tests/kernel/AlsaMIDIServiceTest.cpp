#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/kernel/KernelFixture.hpp"

namespace midikit::io {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using Bytes = std::vector<std::uint8_t>;

using AlsaMIDIServiceTest = KernelFixture;

std::size_t openDescriptors() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    ++count;
  }
  return count;
}

TEST_F(AlsaMIDIServiceTest, CardsAreDevicesAndTheThroughPortIsNone) {
  const Ref card = device(kMIDIPropertyName, "Virtual Raw MIDI 0-0");
  ASSERT_NE(card, 0U);
  ASSERT_EQ(service_->MIDIDeviceGetNumberOfEntities(card), 1U);
  const Ref entity = service_->MIDIDeviceGetEntity(card, 0);
  ASSERT_EQ(service_->MIDIEntityGetNumberOfSources(entity), 1U);
  ASSERT_EQ(service_->MIDIEntityGetNumberOfDestinations(entity), 1U);
  EXPECT_TRUE(hasEntity(service_->MIDIEntityGetSource(entity, 0)));
  EXPECT_EQ(number(card, kMIDIPropertyOffline), 0);
  EXPECT_EQ(number(entity, kMIDIPropertyMaxSysExSpeed), 3125);

  const Ref through = destination("Midi Through Port-0");
  ASSERT_NE(through, 0U);
  EXPECT_FALSE(hasEntity(through));
  for (const char* hidden : {"Timer", "Announce", "listener", "speaker"}) {
    EXPECT_EQ(source(hidden), 0U) << hidden;
    EXPECT_EQ(destination(hidden), 0U) << hidden;
  }
}

TEST_F(AlsaMIDIServiceTest, ProgramsComeAndGo) {
  {
    SequencerPeer peer("Other Program");
    peer.addSource("their source");
    peer.addDestination("their destination");
    peer.addPort("their secret", SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_WRITE);
    ASSERT_TRUE(comesTrue([&] { return source("their source") && destination("their destination"); }));
    EXPECT_TRUE(comesTrue([&] { return told(2) == 2 && told(1) >= 1; }));
    EXPECT_FALSE(hasEntity(source("their source")));
    EXPECT_EQ(text(source("their source"), kMIDIPropertyDisplayName), "Other Program their source");
    EXPECT_EQ(source("their secret"), 0U);
    EXPECT_EQ(destination("their source"), 0U);
  }
  EXPECT_TRUE(comesTrue([&] { return source("their source") == 0; }));
  EXPECT_TRUE(comesTrue([&] { return told(3) == 2 && told(1) >= 2; }));
}

TEST_F(AlsaMIDIServiceTest, NotesGoBothWays) {
  SequencerPeer peer("Player");
  const int out = peer.addSource("player out");
  peer.addDestination("player in");
  ASSERT_TRUE(comesTrue([&] { return source("player out") && destination("player in"); }));
  const Ref input = inputPort();
  ASSERT_EQ(service_->MIDIPortConnectSource(input, source("player out"), nullptr), noErr);
  peer.sendNote(out, 60);
  EXPECT_TRUE(comesTrue([&] { return received() == Bytes{0x90, 60, 100}; }));
  ASSERT_EQ(service_->MIDIPortDisconnectSource(input, source("player out")), noErr);
  peer.sendNote(out, 61);

  ASSERT_EQ(service_->MIDISend(outputPort(), destination("player in"), packet({0x91, 64, 1, 0xF8, 0xC1, 5})),
            noErr);
  EXPECT_THAT(peer.read(6), ElementsAre(0x91, 64, 1, 0xF8, 0xC1, 5));
  EXPECT_EQ(received().size(), 3U) << "nothing more once the source is disconnected";
}

TEST_F(AlsaMIDIServiceTest, LongSystemExclusiveMessagesGoBothWaysWhole) {
  SequencerPeer peer("Sampler");
  const int out = peer.addSource("sampler out");
  peer.addDestination("sampler in");
  ASSERT_TRUE(comesTrue([&] { return source("sampler out") && destination("sampler in"); }));
  const auto dump = sysExOf(65536);
  ASSERT_EQ(service_->MIDIPortConnectSource(inputPort(), source("sampler out"), nullptr), noErr);
  peer.sendSysEx(out, dump);
  EXPECT_TRUE(comesTrue([&] { return received().size() == dump.size(); })) << received().size();
  EXPECT_TRUE(received() == dump);

  ASSERT_EQ(service_->MIDISend(outputPort(), destination("sampler in"), packet(dump)), noErr);
  EXPECT_TRUE(peer.read(dump.size()) == dump);
}

TEST_F(AlsaMIDIServiceTest, EventListsAreConverted) {
  SequencerPeer peer("Organ");
  const int out = peer.addSource("organ out");
  peer.addDestination("organ in");
  ASSERT_TRUE(comesTrue([&] { return source("organ out") && destination("organ in"); }));
  Record<std::uint32_t> words;
  Ref input = 0;
  ASSERT_EQ(service_->MIDIInputPortCreateWithProtocol(client_, "in", MIDIProtocolID::midi2_0, input,
                                                      [&](const MIDIEventList& list, ConnectionToken) {
                                                        words.add(list.packets.at(0).words.at(0));
                                                      }),
            noErr);
  ASSERT_EQ(service_->MIDIPortConnectSource(input, source("organ out"), nullptr), noErr);
  peer.sendNote(out, 60);
  EXPECT_TRUE(comesTrue([&] { return words.all() == std::vector<std::uint32_t>{0x40903C00}; }));

  MIDIEventList list{.protocol = MIDIProtocolID::midi1_0};
  list.packets.push_back({.wordCount = 1});
  list.packets.front().words.front() = 0x20903E7F;
  ASSERT_EQ(service_->MIDISendEventList(outputPort(), destination("organ in"), list), noErr);
  EXPECT_THAT(peer.read(3), ElementsAre(0x90, 0x3E, 0x7F));
  ASSERT_EQ(service_->MIDIPortDispose(input), noErr);  // Before what its block writes to.
}

TEST_F(AlsaMIDIServiceTest, APacketWaitsForItsTimeStamp) {
  SequencerPeer peer("Clock");
  peer.addDestination("clock in");
  ASSERT_TRUE(comesTrue([&] { return destination("clock in") != 0; }));
  const auto begin = std::chrono::steady_clock::now();
  const auto later = service_->machAbsoluteTime() + 300'000'000U;
  const Ref output = outputPort();
  ASSERT_EQ(service_->MIDISend(output, destination("clock in"), packet({0xFA}, later)), noErr);
  ASSERT_EQ(service_->MIDISend(output, destination("clock in"), packet({0xFC})), noErr);
  EXPECT_THAT(peer.read(2), ElementsAre(0xFC, 0xFA));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 290ms);
}

TEST_F(AlsaMIDIServiceTest, OtherProgramsUseVirtualEndpoints) {
  Ref ours = 0;
  Ref theirs = 0;
  ASSERT_EQ(service_->MIDISourceCreate(client_, "our source", ours), noErr);
  ASSERT_EQ(service_->MIDIDestinationCreateWithBlock(client_, "our destination", theirs, reader()), noErr);
  SequencerPeer peer("Listener");
  const int in = peer.addDestination("listener in");
  const int out = peer.addSource("listener out");
  ASSERT_TRUE(peer.find("our source").has_value());
  ASSERT_TRUE(peer.find("our destination").has_value());
  peer.connectFrom(in, *peer.find("our source"));
  ASSERT_EQ(service_->MIDIReceived(ours, packet({0x92, 1, 2})), noErr);
  EXPECT_THAT(peer.read(3), ElementsAre(0x92, 1, 2));
  peer.sendNoteTo(out, *peer.find("our destination"), 72);
  EXPECT_TRUE(comesTrue([&] { return received() == Bytes{0x90, 72, 100}; }));

  ASSERT_EQ(service_->MIDIObjectSetStringProperty(ours, kMIDIPropertyName, "another name"), noErr);
  EXPECT_TRUE(peer.find("another name").has_value());

  EXPECT_EQ(service_->MIDIEndpointDispose(ours), noErr);
  EXPECT_EQ(service_->MIDIEndpointDispose(theirs), noErr);
  EXPECT_FALSE(peer.find("another name").has_value());
  EXPECT_FALSE(peer.find("our destination").has_value());
  ASSERT_TRUE(comesTrue([&] { return source("listener out") != 0; }));
  EXPECT_NE(service_->MIDIEndpointDispose(source("listener out")), noErr) << "another program's";
  EXPECT_NE(service_->MIDIReceived(source("listener out"), packet({0xF8})), noErr);
}

TEST_F(AlsaMIDIServiceTest, ThruConnectionsFilterAndOutliveTheService) {
  SequencerPeer peer("Thru");
  const int out = peer.addSource("thru out");
  peer.addDestination("thru in");
  ASSERT_TRUE(comesTrue([&] { return source("thru out") && destination("thru in"); }));
  MIDIThruConnectionParams parameters;
  service_->MIDIThruConnectionParamsInitialize(parameters);
  parameters.numSources = 1;
  parameters.sources.front() = {source("thru out"), 0};
  parameters.numDestinations = 1;
  parameters.destinations.front() = {destination("thru in"), 0};
  parameters.filterOutSysEx = 1;
  std::array<std::uint8_t, sizeof(parameters)> bytes{};
  std::memcpy(bytes.data(), &parameters, bytes.size());
  Ref connection = 0;
  ASSERT_EQ(service_->MIDIThruConnectionCreate("org.example.thru", bytes, connection), noErr);
  for (int life = 0; life < 2; ++life) {
    peer.sendSysEx(out, sysExOf(300));
    peer.sendNote(out, 50);
    EXPECT_THAT(peer.read(3), ElementsAre(0x90, 50, 100)) << life;
    service_.reset();
    service_ = makeService();  // Finds the connection in its file, and the endpoints by their unique IDs.
  }
  std::vector<std::uint8_t> references;
  ASSERT_EQ(service_->MIDIThruConnectionFind("org.example.thru", references), noErr);
  ASSERT_EQ(references.size(), sizeof(Ref));
  std::memcpy(&connection, references.data(), sizeof(Ref));
  ASSERT_EQ(service_->MIDIThruConnectionDispose(connection), noErr);
  peer.sendNote(out, 51);
  EXPECT_THAT(peer.read(3), ElementsAre());
}

TEST_F(AlsaMIDIServiceTest, NoBlockRunsOnceItsPortIsDisposed) {
  SequencerPeer peer("Flood");
  const int out = peer.addSource("flood out");
  ASSERT_TRUE(comesTrue([&] { return source("flood out") != 0; }));
  for (int round = 0; round < 20; ++round) {
    auto count = std::make_unique<std::atomic<int>>(0);
    Ref port = 0;
    ASSERT_EQ(service_->MIDIInputPortCreateWithBlock(
                  client_, "in", port,
                  [counter = count.get()](const MIDIPacketList&, ConnectionToken) { ++*counter; }),
              noErr);
    ASSERT_EQ(service_->MIDIPortConnectSource(port, source("flood out"), nullptr), noErr);
    std::jthread flood([&](const std::stop_token& stop) {
      while (!stop.stop_requested()) {
        peer.sendNote(out, 1);
      }
    });
    EXPECT_TRUE(comesTrue([&] { return *count > 5; }));
    ASSERT_EQ(service_->MIDIPortDispose(port), noErr);
    const int atDispose = *count;
    std::this_thread::sleep_for(2ms);
    EXPECT_EQ(*count, atDispose);
    count.reset();  // A block that still ran would be caught by the address sanitizer, too.
  }
}

TEST_F(AlsaMIDIServiceTest, LeavesNoDescriptorBehind) {
  makeService().reset();
  const auto before = openDescriptors();
  for (int round = 0; round < 10; ++round) {
    makeService().reset();
  }
  EXPECT_TRUE(comesTrue([&] { return openDescriptors() <= before; }))
      << openDescriptors() << ", not " << before;
}

}  // namespace
}  // namespace midikit::io
