#include "MIDIKitInternals/InlineVector.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <utility>

namespace midikit::internals {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
/// An element that the sanitizers and the count of its owners watch.
using Element = std::shared_ptr<int>;
using List = InlineVector<Element, 2>;

TEST(InlineVectorTest, ElementsAreTheSameInsideAndOutside) {
  const auto a = std::make_shared<int>(1);
  const auto b = std::make_shared<int>(2);
  for (const std::size_t times : {1U, 2U, 3U, 5U}) {
    List list;
    for (std::size_t i = 1; i < times; ++i) {
      list.push_back(a);
    }
    list.push_back(b);
    EXPECT_EQ(list.capacity() > 2, times > 2);
    list.push_back(list.back());  // It may move while it is copied.
    const List copy(list);
    List moved(std::move(list));
    EXPECT_EQ(moved, copy);
    EXPECT_EQ(moved.size(), times + 1);
    EXPECT_EQ(moved.back(), b);
    list = copy;
    EXPECT_EQ(list, copy);
    list = std::move(moved);
    EXPECT_EQ(list, copy);
    EXPECT_THAT(moved, IsEmpty());
    EXPECT_EQ(a.use_count() + b.use_count(), static_cast<long>(2 + 2 * copy.size())) << "none is left behind";
    list.clear();
    list.append(copy.data(), copy.size());
    EXPECT_EQ(list, copy);
    EXPECT_THROW(list.at(list.size()), std::out_of_range);
  }
  EXPECT_THAT((InlineVector<int, 1>{1, 2, 3}), ElementsAre(1, 2, 3));
  EXPECT_EQ(a.use_count() + b.use_count(), 2);
}

}  // namespace
}  // namespace midikit::internals
