#include <fmt/format.h>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "tests/MIDIKitIO/platform/engine/MIDIServiceFixture.hpp"

namespace midikit::io::engine {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto midi1 = MIDIProtocolID::midi1_0;
constexpr auto midi2 = MIDIProtocolID::midi2_0;

class MIDIDeliveryTest : public MIDIServiceFixture {
 protected:
  MIDIDeliveryTest() {
    service.addDevice(simpleDevice("Desk"));
    service.addDevice(simpleDevice("Other"));
  }
  Ref inputPort(const std::string& name) {
    Ref port = 0;
    EXPECT_EQ(service.MIDIInputPortCreateWithBlock(client, name, port, byteReader(name)), noErr);
    return port;
  }
  Ref outputPort() {
    Ref port = 0;
    EXPECT_EQ(service.MIDIOutputPortCreate(client, "out", port), noErr);
    return port;
  }
  Ref virtualSource() {
    Ref endpoint = 0;
    EXPECT_EQ(service.MIDISourceCreate(client, "Virtual", endpoint), noErr);
    return endpoint;
  }
};

TEST_F(MIDIDeliveryTest, WhatASourceSendsComesWithTheTokenOfItsConnectionInTheFormOfThePort) {
  const Ref bytes = inputPort("bytes");
  Ref words1 = 0;
  Ref words2 = 0;
  ASSERT_EQ(service.MIDIInputPortCreateWithProtocol(client, "1", midi1, words1, wordReader("words1")), noErr);
  ASSERT_EQ(service.MIDIInputPortCreateWithProtocol(client, "2", midi2, words2, wordReader("words2")), noErr);
  EXPECT_EQ(service.MIDIPortConnectSource(bytes, source(0), "first "), noErr);
  EXPECT_EQ(service.MIDIPortConnectSource(bytes, source(1), "second "), noErr);
  EXPECT_EQ(service.MIDIPortConnectSource(words1, source(0), nullptr), noErr);
  EXPECT_EQ(service.MIDIPortConnectSource(words2, source(0), nullptr), noErr);

  EXPECT_EQ(service.sendFromEquipment(source(0), packets({{5, {0x90, 0x3C, 0x40}}})), noErr);
  EXPECT_EQ(service.sendFromEquipment(source(1), events(midi2, {{0x40903C00, 0x80000000}})), noErr);
  EXPECT_THAT(read(), ElementsAre("bytes first 5: 90 3C 40", "words1 1| 5: 20903C40",
                                  "words2 2| 5: 40903C00 80000000", "bytes second 0: 90 3C 40"));

  EXPECT_EQ(service.MIDIPortConnectSource(bytes, source(0), "again "), noErr);
  EXPECT_EQ(service.MIDIPortDisconnectSource(bytes, source(1)), noErr);
  EXPECT_EQ(service.MIDIPortDisconnectSource(bytes, source(1)), statusOf(MIDIOSStatus::noConnection));
  static_cast<void>(service.sendFromEquipment(source(0), packet({0xF8})));
  static_cast<void>(service.sendFromEquipment(source(1), packet({0xFA})));
  EXPECT_THAT(read(), ElementsAre("bytes again 0: F8", "words1 1| 0: 10F80000", "words2 2| 0: 10F80000"));
}

TEST_F(MIDIDeliveryTest, SystemExclusivePiecesOfTwoSourcesDontMix) {
  const Ref port = inputPort("port");
  static_cast<void>(service.MIDIPortConnectSource(port, source(0), nullptr));
  static_cast<void>(service.MIDIPortConnectSource(port, source(1), nullptr));
  static_cast<void>(service.sendFromEquipment(source(0), packet({0xF0, 0x01})));
  static_cast<void>(service.sendFromEquipment(source(1), packet({0xF0, 0x02})));
  static_cast<void>(service.sendFromEquipment(source(0), packet({0x11, 0xF7})));
  static_cast<void>(service.sendFromEquipment(source(1), packet({0x12, 0xF7})));
  EXPECT_THAT(read(), ElementsAre("port 0: F0 01 11 F7", "port 0: F0 02 12 F7"));
}

TEST_F(MIDIDeliveryTest, AConnectionEndsLateAndGoesOnIfItIsTakenUpInTime) {
  constexpr auto lingerTime = MIDIServiceEngine::lingerTime;
  const std::vector<std::string> all = {"port new 0: FA", "port new 0: F0 01 02 F7", "port new 0: FB"};
  const std::vector<std::string> last = {"port new 0: FB"};
  MIDIPacketList tooMuch(MIDIConnection::mostHeld + 100);
  ASSERT_TRUE(tooMuch.add(0, std::vector<std::uint8_t>(MIDIConnection::mostHeld, 0xFE)));
  const struct {
    const char* what;
    std::optional<MIDIPacketList> meanwhile;
    karvex::foundation::Duration after;
    std::vector<std::string> read;
  } cases[] = {
      {"soon", std::nullopt, 10ms, all},
      {"at the last moment", std::nullopt, lingerTime - 1ns, all},
      {"too late", std::nullopt, lingerTime + 1ns, last},
      {"too much for keeping", tooMuch, 10ms, last},
  };
  const Ref port = inputPort("port");
  for (const auto& testCase : cases) {
    EXPECT_EQ(service.MIDIPortConnectSource(port, source(), "old "), noErr);
    static_cast<void>(service.sendFromEquipment(source(), packet({0xF0, 0x01})));
    settle();
    static_cast<void>(service.sendFromEquipment(source(), packet({0xFA})));
    EXPECT_EQ(service.MIDIPortDisconnectSource(port, source()), noErr);
    const auto end = runtime.clock().now();
    EXPECT_EQ(service.MIDIPortDisconnectSource(port, source()), statusOf(MIDIOSStatus::noConnection));
    static_cast<void>(service.sendFromEquipment(source(), packet({0x02, 0xF7})));
    if (testCase.meanwhile) {
      static_cast<void>(service.sendFromEquipment(source(), *testCase.meanwhile));
    }
    EXPECT_THAT(read(), IsEmpty()) << testCase.what;
    runtime.clock().sleepUntil(end + testCase.after);
    EXPECT_EQ(service.MIDIPortConnectSource(port, source(), "new "), noErr);
    static_cast<void>(service.sendFromEquipment(source(), packet({0xFB})));
    EXPECT_EQ(read(), testCase.read) << testCase.what;
    EXPECT_EQ(service.MIDIPortDisconnectSource(port, source()), noErr);
    runtime.clock().sleepFor(lingerTime + 1ns);
  }
  MIDIPacketList most(MIDIConnection::mostHeld);
  ASSERT_TRUE(most.add(0, std::vector<std::uint8_t>(MIDIConnection::mostHeld / 4 * 3, 0xFE)));
  EXPECT_EQ(service.MIDIPortConnectSource(port, source(), nullptr), noErr);
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(service.MIDIPortDisconnectSource(port, source()), noErr);
    static_cast<void>(service.sendFromEquipment(source(), most));
    EXPECT_EQ(service.MIDIPortConnectSource(port, source(), nullptr), noErr);
    EXPECT_EQ(read().size(), 1U) << "each time there is room for as much";
  }
}

