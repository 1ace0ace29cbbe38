#include "MIDIKitCore/MIDIEventFilter.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/MIDIEventFamily.hpp"
#include "MIDIKitCore/MIDIEventFilterGroup.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using Kind = MIDIEvent::Kind;

/// An event and what the filters should see in it.
struct Sample {
  MIDIEvent event;
  std::string family;
  int position = 0;  // within the family
  int group = 0;
  std::optional<int> channel = {};
  std::optional<int> controller = {};
  std::optional<int> note = {};
};
using Samples = std::vector<Sample>;

void addChannelVoice(Samples& samples, UInt4 channel, UInt4 group) {
  const int c = channel.value();
  const int g = group.value();
  const auto v16 = ChanVoice7Bit16BitValue::midi1(100_u7);
  const auto v32 = ChanVoice7Bit32BitValue::midi1(100_u7);
  const auto bend = ChanVoice32BitValue::midi2(5);
  const auto add = [&](MIDIEvent event, int position, std::optional<int> controller = {},
                       std::optional<int> note = {}) {
    samples.push_back({std::move(event), "chanVoice", position, g, c, controller, note});
  };
  for (const UInt7 note : {0_u7, 59_u7, 60_u7, 61_u7, 127_u7}) {
    add(MIDIEvent::noteOn(note, v16, channel, group), 0, {}, note.value());
    add(MIDIEvent::noteOff(MIDINote(note, MIDINote::Style::roland), v16, channel, group), 1, {},
        note.value());
  }
  add(MIDIEvent::noteCC(60_u7, PerNoteController::assignable(7), bend, channel, group), 2);
  add(MIDIEvent::notePitchBend(60_u7, bend, channel, group), 3);
  add(MIDIEvent::notePressure(60_u7, v32, channel, group), 4);
  add(MIDIEvent::noteManagement(60_u7, OptionFlags{}, channel, group), 5);
  for (const UInt7 controller : {1_u7, 3_u7, 7_u7, 33_u7, 123_u7}) {
    add(MIDIEvent::cc(controller, v32, channel, group), 6, controller.value());
  }
  add(MIDIEvent::programChange(7_u7, channel, group), 7);
  add(MIDIEvent::pitchBend(ChanVoice14Bit32BitValue::midi1(5_u14), channel, group), 8);
  add(MIDIEvent::pressure(v32, channel, group), 9);
  add(MIDIEvent::rpn(RegisteredController::null(), channel, group), 10);
  add(MIDIEvent::nrpn(AssignableController::raw({.msb = 1_u7, .lsb = 2_u7}, 3_u7, {}), channel, group), 11);
}

void addOthers(Samples& samples, UInt4 group) {
  const int g = group.value();
  const auto manufacturer = SysExManufacturer::threeByte(1_u7, 2_u7);
  const auto realTime = UniversalSysExType::realTime;
  const std::vector<std::pair<std::string, std::vector<MIDIEvent>>> families{
      {"sysEx",
       {SysEx7(manufacturer, SysEx7Data{}, group),
        UniversalSysEx7(realTime, 1_u7, 2_u7, 3_u7, SysEx7Data{}, group),
        SysEx8(manufacturer, SysExData{1, 255}, 0, group),
        UniversalSysEx8(realTime, 1_u7, 2_u7, 3_u7, SysExData{}, 0, group)}},
      {"sysCommon",
       {MIDIEvent::timecodeQuarterFrame(1_u7, group), MIDIEvent::songPositionPointer(1_u14, group),
        MIDIEvent::songSelect(1_u7, group), MIDIEvent::unofficialBusSelect(1_u7, group),
        MIDIEvent::tuneRequest(group)}},
      {"sysRealTime",
       {MIDIEvent::timingClock(group), MIDIEvent::start(group), MIDIEvent::continue_(group),
        MIDIEvent::stop(group), MIDIEvent::activeSensing(group), MIDIEvent::systemReset(group)}},
      {"utility",
       {MIDIEvent::noOp(group), MIDIEvent::jrClock(std::uint16_t{1}, group),
        MIDIEvent::jrTimestamp(std::uint16_t{1}, group)}}};
  for (const auto& [family, events] : families) {
    int position = 0;
    for (const MIDIEvent& event : events) {
      samples.push_back({event, family, position++, g});
    }
  }
}

/// Every case of event in several groups and channels, with repetitions and in no order.
const Samples& allSamples() {
  static const Samples all = [] {
    Samples samples;
    addChannelVoice(samples, 1_u4, 0_u4);
    addOthers(samples, 3_u4);
    addChannelVoice(samples, 2_u4, 3_u4);
    addOthers(samples, 0_u4);
    addChannelVoice(samples, 15_u4, 15_u4);
    addChannelVoice(samples, 1_u4, 0_u4);
    return samples;
  }();
  return all;
}

