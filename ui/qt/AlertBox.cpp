#include "ui/qt/AlertBox.hpp"

#include <QAccessible>
#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>

#include "ui/Texts.hpp"
#include "ui/qt/Palette.hpp"
#include "ui/qt/SymbolIcon.hpp"
#include "ui/qt/Text.hpp"
#include "ui/qt/WrappedLabel.hpp"

namespace karvex::ui::qt {
namespace {

constexpr int padding = 20;
constexpr int spacing = 14;
constexpr int iconSize = 40;
constexpr int okWidth = 84;

/// What failed may have the name of a foreign device in it; the program's own words stay as they are.
QLabel* makeText(const std::string& text, const char* name, const QFont& font, QWidget* parent) {
  auto* label = wrappedLabel(linesText(text), font, parent);
  label->setObjectName(QLatin1String(name));
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);  // What failed is worth a copy.
  return label;
}

QLabel* makeTitle(const AlertText& alert, QWidget* parent) {
  auto bold = parent->font();
  bold.setBold(true);
  return makeText(alert.title, "title", bold, parent);
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
  setWindowTitle(window->window()->windowTitle());  // The alert's own title is in the dialog.
  setAccessibleName(qtText(alert.title));
  setAccessibleDescription(linesText(alert.message));
  auto* ok = makeOkButton(this);
  connect(ok, &QPushButton::clicked, this, &AlertBox::accept);
  connect(new QShortcut(QKeySequence::Copy, this), &QShortcut::activated, this, &AlertBox::copyText);

  auto* layout = new QGridLayout(this);
  layout->setContentsMargins(padding, padding, padding, padding);
  layout->setHorizontalSpacing(padding);
  layout->setVerticalSpacing(spacing);
  layout->addWidget(makeIcon(alert, this), 0, 0, 2, 1, Qt::AlignTop);
  layout->addWidget(makeTitle(alert, this), 0, 1);
  layout->addWidget(makeText(alert.message, "message", font(), this), 1, 1);
  layout->addWidget(ok, 2, 0, 1, 2, Qt::AlignRight);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  ok->setFocus();
}

void AlertBox::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  QAccessibleEvent spoken(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&spoken);
}

void AlertBox::copyText() {
  QGuiApplication::clipboard()->setText(qtText(alert_.title) + QStringLiteral("\n\n") +
                                        linesText(alert_.message));
}

void AlertBox::done(int) {
  actions_.confirm(alert_.alert);
}

void AlertBox::dismiss() {
  QDialog::done(Accepted);
  deleteLater();
}

}  // namespace karvex::ui::qt