TEST_F(MIDIDeliveryTest, AConnectionEndsAtOnceWithItsPortOrItsSource) {
  const Ref port = inputPort("port");
  const Ref second = source(1);
  for (const Ref from : {source(0), second}) {
    static_cast<void>(service.MIDIPortConnectSource(port, from, nullptr));
    static_cast<void>(service.sendFromEquipment(from, packet({0xF8})));
  }
  service.removeDevice(service.MIDIGetDevice(1));
  EXPECT_THAT(read(), ElementsAre("port 0: F8"));
  EXPECT_EQ(service.MIDIPortDisconnectSource(port, second), statusOf(MIDIOSStatus::noConnection));
  static_cast<void>(service.sendFromEquipment(source(0), packet({0xF8})));
  EXPECT_EQ(service.MIDIPortDispose(port), noErr);
  EXPECT_THAT(read(), IsEmpty());
  EXPECT_EQ(service.MIDIPortDispose(port), statusOf(MIDIOSStatus::invalidPort));
}

TEST_F(MIDIDeliveryTest, SendingReachesVirtualDestinationsAndEquipment) {
  Ref bytes = 0;
  Ref words = 0;
  EXPECT_EQ(service.MIDIDestinationCreateWithBlock(client, "B", bytes, byteReader("bytes")), noErr);
  EXPECT_EQ(service.MIDIDestinationCreateWithProtocol(client, "W", midi2, words, wordReader("words")), noErr);
  EXPECT_EQ(service.readAsEquipment(destination(0), byteReader("desk")), noErr);
  EXPECT_EQ(service.readAsEquipment(bytes, byteReader("x")), statusOf(MIDIOSStatus::notPermitted));
  EXPECT_EQ(service.readAsEquipment(source(0), byteReader("x")), statusOf(MIDIOSStatus::wrongEndpointType));
  const Ref port = outputPort();
  for (const Ref to : {bytes, words, destination(0), destination(1)}) {
    EXPECT_EQ(service.MIDISend(port, to, packet({0xC0, 0x01})), noErr);
  }
  EXPECT_EQ(service.MIDISendEventList(port, destination(0), events(midi2, {{0x40C00000, 0x02000000}})),
            noErr);
  EXPECT_EQ(service.MIDISendEventList(port, bytes, {.protocol = MIDIProtocolID(3)}),
            statusOf(MIDIOSStatus::internalError));
  EXPECT_THAT(read(), testing::UnorderedElementsAre("bytes 0: C0 01", "words 2| 0: 40C00000 01000000",
                                                    "desk 0: C0 01", "desk 0: C0 02"));
}

