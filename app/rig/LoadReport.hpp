#pragma once

#include <string>

#include "app/rig/RigLoad.hpp"

namespace karvex::app {

/// The outcome as a JSON document, for programs.
std::string jsonOf(const LoadOutcome& outcome);

/// The outcome as one plain sentence or two, for people: what happened, to which board, and what to do about
/// it.
std::string sentenceOf(const LoadOutcome& outcome);

}  // namespace karvex::app
