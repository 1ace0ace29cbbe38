#include "MIDIKitCore/filters/MIDIEventFilter.hpp"

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

#include "MIDIKitCore/events/MIDIEventFamily.hpp"
#include "MIDIKitCore/filters/MIDIEventFilterGroup.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using Kind = MIDIEvent::Kind;

/// An event and what the filters should see in it.
struct Sample {
  MIDIEvent event;
  std::optional<int> channel = {};
  std::optional<int> controller = {};
  std::optional<int> note = {};
};
using Samples = std::vector<Sample>;

/// A family, as the place of its first case among all.
enum Family { chanVoice = 0, sysEx = 12, sysCommon = 16, sysRealTime = 21, utility = 27 };

/// The place of a case within a family; none for one of another.
std::optional<int> placeIn(Family family, int count, const Sample& sample) {
  const int place = static_cast<int>(sample.event.kind()) - family;
  return place >= 0 && place < count ? std::optional(place) : std::nullopt;
}

/// Every case of event in several groups and channels, with repetitions and in no order.
Samples makeSamples() {
  Samples samples;
  for (const auto& [channel, group] : {std::pair(1_u4, 0), {2_u4, 3}, {15_u4, 15}, {1_u4, 0}}) {
    const int c = channel.value();
    for (const MIDIEvent& event : oneOfEach(channel, group)) {
      samples.push_back({event});
      samples.back().channel = event.kind() <= Kind::nrpn ? std::optional(c) : std::nullopt;
      samples.back().controller = event.is<CC>() ? std::optional(7) : std::nullopt;
      samples.back().note = event.is<NoteOn>() || event.is<NoteOff>() ? std::optional(60) : std::nullopt;
    }
    for (const int note : {0, 59, 61, 127}) {
      const MIDINote styled(UInt7(note), MIDINote::Style::roland);
      samples.push_back({MIDIEvent::noteOn(UInt7(note), Velocity::midi1(9_u7), channel), c, {}, note});
      samples.push_back({MIDIEvent::noteOff(styled, Velocity::midi1(9_u7), channel), c, {}, note});
    }
    for (const int controller : {1, 3, 33, 123}) {
      samples.push_back({MIDIEvent::cc(UInt7(controller), Amount::midi1(9_u7), channel), c, controller});
    }
  }
  return samples;
}