std::vector<MIDIEvent> eventsOf(const Samples& samples) {
  std::vector<MIDIEvent> events;
  for (const Sample& sample : samples) {
    events.push_back(sample.event);
  }
  return events;
}

/// Nothing if the filter has no opinion on the sample, else whether the sample is what it looks for.
using Opinion = std::function<std::optional<bool>(const Sample&)>;

struct Row {
  std::string name;
  MIDIEventFilter filter;
  Opinion opinion;
};

void expectPassing(const Row& row) {
  SCOPED_TRACE(row.name);
  const auto events = eventsOf(allSamples());
  std::vector<MIDIEvent> expected;
  for (const Sample& sample : allSamples()) {
    const auto isWanted = row.opinion(sample);
    const bool passes = row.name.starts_with("only")   ? isWanted.value_or(false)
                        : row.name.starts_with("keep") ? isWanted.value_or(true)
                                                       : !isWanted.value_or(false);
    if (passes) {
      expected.push_back(sample.event);
    }
    EXPECT_EQ(row.filter.passes(sample.event), passes) << sample.event.debugDescription();
  }
  EXPECT_EQ(row.filter.apply(events), expected);
  EXPECT_TRUE(row.filter.apply({}).empty());
  EXPECT_EQ((MIDIEventFilterGroup{{row.filter, row.filter}}.apply(events)), expected);
}

Opinion ofFamily(const std::string& family, std::optional<std::set<int>> positions = {}) {
  return [family, positions](const Sample& sample) -> std::optional<bool> {
    if (sample.family != family) {
      return std::nullopt;
    }
    return !positions || positions->contains(sample.position);
  };
}

/// The eight filters that each family has, for each of its types and for some sets of them.
template <class Types, class Type>
void addTypeRows(std::vector<Row>& rows, const std::string& family, int count, MIDIEventFilter make(Types)) {
  rows.push_back({"only " + family, make(Types::only()), ofFamily(family)});
  rows.push_back({"drop " + family, make(Types::drop()), ofFamily(family)});
  for (int position = 0; position < count; ++position) {
    const auto type = static_cast<Type>(position);
    const auto opinion = ofFamily(family, std::set{position});
    rows.push_back({"onlyType " + family, make(Types::onlyType(type)), opinion});
    rows.push_back({"keepType " + family, make(Types::keepType(type)), opinion});
    rows.push_back({"dropType " + family, make(Types::dropType(type)), opinion});
  }
  for (unsigned set = 0; set < 1U << count; set += count > 8 ? 37 : 1) {
    MIDIEventTypeSet<Type> types;
    std::set<int> positions;
    for (int position = 0; position < count; ++position) {
      if ((set >> position & 1U) != 0) {
        types.insert(static_cast<Type>(position));
        positions.insert(position);
      }
    }
    const auto opinion = ofFamily(family, positions);
    rows.push_back({"onlyTypes " + family, make(Types::onlyTypes(types)), opinion});
    rows.push_back({"keepTypes " + family, make(Types::keepTypes(types)), opinion});
    rows.push_back({"dropTypes " + family, make(Types::dropTypes(types)), opinion});
  }
}

std::vector<Row> typeRows() {
  std::vector<Row> rows;
  addTypeRows<ChanVoiceTypes, ChanVoiceType>(rows, "chanVoice", 12, MIDIEventFilter::chanVoice);
  addTypeRows<SysExTypes, SysExType>(rows, "sysEx", 4, MIDIEventFilter::sysEx);
  addTypeRows<SysCommonTypes, SysCommonType>(rows, "sysCommon", 5, MIDIEventFilter::sysCommon);
  addTypeRows<SysRealTimeTypes, SysRealTimeType>(rows, "sysRealTime", 6, MIDIEventFilter::sysRealTime);
  addTypeRows<UtilityTypes, UtilityType>(rows, "utility", 3, MIDIEventFilter::utility);
  return rows;
}

Opinion among(std::optional<int> Sample::* field, std::set<int> wanted) {
  return [field, wanted](const Sample& sample) -> std::optional<bool> {
    const auto& value = sample.*field;
    return value ? std::optional(wanted.contains(*value)) : std::nullopt;
  };
}

/// The three verbs of the one-value or the many-value form of a channel voice filter.
template <class Argument>
void addVerbRows(std::vector<Row>& rows, const std::string& name, Argument argument,
                 std::vector<ChanVoiceTypes (*)(Argument)> makers, const Opinion& opinion) {
  const std::vector<std::string> verbs{"only", "keep", "drop"};
  for (std::size_t verb = 0; verb < verbs.size(); ++verb) {
    rows.push_back({verbs[verb] + name, MIDIEventFilter::chanVoice(makers[verb](argument)), opinion});
  }
}

