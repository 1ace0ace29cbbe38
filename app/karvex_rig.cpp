// The options of karvex-rig. What a command does stands in app/rig/; the platforms are plugged into the seams
// in app/rig/RigPlatform.cpp, and for a single load in app/rig/RigLoad.cpp.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/StandardStreams.hpp"
#include "app/rig/ApplicationCommand.hpp"
#include "app/rig/LoadCommands.hpp"
#include "app/rig/MakerCommands.hpp"
#include "app/rig/MidiCommands.hpp"
#include "app/rig/MidiTraffic.hpp"
#include "app/rig/ServiceCommands.hpp"
#include "app/rig/WindowCommand.hpp"

namespace {

using namespace karvex;

/// The choices of one call of the program.
struct Choices {
  app::CommonOptions common;
  app::ApplicationOptions application;
  app::ProgramOptions load;
  app::MidiOptions midi;
  app::MidiTrafficOptions traffic;
  app::ServiceOptions service;
  app::ServeOptions serve;
  std::string front;  ///< empty: what suits the surroundings
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
                 "\nExit status: 0 loaded and matching, 1 unknown MCU, 2 wrong use, 3 the load failed, or "
                 "results could not be written.");
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

CLI::App& addMidiCommand(CLI::App& app, Choices& choices) {
  auto& midi = *app.add_subcommand("midi", "Prints the simulated MIDI devices and follows their changes.");
  addCommonOptions(midi, choices);
  midi.add_option("--boards", choices.midi.boards, "boards that are attached (default 3)")
      ->check(CLI::Range(0, 1000));
  midi.add_option("--object", choices.midi.object, "the properties of the objects of that name or unique ID")
      ->type_name("NAME_OR_ID");
  midi.add_flag("--all-properties", choices.midi.allProperties,
                "of every object, or with --object also those that its kind of object doesn't have");
  midi.add_flag(
      "--follow", choices.midi.follows,
      "play a scene (a board comes, another one visits its bootloader) and print the notifications");
  midi.add_option_function<unsigned>(
          "--for", [&choices](unsigned seconds) { choices.midi.followTime = std::chrono::seconds(seconds); },
          "how long to follow, in seconds (default 6)")
      ->check(CLI::Range(0, 3600))
      ->type_name("SECONDS");
  midi.footer("Exit status: 0 printed, 2 wrong use, or there is no such object.");
  return midi;
}

/// What a command of MIDI traffic does, and the messages that it takes.
struct TrafficCommand {
  const char* name;
  const char* description;
  const char* messages;
  int (*run)(const app::CommonOptions&, const app::MidiTrafficOptions&);
};

constexpr TrafficCommand trafficCommands[] = {
    {"send", "Sends messages to all boards, and prints what each one gets.", "what is sent",
     app::runMidiSend},
    {"monitor", "Has the boards play one after the other, and prints what a receiver is handed.",
     "what each board plays", app::runMidiMonitor},
    {"thru", "Connects the first board to all others, has it play, and prints what they get.",
     "what the first board plays", app::runMidiThru},
};

CLI::App& addTrafficCommand(CLI::App& midi, const TrafficCommand& kind, Choices& choices) {
  auto& command = *midi.add_subcommand(kind.name, kind.description);
  auto& options = choices.traffic;
  addCommonOptions(command, choices);
  command.add_option("--boards", options.boards, "boards that are attached (default 3)")
      ->check(CLI::Range(0, 8));
  command.add_option("--api", options.api, "the interface that the program uses (default midi2)")
      ->check(CLI::IsMember({"legacy", "midi1", "midi2"}));
  command.add_option("--platform", options.platform, "what the simulated platform is like (default 13)")
      ->check(CLI::IsMember({"10.15", "11", "12", "13"}));
  command
      .add_option("MESSAGE", options.messages,
                  std::string(kind.messages) + ", as in 903C64 F041100000124000F7 (default: a short phrase)")
      ->check(CLI::Validator(app::complaintAbout, "HEX"));
  return command;
}

/// A maker's own data. Without `needsFiles` the list can be looked at by itself.
void addMakerOptions(CLI::App& command, app::MakerOptions& options, bool needsFiles) {
  auto* list = command.add_option("--list", options.list, "a list as the firmware service answers with")
                   ->type_name("FILE")
                   ->check(CLI::ExistingFile);
  auto* firmware =
      command.add_option("--firmware", options.firmware, "the folder of the list's firmware files")
          ->type_name("FOLDER")
          ->check(CLI::ExistingDirectory)
          ->needs(list);
  if (needsFiles) {
    list->needs(firmware);
  }
}

CLI::App& addCheckCommand(CLI::App& app, Choices& choices) {
  auto& check = *app.add_subcommand("check", "Prints every fault of a maker's list, with its place.");
  addMakerOptions(check, choices.serve.maker, /*needsFiles=*/false);
  check.get_option("--list")->required();
  check.footer("Exit status: 0 no fault, 1 faults, 2 wrong use, 3 the list can't be read.");
  return check;
}

CLI::App& addServeCommand(CLI::App& app, Choices& choices) {
  auto& serve = *app.add_subcommand(
      "serve", "A firmware service on this machine with a maker's list, for a real karvex and real boards.");
  addMakerOptions(serve, choices.serve.maker, /*needsFiles=*/true);
  serve.get_option("--list")->required();
  serve.add_option("--port", choices.serve.port, "the port of 127.0.0.1 that it answers at (default 8443)")
      ->check(CLI::Range(1, 65535));
  addFaultOption(serve, "--service", "NAME[@PLACE][=VALUE]", choices.serve.faults, rig::addServiceFault);
  serve.footer("Faults of the service:\n" + rig::describeServiceFaults() +
               "\nExit status: 0 ended by its user, 1 the list has faults, 2 wrong use, 3 the port is taken, "
               "or the list can't be read.");
  return serve;
}

/// Boards that match a maker's list, if one was given. False if it has faults.
bool addMakerEquipment(const app::MakerOptions& maker, app::EquipmentPlan& plan) {
  if (!maker.list.empty()) {
    plan.maker = app::makerEquipment(maker);
    plan.boards = plan.maker ? plan.maker->devices.size() : 0;
  }
  return maker.list.empty() || plan.maker;
}

/// "N:FAULT", with boards counted from 1. Gives a sentence that says what is wrong with the text, or nothing.
std::optional<std::string> addBoardFault(std::string_view text, app::ApplicationOptions& options) {
  const auto colon = text.find(':');
  const auto number = text.substr(0, colon);
  std::size_t board = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), board);
  if (colon == std::string_view::npos || error != std::errc{} || end != number.data() + number.size() ||
      board == 0) {
    return "A board's fault is written as the board's number from 1, a colon and the fault, as in "
           "2:vanishes=5.";
  }
  const auto fault = text.substr(colon + 1);
  if (fault == "port-busy" || fault == "port-snatched") {
    (fault == "port-busy" ? options.equipment.occupied : options.equipment.snatched).insert(board - 1);
    return std::nullopt;
  }
  return rig::addFault(fault, options.equipment.faults[board - 1]);
}

