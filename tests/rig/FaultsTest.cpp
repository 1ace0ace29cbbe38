#include "rig/Faults.hpp"

#include <gmock/gmock.h>

namespace karvex::rig {
namespace {

using namespace std::chrono_literals;

TEST(FaultsTest, NamesAndValuesAddUpAndWhatCannotBeUnderstoodChangesNothing) {
  Faults faults;
  for (const char* text : {"enters-late", "refuses=250", "vanishes=0", "returns-late=4294967295"}) {
    EXPECT_EQ(addFault(text, faults), std::nullopt) << text;
  }
  for (const char* text : {"", "=", "refuse", "refuses=", "refuses=-1", "refuses=1x", "refuses=4294967296",
                           "access-denied=1", "refuses-for-good=", "REFUSES"}) {
    EXPECT_NE(addFault(text, faults), std::nullopt) << text;
  }
  EXPECT_EQ(faults.entersHalfKayAfter, 12s);
  EXPECT_EQ(faults.refusesReportsFor, 250ms);
  EXPECT_EQ(faults.vanishesAtBlock, 0U);
  EXPECT_EQ(faults.returnsAfter, std::chrono::milliseconds(4294967295));
  EXPECT_FALSE(faults.deniesAccess || faults.refusesReportsForGood || faults.neverReturns);
}

}  // namespace
}  // namespace karvex::rig
