// The examples of docs/firmware-service.md are what the program sends and understands.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "device/EquipmentReport.hpp"
#include "service/DescriptorDecoder.hpp"
#include "service/FormText.hpp"

namespace karvex {
namespace {

std::string example(const char* name) {
  std::ifstream stream(std::filesystem::path(KARVEX_EXAMPLES_DIRECTORY) / name, std::ios::binary);
  EXPECT_TRUE(stream) << name;
  return {std::istreambuf_iterator<char>(stream), {}};
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

}  // namespace
}  // namespace karvex
