#pragma once

#include <string_view>

namespace karvex::device {

/// The udev rules that hand the boards' nodes to the user at the machine, as the packages install them.
inline constexpr std::string_view rulesFileName = "60-karvex.rules";

/// What is known of those rules.
enum class RulesState {
  unknown,  ///< nobody has looked, as on simulated boards
  missing,  ///< there is no such file, or it is empty
  there,
};

}  // namespace karvex::device
