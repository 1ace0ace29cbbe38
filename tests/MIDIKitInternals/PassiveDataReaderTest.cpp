#include "MIDIKitInternals/PassiveDataReader.hpp"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace midikit::internals {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<std::uint8_t>;

class PassiveDataReaderTest : public testing::Test {
 protected:
  auto makeReader() {
    return PassiveDataReader([this]() -> const Bytes& { return data; });
  }

  Bytes data{1, 2, 3, 4};
};

TEST_F(PassiveDataReaderTest, ReadsMoveTheOffsetBehindWhatTheyRead) {
  auto reader = makeReader();
  EXPECT_THAT(*reader.read(0), IsEmpty());
  EXPECT_EQ(*reader.readByte(), 1);
  EXPECT_THAT(*reader.read(2), ElementsAre(2, 3));
  EXPECT_EQ(reader.readOffset, 3U);
  EXPECT_EQ(reader.remainingByteCount(), 1U);
  EXPECT_THAT(*reader.read(), ElementsAre(4));
  EXPECT_THAT(*reader.read(), IsEmpty());
  EXPECT_THAT(*reader.read(0), IsEmpty());
  EXPECT_EQ(reader.readOffset, 4U);
}

TEST_F(PassiveDataReaderTest, NonAdvancingReadsLeaveTheOffset) {
  auto reader = makeReader();
  reader.advance(1);
  EXPECT_THAT(*reader.nonAdvancingRead(2), ElementsAre(2, 3));
  EXPECT_THAT(*reader.nonAdvancingRead(), ElementsAre(2, 3, 4));
  EXPECT_EQ(*reader.nonAdvancingReadByte(), 2);
  EXPECT_EQ(reader.readOffset, 1U);
}

TEST_F(PassiveDataReaderTest, FailedReadsLeaveTheOffset) {
  using enum PassiveDataReadError;
  auto reader = makeReader();
  reader.advance(2);
  for (const std::ptrdiff_t count : {std::ptrdiff_t{3}, std::numeric_limits<std::ptrdiff_t>::max()}) {
    EXPECT_EQ(reader.read(count).error(), pastEndOfStream);
    EXPECT_EQ(reader.nonAdvancingRead(count).error(), pastEndOfStream);
  }
  EXPECT_EQ(reader.read(-1).error(), invalidByteCount);
  EXPECT_EQ(reader.nonAdvancingRead(std::numeric_limits<std::ptrdiff_t>::min()).error(), invalidByteCount);
  EXPECT_EQ(reader.readOffset, 2U);

  reader.advance(2);
  EXPECT_EQ(reader.readByte().error(), pastEndOfStream);
  EXPECT_EQ(reader.nonAdvancingReadByte().error(), pastEndOfStream);
  EXPECT_EQ(reader.readOffset, 4U);
}

TEST_F(PassiveDataReaderTest, NothingRemainsBehindTheEnd) {
  auto reader = makeReader();
  for (const std::size_t count : {std::size_t{5}, std::numeric_limits<std::size_t>::max()}) {
    reader.advance(count);
    EXPECT_EQ(reader.remainingByteCount(), 0U);
    EXPECT_THAT(*reader.read(), IsEmpty());
    EXPECT_EQ(reader.read(1).error(), PassiveDataReadError::pastEndOfStream);
  }
  EXPECT_EQ(reader.readOffset, std::numeric_limits<std::size_t>::max());
}

TEST_F(PassiveDataReaderTest, SeesTheDataAsTheyAreAtEachRead) {
  auto reader = makeReader();
  reader.advance(4);
  data.push_back(5);
  EXPECT_EQ(*reader.readByte(), 5);
  data = {9};
  EXPECT_EQ(reader.remainingByteCount(), 0U);
  reader.readOffset = 0;
  EXPECT_EQ(*reader.readByte(), 9);
}

TEST(PassiveDataReaderClosure, LendsContainersAndViewsButNoTemporaries) {
  static_assert(LentBytes<Bytes&> && LentBytes<const Bytes&> && LentBytes<std::span<std::uint8_t>>);
  static_assert(!LentBytes<Bytes> && !LentBytes<std::vector<int>&>);
}

}  // namespace
}  // namespace midikit::internals
