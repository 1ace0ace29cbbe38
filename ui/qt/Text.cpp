#include "ui/qt/Text.hpp"

#include <cstddef>

#include "ui/LineText.hpp"

namespace karvex::ui::qt {
namespace {

/// Far more than a screen is wide; laying out a text of millions takes seconds.
constexpr std::size_t mostCharacters = 300;
/// Of a code point in UTF-8 (RFC 3629).
constexpr std::size_t mostBytes = 4;

}  // namespace

QString qtText(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

QString lineText(std::string_view utf8) {
  // One more than is shown, so that a character that is cut through goes, too.
  const auto line = qtText(lineOf(utf8.substr(0, (mostCharacters + 1) * mostBytes))).toStdU32String();
  const auto shown = QString::fromStdU32String(line.substr(0, mostCharacters));
  return line.size() > mostCharacters ? shown + QChar(0x2026) : shown;
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
