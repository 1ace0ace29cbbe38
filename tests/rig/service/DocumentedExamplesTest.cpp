// docs/firmware-service.md and its examples are what the program sends and understands.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "device/EquipmentReport.hpp"
#include "rig/service/ServedDevice.hpp"
#include "rig/service/ServiceFaults.hpp"
#include "service/DescriptorDecoder.hpp"
#include "service/FormText.hpp"

namespace karvex {
namespace {

std::string read(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string example(const char* name) {
  return read(std::filesystem::path(KARVEX_EXAMPLES_DIRECTORY) / name);
}

std::string page() {
  return read(std::filesystem::path(KARVEX_EXAMPLES_DIRECTORY).parent_path() / "firmware-service.md");
}

/// The blocks of the page that stand between lines of three backticks, without their last line end.
std::vector<std::string> fencedBlocks(std::string_view text, std::string_view language) {
  const std::string opening = "\n```" + std::string(language) + "\n";
  constexpr std::string_view closing = "\n```\n";
  std::vector<std::string> blocks;
  for (auto at = text.find("\n```"); at != std::string_view::npos; at = text.find("\n```", at)) {
    const auto begin = text.find('\n', at + 1) + 1;
    const auto end = text.find(closing, begin);
    if (text.substr(at, begin - at) == opening) {
      blocks.emplace_back(text.substr(begin, end - begin));
    }
    at = end + closing.size() - 1;
  }
  return blocks;
}

TEST(DocumentedExamplesTest, TheProgramUnderstandsTheList) {
  const auto decoded = service::decodeDescriptors(example("loaderInfo.json"));
  ASSERT_TRUE(decoded.descriptors) << testing::PrintToString(decoded.messages);
  ASSERT_EQ(decoded.descriptors->size(), 2U);
  const auto& [first, second] = std::tie(decoded.descriptors->front(), decoded.descriptors->back());
  EXPECT_EQ(first.midiName, "Step Sequencer");
  EXPECT_EQ(first.setupDelay, 3000U);
  EXPECT_EQ(second.midiName, std::nullopt);
  // The same URL, however its slashes are shared out.
  EXPECT_EQ(first.serverURL + first.serverDirectory, second.serverURL + second.serverDirectory);
}

TEST(DocumentedExamplesTest, TheProgramSendsTheForm) {
  EXPECT_EQ(service::formText({{"DEVICE_SERIAL_NUMBER", "9038410"},
                               {"DEVICE_FIRMWARE_NAME", "Expression Pedal & Switch"},
                               {"DEVICE_FIRMWARE_VERSION", "1.10"}}),
            example("uploadComplete.txt"));
}

TEST(DocumentedExamplesTest, TheProgramSendsTheReport) {
  const std::string named = "Step Sequencer";
  const std::string unnamed = "Raw HID Device";
  EXPECT_EQ(
      device::jsonOf(
          {.devices = {{"/dev/cu.usbmodem145273601", named, "14527360", 0x16C0, 0x0489, 0x0279, named},
                       {"/dev/cu.usbmodem90384101", unnamed, "9038410", 0x16C0, 0x0489, 0x0212, unnamed}}}),
      example("deviceExplorer.json"));
}

TEST(DocumentedExamplesTest, ThePageShowsTheExamples) {
  using nlohmann::json;
  const auto documents = fencedBlocks(page(), "json");
  ASSERT_EQ(documents.size(), 2U);
  EXPECT_EQ(documents[0] + "\n", example("loaderInfo.json"));
  EXPECT_EQ(json::parse(documents[1]), json::parse(example("deviceExplorer.json")));
  EXPECT_THAT(fencedBlocks(page(), ""), testing::ElementsAre(example("uploadComplete.txt")));
}

TEST(DocumentedExamplesTest, ThePageNamesEachFaultAndEachKey) {
  const auto help = rig::describeServiceFaults();
  for (std::size_t at = 0; at < help.find("  PLACE"); at = help.find('\n', at) + 1) {
    const auto name = help.substr(at + 2, help.find_first_of(" [", at + 2) - at - 2);
    EXPECT_THAT(page(), testing::HasSubstr("`" + name + "`"));
  }
  for (const auto key : rig::servedDeviceKeys()) {
    EXPECT_THAT(page(), testing::HasSubstr("| `" + std::string(key) + "` |"));
  }
}

}  // namespace
}  // namespace karvex
