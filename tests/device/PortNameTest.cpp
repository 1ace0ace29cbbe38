#include "device/PortName.hpp"

#include <gtest/gtest.h>

namespace karvex::device {
namespace {

TEST(PortNameTest, ASerialNumberSurvivesTheWayThroughTheInterfaceName) {
  for (const char* serialNumber : {"1", "1234", "11", "usbmodem", "A-7 x"}) {
    EXPECT_EQ(serialNumberInInterfaceName(interfaceNameFor(serialNumber)), serialNumber);
  }
  for (const char* other : {"", "usbmodem", "usbmodem1", "usbmodem12", "eth01", "xusbmodem121"}) {
    EXPECT_FALSE(serialNumberInInterfaceName(other)) << other;
  }
}

}  // namespace
}  // namespace karvex::device
