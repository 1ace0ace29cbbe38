#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

namespace karvex::ui::qt {

enum class Symbol { upload, refresh, sync, close, warning, done };

/// The symbol in the colour that the application's palette has for the text of buttons, at any size and
/// scale.
QIcon symbolIcon(Symbol symbol);

/// The symbol in a colour, for a display of that many pixels to a point.
QPixmap symbolPixmap(Symbol symbol, int size, const QColor& colour, qreal scale);

/// The program's own icon.
QIcon programIcon();

}  // namespace karvex::ui::qt