void addApplicationOptions(CLI::App& command, Choices& choices) {
  addCommonOptions(command, choices);
  auto& options = choices.application;
  command.add_option("--boards", options.equipment.boards, "boards that are listed and attached (default 3)")
      ->check(CLI::Range(0, 1000));
  addMakerOptions(command, choices.serve.maker, /*needsFiles=*/true);
  command.get_option("--list")->excludes("--boards");
  command.add_option("--upgrade", options.upgradeFrom, "upgrade from this row on, to the end, unattended")
      ->type_name("FROM")
      ->check(CLI::Range(1, 1000));
  command
      .add_option("--front", choices.front,
                  "a window, in real time, or the terminal (default: a window where there is a display and "
                  "the time is "
                  "real)")
      ->check(CLI::IsMember({"window", "console"}));
  command.add_flag("--yes", options.answersAlerts,
                   "answer every alert with OK (with --upgrade, or without a terminal)");
  addFaultOption(command, "--board", "N:FAULT[=VALUE]", options, addBoardFault);
  addFaultOption(command, "--service", "NAME[@PLACE][=VALUE]", options.serviceFaults, rig::addServiceFault);
  command
      .add_option("--keep", options.equipment.keptIn,
                  "keep the boards' flash and state in this directory, from one run to the next")
      ->type_name("DIRECTORY");
  command.add_option("--report", options.reportFile, "what happened, as JSON")->type_name("OUT.json");
  command.footer(
      "Faults of a board:\n" + rig::describeFaults() +
      "  port-busy              another program holds its serial port\n"
      "  port-snatched          another program takes its serial port as soon as it has been found free\n"
      "\nFaults of the service:\n" +
      rig::describeServiceFaults() +
      "\nExit status: 0 all devices of the run were upgraded, 1 unknown MCU or a list with faults,\n"
      "2 wrong use, 3 not all were, an alert comes back whatever is answered, or results could not be\n"
      "written.");
}

