#include "rig/service/ServiceFaults.hpp"

#include <gmock/gmock.h>

#include <sstream>
#include <vector>

namespace karvex::rig {
namespace {

using namespace std::chrono_literals;

ServiceFaults faultsOf(const std::vector<const char*>& texts) {
  ServiceFaults faults;
  for (const auto* text : texts) {
    EXPECT_EQ(addServiceFault(text, faults), std::nullopt) << text;
  }
  return faults;
}

TEST(ServiceFaultsTest, AFaultShowsWhereItIsSaidTo) {
  const auto faults = faultsOf({"slow=250", "slow@firmware=9000", "not-found", "endless@report", "not-json"});
  EXPECT_EQ(faults.delayAt(ServicePlace::list), 250ms);
  EXPECT_EQ(faults.delayAt(std::nullopt), 250ms);
  EXPECT_EQ(faults.delayAt(ServicePlace::firmware), 9s);
  EXPECT_EQ(faults.answerAt(ServicePlace::complete)->kind, Misbehaviour::notFound);
  EXPECT_EQ(faults.answerAt(ServicePlace::report)->kind, Misbehaviour::endless);
  EXPECT_EQ(faults.answerAt(ServicePlace::list)->kind, Misbehaviour::notJson);
  EXPECT_FALSE(faults.hasWrongCertificate());
}

TEST(ServiceFaultsTest, WhatCannotBeUnderstoodIsSaidAndChangesNothing) {
  ServiceFaults faults;
  std::istringstream texts(
      "= @list Slow slow= slow=-1 slow=1s slow=4294967296 slow@ slow@nowhere slow@list@report silent=1 "
      "cut-off= "
      "wrong-certificate@list missing-key= missing-key=MCU missing-key@firmware empty-list@report "
      "out-of-range=1.5 "
      "out-of-range=99999999999999999999 redirect-elsewhere=");
  for (std::string text; texts >> text;) {
    EXPECT_NE(addServiceFault(text, faults), std::nullopt) << text;
  }
  EXPECT_TRUE(faults.faults.empty());
}

}  // namespace
}  // namespace karvex::rig
