#include <cstring>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "tests/MIDIKitIO/platform/engine/MIDIServiceFixture.hpp"

namespace midikit::io::engine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Parameters = MIDIThruConnectionParams;

class ThruConnectionsTest : public MIDIServiceFixture {
 protected:
  ThruConnectionsTest() { connectEquipment(service); }

  void connectEquipment(karvex::rig::VirtualMidiService& to) {
    to.addDevice(
        {.name = "Keys", .entities = {{.sources = {{"A", {{"uniqueID", 1}}}, {"B", {{"uniqueID", 2}}}}}}});
    const auto desk =
        to.addDevice({.name = "Desk", .entities = {{.destinations = {{"D", {{"uniqueID", 3}}}}}}});
    const auto place = to.MIDIEntityGetDestination(to.MIDIDeviceGetEntity(desk, 0), 0);
    ASSERT_EQ(to.readAsEquipment(place, byteReader("desk")), noErr);
  }

  /// From the first source to the first destination.
  Parameters parameters() const {
    Parameters made;
    service.MIDIThruConnectionParamsInitialize(made);
    made.numSources = made.numDestinations = 1;
    made.sources[0] = {source(), 0};
    made.destinations[0] = {destination(), 0};
    return made;
  }
  static std::vector<std::uint8_t> bytesOf(const Parameters& parameters) {
    std::vector<std::uint8_t> bytes(sizeof(parameters));
    std::memcpy(bytes.data(), &parameters, bytes.size());
    return bytes;
  }
  Ref connect(const Parameters& wanted, const std::optional<std::string>& owner = std::nullopt) {
    Ref connection = 0;
    EXPECT_EQ(service.MIDIThruConnectionCreate(owner, bytesOf(wanted), connection), noErr);
    return connection;
  }
  static std::vector<Ref> owned(const karvex::rig::VirtualMidiService& by, const std::string& owner) {
    std::vector<std::uint8_t> bytes = {1, 2, 3};
    EXPECT_EQ(by.MIDIThruConnectionFind(owner, bytes), noErr);
    std::vector<Ref> refs(bytes.size() / sizeof(Ref));
    EXPECT_EQ(bytes.size() % sizeof(Ref), 0U);
    if (!refs.empty()) {
      std::memcpy(refs.data(), bytes.data(), bytes.size());
    }
    return refs;
  }
};

TEST_F(ThruConnectionsTest, WhatComesFromASourceGoesToTheDestinationUntilTheConnectionIsDisposedOf) {
  reported();
  const Ref connection = connect(parameters());
  static_cast<void>(service.sendFromEquipment(source(0), packet({0x90, 0x3C, 0x40})));
  static_cast<void>(service.sendFromEquipment(source(1), packet({0xFE})));
  EXPECT_THAT(read(), ElementsAre("desk 0: 90 3C 40"));
  EXPECT_EQ(service.MIDIThruConnectionDispose(connection), noErr);
  EXPECT_EQ(service.MIDIThruConnectionDispose(connection), statusOf(MIDIOSStatus::objectNotFound));
  static_cast<void>(service.sendFromEquipment(source(0), packet({0x90, 0x3C, 0x40})));
  EXPECT_THAT(read(), IsEmpty());
  EXPECT_THAT(reported(), ElementsAre("5", "5"));
}

TEST_F(ThruConnectionsTest, EachFilterHoldsItsOwnMessagesBack) {
  const std::vector<std::uint8_t> everything = {0x90, 0x3C, 0x40, 0xB0, 0x07, 0x01, 0xF1, 0x02, 0xF6,
                                                0xF8, 0xFA, 0xFB, 0xFC, 0xFE, 0xF0, 0x41, 0xF7};
  const struct {
    const char* what;
    std::uint8_t Parameters::* filter;
    const char* left;
  } cases[] = {
      {"system exclusive", &Parameters::filterOutSysEx,
       "desk 0: 90 3C 40; 0: B0 07 01; 0: F1 02; 0: F6; 0: F8; 0: FA; 0: FB; 0: FC; 0: FE"},
      {"time code", &Parameters::filterOutMTC,
       "desk 0: 90 3C 40; 0: B0 07 01; 0: F6; 0: F8; 0: FA; 0: FB; 0: FC; 0: FE; 0: F0 41 F7"},
      {"clock", &Parameters::filterOutBeatClock,
       "desk 0: 90 3C 40; 0: B0 07 01; 0: F1 02; 0: F6; 0: FE; 0: F0 41 F7"},
      {"tune request", &Parameters::filterOutTuneRequest,
       "desk 0: 90 3C 40; 0: B0 07 01; 0: F1 02; 0: F8; 0: FA; 0: FB; 0: FC; 0: FE; 0: F0 41 F7"},
      {"controls", &Parameters::filterOutAllControls,
       "desk 0: 90 3C 40; 0: F1 02; 0: F6; 0: F8; 0: FA; 0: FB; 0: FC; 0: FE; 0: F0 41 F7"},
  };
  for (const auto& testCase : cases) {
    auto wanted = parameters();
    wanted.*testCase.filter = 1;
    const Ref connection = connect(wanted);
    static_cast<void>(service.sendFromEquipment(source(), packet(everything)));
    EXPECT_THAT(read(), ElementsAre(testCase.left)) << testCase.what;
    static_cast<void>(service.MIDIThruConnectionDispose(connection));
  }
}

