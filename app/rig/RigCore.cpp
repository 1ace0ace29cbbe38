#include "app/rig/RigCore.hpp"

#include <utility>

namespace karvex::app {

RigCore::RigCore(const CommonOptions& common, const ApplicationOptions& options, RunRecord& record,
                 RunRecorder::EndListener endListener)
    : options_(options),
      runtime_(makeRuntime(common)),
      rig_(*runtime_, options.equipment, options.serviceFaults),
      app_(rig_.platform()),
      view_(rig_.platform(), app_),
      actions_(runtime_->mainQueue(), view_),
      recorder_(rig_, view_, options.equipment, std::move(endListener)),
      record_(record) {}

/// What runs on the global queue uses the others' state, so it ends first.
RigCore::~RigCore() {
  runtime_->finish();
  record_ = recorder_.record();
  record_.hasGivenUp = user_ && user_->hasGivenUp();
}

void RigCore::shown() {
  if (!options_.upgradeFrom) {
    return;
  }
  runtime_->mainQueue().post([this] {
    user_.emplace(
        *runtime_, view_,
        ScriptedUser::Plan{.firstRow = *options_.upgradeFrom - 1, .answersAlerts = options_.answersAlerts},
        [this] { runtime_->stopMain(); });
  });
}

}  // namespace karvex::app
