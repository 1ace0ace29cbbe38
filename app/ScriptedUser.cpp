#include "app/ScriptedUser.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace karvex::app {
namespace {

/// How often the user looks. Half a tick behind the table's own tick, so that what that changes is seen soon.
constexpr std::chrono::milliseconds glance{125};

/// How often an alert is answered that comes back to the same rows.
constexpr int mostAnswers = 2;

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
         !(plan_.answersAlerts && ui::alertOf(view_.deviceListView));
}

/// Answers the alert that is up, if there is one. False if that has been tried: the same alert came back to
/// the same rows.
bool ScriptedUser::answersAlert() {
  if (!plan_.answersAlerts) {
    return true;
  }
  const auto alert = ui::alertOf(view_.deviceListView);
  if (!alert) {
    return true;
  }
  auto situation = alert->title;
  for (const auto& device : view_.deviceListView.deviceManager.managedDevices.get()) {
    situation += fmt::format(" #{} {}", device.portSerialNumber, device.status);
  }
  if (++answers_[situation] > mostAnswers) {
    return false;
  }
  view_.deviceListView.confirm(alert->alert);
  return true;
}

void ScriptedUser::look() {
  if (step_ == Step::done) {
    return;
  }
  if (!answersAlert()) {
    hasGivenUp_ = true;
    step_ = Step::done;
    return done_();
  }
  if (!isQuiet()) {
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
  wanted_ = view_.deviceListView.deviceManager.managedDevices.get();
  const auto firstRow = std::min(plan_.firstRow, wanted_.size());
  wanted_.erase(wanted_.begin(), wanted_.begin() + static_cast<std::ptrdiff_t>(firstRow));
  if (!wanted_.empty() && !ui::alertOf(view_.deviceListView)) {
    view_.deviceListView.select(wanted_.front().id);
    view_.uploadClicked();
  }
  step_ = Step::running;
}

}  // namespace karvex::app
