#include "app/KarvexProgram.hpp"

#include <QApplication>
#include <QStandardPaths>
#include <exception>
#include <iostream>
#include <memory>

#include "app/SingleInstance.hpp"
#include "foundation/Log.hpp"
#include "ui/qt/SymbolIcon.hpp"

namespace karvex::app {
namespace {

/// Where a Wayland compositor leaves the token of whoever was clicked on (xdg-activation).
constexpr const char* activationToken = "XDG_ACTIVATION_TOKEN";

/// The name of the desktop entry in packaging/.
constexpr const char* desktopEntry = "org.karvex.Karvex";

void openUrl(const QString& url) {
  if (!url.isEmpty()) {
    ui::KarvexApp::openUrl(url.toStdString());
  }
}

void receive(const Handover& handover, ui::qt::MainWindow& window) {
  openUrl(handover.url);
  if (!handover.activationToken.isEmpty()) {
    qputenv(activationToken, handover.activationToken.toUtf8());  // Where the toolkit looks for it.
  }
  window.bringToFront();
}

}  // namespace

int runKarvex(int argumentCount, char** arguments, const MakeMIDIService& makeMIDIService) {
  foundation::log::setSystemSink(foundation::log::SystemSink::systemLog);
  const Handover handover{.url = argumentCount > 1 ? QString::fromLocal8Bit(arguments[1]) : QString(),
                          .activationToken = qEnvironmentVariable(activationToken)};
  int ownCount = 1;  // The toolkit would take options of its own out of the arguments.
  const QApplication application(ownCount, arguments);
  QApplication::setApplicationName(QStringLiteral("karvex"));
  QApplication::setApplicationDisplayName(QStringLiteral("Karvex"));
  QApplication::setDesktopFileName(QLatin1String(desktopEntry));
  QApplication::setWindowIcon(ui::qt::programIcon());
  SingleInstance instance(QStringLiteral("karvex"),
                          QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation));
  if (!instance.isFirst()) {
    if (instance.handOver(handover)) {
      return 0;
    }
    std::cerr << "karvex: it runs already, and doesn't answer.\n";
    return 1;
  }
  try {
    WindowProgram program([&] { return std::make_unique<KarvexCore>(makeMIDIService); });
    instance.listen([&program](const Handover& later) { receive(later, program.window()); });
    openUrl(handover.url);
    program.run();
  } catch (const std::exception& error) {
    std::cerr << "karvex: " << error.what() << '\n';
    return 1;
  }
  return 0;
}

}  // namespace karvex::app
