// Karvex behind a terminal front, for machines without a screen.

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "app/KarvexCore.hpp"
#include "app/StandardStreams.hpp"
#include "app/TerminalPage.hpp"
#include "foundation/Log.hpp"
#include "ui/console/TerminalMode.hpp"

namespace {

using namespace karvex;

constexpr int exitFailed = 1;
constexpr int exitWrongUse = 2;

int run(int argc, char** argv) {
  CLI::App command{"Updates the firmware of the musical equipment at this machine, in a terminal."};
  command.set_version_flag("--version", KARVEX_VERSION);
  command.footer("Exit status: 0 ended by its user, 1 a failure, 2 wrong use, or not on a terminal.");
  try {
    command.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return command.exit(error) == 0 ? 0 : exitWrongUse;
  }
  if (!ui::console::TerminalMode::isPossible()) {
    std::cerr << "karvex-console: it needs a terminal for its input and its output.\n";
    return exitWrongUse;
  }
  foundation::log::setSystemSink(foundation::log::SystemSink::systemLog);
  app::KarvexCore core;
  const app::TerminalPage page(core.view(), core.actions(), [&core] { core.runtime().stopMain(); });
  core.actions().appear();
  core.runtime().runMain();
  core.runtime().finish();  // Nobody writes to the page any more.
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  app::secureStandardStreams();
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "karvex-console: " << error.what() << '\n';
    return exitFailed;
  }
}
