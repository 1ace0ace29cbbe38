#include "app/rig/RigCore.hpp"

#include <utility>

namespace karvex::app {

RigCore::RigCore(const CommonOptions& common, const ApplicationOptions& options, RunRecord& record,
                 RunRecorder::EndListener endListener)
    : options_(options), on_(common, options, std::move(endListener)), record_(record) {}

/// What runs on the global queue uses the others' state, so it ends first.
RigCore::~RigCore() {
  on_.runtime->finish();
  record_ = on_.recorder.record();
  record_.hasGivenUp = user_ && user_->hasGivenUp();
}

void RigCore::shown() {
  if (!options_.upgradeFrom) {
    return;
  }
  on_.runtime->mainQueue().post([this] {
    user_.emplace(
        *on_.runtime, on_.view,
        ScriptedUser::Plan{.firstRow = *options_.upgradeFrom - 1, .answersAlerts = options_.answersAlerts},
        [this] { on_.runtime->stopMain(); });
  });
}

}  // namespace karvex::app
