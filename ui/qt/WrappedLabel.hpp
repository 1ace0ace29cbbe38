#pragma once

#include <QLabel>

namespace karvex::ui::qt {

/// Plain text of a dialog in its own lines. They are wrapped where they are wider than somebody reads at
/// ease, or than the screen.
QLabel* wrappedLabel(const QString& text, const QFont& font, QWidget* parent);

}  // namespace karvex::ui::qt
