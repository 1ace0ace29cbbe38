#include "app/Toolkit.hpp"

#include <cstdio>
#include <cstdlib>

namespace karvex::app {
namespace {

/// While the toolkit starts, the only fatal message is that it can't reach a display.
void endWithoutDisplay(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*message*/) {
  if (type == QtFatalMsg) {
    std::fputs(
        "karvex: No window can be opened, because no display can be reached. In a terminal, use "
        "karvex-console.\n",
        stderr);
    std::_Exit(1);
  }
}

}  // namespace

std::unique_ptr<QApplication> startToolkit(int& count, char** arguments) {
  const auto usual = qInstallMessageHandler(endWithoutDisplay);
  auto toolkit = std::make_unique<QApplication>(count, arguments);
  qInstallMessageHandler(usual);
  return toolkit;
}

}  // namespace karvex::app
