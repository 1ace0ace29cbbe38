#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/Log.hpp"
#include "tests/kernel/KernelFixture.hpp"

namespace midikit::io {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

constexpr const char* owner = "org.example.thru";

/// The layer among other programs that use it too, or the sequencer in ways of their own.
class AlsaDesktopTest : public KernelFixture {
 protected:
  Ref makeThru(bool isFiltered) {
    MIDIThruConnectionParams parameters;
    service_->MIDIThruConnectionParamsInitialize(parameters);
    parameters.numSources = parameters.numDestinations = 1;
    parameters.sources.front() = {source("thru out"), 0};
    parameters.destinations.front() = {destination("thru in"), 0};
    parameters.filterOutBeatClock = isFiltered ? 1 : 0;
    std::array<std::uint8_t, sizeof(parameters)> bytes{};
    std::memcpy(bytes.data(), &parameters, bytes.size());
    Ref connection = 0;
    EXPECT_EQ(service_->MIDIThruConnectionCreate(owner, bytes, connection), noErr);
    return connection;
  }
  static std::vector<Ref> thrusOf(MIDIService& service) {
    Bytes bytes;
    EXPECT_EQ(service.MIDIThruConnectionFind(owner, bytes), noErr);
    std::vector<Ref> refs(bytes.size() / sizeof(Ref));
    if (!refs.empty()) {
      std::memcpy(refs.data(), bytes.data(), bytes.size());
    }
    return refs;
  }
};

TEST_F(AlsaDesktopTest, AThruConnectionForwardsOnceHoweverManyProgramsThereAre) {
  for (const bool isFiltered : {true, false}) {
    SCOPED_TRACE(isFiltered ? "with a filter" : "plain");
    ASSERT_TRUE(comesTrue([&] { return source("thru out") == 0; })) << "left by the one before";
    SequencerPeer peer("Thru");
    const int out = peer.addSource("thru out");
    peer.addDestination("thru in");
    ASSERT_TRUE(comesTrue([&] { return source("thru out") && destination("thru in"); }));
    auto other = makeService();
    makeThru(isFiltered);
    ASSERT_TRUE(comesTrue([&] { return thrusOf(*other).size() == 1; })) << "the other program sees it";
    peer.sendNote(out, 50);
    EXPECT_THAT(peer.read(6), ElementsAre(0x90, 50, 100));

    service_.reset();  // The one that forwards.
    EXPECT_TRUE(comesTrue([&] {
      peer.sendNote(out, 51);
      return peer.read(3).size() == 3;
    })) << "the other one takes over";
    service_ = makeService();
    peer.sendNote(out, 52);
    EXPECT_THAT(peer.read(6), ElementsAre(0x90, 52, 100));

    service_.reset();
    other.reset();
    peer.sendNote(out, 53);
    EXPECT_EQ(peer.read(3).size(), isFiltered ? 0U : 3U) << "only the kernel needs no program";

    service_ = makeService();
    other = makeService();
    ASSERT_EQ(thrusOf(*other).size(), 1U);
    ASSERT_EQ(other->MIDIThruConnectionDispose(thrusOf(*other).front()), noErr);
    ASSERT_TRUE(comesTrue([&] { return thrusOf(*service_).empty(); }));
    peer.sendNote(out, 54);
    EXPECT_THAT(peer.read(3), IsEmpty()) << "whoever disposes of it";
    service_.reset();
    service_ = makeService();
    ASSERT_EQ(service_->MIDIClientCreateWithBlock("Kernel Test", client_, nullptr), noErr);
  }
}

TEST_F(AlsaDesktopTest, APrivateEndpointIsThisProgramsAlone) {
  Ref ours = 0;
  ASSERT_EQ(service_->MIDISourceCreate(client_, "our source", ours), noErr);
  SequencerPeer peer("Listener");
  const int in = peer.addDestination("listener in");
  const auto place = peer.find("our source");
  ASSERT_TRUE(place.has_value());
  peer.connectFrom(in, *place);

  ASSERT_EQ(service_->MIDIObjectSetIntegerProperty(ours, kMIDIPropertyPrivate, 1), noErr);
  EXPECT_FALSE(peer.find("our source").has_value());
  EXPECT_ANY_THROW(peer.connectFrom(in, *place));
  EXPECT_EQ(service_->MIDIReceived(ours, packet({0x90, 1, 1})), noErr);
  EXPECT_THAT(peer.read(3), IsEmpty());

  ASSERT_EQ(service_->MIDIObjectSetIntegerProperty(ours, kMIDIPropertyPrivate, 0), noErr);
  ASSERT_TRUE(peer.find("our source").has_value());
  peer.connectFrom(in, *peer.find("our source"));
  EXPECT_EQ(service_->MIDIReceived(ours, packet({0x90, 2, 2})), noErr);
  EXPECT_THAT(peer.read(3), ElementsAre(0x90, 2, 2));
}

TEST_F(AlsaDesktopTest, ABridgesPortIsAPortLikeOthers) {
  SequencerPeer bridge("Bridge");
  const int port =
      bridge.addPort("bridge", SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ | SND_SEQ_PORT_CAP_WRITE |
                                   SND_SEQ_PORT_CAP_SUBS_WRITE | SND_SEQ_PORT_CAP_NO_EXPORT);
  ASSERT_TRUE(comesTrue([&] { return source("bridge") && destination("bridge"); }));
  ASSERT_EQ(service_->MIDIPortConnectSource(inputPort(), source("bridge"), nullptr), noErr);
  bridge.sendNote(port, 60);
  EXPECT_TRUE(comesTrue([&] { return received() == Bytes{0x90, 60, 100}; }));
  ASSERT_EQ(service_->MIDISend(outputPort(), destination("bridge"), packet({0x91, 1, 2})), noErr);
  EXPECT_THAT(bridge.read(3), ElementsAre(0x91, 1, 2));
}

TEST_F(AlsaDesktopTest, WhatIsSentToAThroughPortDoesNotComeBack) {
  constexpr const char* through = "Midi Through Port-0";
  SequencerPeer peer("Listener");
  const int in = peer.addDestination("listener in");
  const int out = peer.addSource("listener out");
  ASSERT_TRUE(peer.find(through).has_value());
  peer.connectFrom(in, *peer.find(through));
  const Ref input = inputPort();
  const Ref output = outputPort();
  ASSERT_EQ(service_->MIDIPortConnectSource(input, source(through), nullptr), noErr);
  ASSERT_EQ(service_->MIDISend(output, destination(through), packet({0x90, 1, 1})), noErr);
  peer.sendNoteTo(out, *peer.find(through), 2);
  EXPECT_TRUE(comesTrue([&] { return received() == Bytes{0x90, 2, 100}; })) << "others are heard";
  ASSERT_EQ(service_->MIDIPortDisconnectSource(input, source(through)), noErr);
  ASSERT_TRUE(comesTrue([&] {
    EXPECT_EQ(service_->MIDISend(output, destination(through), packet({0x90, 3, 3})), noErr);
    const auto bytes = peer.read(3);
    return !bytes.empty() && bytes.back() == 3;
  })) << "and hear this program, while it doesn't listen there";
  EXPECT_EQ(received().size(), 3U);
}

/// A way to keep this program from the sequencer, and what the log says then.
struct Obstacle {
  const char* description;
  const char* said;
  void (*raise)();
  void (*remove)();
};

TEST_F(AlsaDesktopTest, ASequencerIsTakenUpWhenItMayBeUsed) {
  constexpr uid_t nobody = 65534;
  static const fs::path node = "/dev/snd/seq";
  static const fs::path elsewhere = "/dev/snd-seq-away";
  const Obstacle table[] = {
      {"absent", "It is taken up when the kernel has one.", [] { fs::rename(node, elsewhere); },
       [] { fs::rename(elsewhere, node); }},
      {"forbidden", "It is taken up when this user may use it.",
       [] {
         fs::permissions(node, fs::perms::owner_all);
         ASSERT_EQ(::seteuid(nobody), 0);
       },
       [] {
         ASSERT_EQ(::seteuid(0), 0);
         fs::permissions(node, fs::perms::all);
       }},
  };
  if (::geteuid() != 0) {
    GTEST_SKIP() << "Only root can take the sequencer away.";
  }
  for (const auto& row : table) {
    SCOPED_TRACE(row.description);
    service_.reset();
    Record<std::string> said;
    karvex::foundation::log::redirectDebug([&](std::string_view line) { said.add(std::string(line)); });
    row.raise();
    service_ = makeService();
    EXPECT_EQ(service_->MIDIClientCreateWithBlock("Late Program", client_, nullptr), noErr);
    Ref ours = 0;
    EXPECT_EQ(service_->MIDISourceCreate(client_, "our source", ours), noErr);
    EXPECT_EQ(service_->MIDIGetNumberOfDevices(), 0U);
    row.remove();
    EXPECT_TRUE(comesTrue([&] { return device(kMIDIPropertyName, "Virtual Raw MIDI 0-0") != 0; }));
    karvex::foundation::log::redirectDebug(nullptr);
    EXPECT_THAT(said.all(), ElementsAre(HasSubstr(row.said)));
    SequencerPeer peer("Listener");
    ASSERT_TRUE(comesTrue([&] { return peer.find("our source").has_value(); }));
    peer.connectFrom(peer.addDestination("in"), *peer.find("our source"));
    EXPECT_EQ(service_->MIDIReceived(ours, packet({0x90, 2, 2})), noErr);
    EXPECT_THAT(peer.read(3), ElementsAre(0x90, 2, 2));
  }
}

}  // namespace
}  // namespace midikit::io
