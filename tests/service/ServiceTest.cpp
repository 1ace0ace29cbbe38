// What is said to the firmware service, and what it answers.

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "foundation/run/VirtualRuntime.hpp"
#include "service/DescriptorDecoder.hpp"
#include "service/FirmwareService.hpp"
#include "service/FormText.hpp"

namespace karvex::service {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Json = nlohmann::json;

const Json good =
    Json::parse(R"({"isValid":false,"midiName":"Pedal","deviceSerialNumber":"1000010","mcu":"TEENSY40",
  "firmwareName":"Expression Pedal","firmwareVersion":"2.0","setupDelay":4294967295,"serverURL":"https://example.com",
  "serverDirectory":"/files/","serverFile":"pedal.hex","sequenceNumber":-7,"currentVersion":"1.9"})");

/// An answer whose second element has another value for `key`, or none.
std::string with(const std::string& key, std::optional<Json> value) {
  auto element = good;
  element.erase(key);
  if (value) {
    element[key] = *value;
  }
  return Json::array({good, element}).dump();
}

TEST(DescriptorDecoderTest, WhatIsAllowedDecodes) {
  const std::string allowed[] = {
      " [ ]\r\n",         with("midiName", std::nullopt), with("midiName", nullptr),
      with("unknown", 0), with("setupDelay", 5.0),        with("sequenceNumber", -9007199254740991.0)};
  for (const auto& answer : allowed) {
    const auto decoded = decodeDescriptors(answer);
    EXPECT_TRUE(decoded.descriptors) << answer;
    EXPECT_THAT(decoded.messages, IsEmpty());
  }
  std::string seen;
  const auto decoded = decodeDescriptors(with("midiName", nullptr));
  for (const auto& d : decoded.descriptors.value()) {
    seen += fmt::format("{} {} {} {} {} {} {} {} {} {} {} {}\n", d.isValid, d.midiName.value_or("-"),
                        d.deviceSerialNumber, d.mcu, d.firmwareName, d.firmwareVersion, d.setupDelay,
                        d.serverURL, d.serverDirectory, d.serverFile, d.sequenceNumber, d.currentVersion);
  }
  const std::string rest =
      " 1000010 TEENSY40 Expression Pedal 2.0 4294967295 https://example.com /files/ pedal.hex -7 1.9\n";
  EXPECT_EQ(seen, "false Pedal" + rest + "false -" + rest);
}

TEST(DescriptorDecoderTest, WhatIsNotAllowedIsSaidWithItsPlace) {
  const auto messageOf = [](const std::string& answer) {
    const auto decoded = decodeDescriptors(answer);
    EXPECT_FALSE(decoded.descriptors) << answer;
    return decoded.messages.size() == 1 ? decoded.messages.front() : "";
  };
  const std::pair<const char*, const char*> required[] = {
      {"isValid", "Bool"},        {"deviceSerialNumber", "String"}, {"mcu", "String"},
      {"firmwareName", "String"}, {"firmwareVersion", "String"},    {"setupDelay", "UInt32"},
      {"serverURL", "String"},    {"serverDirectory", "String"},    {"serverFile", "String"},
      {"sequenceNumber", "Int"},  {"currentVersion", "String"}};
  for (const auto& [key, type] : required) {
    EXPECT_EQ(messageOf(with(key, std::nullopt)),
              fmt::format("Erreur : Clé non trouvée '{0}' - No value for key {0} at [1].", key));
    EXPECT_EQ(
        messageOf(with(key, nullptr)),
        fmt::format("Erreur : Valeur non trouvée '{0}' - Expected {0} at [1].{1}, found null.", type, key));
    EXPECT_EQ(
        messageOf(with(key, Json::object())),
        fmt::format("Erreur : Type non conforme '{0}' - Expected {0} at [1].{1}, found object.", type, key));
  }
  const std::pair<std::string, const char*> cases[] = {
      {with("midiName", 5), "Type non conforme 'String'"},
      {with("isValid", 1), "Type non conforme 'Bool'"},
      {with("setupDelay", "5"), "Type non conforme 'UInt32'"},
      {with("setupDelay", -1),
       "Données corrompues - The number -1 at [1].setupDelay does not fit in UInt32."},
      {with("setupDelay", 4294967296), "Données corrompues"},
      {with("setupDelay", 4294967296.0), "Données corrompues"},
      {with("setupDelay", 0.5), "Données corrompues"},
      {with("setupDelay", 1e300), "Données corrompues"},
      {with("sequenceNumber", 9223372036854775808U), "Données corrompues"},
      {with("sequenceNumber", 9007199254740992.0), "Données corrompues"},
      {"{}", "Type non conforme 'Array<Any>'"},
      {"null", "Valeur non trouvée 'Array<Any>'"},
      {"[null]", "Valeur non trouvée 'Dictionary<String, Any>'"},
      {"[[]]", "Type non conforme 'Dictionary<String, Any>'"},
  };
  for (const auto& [answer, text] : cases) {
    EXPECT_THAT(messageOf(answer), StartsWith(std::string("Erreur : ") + text)) << answer;
  }
  const std::string noJson[] = {"",           "<html></html>",           "[]x",
                                "[\"\xFF\"]", std::string(100'000, '['), '"' + std::string(100'000, 'x')};
  for (const auto& answer : noJson) {
    const auto decoded = decodeDescriptors(answer);
    EXPECT_FALSE(decoded.descriptors);
    EXPECT_THAT(
        decoded.messages,
        ElementsAre(AllOf(StartsWith("Erreur de validation JSON : "), testing::SizeIs(testing::Lt(300U))),
                    "Erreur : Données corrompues - The given data was not valid JSON."));
  }
}

TEST(DescriptorDecoderTest, AnExaminationEndsAtTheMostFaults) {
  EXPECT_EQ(examineDescriptors("[1,2,3]", 2).elements.size(), 2U);
}

TEST(FormTextTest, WhatAReaderOfFormsWouldTakeForSomethingElseIsEscaped) {
  EXPECT_EQ(formText({}), "");
  EXPECT_EQ(formText({{"DEVICE_SERIAL_NUMBER", "1000010"}, {"A", ""}, {"", "&="}, {"+%", "#\"<>"}}),
            "DEVICE_SERIAL_NUMBER=1000010&A=&=%26%3D&%2B%25=%23%22%3C%3E");
  EXPECT_EQ(formText({{"Käse \xE2\x82\xAC", std::string("\0\n\x7F", 3)}}), "K%C3%A4se%20%E2%82%AC=%00%0A%7F");
  EXPECT_EQ(formText({{"aZ09-._~!$'()*,;:@/?", "[]{}|\\^`"}}),
            "aZ09-._~!$'()*,;:@/?=%5B%5D%7B%7D%7C%5C%5E%60");
}

TEST(FirmwareServiceTest, EachRequestNeedsItsOwnAddress) {
  foundation::VirtualRuntime runtime;
  foundation::UrlSession session(runtime);
  FirmwareService onlyAsks(session, {.loaderInfo = "http://localhost/"});
  EXPECT_TRUE(onlyAsks.canAskForDescriptors() && !onlyAsks.canReportCompletion());
  FirmwareService onlyReports(session, {.uploadComplete = "http://localhost/"});
  EXPECT_TRUE(!onlyReports.canAskForDescriptors() && onlyReports.canReportCompletion());
}

}  // namespace
}  // namespace karvex::service
