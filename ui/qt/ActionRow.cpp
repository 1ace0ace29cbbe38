#include "ui/qt/ActionRow.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <algorithm>

#include "ui/Texts.hpp"
#include "ui/qt/SymbolIcon.hpp"
#include "ui/qt/Text.hpp"

namespace karvex::ui::qt {
namespace {

constexpr int padding = 10;
constexpr int leadingPadding = 20;
constexpr int iconSize = 20;
/// Between a symbol and the text beside it, more than the style's own.
constexpr int symbolGap = 8;
constexpr int buttonHeight = 36;
constexpr int besideContent = 14;

/// The instruction as rich text, with the words that stand out in bold.
QString instructionText() {
  const auto emphasised = qtText(texts::emphasisedInstruction).toHtmlEscaped();
  auto second = qtText(texts::instruction[1]).toHtmlEscaped();
  second.replace(0, emphasised.size(), QStringLiteral("<b>") + emphasised + QStringLiteral("</b>"));
  return qtText(texts::instruction[0]).toHtmlEscaped() + QStringLiteral("<br>") + second;
}

QLabel* makeInstruction(QWidget* parent) {
  auto* label = new QLabel(instructionText(), parent);
  label->setTextFormat(Qt::RichText);
  label->setWordWrap(true);
  label->setContentsMargins(leadingPadding, padding, 0, 0);
  return label;
}

/// As high as the others, and wider than its content, in whatever font.
class RoomyButton final : public QPushButton {
 public:
  using QPushButton::QPushButton;

  QSize sizeHint() const override {
    const auto content = QPushButton::sizeHint();
    const auto height = std::max(buttonHeight, content.height());
    return {std::max(content.width() + besideContent, height + besideContent), height};
  }
  QSize minimumSizeHint() const override { return sizeHint(); }
};

QPushButton* makeButton(Symbol symbol, std::string_view help, const QKeySequence& shortcut, QWidget* parent) {
  auto* button = new RoomyButton(symbolIcon(symbol), QString(), parent);
  button->setIconSize({iconSize, iconSize});
  button->setToolTip(qtText(help));
  button->setAccessibleName(qtText(help));
  button->setAccessibleDescription(qtText(help));
  button->setShortcut(shortcut);
  button->setAutoDefault(true);  // Enter presses the button that has the keyboard.
  button->setEnabled(false);
  return button;
}

}  // namespace

ActionRow::ActionRow(UserActions& actions, QWidget* parent)
    : QWidget(parent),
      upload_(makeButton(Symbol::upload, texts::uploadHelp, Qt::CTRL | Qt::Key_U, this)),
      refresh_(makeButton(Symbol::refresh, texts::refreshHelp, Qt::Key_F5, this)),
      sync_(makeButton(Symbol::sync, texts::syncHelp, Qt::CTRL | Qt::Key_E, this)) {
  const auto shortcut = upload_->shortcut();
  upload_->setText(qtText(texts::uploadButton));
  upload_->setIconSize({iconSize + symbolGap, iconSize});  // The symbol keeps its shape in the middle of it.
  upload_->setShortcut(shortcut);                          // A new text takes the shortcut away.
  upload_->setAccessibleName(qtText(texts::uploadButton));
  upload_->setObjectName(QStringLiteral("upload"));
  refresh_->setObjectName(QStringLiteral("refresh"));
  sync_->setObjectName(QStringLiteral("sync"));
  connect(upload_, &QPushButton::clicked, this, [&actions] { actions.upload(); });
  connect(refresh_, &QPushButton::clicked, this, [&actions] { actions.refresh(); });
  connect(sync_, &QPushButton::clicked, this, [&actions] { actions.sync(); });

  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, padding, padding, 0);
  layout->addWidget(makeInstruction(this), 1);
  layout->addSpacing(padding);
  for (auto* button : {upload_, refresh_, sync_}) {
    layout->addWidget(button);
  }
}

void ActionRow::draw(const Snapshot& snapshot) {
  upload_->setEnabled(snapshot.canUpload);
  refresh_->setEnabled(snapshot.canAct);
  sync_->setEnabled(snapshot.canAct);
}

}  // namespace karvex::ui::qt
