#pragma once

#include <string>

namespace karvex::upgrade {

/// What became of the last request for the service's list.
struct ListRequest {
  enum class State {
    notMade,      ///< nobody has asked yet
    underWay,     ///< the answer is waited for
    answered,     ///< with a list, which may be empty
    unreachable,  ///< no answer came
    unreadable,   ///< the answer is no list of devices
  };

  State state = State::notMade;
  std::string reason = {};  ///< why the service was unreachable, in words of the transfer

  bool operator==(const ListRequest&) const = default;
};

}  // namespace karvex::upgrade
