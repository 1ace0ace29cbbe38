#pragma once

#include <QString>
#include <string_view>

/// Texts of the core, which are UTF-8, as the toolkit's.
namespace karvex::ui::qt {

/// The text as it stands.
QString qtText(std::string_view utf8);

/// Text for one line of the table, as ui::lineOf() has it. What goes on and on is cut off after a few
/// hundred characters.
QString lineText(std::string_view utf8);

/// Text of several lines, each of them as lineText() has it.
QString linesText(std::string_view utf8);

/// A tooltip with the text as it stands: by itself, a text that looks like markup would be read as such.
QString plainToolTip(const QString& text);

}  // namespace karvex::ui::qt
