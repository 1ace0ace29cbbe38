#include "rig/Faults.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace karvex::rig {
namespace {

using std::chrono::milliseconds;

struct NamedFault {
  std::string_view name;
  std::string_view unit;  ///< of the value; empty if it takes none
  std::uint32_t usualValue;
  std::string_view effect;
  void (*apply)(Faults& faults, std::uint32_t value);
};

constexpr std::array<NamedFault, 9> namedFaults = {{
    {"in-halfkay", "", 0, "is in its bootloader from the start, where an earlier try left it",
     [](Faults& faults, std::uint32_t) { faults.startsInHalfKay = true; }},
    {"never-enters-halfkay", "", 0, "ignores the request to enter its bootloader",
     [](Faults& faults, std::uint32_t) { faults.neverEntersHalfKay = true; }},
    {"enters-late", "MS", 12'000, "reaches its bootloader only after this time",
     [](Faults& faults, std::uint32_t value) { faults.entersHalfKayAfter = milliseconds(value); }},
    {"refuses", "MS", 1'500, "refuses reports for this time after the first one is offered",
     [](Faults& faults, std::uint32_t value) { faults.refusesReportsFor = milliseconds(value); }},
    {"refuses-for-good", "", 0, "refuses every report",
     [](Faults& faults, std::uint32_t) { faults.refusesReportsForGood = true; }},
    {"vanishes", "BLOCK", 3, "leaves the bus when this block (from 0) is offered",
     [](Faults& faults, std::uint32_t value) { faults.vanishesAtBlock = value; }},
    {"access-denied", "", 0, "its bootloader may not be opened by this user",
     [](Faults& faults, std::uint32_t) { faults.deniesAccess = true; }},
    {"never-returns", "", 0, "stays away after the report that reboots it",
     [](Faults& faults, std::uint32_t) { faults.neverReturns = true; }},
    {"returns-late", "MS", 6'000, "comes back only this time after the report that reboots it",
     [](Faults& faults, std::uint32_t value) { faults.returnsAfter = milliseconds(value); }},
}};

std::optional<std::uint32_t> parseNumber(std::string_view text) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isWhole = error == std::errc{} && end == text.data() + text.size();
  return isWhole ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<std::string> addFault(std::string_view text, Faults& faults) {
  const auto equals = text.find('=');
  const auto name = text.substr(0, equals);
  const auto* fault = std::find_if(namedFaults.begin(), namedFaults.end(),
                                   [name](const NamedFault& candidate) { return candidate.name == name; });
  if (fault == namedFaults.end()) {
    return fmt::format("There is no fault called \"{}\".", name);
  }
  if (equals == std::string_view::npos) {
    fault->apply(faults, fault->usualValue);
    return std::nullopt;
  }
  if (fault->unit.empty()) {
    return fmt::format("The fault {} takes no value.", name);
  }
  const auto value = parseNumber(text.substr(equals + 1));
  if (!value) {
    return fmt::format("The fault {} takes a whole number from 0 to 4294967295.", name);
  }
  fault->apply(faults, *value);
  return std::nullopt;
}

std::string describeFaults() {
  std::string text;
  for (const auto& fault : namedFaults) {
    const auto form =
        fault.unit.empty() ? std::string(fault.name) : fmt::format("{}[={}]", fault.name, fault.unit);
    const auto usual = fault.unit.empty() ? std::string() : fmt::format(" (default {})", fault.usualValue);
    text += fmt::format("  {:<22} {}{}\n", form, fault.effect, usual);
  }
  return text;
}

}  // namespace karvex::rig
