#pragma once

#include <QColor>

#include "ui/Snapshot.hpp"

/// From a colour's meaning to a shade that can be read on its ground, light or dark. Pure functions.
namespace karvex::ui::qt {

/// The contrast ratio of two opaque colours, from 1 to 21 (WCAG 2.1, "contrast ratio").
double contrastBetween(const QColor& one, const QColor& other);

/// What text needs (WCAG 2.1, 1.4.3), and what a graphical mark needs (1.4.11).
inline constexpr double textContrast = 4.5;
inline constexpr double markContrast = 3.0;

/// The shade of the tone with at least that contrast to the ground. White, which stands out most among the
/// neutrals, turns into near black on a light ground, and gray stays the one that stands back.
QColor shadeOf(Tone tone, const QColor& ground, double contrast = textContrast);

/// That colour, or as little lighter or darker as it takes for the contrast to the ground.
QColor withContrast(const QColor& usual, const QColor& ground, double contrast);

/// `share` of the second colour, from 0 to 1, in the first.
QColor mix(const QColor& one, const QColor& other, double share);

}  // namespace karvex::ui::qt
