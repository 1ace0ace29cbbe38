#include "ui/qt/Text.hpp"

#include <algorithm>

namespace karvex::ui::qt {
namespace {

bool isUnsafeInLine(QChar character) {
  switch (character.category()) {
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
  auto text = qtText(utf8);
  std::replace_if(text.begin(), text.end(), isUnsafeInLine, QChar(QChar::ReplacementCharacter));
  return text;
}

QString plainToolTip(const QString& text) {
  return QStringLiteral("<span>") + text.toHtmlEscaped() + QStringLiteral("</span>");
}

}  // namespace karvex::ui::qt
