#include "ui/qt/SymbolIcon.hpp"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>
#include <memory>
#include <optional>

// In a static library nobody else asks for the resources. The macro works outside namespaces alone.
static void loadIcons() {
  Q_INIT_RESOURCE(icons);
}

namespace karvex::ui::qt {
namespace {

/// The picture in its own colours, or as a stencil in that one.
QPixmap render(QSvgRenderer& renderer, const QSize& size, const std::optional<QColor>& colour) {
  QPixmap pixmap(size);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  renderer.render(&painter, QRectF(QPointF(), size));
  if (colour) {
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), *colour);
  }
  return pixmap;
}

class SvgIconEngine final : public QIconEngine {
 public:
  SvgIconEngine(const QString& file, bool isStencil)
      : renderer_(std::make_shared<QSvgRenderer>(file)), isStencil_(isStencil) {
    renderer_->setAspectRatioMode(Qt::KeepAspectRatio);
  }

  QIconEngine* clone() const override { return new SvgIconEngine(*this); }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
    const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    const auto colour = QGuiApplication::palette().color(group, QPalette::ButtonText);
    return render(*renderer_, size, isStencil_ ? std::optional(colour) : std::nullopt);
  }

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const auto scale = painter->device()->devicePixelRatioF();
    auto picture = pixmap((QSizeF(rect.size()) * scale).toSize(), mode, state);
    picture.setDevicePixelRatio(scale);
    painter->drawPixmap(rect.topLeft(), picture);
  }

 private:
  std::shared_ptr<QSvgRenderer> renderer_;
  bool isStencil_;
};

QString fileOf(Symbol symbol) {
  switch (symbol) {
    case Symbol::upload:
      return QStringLiteral(":/karvex/upload.svg");
    case Symbol::refresh:
      return QStringLiteral(":/karvex/refresh.svg");
    case Symbol::sync:
      return QStringLiteral(":/karvex/sync.svg");
    case Symbol::warning:
      return QStringLiteral(":/karvex/warning.svg");
    case Symbol::done:
      return QStringLiteral(":/karvex/done.svg");
    case Symbol::close:
      return QStringLiteral(":/karvex/close.svg");
  }
  return {};
}

QIcon iconFrom(const QString& file, bool isStencil) {
  loadIcons();
  return QIcon(new SvgIconEngine(file, isStencil));  // The icon owns its engine.
}

}  // namespace

QIcon symbolIcon(Symbol symbol) {
  return iconFrom(fileOf(symbol), true);
}

QPixmap symbolPixmap(Symbol symbol, int size, const QColor& colour, qreal scale) {
  loadIcons();
  QSvgRenderer renderer(fileOf(symbol));
  auto pixmap = render(renderer, (QSizeF(size, size) * scale).toSize(), colour);
  pixmap.setDevicePixelRatio(scale);
  return pixmap;
}

QIcon programIcon() {
  return iconFrom(QStringLiteral(":/karvex/karvex.svg"), false);
}

}  // namespace karvex::ui::qt