std::vector<Row> channelVoiceRows() {
  using Types = ChanVoiceTypes;
  std::vector<Row> rows;
  for (const UInt4 channel : {0_u4, 1_u4, 2_u4, 15_u4}) {
    addVerbRows<UInt4>(rows, "Channel", channel, {Types::onlyChannel, Types::keepChannel, Types::dropChannel},
                       among(&Sample::channel, {channel.value()}));
  }
  for (const auto& channels : {std::vector<UInt4>{}, {1_u4}, {15_u4, 1_u4}}) {
    std::set<int> wanted;
    std::ranges::transform(channels, std::inserter(wanted, wanted.end()), &UInt4::value);
    addVerbRows<std::vector<UInt4>>(rows, "Channels", channels,
                                    {Types::onlyChannels, Types::keepChannels, Types::dropChannels},
                                    among(&Sample::channel, wanted));
  }
  for (const int number : {0, 1, 3, 7, 33, 123}) {
    addVerbRows<Controller>(rows, "CC", Controller(UInt7(number)),
                            {Types::onlyCC, Types::keepCC, Types::dropCC},
                            among(&Sample::controller, {number}));
  }
  addVerbRows<std::vector<Controller>>(rows, "CCs", {}, {Types::onlyCCs, Types::keepCCs, Types::dropCCs},
                                       among(&Sample::controller, {}));
  addVerbRows<std::vector<Controller>>(
      rows, "CCs",
      {Controller::lsb(Controller::LSB::modWheel), Controller::mode(Controller::Mode::allNotesOff)},
      {Types::onlyCCs, Types::keepCCs, Types::dropCCs}, among(&Sample::controller, {33, 123}));

  const auto addRange = [&rows](UInt7Range range, std::set<int> wanted) {
    addVerbRows<UInt7Range>(rows, "NotesInRange", range,
                            {Types::onlyNotesInRange, Types::keepNotesInRange, Types::dropNotesInRange},
                            among(&Sample::note, std::move(wanted)));
  };
  addRange({60_u7, 60_u7}, {60});
  addRange({0_u7, 127_u7}, {0, 59, 60, 61, 127});
  addRange({59_u7, 60_u7}, {59, 60});
  addRange({62_u7, 126_u7}, {});
  const auto addRanges = [&rows](std::vector<UInt7Range> ranges, std::set<int> wanted) {
    addVerbRows<std::vector<UInt7Range>>(
        rows, "NotesInRanges", std::move(ranges),
        {Types::onlyNotesInRanges, Types::keepNotesInRanges, Types::dropNotesInRanges},
        among(&Sample::note, std::move(wanted)));
  };
  addRanges({}, {});
  addRanges({{0_u7, 1_u7}, {60_u7, 61_u7}, {61_u7, 61_u7}}, {0, 60, 61});
  return rows;
}

std::vector<Row> groupRows() {
  std::vector<Row> rows;
  for (int group = 0; group <= 15; ++group) {
    rows.push_back({"only group", MIDIEventFilter::group(UInt4(group)),
                    [group](const Sample& sample) { return std::optional(sample.group == group); }});
  }
  rows.push_back({"only groups", MIDIEventFilter::groups({15_u4, 3_u4}), [](const Sample& sample) {
                    return std::optional(sample.group == 15 || sample.group == 3);
                  }});
  rows.push_back(
      {"only groups", MIDIEventFilter::groups({}), [](const Sample&) { return std::optional(false); }});
  return rows;
}

TEST(MIDIEventFilterTest, JudgesEveryCaseOfEventByItsType) {
  std::set<Kind> kinds;
  for (const Sample& sample : allSamples()) {
    kinds.insert(sample.event.kind());
  }
  ASSERT_EQ(kinds.size(), MIDIEvent::kindCount);
  std::ranges::for_each(typeRows(), expectPassing);
}

TEST(MIDIEventFilterTest, JudgesChannelsControllersAndNotesWhereTheyCount) {
  std::ranges::for_each(channelVoiceRows(), expectPassing);
}

TEST(MIDIEventFilterTest, JudgesTheGroupOfEveryEvent) {
  std::ranges::for_each(groupRows(), expectPassing);
}

