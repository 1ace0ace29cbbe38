#include "upgrade/Alert.hpp"

#include <gtest/gtest.h>

namespace karvex::upgrade {
namespace {

/// Each text in full: support and translations go by the exact words, blanks included.
TEST(AlertTest, TheWordsOfEachAlert) {
  const struct {
    Alert alert;
    const char* detail;
    const char* title;
    const char* message;
  } cases[] = {
      {Alert::halfkayModeDetected, "not shown", "Device already in programming mode",
       "One of the devices of the equipment is already in programming mode.\nClick on OK to restore initial "
       "state. If the problem persists \npower-down your device, then click on OK, then power-up your "
       "device.\nQuit and re-launch KARVEX application. Then restart upload procedure."},
      {Alert::procedureComplete, "not shown", "Upgrade Procedure Complete",
       "All devices have been upgraded.\nYou can now close this application."},
      {Alert::uploadError, "Error - Could not open Teensy", "An error occurred during upload",
       "Error - Could not open Teensy\nRefresh list then restart upgrade procedure.\nIf the problem persists "
       "Power-Down then Power-Up your equipment\nand restart upgrade procedure."},
      {Alert::portBusy, "not shown", "Device Port currently in use! ",
       "One or more application(s) currently active on your system prevents\nexclusive access to the serial "
       "port required for upgrading the device firmware.\nPlease shutdown all applications (e.g. serial "
       "monitor, midi monitor,\nDAW monitoring tools, etc.) that may interfer with the device before "
       "continuing.\nThen restart upgrade procedure."},
      {Alert::downloadError, "not shown", "Could not download Firmware file",
       "            An error occurred during the attempt\n            to download one firmware file.\n       "
       " "
       "    \n            Check your internet connection and retry the upload procedure."},
      {Alert::halfkayModeFailed, "", "Could not switch device to programming mode",
       "An error occurred during an attempt to put the device in programming mode.\nTry to switch power-off, "
       "then power-on and retry procedure.\nIf the problem persists notify your dealer with the following "
       "info: "},
      {Alert::halfkayModeFailed, "Port gone", "Could not switch device to programming mode",
       "An error occurred during an attempt to put the device in programming mode.\nTry to switch power-off, "
       "then power-on and retry procedure.\nIf the problem persists notify your dealer with the following "
       "info: Port gone"},
  };
  for (const auto& example : cases) {
    EXPECT_EQ(titleOf(example.alert), example.title);
    EXPECT_EQ(messageOf(example.alert, example.detail), example.message);
  }
}

}  // namespace
}  // namespace karvex::upgrade
