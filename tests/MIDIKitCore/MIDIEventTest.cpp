#include "MIDIKitCore/MIDIEvent.hpp"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;

const Bytes data = {1, 2, 3};

TEST(MIDIEventTest, EveryCaseHasItsKindItsGroupAnIdentityAndAHash) {
  const Events events = oneOfEach(1_u4);
  const Events again = oneOfEach(1_u4);
  const std::hash<MIDIEvent> hash;
  ASSERT_EQ(events.size(), MIDIEvent::kindCount);
  for (std::size_t i = 0; i < events.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(static_cast<std::size_t>(events[i].kind()), i);
    EXPECT_EQ(events[i].group().value(), i % 16);
    EXPECT_EQ(events[i].isSysEx(), i >= 12 && i <= 15);
    for (std::size_t other = 0; other < events.size(); ++other) {
      EXPECT_EQ(events[i] == again[other], i == other);
      EXPECT_EQ(hash(events[i]) == hash(again[other]), i == other);
    }
  }
}

TEST(MIDIEventTest, CopiesAndMovesKeepTheValue) {
  Events events = oneOfEach(1_u4);
  for (const std::size_t length : {0U, 15U, 16U, 1000U}) {
    events.push_back(*MIDIEvent::sysEx7(SysExManufacturer::oneByte(1_u7), sevenBitBytes(length)));
  }
  for (const MIDIEvent& event : events) {
    SCOPED_TRACE(event.debugDescription());
    MIDIEvent copy = event;
    EXPECT_EQ(copy, event);
    MIDIEvent moved = std::move(copy);
    EXPECT_EQ(moved, event);
    for (const MIDIEvent& other : events) {
      MIDIEvent assigned = other;
      assigned = event;
      EXPECT_EQ(assigned, event);
      assigned = MIDIEvent(other);
      EXPECT_EQ(assigned, other);
    }
    MIDIEvent& self = moved;
    moved = self;
    EXPECT_EQ(moved, event);
    moved = std::move(self);
    EXPECT_EQ(moved, event);
  }
  EXPECT_EQ(Events(events), events);
}

TEST(MIDIEventTest, GivesItsPayloadByType) {
  MIDIEvent event = MIDIEvent::noteOn(60_u7, Velocity::midi1(64_u7), 1_u4);
  EXPECT_TRUE(event.is<NoteOn>());
  EXPECT_EQ(event.as<NoteOff>(), nullptr);
  ASSERT_NE(event.as<NoteOn>(), nullptr);
  event.as<NoteOn>()->channel = 2_u4;
  event.as<NoteOn>()->_velocity = Velocity::unitInterval(7.0);
  EXPECT_EQ(event, MIDIEvent::noteOn(60_u7, Velocity::unitInterval(1.0), 2_u4));
  EXPECT_EQ(std::as_const(event).as<MIDIEvent::NoteOn>()->velocity().form(),
            ChanVoiceValueForm::unitInterval);
}

TEST(MIDIEventTest, VisitCallsTheHandlerOfTheRecord) {
  int count = 0;
  auto counts = [count](const auto&) mutable { return ++count; };
  for (const MIDIEvent& event : oneOfEach(1_u4)) {
    const bool isNoteOn = event.visit([](const NoteOn&) { return true; }, [](const auto&) { return false; });
    EXPECT_EQ(isNoteOn, event.kind() == MIDIEvent::Kind::noteOn);
    EXPECT_EQ(event.visit(counts), ++count) << "the visitor itself";
  }
  MIDIEvent event = MIDIEvent::cc(7_u7, Amount::midi1(64_u7), 1_u4);
  event.visit([](CC& cc) { cc.controller = Controller::sustainPedal; }, [](auto&) {});
  EXPECT_EQ(event, MIDIEvent::cc(Controller::sustainPedal, Amount::midi1(64_u7), 1_u4));
}