TEST(MIDIEventFilterTest, ComparesAndHashesByVerbCriterionAndArgument) {
  auto rows = typeRows();
  for (auto& more : {channelVoiceRows(), groupRows()}) {
    rows.insert(rows.end(), more.begin(), more.end());
  }
  // Sets of one type, and the order of an array, make filters of their own.
  rows.push_back({"groups", MIDIEventFilter::groups({3_u4, 15_u4}), {}});
  std::unordered_set<MIDIEventFilter> distinct;
  std::unordered_set<std::size_t> hashes;
  for (const Row& row : rows) {
    distinct.insert(row.filter);
    hashes.insert(std::hash<MIDIEventFilter>{}(row.filter));
  }
  EXPECT_EQ(distinct.size(), rows.size());
  EXPECT_GT(hashes.size(), rows.size() * 99 / 100);
  const auto again = typeRows();
  for (std::size_t index = 0; index < again.size(); ++index) {
    ASSERT_EQ(again[index].filter, rows[index].filter);
    ASSERT_EQ(std::hash<MIDIEventFilter>{}(again[index].filter),
              std::hash<MIDIEventFilter>{}(rows[index].filter));
  }
}

TEST(MIDIEventFilterGroupTest, AppliesEachFilterToWhatTheOneBeforeLeft) {
  const auto events = eventsOf(allSamples());
  EXPECT_EQ(MIDIEventFilterGroup{}.apply(events), events);
  EXPECT_TRUE(MIDIEventFilterGroup{}.passes(events.front()));
  const auto only = MIDIEventFilter::chanVoice(ChanVoiceTypes::only());
  const auto drop = MIDIEventFilter::chanVoice(ChanVoiceTypes::drop());
  EXPECT_TRUE((MIDIEventFilterGroup{{only, drop}}.apply(events).empty()));
  const MIDIEventFilterGroup chain{
      {MIDIEventFilter::group(0_u4),
       MIDIEventFilter::chanVoice(ChanVoiceTypes::onlyNotesInRange({60_u7, 60_u7})),
       MIDIEventFilter::chanVoice(ChanVoiceTypes::dropType(ChanVoiceType::noteOff))}};
  const auto left = chain.apply(events);
  const MIDIEvent note = MIDIEvent::noteOn(60_u7, ChanVoice7Bit16BitValue::midi1(100_u7), 1_u4, 0_u4);
  EXPECT_EQ(left, (std::vector{note, note}));
  EXPECT_TRUE(chain.passes(note));
  EXPECT_FALSE(chain.passes(MIDIEvent::start()));
  EXPECT_NE((MIDIEventFilterGroup{{only, drop}}), (MIDIEventFilterGroup{{drop, only}}));
  EXPECT_NE(std::hash<MIDIEventFilterGroup>{}({{only, drop}}),
            std::hash<MIDIEventFilterGroup>{}({{drop, only}}));
}

/// Each predicate of each family on each sample.
template <class Type, class IsOfFamily>
void expectPredicates(const std::string& family, int count, IsOfFamily isOfIt) {
  for (const Sample& sample : allSamples()) {
    const bool isMember = sample.family == family;
    ASSERT_EQ(isOfIt(sample.event), isMember);
    MIDIEventTypeSet<Type> others;
    for (int position = 0; position < count; ++position) {
      const bool isType = isMember && sample.position == position;
      ASSERT_EQ(isOfIt(sample.event, static_cast<Type>(position)), isType);
      ASSERT_EQ(isOfIt(sample.event, MIDIEventTypeSet{static_cast<Type>(position)}), isType);
      if (!isType) {
        others.insert(static_cast<Type>(position));
      }
    }
    ASSERT_FALSE(isOfIt(sample.event, others));
    ASSERT_FALSE(isOfIt(sample.event, MIDIEventTypeSet<Type>{}));
  }
}

TEST(MIDIEventFamilyTest, TellsFamilyAndTypeOfEveryCase) {
  expectPredicates<ChanVoiceType>("chanVoice", 12, [](auto&&... of) { return isChanVoice(of...); });
  expectPredicates<SysExType>("sysEx", 4, [](auto&&... of) { return isSysEx(of...); });
  expectPredicates<SysCommonType>("sysCommon", 5, [](auto&&... of) { return isSysCommon(of...); });
  expectPredicates<SysRealTimeType>("sysRealTime", 6, [](auto&&... of) { return isSysRealTime(of...); });
  expectPredicates<UtilityType>("utility", 3, [](auto&&... of) { return isUtility(of...); });
}

TEST(MIDIEventTypeSetTest, HoldsWhatWasPutIn) {
  MIDIEventTypeSet<UtilityType> types{UtilityType::noOp, UtilityType::jrTimestamp};
  EXPECT_TRUE(types.contains(UtilityType::noOp) && types.contains(UtilityType::jrTimestamp));
  EXPECT_FALSE(types.contains(UtilityType::jrClock));
  EXPECT_EQ(types, (MIDIEventTypeSet{UtilityType::jrTimestamp, UtilityType::noOp}));
  types.remove(UtilityType::noOp);
  types.remove(UtilityType::jrTimestamp);
  EXPECT_TRUE(types.empty());
}

}  // namespace
}  // namespace midikit::core
