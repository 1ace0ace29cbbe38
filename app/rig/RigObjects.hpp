#pragma once

#include <memory>
#include <utility>

#include "app/rig/ApplicationCommand.hpp"
#include "app/rig/RigPlatform.hpp"
#include "app/rig/RunRecorder.hpp"
#include "ui/Actions.hpp"
#include "ui/KarvexApp.hpp"

namespace karvex::app {

/// The application's objects on the rig, whatever front shows them. The options must outlive them.
struct RigObjects {
  RigObjects(const CommonOptions& common, const ApplicationOptions& options,
             RunRecorder::EndListener endListener)
      : runtime(makeRuntime(common)),
        rig(*runtime, options.equipment, options.serviceFaults),
        app(rig.platform()),
        view(rig.platform(), app),
        actions(runtime->mainQueue(), view),
        recorder(rig, view, options.equipment, std::move(endListener)) {}

  std::unique_ptr<foundation::Runtime> runtime;
  RigPlatform rig;
  ui::KarvexApp app;
  ui::ContentView view;
  ui::Actions actions;
  RunRecorder recorder;
};

}  // namespace karvex::app