TEST_F(MIDIDeliveryTest, WrongReferencesAreRefusedByTheirOwnStatus) {
  const Ref in = inputPort("in");
  const Ref out = outputPort();
  Ref made = 0;
  EXPECT_EQ(service.MIDIOutputPortCreate(client + 1, "p", made), statusOf(MIDIOSStatus::invalidClient));
  EXPECT_EQ(service.MIDIInputPortCreateWithBlock(0, "p", made, nullptr),
            statusOf(MIDIOSStatus::invalidClient));
  EXPECT_EQ(service.MIDISourceCreate(in, "s", made), statusOf(MIDIOSStatus::invalidClient));
  EXPECT_EQ(service.MIDIInputPortCreateWithProtocol(client, "p", MIDIProtocolID(0), made, nullptr),
            statusOf(MIDIOSStatus::internalError));
  EXPECT_EQ(service.MIDIPortConnectSource(out, source(), nullptr), statusOf(MIDIOSStatus::invalidPort));
  EXPECT_EQ(service.MIDIPortConnectSource(in, destination(), nullptr),
            statusOf(MIDIOSStatus::wrongEndpointType));
  EXPECT_EQ(service.MIDIPortConnectSource(in, service.MIDIGetDevice(0), nullptr),
            statusOf(MIDIOSStatus::unknownEndpoint));
  EXPECT_EQ(service.MIDIPortDisconnectSource(out, source()), statusOf(MIDIOSStatus::invalidPort));
  EXPECT_EQ(service.MIDISend(in, destination(), packet({})), statusOf(MIDIOSStatus::invalidPort));
  EXPECT_EQ(service.MIDISend(out, source(), packet({})), statusOf(MIDIOSStatus::wrongEndpointType));
  EXPECT_EQ(service.MIDISend(out, 0, packet({})), statusOf(MIDIOSStatus::unknownEndpoint));
  EXPECT_EQ(service.MIDIReceived(source(), packet({})), statusOf(MIDIOSStatus::notPermitted))
      << "equipment's own";
  EXPECT_EQ(service.sendFromEquipment(virtualSource(), packet({})), statusOf(MIDIOSStatus::notPermitted));
  EXPECT_EQ(service.MIDIEndpointDispose(source()), statusOf(MIDIOSStatus::notPermitted));
  EXPECT_EQ(service.MIDIEndpointDispose(in), statusOf(MIDIOSStatus::unknownEndpoint));
}

