#include "ui/qt/Palette.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

namespace karvex::ui::qt {
namespace {

/// WCAG 2.1, "relative luminance".
double luminanceOf(const QColor& colour) {
  const auto linear = [](double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

bool isDark(const QColor& ground) {
  return contrastBetween(ground, Qt::white) > contrastBetween(ground, Qt::black);
}

QColor usualShade(Tone tone, bool onDark) {
  switch (tone) {
    case Tone::gray:
      return {0x86, 0x8b, 0x92};
    case Tone::orange:
      return {0xf0, 0x8c, 0x00};
    case Tone::white:
      return onDark ? QColor(Qt::white) : QColor(0x16, 0x18, 0x1b);
    case Tone::green:
      return {0x2f, 0xa8, 0x4f};
    case Tone::red:
      return {0xe5, 0x38, 0x3b};
  }
  return {};
}

}  // namespace

double contrastBetween(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminanceOf(one), luminanceOf(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor mix(const QColor& one, const QColor& other, double share) {
  const auto channel = [share](float from, float to) {
    return static_cast<float>(from + (to - from) * share);
  };
  return QColor::fromRgbF(channel(one.redF(), other.redF()), channel(one.greenF(), other.greenF()),
                          channel(one.blueF(), other.blueF()));
}

QColor shadeOf(Tone tone, const QColor& ground, double contrast) {
  return withContrast(usualShade(tone, isDark(ground)), ground, contrast);
}

QColor withContrast(const QColor& usual, const QColor& ground, double contrast) {
  constexpr int steps = 20;
  const bool onDark = isDark(ground);
  auto shade = usual;
  for (int step = 1; step <= steps && contrastBetween(shade, ground) < contrast; ++step) {
    shade = mix(usual, onDark ? Qt::white : Qt::black, static_cast<double>(step) / steps);
  }
  return shade;
}

}  // namespace karvex::ui::qt
