// The desktop application. An argument is a URL that the desktop hands over. A second
// start brings the window of the first to the front, hands its URL over and ends.

#include <QApplication>
#include <QMessageBox>
#include <QStandardPaths>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/KarvexCore.hpp"
#include "app/SingleInstance.hpp"
#include "app/StandardStreams.hpp"
#include "app/Toolkit.hpp"
#include "app/WindowProgram.hpp"
#include "foundation/Log.hpp"
#include "ui/qt/SymbolIcon.hpp"

namespace {

using namespace karvex;

/// Where a Wayland compositor leaves the token of whoever was clicked on (xdg-activation).
constexpr const char* activationToken = "XDG_ACTIVATION_TOKEN";

/// The name of the desktop entry in packaging/.
constexpr const char* desktopEntry = "org.karvex.Karvex";

constexpr std::string_view help =
    "Updates the firmware of the musical equipment at this machine, in a window.\n"
    "\n"
    "Usage: karvex [URL]\n"
    "\n"
    "A URL is one that the desktop hands over, as karvex://; it is printed. While a window is open already, "
    "a\n"
    "second start brings it to the front and ends.\n"
    "\n"
    "Options:\n"
    "  -h,--help                   Print this help message and exit\n"
    "  --version                   Display program version information and exit\n"
    "\n"
    "Exit status: 0 closed by its user, 1 a failure.\n";

/// What is asked for without a window, or nothing.
std::optional<std::string> answerTo(std::string_view argument) {
  if (argument == "-h" || argument == "--help") {
    return std::string(help);
  }
  return argument == "--version" ? std::optional<std::string>(KARVEX_VERSION "\n") : std::nullopt;
}

void openUrl(const QByteArray& url) {
  if (!url.isEmpty()) {
    ui::KarvexApp::openUrl(url.toStdString());
  }
}

void receive(const app::Handover& handover, ui::qt::MainWindow& window) {
  openUrl(handover.url);
  if (!handover.activationToken.isEmpty()) {
    qputenv(activationToken, handover.activationToken);  // Where the toolkit looks for it.
  }
  window.bringToFront();
}

/// Whoever started it from the desktop sees no standard error.
int tellThatItDoesNotAnswer() {
  const auto text = QStringLiteral("Karvex is running already, but it does not answer.");
  std::cerr << "karvex: " << text.toStdString() << '\n';
  QMessageBox::warning(nullptr, QStringLiteral("Karvex"), text);
  return 1;
}

int run(int argumentCount, char** arguments) {
  if (const auto answer = argumentCount > 1 ? answerTo(arguments[1]) : std::nullopt) {
    std::cout << *answer;
    return 0;
  }
  foundation::log::setSystemSink(foundation::log::SystemSink::systemLog);
  const app::Handover handover{.url = argumentCount > 1 ? QByteArray(arguments[1]) : QByteArray(),
                               .activationToken = qgetenv(activationToken)};
  int ownCount = 1;  // The toolkit would take options of its own out of the arguments.
  const auto toolkit = app::startToolkit(ownCount, arguments);
  QApplication::setApplicationName(QStringLiteral("karvex"));
  QApplication::setApplicationDisplayName(QStringLiteral("Karvex"));
  QApplication::setDesktopFileName(QLatin1String(desktopEntry));
  QApplication::setWindowIcon(ui::qt::programIcon());
  app::SingleInstance instance(QStringLiteral("karvex"),
                               QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation));
  if (!instance.isFirst()) {
    if (instance.handOver(handover)) {
      return 0;
    }
    return tellThatItDoesNotAnswer();
  }
  app::WindowProgram program([] { return std::make_unique<app::KarvexCore>(); });
  instance.listen([&program](const app::Handover& later) { receive(later, program.window()); });
  openUrl(handover.url);
  program.run();
  instance
      .giveUp();  // Who starts it again from here on wants a window, although this one's end takes its time.
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  app::secureStandardStreams();
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "karvex: " << error.what() << '\n';
    return 1;
  }
}