TEST_F(MIDIDeliveryTest, VirtualEndpointsAreListedReportedAndDisposedOf) {
  reported();
  const Ref from = virtualSource();
  Ref to = 0;
  ASSERT_EQ(service.MIDIDestinationCreateWithProtocol(client, "To", midi2, to, wordReader("to")), noErr);
  EXPECT_EQ(service.MIDIGetSource(2), from);
  EXPECT_EQ(service.MIDIGetDestination(2), to);
  Ref entity = 77;
  EXPECT_EQ(service.MIDIEndpointGetEntity(from, entity), noErr);
  EXPECT_EQ(entity, 0U);
  std::int32_t protocol = 0;
  EXPECT_EQ(service.MIDIObjectGetIntegerProperty(to, kMIDIPropertyProtocolID, protocol), noErr);
  EXPECT_EQ(protocol, 2);
  std::optional<std::string> shown;
  EXPECT_EQ(service.MIDIObjectSetStringProperty(from, kMIDIPropertyName, "Renamed"), noErr);
  EXPECT_EQ(service.MIDIObjectGetStringProperty(from, kMIDIPropertyDisplayName, shown), noErr);
  EXPECT_EQ(shown, "Renamed");

  const Ref listener = inputPort("listener");
  EXPECT_EQ(service.MIDIPortConnectSource(listener, from, nullptr), noErr);
  EXPECT_EQ(service.MIDIReceived(from, packet({0xFE})), noErr);
  EXPECT_EQ(service.MIDIReceivedEventList(from, events(midi1, {{0x10F80000}})), noErr);
  EXPECT_THAT(read(), ElementsAre("listener 0: FE", "listener 0: F8"));
  EXPECT_EQ(service.MIDIEndpointDispose(from), noErr);
  EXPECT_EQ(service.MIDIEndpointDispose(to), noErr);
  EXPECT_EQ(service.MIDIReceived(from, packet({0xFE})), statusOf(MIDIOSStatus::unknownEndpoint));
  EXPECT_EQ(service.MIDIGetNumberOfSources(), 2U);
  EXPECT_THAT(reported(), ElementsAre(fmt::format("2 0/-1 {}/2", from), "1", fmt::format("2 0/-1 {}/3", to),
                                      "1", fmt::format("4 {}/2 name", from), fmt::format("3 0/-1 {}/2", from),
                                      "1", fmt::format("3 0/-1 {}/3", to), "1"));
}

TEST_F(MIDIDeliveryTest, DisposingWaitsForTheBlockThatRunsButNotForItself) {
  std::vector<std::string> order;
  Ref port = 0;
  ASSERT_EQ(service.MIDIInputPortCreateWithBlock(client, "slow", port,
                                                 [&](const MIDIPacketList&, ConnectionToken) {
                                                   order.emplace_back("begins");
                                                   runtime.clock().sleepFor(5s);
                                                   order.emplace_back("ends");
                                                 }),
            noErr);
  ASSERT_EQ(service.MIDIPortConnectSource(port, source(), nullptr), noErr);
  static_cast<void>(service.sendFromEquipment(source(), packet({0xF8})));
  settle();
  EXPECT_EQ(service.MIDIPortDispose(port), noErr);
  order.emplace_back("disposed");
  EXPECT_THAT(order, ElementsAre("begins", "ends", "disposed"));

  Ref own = 0;
  OSStatus result = -1;
  ASSERT_EQ(service.MIDIInputPortCreateWithBlock(
                client, "own", own,
                [&](const MIDIPacketList&, ConnectionToken) { result = service.MIDIPortDispose(own); }),
            noErr);
  ASSERT_EQ(service.MIDIPortConnectSource(own, source(), nullptr), noErr);
  static_cast<void>(service.sendFromEquipment(source(), packet({0xF8})));
  settle();
  EXPECT_EQ(result, noErr);
}

TEST_F(MIDIDeliveryTest, ASlowReaderHoldsUpNeitherNotificationsNorOtherClients) {
  Ref port = 0;
  Ref other = 0;
  Ref othersPort = 0;
  ASSERT_EQ(service.MIDIInputPortCreateWithBlock(
                client, "slow", port,
                [&](const MIDIPacketList&, ConnectionToken) { runtime.clock().sleepFor(1h); }),
            noErr);
  ASSERT_EQ(service.MIDIClientCreateWithBlock("other", other, nullptr), noErr);
  ASSERT_EQ(service.MIDIInputPortCreateWithBlock(other, "p", othersPort, byteReader("other")), noErr);
  ASSERT_EQ(service.MIDIPortConnectSource(port, source(), nullptr), noErr);
  ASSERT_EQ(service.MIDIPortConnectSource(othersPort, source(), nullptr), noErr);
  reported();
  static_cast<void>(service.sendFromEquipment(source(), packet({0xF8})));
  service.notify({.messageID = 6});
  EXPECT_THAT(reported(), ElementsAre("6"));
  EXPECT_THAT(read(), ElementsAre("other 0: F8"));
}

}  // namespace
}  // namespace midikit::io::engine
