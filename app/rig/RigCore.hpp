#pragma once

#include <optional>

#include "app/ApplicationCore.hpp"
#include "app/ScriptedUser.hpp"
#include "app/rig/RigObjects.hpp"

namespace karvex::app {

/// The application's objects on the rig, for a window. With `upgradeFrom`, a scripted user runs to the end
/// and stops the core.
class RigCore final : public ApplicationCore {
 public:
  /// What happened is left in `record` at the end; it must outlive this object, as must the options.
  RigCore(const CommonOptions& common, const ApplicationOptions& options, RunRecord& record,
          RunRecorder::EndListener endListener);
  ~RigCore() override;
  RigCore(const RigCore&) = delete;
  RigCore& operator=(const RigCore&) = delete;

  foundation::Runtime& runtime() override { return *on_.runtime; }
  ui::ContentView& view() override { return on_.view; }
  ui::Actions& actions() override { return on_.actions; }
  /// Only now the scripted user has something to look at.
  void shown() override;

 private:
  const ApplicationOptions& options_;
  RigObjects on_;
  RunRecord& record_;
  std::optional<ScriptedUser> user_;
};

}  // namespace karvex::app
