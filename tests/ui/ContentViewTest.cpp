#include "ui/ContentView.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <vector>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "tests/ui/UiFixture.hpp"

namespace karvex::ui {
namespace {

using namespace std::chrono_literals;
using midikit::core::MIDIIOError;
using rig::MIDIOperation;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class ContentViewTest : public UiFixture {
 protected:
  ContentViewTest() {
    foundation::log::redirectPrint([this](std::string_view text) { printed.emplace_back(text); });
  }

  std::vector<std::string> printed;
};

TEST_F(ContentViewTest, TheMidiClientHasTheProgramsNameAndIsMadeWhenTheWindowAppears) {
  EXPECT_EQ(view.midiManager->clientName(), "Brenvar_Firmware_loader");
  EXPECT_EQ(view.midiManager->model(), "V1.0");
  EXPECT_EQ(view.midiManager->manufacturer(), "Vesk Electronic");
  EXPECT_THAT(rig.midiService->clientNames(), Not(Contains("Brenvar_Firmware_loader")));
  actions.appear();
  runFor(1s);
  EXPECT_THAT(rig.midiService->clientNames(), Contains("Brenvar_Firmware_loader"));
  EXPECT_THAT(view.midiManager->devices().devices, Not(IsEmpty()));
  EXPECT_THAT(printed, IsEmpty());
}

TEST_F(ContentViewTest, WithoutMidiTheListIsLoadedAllTheSame) {
  constexpr std::int32_t parameterError = -50;
  rig.midiService->calls().failNext(MIDIOperation::clientCreateWithBlock, parameterError);
  actions.appear();
  runFor(1s);
  EXPECT_THAT(printed, ElementsAre(MIDIIOError::osStatus(parameterError).what() + std::string("\n")));
  EXPECT_THAT(view.midiManager->devices().devices, IsEmpty());
  EXPECT_EQ(rows().size(), 2U);
}

}  // namespace
}  // namespace karvex::ui
