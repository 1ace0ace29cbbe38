#include "rig/VirtualBus.hpp"

#include <gmock/gmock.h>

#include <memory>

#include "foundation/run/VirtualRuntime.hpp"
#include "rig/VirtualHid.hpp"

namespace karvex::rig {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class VirtualBusTest : public testing::Test {
 protected:
  VirtualBusTest() {
    plugIn("TEENSY2", "10", {});
    plugIn("TEENSYLC", "20", {.deniesAccess = true});
  }
  void plugIn(const char* mcu, const char* serialNumber, Faults faults) {
    bus.plugIn(std::make_unique<VirtualBoard>(*findBoardKind(mcu), serialNumber, faults));
  }
  std::vector<std::pair<std::string, std::int32_t>> listed() {
    std::vector<std::pair<std::string, std::int32_t>> found;
    bus.forEachDevice([&found](const device::UsbDevice& device) {
      found.emplace_back(device.serialNumber.value(), device.idProduct.value());
    });
    return found;
  }

  foundation::VirtualRuntime runtime;
  VirtualBus bus{runtime.clock()};
};

TEST_F(VirtualBusTest, ABoardIsListedAsWhatItIsAndNotAtAllOnItsWay) {
  EXPECT_THAT(listed(), ElementsAre(std::pair("10", 0x0489), std::pair("20", 0x0489)));
  EXPECT_TRUE(bus.isPresent("usbmodem101"));
  EXPECT_TRUE(bus.setLineSpeed("10", 134));
  EXPECT_FALSE(bus.setLineSpeed("10", 134)) << "the port has gone";
  EXPECT_FALSE(bus.setLineSpeed("30", 134));
  EXPECT_FALSE(bus.isPresent("usbmodem101"));
  EXPECT_THAT(listed(), ElementsAre(std::pair("20", 0x0489)));
  runtime.clock().sleepFor(VirtualBoard::usualSwitchTime);
  EXPECT_THAT(listed(), ElementsAre(std::pair("10", 0x0478), std::pair("20", 0x0489)));
  EXPECT_FALSE(bus.isPresent("usbmodem101")) << "a bootloader has no serial interface";
}

TEST_F(VirtualBusTest, TheFirstBoardListedIsTheOneThatIsOpenedWhoeverWasFirst) {
  bus.setLineSpeed("20", 134);
  runtime.clock().sleepFor(5s);
  bus.setLineSpeed("10", 134);
  EXPECT_EQ(bus.firstHalfKayBoard()->place, 1U);
  runtime.clock().sleepFor(5s);
  EXPECT_EQ(bus.firstHalfKayBoard()->place, 0U);
}

TEST_F(VirtualBusTest, AHandleBelongsToOneVisitOfTheBootloader) {
  VirtualHid hid(bus, runtime.clock());
  const auto calls = hid.calls();
  loader::hid_device* device = nullptr;
  bus.setLineSpeed("10", 134);
  runtime.clock().sleepFor(2s);
  ASSERT_EQ(calls.find_first(calls.context, 0x16C0, 0x0478, &device), loader::hid_search::found);
  ASSERT_EQ(calls.open(calls.context, device), loader::hid_access::opened);
  const std::vector<std::uint8_t> boot(130, 0xFF);
  const auto send = [&] { return calls.set_output_report(calls.context, device, boot.data(), boot.size()); };
  EXPECT_EQ(send(), loader::hid_delivery::sent);
  runtime.clock().sleepFor(5s);
  bus.setLineSpeed("10", 134);
  runtime.clock().sleepFor(5s);
  EXPECT_EQ(send(), loader::hid_delivery::gone);
  calls.close(calls.context, device);
}

}  // namespace
}  // namespace karvex::rig
