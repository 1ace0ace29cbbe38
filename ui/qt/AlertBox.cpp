#include "ui/qt/AlertBox.hpp"

#include <QAccessible>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <algorithm>

#include "ui/Texts.hpp"
#include "ui/qt/Shades.hpp"
#include "ui/qt/SymbolIcon.hpp"
#include "ui/qt/Text.hpp"

namespace karvex::ui::qt {
namespace {

constexpr int padding = 20;
constexpr int spacing = 14;
constexpr int iconSize = 40;
constexpr int okWidth = 84;

/// What failed may have the name of a foreign device in it; the program's own words stay as they are.
QLabel* makeText(const std::string& text, const char* name, QWidget* parent) {
  auto* label = new QLabel(linesText(text), parent);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);  // What failed is worth a copy.
  return label;
}

QLabel* makeTitle(const AlertText& alert, QWidget* parent) {
  auto* title = makeText(alert.title, "title", parent);
  auto bold = title->font();
  bold.setBold(true);
  title->setFont(bold);
  return title;
}

/// The message has line ends of its own. A line is broken further only where the screen is narrower than it
/// is.
QLabel* makeMessage(const AlertText& alert, QWidget* parent) {
  constexpr int beside = 160;  // The icon, the paddings and the window's frame.
  auto* message = makeText(alert.message, "message", parent);
  const auto room = parent->screen()->availableGeometry().width() - beside;
  if (message->sizeHint().width() > room) {
    message->setWordWrap(true);
    message->setMinimumWidth(room);
  }
  return message;
}

QLabel* makeIcon(const AlertText& alert, QWidget* parent) {
  const bool isGoodNews = alert.alert == upgrade::Alert::procedureComplete;
  const auto shade = shadeOf(isGoodNews ? Tone::green : Tone::orange,
                             parent->palette().color(QPalette::Window), markContrast);
  auto* icon = new QLabel(parent);
  icon->setPixmap(symbolPixmap(isGoodNews ? Symbol::done : Symbol::warning, iconSize, shade,
                               parent->devicePixelRatioF()));
  return icon;
}

/// No button of a button box: that looks through the desktop's icons first, which takes milliseconds.
QPushButton* makeOkButton(QWidget* parent) {
  auto* ok = new QPushButton(qtText(texts::okButton), parent);
  ok->setObjectName(QStringLiteral("ok"));
  ok->setMinimumWidth(okWidth);
  ok->setDefault(true);
  return ok;
}

}  // namespace

AlertBox::AlertBox(const AlertText& alert, UserActions& actions, QWidget* window)
    : QDialog(window), alert_(alert), actions_(actions) {
  setWindowModality(Qt::WindowModal);
  setWindowTitle(qtText(alert.title));
  setAccessibleName(qtText(alert.title));
  setAccessibleDescription(linesText(alert.message));
  auto* ok = makeOkButton(this);
  connect(ok, &QPushButton::clicked, this, &AlertBox::accept);

  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(padding, padding, padding, padding);
  layout->setHorizontalSpacing(padding);
  layout->setVerticalSpacing(spacing);
  layout->addWidget(makeIcon(alert, this), 0, 0, 2, 1, Qt::AlignTop);
  layout->addWidget(makeTitle(alert, this), 0, 1);
  layout->addWidget(makeMessage(alert, this), 1, 1);
  layout->addWidget(ok, 2, 0, 1, 2, Qt::AlignRight);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  ok->setFocus();
}

void AlertBox::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  QAccessibleEvent spoken(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&spoken);
}

void AlertBox::done(int) {
  actions_.confirm(alert_.alert);
}

void AlertBox::dismiss() {
  QDialog::done(Accepted);
  deleteLater();
}

}  // namespace karvex::ui::qt
