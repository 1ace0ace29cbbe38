#include "MIDIKitCore/sysex/SysExData.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

/// Lengths around each at which a body is held or looked through in another way.
constexpr std::size_t longest = 40;

bool holds(const SysExData& data, const Bytes& bytes) {
  return data.size() == bytes.size() && data.empty() == bytes.empty() && std::ranges::equal(data, bytes);
}

TEST(SysExDataTest, HoldsBytesOfAnyLength) {
  for (std::size_t length = 0; length <= longest; ++length) {
    SCOPED_TRACE(length);
    const Bytes bytes = sevenBitBytes(length, 0xFF);
    const SysExData data(bytes);
    EXPECT_TRUE(holds(data, bytes));
    for (std::size_t other = 0; other <= longest; ++other) {
      const SysExData another(sevenBitBytes(other, 0xFF));
      EXPECT_EQ(data == another, length == other);
      EXPECT_EQ(std::hash<SysExData>()(data) == std::hash<SysExData>()(another), length == other);
    }
  }
  EXPECT_TRUE(holds(SysExData{1, 2, 255}, {1, 2, 255}));
  EXPECT_NE((SysExData{1, 2}), (SysExData{1, 3}));
}

TEST(SysExDataTest, CopiesAndMovesKeepTheBytes) {
  for (std::size_t length = 0; length <= longest; ++length) {
    const Bytes bytes = sevenBitBytes(length);
    for (const std::size_t before : {0U, 3U, 15U, 16U, 40U}) {
      const SysExData data(bytes);
      SysExData assigned(Bytes(before, 0x55));
      assigned = data;
      EXPECT_TRUE(holds(assigned, bytes));
      SysExData moved = std::move(assigned);
      EXPECT_TRUE(holds(moved, bytes));
      assigned = SysExData(Bytes(before, 0x55));
      EXPECT_TRUE(holds(assigned, Bytes(before, 0x55)));
      assigned = std::move(moved);
      SysExData& self = assigned;
      assigned = self;
      EXPECT_TRUE(holds(assigned, bytes));
      EXPECT_TRUE(holds(data, bytes));
    }
  }
}

TEST(SysEx7DataTest, RefusesAByteOfEightBitsWhereverItStands) {
  for (std::size_t length = 0; length <= longest; ++length) {
    Bytes bytes = sevenBitBytes(length, 0x7F);
    const auto data = SysEx7Data::exactly(bytes);
    ASSERT_TRUE(data);
    EXPECT_TRUE(holds(*data, bytes));
    for (std::size_t i = 0; i < length; ++i) {
      const auto kept = std::exchange(bytes[i], 0x80);
      EXPECT_FALSE(SysEx7Data::exactly(bytes)) << length << ' ' << i;
      bytes[i] = kept;
    }
  }
}

// Nothing but checked bytes becomes a body of 7-bit bytes, and no body is changed by way of the general one.
static_assert(!std::is_convertible_v<SysEx7Data&, SysExData&> && !std::is_base_of_v<SysExData, SysEx7Data>);
static_assert(!std::is_assignable_v<SysEx7Data&, SysExData> &&
              !std::is_constructible_v<SysEx7Data, SysExData>);

}  // namespace
}  // namespace midikit::core
