#include "service/DescriptorDecoder.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

namespace karvex::service {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Json = nlohmann::ordered_json;

Json goodElement() {
  return {{"isValid", false},
          {"midiName", "Pedal"},
          {"deviceSerialNumber", "1000010"},
          {"mcu", "TEENSY40"},
          {"firmwareName", "Expression Pedal"},
          {"firmwareVersion", "2.0"},
          {"setupDelay", 4294967295},
          {"serverURL", "https://firmware.example.com"},
          {"serverDirectory", "/files/"},
          {"serverFile", "pedal.hex"},
          {"sequenceNumber", -7},
          {"currentVersion", "1.9"}};
}

/// The answer with one element in which `key` has another value.
std::string with(const std::string& key, const Json& value) {
  auto element = goodElement();
  element[key] = value;
  return Json::array({goodElement(), element}).dump();
}

std::string without(const std::string& key) {
  auto element = goodElement();
  element.erase(key);
  return Json::array({goodElement(), element}).dump();
}

TEST(DescriptorDecoderTest, AGoodElementGivesEveryField) {
  const auto decoded = decodeDescriptors(Json::array({goodElement()}).dump());
  const records::ServerDeviceDescriptor expected{false,
                                                 "Pedal",
                                                 "1000010",
                                                 "TEENSY40",
                                                 "Expression Pedal",
                                                 "2.0",
                                                 4294967295,
                                                 "https://firmware.example.com",
                                                 "/files/",
                                                 "pedal.hex",
                                                 -7,
                                                 "1.9"};
  ASSERT_TRUE(decoded.descriptors);
  EXPECT_THAT(*decoded.descriptors, ElementsAre(expected));
  EXPECT_THAT(decoded.messages, IsEmpty());
}

TEST(DescriptorDecoderTest, WhatIsAllowedDecodes) {
  for (const auto& answer :
       {std::string("[]"), std::string(" [ ]\r\n"), without("midiName"), with("midiName", nullptr),
        with("unknown", Json::array()), with("setupDelay", 0), with("setupDelay", 5.0)}) {
    const auto decoded = decodeDescriptors(answer);
    EXPECT_TRUE(decoded.descriptors) << answer;
    EXPECT_THAT(decoded.messages, IsEmpty());
  }
  const auto twice = decodeDescriptors(with("serverFile", "b.hex"));
  ASSERT_TRUE(twice.descriptors);
  EXPECT_EQ(twice.descriptors->at(0).serverFile, "pedal.hex") << "the order is the answer's";
  EXPECT_EQ(twice.descriptors->at(1).serverFile, "b.hex");
}

TEST(DescriptorDecoderTest, EveryRequiredKeyIsMissedByItsName) {
  const auto complete = goodElement();
  for (const auto& [key, value] : complete.items()) {
    if (key == "midiName") {
      continue;
    }
    const auto missing = decodeDescriptors(without(key));
    EXPECT_FALSE(missing.descriptors) << key;
    EXPECT_THAT(missing.messages,
                ElementsAre(StartsWith(fmt::format("Erreur : Clé non trouvée '{}' - ", key))));

    const auto type = value.is_boolean()    ? "Bool"
                      : value.is_string()   ? "String"
                      : key == "setupDelay" ? "UInt32"
                                            : "Int";
    const auto null = decodeDescriptors(with(key, nullptr));
    EXPECT_FALSE(null.descriptors) << key;
    EXPECT_THAT(null.messages,
                ElementsAre(StartsWith(fmt::format("Erreur : Valeur non trouvée '{}' - ", type))));

    const auto wrong = decodeDescriptors(with(key, Json::object()));
    EXPECT_FALSE(wrong.descriptors) << key;
    EXPECT_THAT(wrong.messages,
                ElementsAre(StartsWith(fmt::format("Erreur : Type non conforme '{}' - ", type))));
    EXPECT_THAT(wrong.messages.front(), HasSubstr("[1]." + key)) << "the place is told";
  }
}

TEST(DescriptorDecoderTest, OtherFailuresHaveTheirTexts) {
  const std::pair<std::string, std::string> failures[] = {
      {with("midiName", 5), "Erreur : Type non conforme 'String' - "},
      {with("isValid", 1), "Erreur : Type non conforme 'Bool' - "},
      {with("setupDelay", "5"), "Erreur : Type non conforme 'UInt32' - "},
      {with("setupDelay", -1), "Erreur : Données corrompues - "},
      {with("setupDelay", 4294967296), "Erreur : Données corrompues - "},
      {with("setupDelay", 4294967296.0), "Erreur : Données corrompues - "},
      {with("sequenceNumber", 9007199254740994.0), "Erreur : Données corrompues - "},
      {with("setupDelay", 0.5), "Erreur : Données corrompues - "},
      {with("setupDelay", 1e300), "Erreur : Données corrompues - "},
      {with("sequenceNumber", 9223372036854775808U), "Erreur : Données corrompues - "},
      {with("sequenceNumber", 1e19), "Erreur : Données corrompues - "},
      {"{}", "Erreur : Type non conforme 'Array<Any>' - "},
      {"null", "Erreur : Valeur non trouvée 'Array<Any>' - "},
      {"[null]", "Erreur : Valeur non trouvée 'Dictionary<String, Any>' - "},
      {"[[]]", "Erreur : Type non conforme 'Dictionary<String, Any>' - "},
  };
  for (const auto& [answer, text] : failures) {
    const auto decoded = decodeDescriptors(answer);
    EXPECT_FALSE(decoded.descriptors) << answer;
    EXPECT_THAT(decoded.messages, ElementsAre(StartsWith(text))) << answer;
  }
}

TEST(DescriptorDecoderTest, WhatIsNoJsonIsSaidTwice) {
  for (const auto& answer : {std::string(), std::string("<html><h1>404 Not Found</h1></html>"),
                             std::string("[}"), std::string("[]x"), std::string("[\"\xFF\"]"),
                             std::string(100'000, '['), "\"" + std::string(100'000, 'x')}) {
    const auto decoded = decodeDescriptors(answer);
    EXPECT_FALSE(decoded.descriptors);
    EXPECT_THAT(decoded.messages, ElementsAre(StartsWith("Erreur de validation JSON : "),
                                              StartsWith("Erreur : Données corrompues - ")));
    EXPECT_LT(decoded.messages.front().size(), 300U);
  }
}

TEST(DescriptorDecoderTest, AnExaminationEndsAtTheMostFaults) {
  EXPECT_EQ(examineDescriptors("[1,2,3]", 2).elements.size(), 2U);
}

}  // namespace
}  // namespace karvex::service
