#include "app/FailureRecorder.hpp"

#include <utility>

namespace karvex::app {

FailureRecorder::FailureRecorder(ui::ContentView& view, std::function<void(std::string_view)> note)
    : view_(view), note_(std::move(note)), subscriptions_(ui::observe(view, [this] { look(); })) {}

void FailureRecorder::look() {
  const auto alert = ui::alertOf(view_.deviceListView);
  const auto before = std::exchange(up_, alert ? std::optional(alert->alert) : std::nullopt);
  if (alert && before != up_ && alert->alert != upgrade::Alert::procedureComplete) {
    note_(alert->title + ": " + alert->message);
  }
  const auto& stopNotice = view_.deviceListView.stopNotice.get();
  if (std::exchange(stopNotice_, stopNotice) != stopNotice && !stopNotice.empty()) {
    note_(stopNotice);
  }
}

}  // namespace karvex::app