int run(int argc, char** argv) {
  CLI::App command{"Karvex on simulated equipment. Without a command: the whole application."};
  Choices choices;
  addApplicationOptions(command, choices);
  const auto& program = addProgramCommand(command, choices);
  const auto& list = addServiceCommand(
      command, choices, "list", "Asks the embedded service, scans the virtual bus, and prints what matches.");
  const auto& report = addServiceCommand(command, choices, "report",
                                         "Posts the equipment report and prints what the service received.");
  const auto& check = addCheckCommand(command, choices);
  const auto& serve = addServeCommand(command, choices);
  auto& midi = addMidiCommand(command, choices);
  std::vector<const CLI::App*> traffic;
  for (const auto& kind : trafficCommands) {
    traffic.push_back(&addTrafficCommand(midi, kind, choices));
  }
  midi.get_subcommand("monitor")->add_flag("--raw", choices.traffic.raw,
                                           "packets as bytes instead of events");
  midi.get_subcommand("thru")
      ->add_option("--filter", choices.traffic.filters, "what the connection leaves out (again and again)")
      ->check(CLI::IsMember({"controls", "clock", "mtc", "sysex", "tune"}))
      ->allow_extra_args(false);
  midi.require_subcommand(0, 1);
  command.require_subcommand(0, 1);
  try {
    command.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return command.exit(error) == 0 ? 0 : app::exitWrongUse;
  }
  choices.common.realTime = choices.time == "real";
  choices.application.isInWindow =
      choices.front.empty() ? choices.common.realTime && app::hasDisplay() : choices.front == "window";
  // Nobody could watch a window in virtual time.
  choices.common.realTime |= choices.application.isInWindow;
  if (program.parsed()) {
    return app::runProgram(choices.common, choices.load);
  }
  for (std::size_t place = 0; place < traffic.size(); ++place) {
    if (traffic[place]->parsed()) {
      return trafficCommands[place].run(choices.common, choices.traffic);
    }
  }
  if (midi.parsed()) {
    return app::runMidi(choices.common, choices.midi);
  }
  if (list.parsed()) {
    return app::runList(choices.common, choices.service);
  }
  if (report.parsed()) {
    return app::runReport(choices.common, choices.service);
  }
  if (check.parsed() || serve.parsed()) {
    return check.parsed() ? app::runCheck(choices.serve.maker) : app::runServe(choices.serve);
  }
  return addMakerEquipment(choices.serve.maker, choices.application.equipment)
             ? app::runApplication(choices.common, choices.application)
             : app::exitFaultyList;
}

}  // namespace

int main(int argc, char** argv) {
  app::secureStandardStreams();
  try {
    const int status = run(argc, argv);
    if (!app::isOutputWritten()) {
      std::cerr << "karvex-rig: standard output could not be written to its end.\n";
      return status == app::exitLoaded ? app::exitLoadFailed : status;
    }
    return status;
  } catch (const std::exception& error) {
    std::cerr << "karvex-rig: " << error.what() << '\n';
    return app::exitLoadFailed;
  }
}
