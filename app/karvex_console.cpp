// Karvex on a terminal or in lines, for machines without a screen.

#include <CLI/CLI.hpp>
#include <charconv>
#include <exception>
#include <iostream>
#include <optional>
#include <string>

#include "app/ExitStatus.hpp"
#include "app/FailureLog.hpp"
#include "app/KarvexCore.hpp"
#include "app/StandardStreams.hpp"
#include "app/TerminalPage.hpp"
#include "app/UnattendedUpgrade.hpp"
#include "app/diagnosis/Diagnosis.hpp"
#include "app/diagnosis/ServiceSurvey.hpp"
#include "app/diagnosis/SystemSurvey.hpp"
#include "device/platform/linux/UdevBoardSurvey.hpp"
#include "foundation/Log.hpp"
#include "foundation/net/UrlSession.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "foundation/run/Task.hpp"
#include "ui/console/TerminalMode.hpp"

namespace {

using namespace karvex;

constexpr int exitFailed = 1;
constexpr std::size_t mostRows = 1000;

struct Choices {
  std::string upgradeFrom;  ///< a row's number from 1, or "all"; empty without an upgrade
  bool answersAlerts = false;
  bool isDiagnosis = false;
};

/// The row's place from 0; nothing if the text is no row.
std::optional<std::size_t> placeOfRow(std::string_view text) {
  if (text == "all") {
    return 0;
  }
  std::size_t row = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), row);
  const bool isRow = error == std::errc{} && end == text.data() + text.size() && row >= 1 && row <= mostRows;
  return isRow ? std::optional(row - 1) : std::nullopt;
}

void addOptions(CLI::App& command, Choices& choices) {
  command.set_version_flag("--version", KARVEX_VERSION);
  const CLI::Validator isRow(
      [](const std::string& text) {
        return placeOfRow(text) ? "" : "It is neither a row from 1 nor \"all\".";
      },
      "");
  auto& upgrade = *command
                       .add_option("--upgrade", choices.upgradeFrom,
                                   "upgrade from this row on to the end of the list (all: from the first), "
                                   "unattended and without a terminal; a line for each change")
                       ->type_name("ROW|all")
                       ->check(isRow);
  command.add_flag("--yes", choices.answersAlerts, "answer every alert with OK")->needs(&upgrade);
  command
      .add_flag(
          "--diagnose", choices.isDiagnosis,
          "print what support asks first, in a form to paste; touches no equipment, and asks the service "
          "for its list")
      ->excludes(&upgrade);
  command.footer(
      "Exit status:\n"
      "  0 ended by its user, all devices of the upgrade were upgraded, or the diagnosis is printed\n"
      "  1 unknown MCU, or a failure of the program\n"
      "  2 wrong use, or not on a terminal\n"
      "  3 not all devices were upgraded, an alert comes back whatever is answered, or the lines could not "
      "be\n"
      "    written");
}

int runUpgrade(const Choices& choices) {
  foundation::log::setSystemSink(foundation::log::SystemSink::systemLog);
  app::KarvexCore core;
  app::UnattendedUpgrade upgrade(
      core, {.firstRow = *placeOfRow(choices.upgradeFrom), .answersAlerts = choices.answersAlerts}, app::say);
  const auto status = upgrade.run();
  core.runtime().finish();
  return app::isOutputWritten() ? status : app::exitLoadFailed;
}

foundation::Task<> diagnose(foundation::Runtime& runtime, foundation::UrlSession& session) {
  auto service = co_await app::surveyService(runtime, session, service::ServiceAddress::builtIn());
  co_await foundation::resumeOn(runtime.mainQueue());
  const app::Diagnosis diagnosis{.time = app::timeNow(),
                                 .program = "karvex-console " KARVEX_VERSION,
                                 .system = app::surveySystem(),
                                 .service = std::move(service),
                                 .boards = device::UdevBoardSurvey().boards(),
                                 .failures = app::FailureLog(app::failureLogFile()).lines()};
  std::cout << app::textOf(diagnosis);
  runtime.stopMain();
}

int runDiagnosis() {
  foundation::SystemRuntime runtime;
  foundation::UrlSession session(runtime);
  foundation::spawn(runtime.mainQueue(), diagnose(runtime, session));
  runtime.runMain();
  runtime.finish();
  std::cout.flush();
  return std::cout && app::isOutputWritten() ? app::exitLoaded : app::exitLoadFailed;
}

int runPage() {
  if (!ui::console::TerminalMode::isPossible()) {
    std::cerr << "karvex-console: it needs a terminal for its input and its output, or --upgrade.\n";
    return app::exitWrongUse;
  }
  foundation::log::setSystemSink(foundation::log::SystemSink::systemLog);
  app::KarvexCore core;
  const app::TerminalPage page(core.view(), core.actions(), [&core] { core.runtime().stopMain(); });
  core.actions().appear();
  core.runtime().runMain();
  core.runtime().finish();  // Nobody writes to the page any more.
  return 0;
}

int run(int argc, char** argv) {
  CLI::App command{"Updates the firmware of the musical equipment at this machine, in a terminal."};
  Choices choices;
  addOptions(command, choices);
  try {
    command.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return command.exit(error) == 0 ? 0 : app::exitWrongUse;
  }
  if (choices.isDiagnosis) {
    return runDiagnosis();
  }
  return choices.upgradeFrom.empty() ? runPage() : runUpgrade(choices);
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