TEST(MIDIEventTest, TellsTheFieldsOfEqualRecordsApart) {
  const auto note = [](auto... last) {
    return MIDIEvent::noteOn(60_u7, Velocity::midi1(64_u7), NoteAttribute::profileSpecific(5), last...);
  };
  const MIDIEvent event = note(1_u4, 2_u4, true);
  EXPECT_EQ(event, note(1_u4, 2_u4, true));
  for (const MIDIEvent& other :
       {note(1_u4, 2_u4, false), note(1_u4, 3_u4, true), note(2_u4, 2_u4, true),
        MIDIEvent::noteOn(60_u7, Velocity::midi1(64_u7), 1_u4, 2_u4, true),
        MIDIEvent::noteOn(60_u7, Velocity::midi1(65_u7), NoteAttribute::profileSpecific(5), 1_u4, 2_u4, true),
        MIDIEvent::noteOn(MIDINote(60_u7, MIDINote::Style::roland), Velocity::midi1(64_u7),
                          NoteAttribute::profileSpecific(5), 1_u4, 2_u4, true)}) {
    EXPECT_NE(event, other) << other.debugDescription();
    EXPECT_NE(std::hash<MIDIEvent>()(event), std::hash<MIDIEvent>()(other)) << other.debugDescription();
  }
}

TEST(MIDIEventTest, ComparesValuesAcrossTheirForms) {
  const MIDIEvent seven = MIDIEvent::cc(7_u7, Amount::midi1(64_u7), 0_u4);
  const MIDIEvent word = MIDIEvent::cc(7_u7, Amount::midi2(0x80000001), 0_u4);
  EXPECT_TRUE(word == seven);
  EXPECT_FALSE(seven == word);
  EXPECT_NE(std::hash<MIDIEvent>()(word), std::hash<MIDIEvent>()(seven));
}

TEST(MIDIEventTest, CopiesOfALongSystemExclusiveEventShareItsBytes) {
  const MIDIEvent event = *MIDIEvent::sysEx7(SysExManufacturer::oneByte(1_u7), sevenBitBytes(16));
  MIDIEvent copy = event;
  const auto* const bytes = event.as<SysEx7>()->data.data();
  EXPECT_EQ(copy.as<SysEx7>()->data.data(), bytes);
  const MIDIEvent moved = std::move(copy);
  EXPECT_EQ(moved.as<SysEx7>()->data.data(), bytes);
}

TEST(MIDIEventTest, TakesABodyThatIsCheckedAsItIs) {
  const auto manufacturer = SysExManufacturer::oneByte(1_u7);
  const auto realTime = UniversalSysExType::realTime;
  const SysEx7Data body = *SysEx7Data::exactly(data);
  EXPECT_EQ(MIDIEvent::sysEx7(manufacturer, body, 2_u4), *MIDIEvent::sysEx7(manufacturer, data, 2_u4));
  EXPECT_EQ(MIDIEvent::universalSysEx7(realTime, 1_u7, 2_u7, 3_u7, body),
            *MIDIEvent::universalSysEx7(realTime, 1_u7, 2_u7, 3_u7, data));
}

// Events can be constants, and are small.
constexpr MIDIEvent constant = MIDIEvent::pitchBend(Bend::bipolarUnitInterval(0.0), 1_u4);
constexpr MIDIEvent constantCopy = constant;
static_assert(constantCopy == MIDIEvent::pitchBend(Bend::midi1(8192_u14), 1_u4));
static_assert(constant.as<PitchBend>()->value().midi2Value() == 0x80000000);
static_assert(sizeof(MIDIEvent) == 28);
static_assert(std::is_nothrow_move_constructible_v<MIDIEvent> &&
              std::is_nothrow_copy_constructible_v<MIDIEvent>);
static_assert(std::is_trivially_copyable_v<NoteOn> && std::is_trivially_copyable_v<RPN>);

}  // namespace
}  // namespace midikit::core
