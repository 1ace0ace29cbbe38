#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace karvex::rig {

/// What is wrong with one board. By default nothing is.
struct Faults {
  bool startsInHalfKay = false;
  bool neverEntersHalfKay = false;
  std::optional<std::chrono::milliseconds> entersHalfKayAfter;
  std::optional<std::chrono::milliseconds> refusesReportsFor;
  bool refusesReportsForGood = false;
  std::optional<std::uint32_t> vanishesAtBlock;  ///< counted from 0 in the order of arrival
  bool deniesAccess = false;
  bool neverReturns = false;
  std::optional<std::chrono::milliseconds> returnsAfter;
};

/// Adds a fault by its name, "NAME" or "NAME=VALUE". Gives a sentence that says what is wrong with the text,
/// or nothing if it was understood.
std::optional<std::string> addFault(std::string_view text, Faults& faults);

/// The names with what they do, one a line, for a help text.
std::string describeFaults();

}  // namespace karvex::rig
