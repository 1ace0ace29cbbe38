#include "ui/qt/Text.hpp"

#include <QList>
#include <algorithm>
#include <cstddef>

namespace karvex::ui::qt {
namespace {

/// Far more than a screen is wide; laying out a text of millions takes seconds.
constexpr qsizetype mostCharacters = 300;
/// Of a code point in UTF-8 (RFC 3629).
constexpr qsizetype mostBytes = 4;

bool isUnsafeInLine(char32_t character) {
  switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return true;
    default:
      return false;
  }
}

}  // namespace

QString qtText(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString lineText(std::string_view utf8) {
  // One more than is shown, so that a character that is cut through goes, too.
  const auto characters = qtText(utf8.substr(0, std::size_t{(mostCharacters + 1) * mostBytes})).toUcs4();
  QString line;
  for (const char32_t character : characters.first(std::min(characters.size(), mostCharacters))) {
    line += QChar::fromUcs4(isUnsafeInLine(character) ? char32_t{QChar::ReplacementCharacter} : character);
  }
  return characters.size() > mostCharacters ? line + QChar(0x2026) : line;
}

QString linesText(std::string_view utf8) {
  auto lines = lineText(utf8.substr(0, utf8.find('\n')));
  for (auto end = utf8.find('\n'); end != std::string_view::npos; end = utf8.find('\n')) {
    utf8.remove_prefix(end + 1);
    lines += u'\n' + lineText(utf8.substr(0, utf8.find('\n')));
  }
  return lines;
}

QString plainToolTip(const QString& text) {
  return QStringLiteral("<span>") + text.toHtmlEscaped() + QStringLiteral("</span>");
}

}  // namespace karvex::ui::qt
