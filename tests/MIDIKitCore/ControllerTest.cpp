#include "MIDIKitCore/controllers/Controller.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "MIDIKitCore/controllers/PerNoteController.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using Registered = PerNoteController::Registered;

/// 1 for each number in the ranges, which are closed.
template <std::size_t count>
std::set<int> numbersIn(const int (&ranges)[count][2]) {
  std::set<int> numbers;
  for (const auto& [first, last] : ranges) {
    for (int number = first; number <= last; ++number) {
      numbers.insert(number);
    }
  }
  return numbers;
}

/// The names of a kind of controllers stand for these numbers, in ascending order.
void expectInOrder(const std::set<int>& numbers, auto... names) {
  EXPECT_EQ((std::vector{static_cast<int>(names)...}), std::vector(numbers.begin(), numbers.end()));
}

const auto undefinedNumbers = numbersIn({{3, 3}, {9, 9}, {14, 15}, {20, 31}, {85, 87}, {89, 90}, {102, 119}});

TEST(ControllerTest, EveryNumberHasItsCaseItsTextAndItselfBack) {
  std::string texts;
  for (int number = 0; number <= 127; ++number) {
    SCOPED_TRACE(number);
    const Controller controller{UInt7(number)};
    const bool isLSB = number >= 32 && number < 64;
    const bool isMode = number >= 120;
    const bool isUndefined = undefinedNumbers.contains(isLSB ? number - 32 : number);
    EXPECT_EQ(controller.number().value(), number);
    EXPECT_EQ(controller.plain().has_value(), !isLSB && !isMode && !isUndefined);
    EXPECT_EQ(controller.undefined().has_value(), !isLSB && isUndefined);
    EXPECT_EQ(controller.mode().has_value(), isMode);
    EXPECT_EQ(controller.lsb().has_value(), isLSB);
    const auto lsb = ControllerLSB::fromNumber(UInt7(number));
    ASSERT_EQ(lsb.has_value(), isLSB);
    if (lsb) {
      EXPECT_EQ(Controller::lsb(*lsb), controller);
      EXPECT_EQ(lsb->plain().has_value(), !isUndefined);
      EXPECT_EQ(lsb->undefined().has_value(), isUndefined);
    }
    texts += controller.description() + "\n";
  }
  EXPECT_EQ(digestOf(texts), 8468889951183625148U) << texts;
}

TEST(ControllerTest, SomeTexts) {
  const struct {
    int number;
    std::string text;
  } rows[] = {{0, "Bank Select"},
              {3, "Undefined CC3"},
              {7, "Volume"},
              {32, "Bank Select LSB"},
              {35, "Undefined CC3 LSB"},
              {37, "PortamentoTime LSB"},
              {70, "Sound Control 1 - Sound Variation"},
              {88, "High Resolution Velocity Prefix"},
              {101, "RPN MSB"},
              {119, "Undefined CC119"},
              {127, "Poly Mode On"}};
  for (const auto& [number, text] : rows) {
    EXPECT_EQ(Controller(UInt7(number)).description(), text);
  }
}

