#include "ui/qt/WrappedLabel.hpp"

#include <QScreen>
#include <algorithm>

namespace karvex::ui::qt {
namespace {

constexpr int mostWidth = 720;
/// A dialog's icon and paddings, and the window's frame.
constexpr int beside = 160;

}  // namespace

QLabel* wrappedLabel(const QString& text, const QFont& font, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setTextFormat(Qt::PlainText);
  label->setFont(font);
  const auto most = std::min(mostWidth, parent->screen()->availableGeometry().width() - beside);
  if (label->sizeHint().width() > most) {
    label->setWordWrap(true);
    label->setMinimumWidth(most);
  }
  return label;
}

}  // namespace karvex::ui::qt
