#include <gtest/gtest.h>

#include "ui/qt/Palette.hpp"

namespace karvex::ui::qt {
namespace {

constexpr std::array tones{Tone::gray, Tone::orange, Tone::white, Tone::green, Tone::red};

TEST(Palette, KnowTheContrastOfTheStandardsExamples) {
  EXPECT_NEAR(contrastBetween(Qt::white, Qt::black), 21.0, 0.01);
  EXPECT_NEAR(contrastBetween(Qt::black, Qt::white), 21.0, 0.01);
  EXPECT_NEAR(contrastBetween(Qt::white, QColor(0x76, 0x76, 0x76)), 4.54,
              0.01);  // The lightest gray that passes.
  EXPECT_NEAR(contrastBetween(Qt::red, Qt::red), 1.0, 0.001);
}

TEST(Palette, AreReadableOnEveryGround) {
  for (int red = 0; red <= 255; red += 17) {
    for (int green = 0; green <= 255; green += 17) {
      for (int blue = 0; blue <= 255; blue += 51) {
        const QColor ground(red, green, blue);
        for (const auto tone : tones) {
          ASSERT_GE(contrastBetween(shadeOf(tone, ground), ground), textContrast)
              << ground.name().toStdString() << " tone " << static_cast<int>(tone);
          ASSERT_GE(contrastBetween(shadeOf(tone, ground, markContrast), ground), markContrast);
        }
      }
    }
  }
}

TEST(Palette, KeepTheirMeaning) {
  for (const auto& ground :
       {QColor(Qt::white), QColor(Qt::black), QColor(0xef, 0xef, 0xef), QColor(0x1b, 0x1c, 0x1f)}) {
    EXPECT_NEAR(shadeOf(Tone::green, ground).hue(), 135, 30);
    EXPECT_NEAR(shadeOf(Tone::orange, ground).hue(), 35, 15);
    const auto redHue = shadeOf(Tone::red, ground).hue();
    EXPECT_LE(std::min(redHue, 360 - redHue), 10);
    for (const auto neutral : {Tone::white, Tone::gray}) {
      EXPECT_LT(shadeOf(neutral, ground).saturation(), 50);
    }
    EXPECT_GT(contrastBetween(shadeOf(Tone::white, ground), ground),
              2 * contrastBetween(shadeOf(Tone::gray, ground), ground))
        << "white stands out, gray stands back";
  }
}

}  // namespace
}  // namespace karvex::ui::qt
