#include "rig/service/ServiceFaults.hpp"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "rig/service/ServedDevice.hpp"

namespace karvex::rig {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

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

TEST(SpoilListTest, OnlyTheKeyOfTheLastDeviceIsSpoiled) {
  const std::vector<ServedDevice> devices = {{.mcu = "TEENSY40"}, {.midiName = "Keys", .mcu = "TEENSY41"}};
  const auto good = json::parse(listText(devices));
  for (const auto key : servedDeviceKeys()) {
    const std::string name(key);
    const auto spoiled = [&](Misbehaviour kind) {
      const auto list = json::parse(spoilList(good.dump(), {.kind = kind, .only = {}, .text = name}));
      EXPECT_EQ(list.size(), 2U);
      EXPECT_EQ(list[0], good[0]);
      auto others = list[1];
      others[name] = good[1][name];
      EXPECT_EQ(others, good[1]) << name;
      return list[1];
    };
    EXPECT_FALSE(spoiled(Misbehaviour::missingKey).contains(name)) << name;
    EXPECT_TRUE(spoiled(Misbehaviour::nullValue)[name].is_null()) << name;
    EXPECT_NE(spoiled(Misbehaviour::wrongType)[name].is_string(), good[1][name].is_string()) << name;
  }
  const auto outOfRange =
      json::parse(spoilList(good.dump(), {.kind = Misbehaviour::outOfRange, .only = {}, .number = -1}));
  EXPECT_EQ(outOfRange[1]["setupDelay"], -1);
  const auto unknown =
      json::parse(spoilList(good.dump(), {.kind = Misbehaviour::unknownMcu, .only = {}, .text = "TEENSY99"}));
  EXPECT_EQ(unknown[1]["mcu"], "TEENSY99");
  EXPECT_EQ(unknown[0], good[0]);
}

}  // namespace
}  // namespace karvex::rig
