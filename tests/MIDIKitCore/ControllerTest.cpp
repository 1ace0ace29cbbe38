#include "MIDIKitCore/Controller.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "MIDIKitCore/PerNoteController.hpp"

namespace midikit::core {
namespace {

using namespace literals;

struct PlainRow {
  int number;
  Controller controller;
  std::string text;
};
const PlainRow plainRows[] = {
    {0, Controller::bankSelect, "Bank Select"},
    {1, Controller::modWheel, "Mod Wheel"},
    {2, Controller::breath, "Breath Controller"},
    {4, Controller::footController, "Foot Controller"},
    {5, Controller::portamentoTime, "Portamento Time"},
    {6, Controller::dataEntry, "Data Entry MSB"},
    {7, Controller::volume, "Volume"},
    {8, Controller::balance, "Balance"},
    {10, Controller::pan, "Pan"},
    {11, Controller::expression, "Expression"},
    {12, Controller::effectControl1, "Effect Control 1"},
    {13, Controller::effectControl2, "Effect Control 2"},
    {16, Controller::generalPurpose1, "General Purpose 1"},
    {17, Controller::generalPurpose2, "General Purpose 2"},
    {18, Controller::generalPurpose3, "General Purpose 3"},
    {19, Controller::generalPurpose4, "General Purpose 4"},
    {64, Controller::sustainPedal, "Sustain Pedal"},
    {65, Controller::portamento, "Portamento"},
    {66, Controller::sostenutoPedal, "Sostenuto Pedal"},
    {67, Controller::softPedal, "Soft Pedal"},
    {68, Controller::legatoFootswitch, "Legato Footswitch"},
    {69, Controller::hold2, "Hold 2"},
    {70, Controller::soundCtrl1_soundVariation, "Sound Control 1 - Sound Variation"},
    {71, Controller::soundCtrl2_timbreIntensity, "Sound Control 2 - Timbre Intensity"},
    {72, Controller::soundCtrl3_releaseTime, "Sound Control 3 - Release Time"},
    {73, Controller::soundCtrl4_attackTime, "Sound Control 4 - Attack Time"},
    {74, Controller::soundCtrl5_brightness, "Sound Control 5 - Brightness"},
    {75, Controller::soundCtrl6_decayTime, "Sound Control 6 - Decay Time"},
    {76, Controller::soundCtrl7_vibratoRate, "Sound Control 7 - Vibrato Rate"},
    {77, Controller::soundCtrl8_vibratoDepth, "Sound Control 8 - Vibrato Depth"},
    {78, Controller::soundCtrl9_vibratoDelay, "Sound Control 9 - Vibrato Delay"},
    {79, Controller::soundCtrl10_defaultUndefined, "Sound Control 10 - Undefined"},
    {80, Controller::generalPurpose5, "General Purpose 5"},
    {81, Controller::generalPurpose6, "General Purpose 6"},
    {82, Controller::generalPurpose7, "General Purpose 7"},
    {83, Controller::generalPurpose8, "General Purpose 8"},
    {84, Controller::portamentoControl, "Portamento Control"},
    {88, Controller::highResolutionVelocityPrefix, "High Resolution Velocity Prefix"},
    {91, Controller::effects1Depth_reverbSendLevel, "Effects 1 Depth - Reverb Send Level"},
    {92, Controller::effects2Depth, "Effects 2 Depth"},
    {93, Controller::effects3Depth_chorusSendLevel, "Effects 3 Depth - Chorus Send Level"},
    {94, Controller::effects4Depth, "Effects 4 Depth"},
    {95, Controller::effects5Depth, "Effects 5 Depth"},
    {96, Controller::dataIncrement, "Data Increment"},
    {97, Controller::dataDecrement, "Data Decrement"},
    {98, Controller::nrpnLSB, "NRPN LSB"},
    {99, Controller::nrpnMSB, "NRPN MSB"},
    {100, Controller::rpnLSB, "RPN LSB"},
    {101, Controller::rpnMSB, "RPN MSB"},
};

struct LSBRow {
  int number;
  ControllerLSB lsb;
  std::string text;
};
const LSBRow lsbRows[] = {
    {32, ControllerLSB::bankSelect, "Bank Select LSB"},
    {33, ControllerLSB::modWheel, "Mod Wheel LSB"},
    {34, ControllerLSB::breath, "Breath Controller LSB"},
    {36, ControllerLSB::footController, "Foot Controller LSB"},
    {37, ControllerLSB::portamentoTime, "PortamentoTime LSB"},
    {38, ControllerLSB::dataEntry, "Data Entry LSB"},
    {39, ControllerLSB::channelVolume, "Volume LSB"},
    {40, ControllerLSB::balance, "Balance LSB"},
    {42, ControllerLSB::pan, "Pan LSB"},
    {43, ControllerLSB::expression, "Expression LSB"},
    {44, ControllerLSB::effectControl1, "Effect Control 1 LSB"},
    {45, ControllerLSB::effectControl2, "Effect Control 2 LSB"},
    {48, ControllerLSB::generalPurpose1, "General Purpose 1 LSB"},
    {49, ControllerLSB::generalPurpose2, "General Purpose 2 LSB"},
    {50, ControllerLSB::generalPurpose3, "General Purpose 3 LSB"},
    {51, ControllerLSB::generalPurpose4, "General Purpose 4 LSB"},
};

struct ModeRow {
  int number;
  Controller::Mode mode;
  std::string text;
};
const ModeRow modeRows[] = {
    {120, Controller::Mode::allSoundOff, "All Sound Off"},
    {121, Controller::Mode::resetAllControllers, "Reset All Controllers"},
    {122, Controller::Mode::localControl, "Local Control"},
    {123, Controller::Mode::allNotesOff, "All Notes Off"},
    {124, Controller::Mode::omniModeOff, "Omni Mode Off"},
    {125, Controller::Mode::omniModeOn, "Omni Mode On"},
    {126, Controller::Mode::monoModeOn, "Mono Mode On"},
    {127, Controller::Mode::polyModeOn, "Poly Mode On"},
};

/// "plain", "lsb", "undefined" or "mode", and the number that the case stands for.
std::pair<std::string, int> caseOf(Controller controller) {
  struct Namer {
    std::pair<std::string, int> operator()(Controller::Plain plain) const { return {"plain", plain}; }
    std::pair<std::string, int> operator()(ControllerLSB lsb) const { return {"lsb", lsb.number().value()}; }
    std::pair<std::string, int> operator()(Controller::Undefined undefined) const {
      return {"undefined", static_cast<int>(undefined)};
    }
    std::pair<std::string, int> operator()(Controller::Mode mode) const {
      return {"mode", static_cast<int>(mode)};
    }
  };
  return controller.visit(Namer());
}

TEST(ControllerTest, EveryNumberHasItsCaseItsTextAndItselfBack) {
  std::map<int, std::pair<std::string, std::string>> expected;
  for (const PlainRow& row : plainRows) {
    EXPECT_EQ(row.controller.number().value(), row.number);
    expected[row.number] = {"plain", row.text};
  }
  for (const LSBRow& row : lsbRows) {
    EXPECT_EQ(row.lsb.number().value(), row.number);
    EXPECT_EQ(Controller::lsb(row.lsb).number().value(), row.number);
    expected[row.number] = {"lsb", row.text};
  }
  for (const ModeRow& row : modeRows) {
    EXPECT_EQ(Controller::mode(row.mode).number().value(), row.number);
    expected[row.number] = {"mode", row.text};
  }
  ASSERT_EQ(expected.size(), 49U + 16U + 8U);
  for (int number = 0; number <= 127; ++number) {
    SCOPED_TRACE(number);
    const Controller controller{UInt7(number)};
    const bool isLSB = number >= 32 && number < 64;
    const std::string msbText = "Undefined CC" + std::to_string(isLSB ? number - 32 : number);
    const auto& [kind, text] =
        expected.contains(number)
            ? expected[number]
            : expected[number] = {isLSB ? "lsb" : "undefined", isLSB ? msbText + " LSB" : msbText};
    EXPECT_EQ(caseOf(controller), std::pair(kind, number));
    EXPECT_EQ(controller.description(), text);
    EXPECT_EQ(controller.number().value(), number);
    EXPECT_EQ(controller.plain().has_value(), kind == "plain");
    EXPECT_EQ(controller.lsb().has_value(), kind == "lsb");
    EXPECT_EQ(controller.undefined().has_value(), kind == "undefined");
    EXPECT_EQ(controller.mode().has_value(), kind == "mode");
  }
}

TEST(ControllerTest, EachUndefinedLeastSignificantHalfIsNamedAfterTheOther) {
  int undefinedCount = 0;
  for (int number = 32; number < 64; ++number) {
    const ControllerLSB lsb = *ControllerLSB::fromNumber(UInt7(number));
    const bool otherIsUndefined = Controller(UInt7(number - 32)).undefined().has_value();
    EXPECT_EQ(lsb.undefined().has_value(), otherIsUndefined) << number;
    EXPECT_EQ(lsb.plain().has_value(), !otherIsUndefined) << number;
    undefinedCount += otherIsUndefined ? 1 : 0;
  }
  EXPECT_EQ(undefinedCount, 16);
  EXPECT_EQ(ControllerLSB::undefined(ControllerLSB::Undefined::cc3).number(), 35_u7);
  EXPECT_EQ(ControllerLSB::undefined(ControllerLSB::Undefined::cc31).number(), 63_u7);
  EXPECT_FALSE(ControllerLSB::fromNumber(31_u7));
  EXPECT_FALSE(ControllerLSB::fromNumber(64_u7));
}

TEST(PerNoteControllerTest, EveryRegisteredNumberHasItsCaseAndItsText) {
  using Registered = PerNoteController::Registered;
  const std::set<int> plain = {1,  2,  3,  7,  8,  10, 11, 70, 71, 72, 73,
                               74, 75, 76, 77, 78, 79, 91, 92, 93, 94, 95};
  for (int number = 0; number <= 255; ++number) {
    SCOPED_TRACE(number);
    const Registered registered{static_cast<std::uint8_t>(number)};
    EXPECT_EQ(registered.number(), number);
    EXPECT_EQ(registered.plain().has_value(), plain.contains(number));
    EXPECT_EQ(registered.undefined().has_value(), !plain.contains(number));
    if (!plain.contains(number)) {
      EXPECT_EQ(registered.description(), "Undefined Per-Note CC" + std::to_string(number));
    } else if (number != 3) {
      EXPECT_EQ(registered.description(), Controller(UInt7(number)).description());
    }
    EXPECT_EQ(PerNoteController::registered(registered).description(),
              "registered(" + std::to_string(number) + ")");
    const auto assignable = PerNoteController::assignable(static_cast<std::uint8_t>(number));
    EXPECT_EQ(assignable.description(), "assignable(" + std::to_string(number) + ")");
    EXPECT_NE(assignable, PerNoteController::registered(registered));
    EXPECT_FALSE(assignable.registered());
  }
  EXPECT_EQ(Registered(Registered::pitch7_25).description(), "Pitch 7.25");
  EXPECT_EQ(Registered(Registered::breath).description(), "Breath Controller");
  EXPECT_EQ(Registered(Registered::effects5Depth).number(), 95);
  EXPECT_EQ(Registered::undefined(Registered::Undefined::cc255).number(), 255);
}

}  // namespace
}  // namespace midikit::core
