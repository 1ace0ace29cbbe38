// The options of karvex-rig. What a command does stands in app/rig/; the platforms are plugged into the seams
// in app/rig/RigLoad.cpp (the loader) and app/rig/ServiceCommands.cpp (the bus and the firmware service).

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "app/rig/LoadCommands.hpp"
#include "app/rig/ServiceCommands.hpp"

namespace {

using namespace karvex;

/// The choices of one call of the program.
struct Choices {
  app::CommonOptions common;
  app::ProgramOptions load;
  app::ServiceOptions service;
  std::string time = isatty(STDOUT_FILENO) != 0 ? "real" : "fast";
};

void addCommonOptions(CLI::App& app, Choices& choices) {
  app.add_option("--time", choices.time,
                 "real pauses, or virtual time (default: real on a terminal, fast otherwise)")
      ->check(CLI::IsMember({"real", "fast"}));
  app.add_flag("--log", choices.common.showLog, "show the system log although standard error is a terminal");
}

/// An option that can be given again and again, each time with the name of a fault.
template <typename Faults, typename AddFault>
void addFaultOption(CLI::App& app, const std::string& name, const std::string& form, Faults& faults,
                    AddFault add) {
  app.add_option_function<std::vector<std::string>>(
         name,
         [&faults, add, name](const std::vector<std::string>& texts) {
           for (const auto& text : texts) {
             if (const auto complaint = add(text, faults)) {
               throw CLI::ValidationError(name, *complaint);
             }
           }
         },
         "what goes wrong (see below)")
      ->type_name(form)
      ->expected(1)
      ->take_all();
}

CLI::App& addProgramCommand(CLI::App& app, Choices& choices) {
  auto& program = *app.add_subcommand("program", "One load of FILE onto one simulated board.");
  addCommonOptions(program, choices);
  program.add_option("FILE", choices.load.file, "Intel HEX file to load")->required();
  program.add_option("--mcu", choices.load.mcu, "kind of the simulated board, for example TEENSY40")
      ->required();
  addFaultOption(program, "--fault", "NAME[=VALUE]", choices.load.faults, rig::addFault);
  program.add_option("--reports", choices.load.reportsFile, "each output report that reached the board")
      ->type_name("OUT.bin");
  program.add_option("--report", choices.load.reportFile, "what happened, as JSON")->type_name("OUT.json");
  program.footer("Faults:\n" + rig::describeFaults() +
                 "\nExit status: 0 loaded and matching, 1 unknown MCU, 2 wrong use, 3 the load failed.");
  return program;
}

CLI::App& addServiceCommand(CLI::App& app, Choices& choices, const std::string& name,
                            const std::string& description) {
  auto& command = *app.add_subcommand(name, description);
  addCommonOptions(command, choices);
  command.add_option("--boards", choices.service.boards, "boards that are listed and attached (default 3)")
      ->check(CLI::Range(0, 1000));
  addFaultOption(command, "--service", "NAME[@PLACE][=VALUE]", choices.service.faults, rig::addServiceFault);
  command.footer(
      "Faults of the service:\n" + rig::describeServiceFaults() +
      "\nExit status: 0 all went well, 2 wrong use, 3 the service could not be asked or listed nothing.");
  return command;
}

int run(int argc, char** argv) {
  CLI::App command{
      "Karvex on simulated equipment. Without a command: every bundled firmware onto a board of its kind."};
  Choices choices;
  addCommonOptions(command, choices);
  const auto& program = addProgramCommand(command, choices);
  const auto& list = addServiceCommand(
      command, choices, "list", "Asks the embedded service, scans the virtual bus, and prints what matches.");
  const auto& report = addServiceCommand(command, choices, "report",
                                         "Posts the equipment report and prints what the service received.");
  command.require_subcommand(0, 1);
  try {
    command.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return command.exit(error) == 0 ? 0 : app::exitWrongUse;
  }
  choices.common.realTime = choices.time == "real";
  if (program.parsed()) {
    return app::runProgram(choices.common, choices.load);
  }
  if (list.parsed()) {
    return app::runList(choices.common, choices.service);
  }
  return report.parsed() ? app::runReport(choices.common, choices.service) : app::runDemo(choices.common);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "karvex-rig: " << error.what() << '\n';
    return app::exitLoadFailed;
  }
}