const Samples& allSamples() {
  static const Samples all = makeSamples();
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

/// The eight filters that each family has, for each of its types and for some sets of them.
template <class Types, class Type>
void addTypeRows(std::vector<Row>& rows, Family family, int count, MIDIEventFilter make(Types)) {
  const auto among = [family, count](std::set<int> places) -> Opinion {
    return [family, count, places](const Sample& sample) -> std::optional<bool> {
      const auto place = placeIn(family, count, sample);
      return place ? std::optional(places.contains(*place)) : std::nullopt;
    };
  };
  const auto all = [family, count](const Sample& sample) {
    return placeIn(family, count, sample) ? std::optional(true) : std::nullopt;
  };
  rows.push_back({"only the family", make(Types::only()), all});
  rows.push_back({"drop the family", make(Types::drop()), all});
  for (int place = 0; place < count; ++place) {
    const auto type = static_cast<Type>(place);
    rows.push_back({"onlyType", make(Types::onlyType(type)), among({place})});
    rows.push_back({"keepType", make(Types::keepType(type)), among({place})});
    rows.push_back({"dropType", make(Types::dropType(type)), among({place})});
  }
  for (unsigned set = 0; set < 1U << count; set += count > 8 ? 37 : 1) {
    MIDIEventTypeSet<Type> types;
    std::set<int> places;
    for (int place = 0; place < count; ++place) {
      if ((set >> place & 1U) != 0) {
        types.insert(static_cast<Type>(place));
        places.insert(place);
      }
    }
    rows.push_back({"onlyTypes", make(Types::onlyTypes(types)), among(places)});
    rows.push_back({"keepTypes", make(Types::keepTypes(types)), among(places)});
    rows.push_back({"dropTypes", make(Types::dropTypes(types)), among(places)});
  }
}

std::vector<Row> typeRows() {
  std::vector<Row> rows;
  addTypeRows<ChanVoiceTypes, ChanVoiceType>(rows, chanVoice, 12, MIDIEventFilter::chanVoice);
  addTypeRows<SysExTypes, SysExType>(rows, sysEx, 4, MIDIEventFilter::sysEx);
  addTypeRows<SysCommonTypes, SysCommonType>(rows, sysCommon, 5, MIDIEventFilter::sysCommon);
  addTypeRows<SysRealTimeTypes, SysRealTimeType>(rows, sysRealTime, 6, MIDIEventFilter::sysRealTime);
  addTypeRows<UtilityTypes, UtilityType>(rows, utility, 3, MIDIEventFilter::utility);
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
  const auto add = [&rows](const MIDIEventFilter& filter, std::set<int> groups) {
    rows.push_back({"only groups", filter, [groups](const Sample& sample) {
                      return std::optional(groups.contains(sample.event.group().value()));
                    }});
  };
  for (int group = 0; group <= 15; ++group) {
    add(MIDIEventFilter::group(UInt4(group)), {group});
  }
  add(MIDIEventFilter::groups({15_u4, 3_u4}), {3, 15});
  add(MIDIEventFilter::groups({}), {});
  return rows;
}

TEST(MIDIEventFilterTest, JudgesTypesGroupsChannelsControllersAndNotesWhereTheyCount) {
  std::ranges::for_each(typeRows(), expectPassing);
  std::ranges::for_each(groupRows(), expectPassing);
  std::ranges::for_each(channelVoiceRows(), expectPassing);
}

TEST(MIDIEventFilterTest, ComparesAndHashesByVerbCriterionAndArgument) {
  const auto filters = [] {
    std::vector<MIDIEventFilter> all;
    for (const auto& rows : {typeRows(), channelVoiceRows(), groupRows()}) {
      std::ranges::transform(rows, std::back_inserter(all), &Row::filter);
    }
    // Sets of one type, and the order of an array, make filters of their own.
    all.push_back(MIDIEventFilter::groups({3_u4, 15_u4}));
    return all;
  };
  const auto some = filters();
  const auto again = filters();
  const std::unordered_set<MIDIEventFilter> distinct(some.begin(), some.end());
  EXPECT_EQ(distinct.size(), some.size());
  std::unordered_set<std::size_t> hashes;
  for (const auto& filter : again) {
    EXPECT_TRUE(distinct.contains(filter));
    hashes.insert(std::hash<MIDIEventFilter>{}(filter));
  }
  EXPECT_GT(hashes.size(), some.size() * 99 / 100);
}

TEST(MIDIEventFilterGroupTest, AppliesEachFilterToWhatTheOneBeforeLeft) {
  const auto events = eventsOf(allSamples());
  EXPECT_EQ(MIDIEventFilterGroup{}.apply(events), events);
  EXPECT_TRUE(MIDIEventFilterGroup{}.passes(events.front()));
  const auto only = MIDIEventFilter::chanVoice(ChanVoiceTypes::only());
  const auto drop = MIDIEventFilter::chanVoice(ChanVoiceTypes::drop());
  EXPECT_TRUE((MIDIEventFilterGroup{{only, drop}}.apply(events).empty()));
  const MIDIEventFilterGroup chain{
      {MIDIEventFilter::groups({0_u4, 1_u4}),
       MIDIEventFilter::chanVoice(ChanVoiceTypes::onlyNotesInRange({60_u7, 60_u7})),
       MIDIEventFilter::chanVoice(ChanVoiceTypes::dropType(ChanVoiceType::noteOff))}};
  const auto left = chain.apply(events);
  const MIDIEvent& note = events.front();
  EXPECT_EQ(left, (std::vector{note, note}));
  EXPECT_TRUE(chain.passes(note));
  EXPECT_FALSE(chain.passes(MIDIEvent::start()));
  EXPECT_NE((MIDIEventFilterGroup{{only, drop}}), (MIDIEventFilterGroup{{drop, only}}));
  EXPECT_NE(std::hash<MIDIEventFilterGroup>{}({{only, drop}}),
            std::hash<MIDIEventFilterGroup>{}({{drop, only}}));
}

/// Each predicate of each family on each sample.
template <class Type, class IsOfFamily>
void expectPredicates(Family family, int count, IsOfFamily isOfIt) {
  for (const Sample& sample : allSamples()) {
    const auto place = placeIn(family, count, sample);
    ASSERT_EQ(isOfIt(sample.event), place.has_value());
    for (int other = 0; other < count; ++other) {
      const auto type = static_cast<Type>(other);
      ASSERT_EQ(isOfIt(sample.event, type), place == other);
      ASSERT_EQ(isOfIt(sample.event, MIDIEventTypeSet{type}), place == other);
    }
  }
}

TEST(MIDIEventFamilyTest, TellsFamilyAndTypeOfEveryCase) {
  expectPredicates<ChanVoiceType>(chanVoice, 12, [](auto&&... of) { return isChanVoice(of...); });
  expectPredicates<SysExType>(sysEx, 4, [](auto&&... of) { return isSysEx(of...); });
  expectPredicates<SysCommonType>(sysCommon, 5, [](auto&&... of) { return isSysCommon(of...); });
  expectPredicates<SysRealTimeType>(sysRealTime, 6, [](auto&&... of) { return isSysRealTime(of...); });
  expectPredicates<UtilityType>(utility, 3, [](auto&&... of) { return isUtility(of...); });
}

TEST(MIDIEventTypeSetTest, HoldsWhatWasPutIn) {
  MIDIEventTypeSet<UtilityType> types{UtilityType::noOp, UtilityType::jrTimestamp};
  EXPECT_EQ(types, (MIDIEventTypeSet{UtilityType::jrTimestamp, UtilityType::noOp}));
  types.remove(UtilityType::noOp);
  EXPECT_EQ(types, MIDIEventTypeSet{UtilityType::jrTimestamp});
  types.remove(UtilityType::jrTimestamp);
  EXPECT_TRUE(types.empty());
}

}  // namespace
}  // namespace midikit::core
