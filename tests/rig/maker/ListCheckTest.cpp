#include "rig/maker/ListCheck.hpp"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <set>

#include "loader/mcu_table.hpp"
#include "rig/service/FilesBelow.hpp"

namespace karvex::rig {
namespace {

const std::filesystem::path lists = KARVEX_LISTS;

CheckedList check(const std::string& text) {
  return checkList(text, lists / "firmware");
}

/// "LINE PLACE: TEXT", one a line.
std::string textOf(const CheckedList& checked) {
  std::string text;
  for (const auto& fault : checked.faults) {
    text += std::to_string(fault.line) + " " + fault.place + ": " + fault.text + "\n";
  }
  return text;
}

std::string goodListWith(const std::string& key, const std::string& value) {
  auto list = nlohmann::json::parse(contentsOf(lists / "good.json").value());
  list[0][key] = value;
  return list.dump();
}

TEST(ListCheckTest, EveryFaultIsReportedAtOnce) {
  EXPECT_EQ(textOf(check(contentsOf(lists / "faulty.json").value())),
            contentsOf(lists / "faulty.txt").value());
}

TEST(ListCheckTest, AGoodListIsServedWithItsFiles) {
  const auto checked = check(contentsOf(lists / "good.json").value());
  ASSERT_EQ(textOf(checked), "");
  const auto served = servedFrom(checked.devices, "https://127.0.0.1:1");
  ASSERT_EQ(served.size(), 2U);
  EXPECT_EQ(served[1].serverURL + served[1].serverDirectory + served[1].serverFile,
            "https://127.0.0.1:1/firmware/v2/synth%20v2.hex");
  EXPECT_EQ(checked.devices[1].firmware.file, lists / "firmware/v2/synth v2.hex");
}

TEST(ListCheckTest, HostileListsAreBounded) {
  std::string many = "[1";
  for (int i = 0; i < 100'000; ++i) {
    many += ",1";
  }
  const struct {
    const char* description;
    std::string list;
    const char* text;
    std::size_t faults;
  } cases[] = {
      {"bytes", "\n[\xFF\x1B[2J",
       "2 : This is not JSON: syntax error while parsing value - invalid literal.\n", 1},
      {"no list", "null", "1 : Expected Array<Any>, found null.\n", 1},
      {"deep", std::string(1'000'000, '['), "1 : This is not JSON", 1},
      {"large", std::string(4 * 1024 * 1024 + 1, ' '), "0 : The list is larger than 4 MiB", 1},
      {"many faults", many + "]", "1 [0]: Expected Dictionary<String, Any>, found number.\n", 200},
      {"out of the folder", goodListWith("serverFile", "../../faulty.txt"), "The folder has no file", 1},
      {"a name that the system cuts", goodListWith("serverFile", "good.hex%00"), "The folder has no file", 1},
      {"a NUL in an MCU", goodListWith("mcu", std::string("TEENSY2\0", 8)), "\"TEENSY2\\u0000\"", 1},
      {"a terminal's sequence",
       goodListWith("firmwareName",
                    "\xC2\x9B"
                    "2J"),
       "\"\\u009b2J\" has a control", 1},
  };
  for (const auto& [description, list, text, faults] : cases) {
    const auto checked = check(list);
    EXPECT_THAT(textOf(checked), testing::HasSubstr(text)) << description;
    EXPECT_EQ(checked.faults.size(), faults) << description;
    EXPECT_EQ(checked.hasMoreFaults, faults == 200) << description;
  }
}

TEST(ListCheckTest, TheSchemaNamesTheKeysAndTheMicrocontrollers) {
  const auto items = nlohmann::json::parse(contentsOf(KARVEX_SCHEMA).value())["items"];
  std::set<std::string> optional;
  for (const auto key : servedDeviceKeys()) {
    ASSERT_TRUE(items["properties"].contains(key)) << key;
    optional.emplace(key);
  }
  for (const std::string key : items["required"]) {
    optional.erase(key);
  }
  EXPECT_THAT(optional, testing::ElementsAre("midiName"));
  std::vector<std::string> names;
  for (const auto& mcu : loader::mcu_table()) {
    names.emplace_back(mcu.name);
  }
  EXPECT_EQ(items["properties"]["mcu"]["enum"], nlohmann::json(names));
}

}  // namespace
}  // namespace karvex::rig