TEST_F(ThruConnectionsTest, FiltersSeeMessagesThatComeInPiecesAndInWords) {
  auto wanted = parameters();
  wanted.filterOutAllControls = 1;
  connect(wanted);
  static_cast<void>(service.sendFromEquipment(source(), packet({0xF0, 0x01})));
  static_cast<void>(service.sendFromEquipment(source(), packet({0x02, 0xF7, 0xB0, 0x01, 0x02})));
  static_cast<void>(service.sendFromEquipment(
      source(),
      events(
          MIDIProtocolID::midi2_0,
          {{0x40B00700, 1}, {0x40200001, 2}, {0x40300001, 2}, {0x40500001, 2}, {0x40903C00, 0x80000000}})));
  EXPECT_THAT(read(), ElementsAre("desk 0: F0 01 02 F7", "desk 0: 90 3C 40"));
}

TEST_F(ThruConnectionsTest, SeveralEndsMakeAllTheirPairs) {
  auto wanted = parameters();
  Ref second = 0;
  ASSERT_EQ(service.MIDIDestinationCreateWithBlock(client, "V", second, byteReader("virtual")), noErr);
  wanted.numSources = wanted.numDestinations = 2;
  wanted.sources[1] = {source(1), 2};
  wanted.destinations[1] = {second, 0};
  connect(wanted);
  static_cast<void>(service.sendFromEquipment(source(0), packet({0xF8})));
  static_cast<void>(service.sendFromEquipment(source(1), packet({0xFA})));
  EXPECT_THAT(read(),
              testing::UnorderedElementsAre("desk 0: F8", "virtual 0: F8", "desk 0: FA", "virtual 0: FA"));
}

TEST_F(ThruConnectionsTest, WhatMakesNoSenseOrCantBeDoneIsRefused) {
  const auto changed = [this](auto change) {
    auto wanted = parameters();
    change(wanted);
    return bytesOf(wanted);
  };
  auto tooShort = bytesOf(parameters());
  tooShort.pop_back();
  Ref connection = 77;
  for (const auto& bytes :
       {tooShort, std::vector<std::uint8_t>(), changed([](auto& p) { p.numSources = 9; }),
        changed([](auto& p) { p.numMaps = 1; }), changed([](auto& p) { p.channelMap[3] = 4; }),
        changed([](auto& p) { p.velocity.transform = 9; })}) {
    EXPECT_EQ(service.MIDIThruConnectionCreate(std::nullopt, bytes, connection),
              statusOf(MIDIOSStatus::internalError));
  }
  EXPECT_EQ(connection, 77U);
}

TEST_F(ThruConnectionsTest, OnlyConnectionsWithAnOwnerOutliveTheServiceThatMadeThem) {
  const auto second =
      std::make_unique<karvex::rig::VirtualMidiService>(runtime, PlatformVersion{13, 0}, store);
  second->addDevice({});  // So that references differ; the other one has a client.
  second->addDevice({});
  connectEquipment(*second);
  connect(parameters());
  EXPECT_THAT(owned(service, "me"), IsEmpty());
  EXPECT_EQ(second->sendFromEquipment(second->MIDIGetSource(0), packet({0xF8})), noErr);
  EXPECT_THAT(read(), IsEmpty());

  const Ref kept = connect(parameters(), "me");
  const Ref others = connect(parameters(), "you");
  EXPECT_THAT(owned(service, "me"), ElementsAre(kept));
  EXPECT_THAT(owned(*second, "me"), ElementsAre(kept));
  EXPECT_EQ(second->MIDIThruConnectionDispose(others), noErr);
  EXPECT_THAT(owned(service, "you"), IsEmpty());
  EXPECT_EQ(second->sendFromEquipment(second->MIDIGetSource(0), packet({0xF8})), noErr);
  EXPECT_THAT(read(), ElementsAre("desk 0: F8"));

  service.removeDevice(service.MIDIGetDevice(1));
  static_cast<void>(service.sendFromEquipment(source(), packet({0xFA})));
  EXPECT_THAT(read(), IsEmpty());
  const auto again = service.addDevice({.entities = {{.destinations = {{"D", {{"uniqueID", 3}}}}}}});
  ASSERT_NE(again, 0U);
  ASSERT_EQ(service.readAsEquipment(destination(), byteReader("again")), noErr);
  static_cast<void>(service.sendFromEquipment(source(), packet({0xFB})));
  EXPECT_THAT(read(), ElementsAre("again 0: FB")) << "equipment is found again by its unique ID";
}

}  // namespace
}  // namespace midikit::io::engine