TEST(ControllerTest, NamesStandForTheirNumbers) {
  using C = Controller;
  expectInOrder(numbersIn({{0, 2}, {4, 8}, {10, 13}, {16, 19}, {64, 84}, {88, 88}, {91, 101}}), C::bankSelect,
                C::modWheel, C::breath, C::footController, C::portamentoTime, C::dataEntry, C::volume,
                C::balance, C::pan, C::expression, C::effectControl1, C::effectControl2, C::generalPurpose1,
                C::generalPurpose2, C::generalPurpose3, C::generalPurpose4, C::sustainPedal, C::portamento,
                C::sostenutoPedal, C::softPedal, C::legatoFootswitch, C::hold2, C::soundCtrl1_soundVariation,
                C::soundCtrl2_timbreIntensity, C::soundCtrl3_releaseTime, C::soundCtrl4_attackTime,
                C::soundCtrl5_brightness, C::soundCtrl6_decayTime, C::soundCtrl7_vibratoRate,
                C::soundCtrl8_vibratoDepth, C::soundCtrl9_vibratoDelay, C::soundCtrl10_defaultUndefined,
                C::generalPurpose5, C::generalPurpose6, C::generalPurpose7, C::generalPurpose8,
                C::portamentoControl, C::highResolutionVelocityPrefix, C::effects1Depth_reverbSendLevel,
                C::effects2Depth, C::effects3Depth_chorusSendLevel, C::effects4Depth, C::effects5Depth,
                C::dataIncrement, C::dataDecrement, C::nrpnLSB, C::nrpnMSB, C::rpnLSB, C::rpnMSB);
  using L = ControllerLSB;
  expectInOrder(numbersIn({{32, 34}, {36, 40}, {42, 45}, {48, 51}}), L::bankSelect, L::modWheel, L::breath,
                L::footController, L::portamentoTime, L::dataEntry, L::channelVolume, L::balance, L::pan,
                L::expression, L::effectControl1, L::effectControl2, L::generalPurpose1, L::generalPurpose2,
                L::generalPurpose3, L::generalPurpose4);
  using M = Controller::Mode;
  expectInOrder(numbersIn({{120, 127}}), M::allSoundOff, M::resetAllControllers, M::localControl,
                M::allNotesOff, M::omniModeOff, M::omniModeOn, M::monoModeOn, M::polyModeOn);
  EXPECT_EQ(ControllerLSB::undefined(ControllerLSB::Undefined::cc3).number().value(), 35);
  EXPECT_EQ(ControllerLSB::undefined(ControllerLSB::Undefined::cc31).number().value(), 63);
}

const auto perNoteNumbers = numbersIn({{1, 3}, {7, 8}, {10, 11}, {70, 79}, {91, 95}});

TEST(PerNoteControllerTest, EveryRegisteredNumberHasItsCaseAndItsText) {
  for (int number = 0; number <= 255; ++number) {
    SCOPED_TRACE(number);
    const Registered registered{static_cast<std::uint8_t>(number)};
    const bool isPlain = perNoteNumbers.contains(number);
    EXPECT_EQ(registered.number(), number);
    EXPECT_EQ(registered.plain().has_value(), isPlain);
    EXPECT_EQ(registered.undefined().has_value(), !isPlain);
    EXPECT_EQ(registered.description(), number == 3 ? "Pitch 7.25"
                                        : isPlain   ? Controller(UInt7(number)).description()
                                                    : "Undefined Per-Note CC" + std::to_string(number));
    const auto assignable = PerNoteController::assignable(static_cast<std::uint8_t>(number));
    EXPECT_EQ(PerNoteController::registered(registered).description(),
              "registered(" + std::to_string(number) + ")");
    EXPECT_EQ(assignable.description(), "assignable(" + std::to_string(number) + ")");
    EXPECT_NE(assignable, PerNoteController::registered(registered));
    EXPECT_FALSE(assignable.registered());
  }
  EXPECT_EQ(Registered::undefined(Registered::Undefined::cc255).number(), 255);
}

TEST(PerNoteControllerTest, NamesStandForTheirNumbers) {
  using R = Registered;
  expectInOrder(perNoteNumbers, R::modWheel, R::breath, R::pitch7_25, R::volume, R::balance, R::pan,
                R::expression, R::soundCtrl1_soundVariation, R::soundCtrl2_timbreIntensity,
                R::soundCtrl3_releaseTime, R::soundCtrl4_attackTime, R::soundCtrl5_brightness,
                R::soundCtrl6_decayTime, R::soundCtrl7_vibratoRate, R::soundCtrl8_vibratoDepth,
                R::soundCtrl9_vibratoDelay, R::soundCtrl10_defaultUndefined, R::effects1Depth_reverbSendLevel,
                R::effects2Depth, R::effects3Depth_chorusSendLevel, R::effects4Depth, R::effects5Depth);
}

}  // namespace
}  // namespace midikit::core
