#include "app/rig/ScriptedUser.hpp"

#include <chrono>
#include <utility>

namespace karvex::app {
namespace {

/// How often the user looks. Half a tick behind the table's own tick, so that what that changes is seen soon.
constexpr std::chrono::milliseconds glance{125};

}  // namespace

ScriptedUser::ScriptedUser(foundation::Runtime& runtime, ui::ContentView& view, Plan plan,
                           std::function<void()> done)
    : runtime_(runtime),
      view_(view),
      plan_(plan),
      done_(std::move(done)),
      timer_(
          foundation::Timer::repeating(runtime_.clock(), runtime_.mainQueue(), glance, [this] { look(); })) {}

/// No task is under way, and no alert waits for an answer that will come.
bool ScriptedUser::isQuiet() const {
  return view_.deviceListView.tasksUnderWay() == 0 && !view_.loadingViewModel.loadingInProgress.get() &&
         !(plan_.answersAlerts && ui::snapshotOf(view_).alert);
}

void ScriptedUser::look() {
  if (step_ == Step::done || !isQuiet()) {
    return;
  }
  if (step_ == Step::waitingForList) {
    begin();
  } else {
    step_ = Step::done;
    done_();
  }
}

void ScriptedUser::begin() {
  const auto rows = view_.deviceListView.deviceManager.managedDevices.get();
  if (plan_.firstRow < rows.size() && !ui::snapshotOf(view_).alert) {
    view_.deviceListView.select(rows[plan_.firstRow].id);
    view_.uploadClicked();
    hasRun_ = view_.loadingViewModel.loadingInProgress.get();
  }
  step_ = Step::running;
}

}  // namespace karvex::app
