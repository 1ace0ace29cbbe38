#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "app/rig/RigCommands.hpp"

namespace {

using karvex::app::CommonOptions;
using karvex::app::ProgramOptions;

void addCommonOptions(CLI::App& app, std::string& time, CommonOptions& common) {
  app.add_option("--time", time, "real pauses, or virtual time (default: real on a terminal, fast otherwise)")
      ->check(CLI::IsMember({"real", "fast"}));
  app.add_flag("--log", common.showLog, "show the system log although standard error is a terminal");
}

void addProgramOptions(CLI::App& program, ProgramOptions& options, std::vector<std::string>& faults) {
  program.add_option("FILE", options.file, "Intel HEX file to load")->required();
  program.add_option("--mcu", options.mcu, "kind of the simulated board, for example TEENSY40")->required();
  program.add_option("--fault", faults, "what is wrong with the board (see below)")
      ->type_name("NAME[=VALUE]")
      ->expected(1)
      ->take_all();
  program.add_option("--reports", options.reportsFile, "each output report that reached the board")
      ->type_name("OUT.bin");
  program.add_option("--report", options.reportFile, "what happened, as JSON")->type_name("OUT.json");
  program.footer("Faults:\n" + karvex::rig::describeFaults() +
                 "\nExit status: 0 loaded and matching, 1 unknown MCU, 2 wrong use, 3 the load failed.");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "Karvex on simulated equipment. Without a command: every bundled firmware onto a board of its kind."};
  CommonOptions common;
  ProgramOptions options;
  std::string time = isatty(STDOUT_FILENO) != 0 ? "real" : "fast";
  std::vector<std::string> faults;
  addCommonOptions(app, time, common);
  auto* program = app.add_subcommand("program", "One load of FILE onto one simulated board.");
  addCommonOptions(*program, time, common);
  addProgramOptions(*program, options, faults);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : karvex::app::exitWrongUse;
  }
  for (const auto& fault : faults) {
    if (const auto complaint = karvex::rig::addFault(fault, options.faults)) {
      fmt::print(stderr, "karvex-rig: {} See karvex-rig program --help.\n", *complaint);
      return karvex::app::exitWrongUse;
    }
  }
  common.realTime = time == "real";
  return program->parsed() ? karvex::app::runProgram(common, options) : karvex::app::runDemo(common);
}
