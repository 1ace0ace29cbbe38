#pragma once

#include "app/rig/ApplicationCommand.hpp"
#include "app/rig/RunRecorder.hpp"

namespace karvex::app {

/// True if there is a display that a window can be shown on.
bool hasDisplay();

/// The whole application on simulated equipment in a window, until it is closed. With
/// `upgradeFrom`, it runs to the end unattended and closes by itself. Gives what happened. On the
/// process's main thread.
RunRecord runInWindow(const CommonOptions& common, const ApplicationOptions& options,
                      const RunRecorder::EndListener& endListener);

}  // namespace karvex::app
