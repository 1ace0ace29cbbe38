#pragma once

#include <memory>
#include <optional>

#include "app/ApplicationCore.hpp"
#include "app/ScriptedUser.hpp"
#include "app/rig/ApplicationCommand.hpp"
#include "app/rig/RigPlatform.hpp"
#include "app/rig/RunRecorder.hpp"
#include "ui/KarvexApp.hpp"

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

  foundation::Runtime& runtime() override { return *runtime_; }
  ui::ContentView& view() override { return view_; }
  ui::Actions& actions() override { return actions_; }
  /// Only now the scripted user has something to look at.
  void shown() override;

 private:
  const ApplicationOptions& options_;
  std::unique_ptr<foundation::Runtime> runtime_;
  RigPlatform rig_;
  ui::KarvexApp app_;
  ui::ContentView view_;
  ui::Actions actions_;
  RunRecorder recorder_;
  RunRecord& record_;
  std::optional<ScriptedUser> user_;
};

}  // namespace karvex::app
