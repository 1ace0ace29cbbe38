#include "app/rig/MidiCommands.hpp"

#include <fmt/format.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "MIDIKitIO/objects/PropertyAccess.hpp"
#include "app/rig/Equipment.hpp"
#include "app/rig/MidiRig.hpp"

namespace karvex::app {
namespace {

using namespace std::chrono_literals;
using foundation::Duration;
using midikit::io::AnyMIDIIOObject;
using midikit::io::MIDIIONotification;

/// When the scene's events happen, behind the start.
constexpr Duration anotherBoardComes = 500ms;
constexpr Duration firstBoardLeaves = 1s;
/// By then it is in its bootloader for certain (rig::VirtualBoard::usualSwitchTime) and is told to boot.
constexpr Duration firstBoardReturns = 3s;

struct TreeObject {
  std::size_t depth;
  std::string_view kind;
  AnyMIDIIOObject object;
};

/// Each object behind the one that it belongs to.
std::vector<TreeObject> treeOf(const MidiRig& rig) {
  std::vector<TreeObject> tree;
  for (const auto& device : rig.manager->observableDevices.get().devices) {
    tree.push_back({0, "device", device});
    for (const auto& entity : device.entities(*rig.service)) {
      tree.push_back({1, "entity", entity});
      for (const auto& output : entity.outputs(*rig.service)) {
        tree.push_back({2, "output", output});
      }
      for (const auto& input : entity.inputs(*rig.service)) {
        tree.push_back({2, "input", input});
      }
    }
  }
  return tree;
}

bool isOffline(const MidiRig& rig, const AnyMIDIIOObject& object) {
  return midikit::io::integerProperty(*rig.service, object.coreMIDIObjectRef(),
                                      midikit::io::kMIDIPropertyOffline) == 1;
}

bool isMeant(const MidiOptions& options, const AnyMIDIIOObject& object) {
  if (!options.object) {
    return options.allProperties;
  }
  return *options.object == object.name() || *options.object == std::to_string(object.uniqueID());
}

/// Prints the tree; false if the object that is asked for is not in it.
bool printTree(const MidiRig& rig, const MidiOptions& options) {
  bool isFound = !options.object;
  for (const auto& [depth, kind, object] : treeOf(rig)) {
    const std::string indent(2 * depth, ' ');
    say(fmt::format("{}{} \"{}\"  ID {}{}", indent, kind, object.name(), object.uniqueID(),
                    isOffline(rig, object) ? "  offline" : ""));
    if (isMeant(options, object)) {
      isFound = true;
      for (const auto& [label, text] : object.properties(*rig.service, !options.allProperties)) {
        say(fmt::format("{}    {:<30} {}", indent, label, text));
      }
    }
  }
  return isFound;
}

void printChange(MidiRig& rig, foundation::TimePoint start, const MIDIIONotification& notification) {
  const auto seconds = std::chrono::duration<double>(rig.runtime->clock().now() - start).count();
  say(fmt::format("[{:7.3f}] {}", seconds, notification.description(*rig.service)));
  if (notification == MIDIIONotification::setupChanged()) {
    const auto devices = rig.manager->observableDevices.get().devices;
    std::size_t offline = 0;
    for (const auto& device : devices) {
      offline += isOffline(rig, device) ? 1U : 0U;
    }
    say(fmt::format("          {} devices, {} of them offline", devices.size(), offline));
  }
}

void plugInAnother(MidiRig& rig, std::size_t place) {
  const auto* kind = rig::findBoardKind(mcuInNameOf(firmwareAt(place)));
  rig.bus.plugIn(std::make_unique<rig::VirtualBoard>(*kind, serialNumberOf(place)));
}

/// Sends the report that ends a visit to the bootloader: an address that no block has.
void bootFirst(MidiRig& rig) {
  if (const auto board = rig.bus.firstHalfKayBoard()) {
    const auto* kind = rig::findBoardKind(rig.bus.boardAt(board->place).mcu);
    const std::vector<std::uint8_t> report(kind->reportLength(), 0xFF);
    rig.bus.sendReport(*board, report);
  }
}

void follow(MidiRig& rig, const MidiOptions& options) {
  const auto start = rig.runtime->clock().now();
  rig.manager->setNotificationHandler([&rig, start](const MIDIIONotification& notification, auto&) {
    printChange(rig, start, notification);
  });
  rig.at(anotherBoardComes, [&] { plugInAnother(rig, options.boards); });
  constexpr std::uint32_t bootloaderBaud = 134;
  rig.at(firstBoardLeaves, [&] { rig.bus.setLineSpeed(serialNumberOf(0), bootloaderBaud); });
  rig.at(firstBoardReturns, [&] { bootFirst(rig); });
  rig.at(options.followTime, [&] { rig.runtime->stopMain(); });
  say("Following:");
  rig.runtime->runMain();
  rig.manager->setNotificationHandler(nullptr);
  // What has been queued meanwhile is told, too, and lets go of the manager.
  rig.runtime->stopMain();
  rig.runtime->runMain();
}

}  // namespace

int runMidi(const CommonOptions& common, const MidiOptions& options) {
  MidiRig rig(common, options.boards);
  if (!printTree(rig, options)) {
    fmt::print(stderr, "karvex-rig: no MIDI object has the name or unique ID {}\n", *options.object);
    return exitWrongUse;
  }
  if (options.follows) {
    follow(rig, options);
  }
  return exitLoaded;
}

}  // namespace karvex::app
