#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "app/ApplicationCore.hpp"
#include "app/ExitStatus.hpp"
#include "app/ScriptedUser.hpp"
#include "foundation/Observers.hpp"
#include "ui/console/LineFront.hpp"

namespace karvex::app {

/// An upgrade for workshops: begins by itself, writes a line for each change, and ends with a summary and an
/// exit status. A signal that asks for the program's end is followed after the device in work. Main thread.
class UnattendedUpgrade {
 public:
  using Write = std::function<void(std::string_view line)>;

  /// `write` gets each line without its end. Everything must outlive this object.
  UnattendedUpgrade(ApplicationCore& core, ScriptedUser::Plan plan, Write write);
  UnattendedUpgrade(const UnattendedUpgrade&) = delete;
  UnattendedUpgrade& operator=(const UnattendedUpgrade&) = delete;

  /// Runs the core until the upgrade is over. Returns exitLoaded if each device from the first row on was
  /// upgraded, and else exitLoadFailed. Call it once.
  /// Thread-safe: on the main thread alone.
  /// Realtime-safe: no, it blocks for the whole upgrade.
  ExitStatus run();

 private:
  void note(const std::vector<records::BootableDevice>& devices);
  ExitStatus summarise(const ScriptedUser& user);

  ApplicationCore& core_;
  ScriptedUser::Plan plan_;
  Write write_;
  ui::console::LineFront front_;
  std::map<std::string, std::uint32_t> statuses_;  ///< the one to tell of, by the serial number
  foundation::Subscription subscription_;
};

}  // namespace karvex::app
