#include "ui/qt/SyncSheet.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStringList>
#include <QVBoxLayout>

#include "ui/Texts.hpp"
#include "ui/qt/SymbolIcon.hpp"
#include "ui/qt/Text.hpp"
#include "ui/qt/WrappedLabel.hpp"

namespace karvex::ui::qt {
namespace {

constexpr QSize leastSize{600, 340};
constexpr int closePadding = 4;
constexpr int textPadding = 10;
constexpr int sendPadding = 20;
constexpr int closeIconSize = 16;
constexpr int busyBarHeight = 10;

QLabel* makeText(QWidget* parent) {
  QStringList lines;
  for (const auto line : texts::sheet) {
    lines << qtText(line);
  }
  auto* label = wrappedLabel(lines.join(u'\n'), parent->font(), parent);
  label->setAlignment(Qt::AlignCenter);
  label->setMargin(textPadding);
  return label;
}

QPushButton* makeCloseButton(QWidget* parent) {
  auto* button = new QPushButton(symbolIcon(Symbol::close), QString(), parent);
  button->setObjectName(QStringLiteral("close"));
  button->setIconSize({closeIconSize, closeIconSize});
  button->setFixedSize(closeIconSize + 4 * closePadding, closeIconSize + 4 * closePadding);
  button->setFlat(true);
  button->setAutoDefault(false);
  button->setToolTip(QObject::tr("Close"));
  button->setAccessibleName(QObject::tr("Close"));
  return button;
}

QPushButton* makeSendButton(QWidget* parent) {
  auto* button = new QPushButton(qtText(texts::sendButton), parent);
  button->setObjectName(QStringLiteral("send"));
  button->setDefault(true);
  button->setAccessibleDescription(qtText(texts::syncHelp));
  return button;
}

QProgressBar* makeBusyBar(QWidget* parent) {
  auto* bar = new QProgressBar(parent);
  bar->setRange(0, 0);  // How long it takes isn't known.
  bar->setTextVisible(false);
  bar->setFixedHeight(busyBarHeight);
  bar->setAccessibleName(QObject::tr("Sending"));
  auto policy = bar->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  bar->setSizePolicy(policy);
  bar->hide();
  return bar;
}

}  // namespace

SyncSheet::SyncSheet(UserActions& actions, QWidget* window)
    : QDialog(window), actions_(actions), busy_(makeBusyBar(this)) {
  setWindowModality(Qt::WindowModal);
  setWindowTitle(qtText(texts::syncHelp));
  auto* close = makeCloseButton(this);
  auto* send = makeSendButton(this);
  connect(close, &QPushButton::clicked, this, &SyncSheet::reject);
  connect(send, &QPushButton::clicked, this, [&actions] { actions.sendReport(); });

  auto* top = new QHBoxLayout;
  top->addStretch();
  top->addWidget(close);
  top->setContentsMargins(closePadding, closePadding, closePadding, closePadding);
  auto* sendRow = new QHBoxLayout;
  sendRow->addWidget(send, 0, Qt::AlignCenter);
  sendRow->setContentsMargins(sendPadding, sendPadding, sendPadding, sendPadding);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addStretch();
  layout->addWidget(makeText(this), 0, Qt::AlignCenter);
  layout->addStretch();
  layout->addLayout(sendRow);
  layout->addWidget(busy_);
  setMinimumSize(leastSize.expandedTo(layout->totalMinimumSize()));
  send->setFocus();
}

void SyncSheet::draw(const Snapshot& snapshot) {
  busy_->setVisible(snapshot.isSendingReport);
}

void SyncSheet::done(int) {
  actions_.closeSheet();
}

void SyncSheet::dismiss() {
  QDialog::done(Accepted);
  deleteLater();
}

}  // namespace karvex::ui::qt
