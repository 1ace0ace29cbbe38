#include "ui/Actions.hpp"

#include <algorithm>
#include <utility>

#include "ui/ContentView.hpp"
#include "ui/Observation.hpp"

namespace karvex::ui {

void Actions::post(std::function<void(ContentView&)> action) {
  mainQueue_.post([&view = view_, action = std::move(action)] { action(view); });
}

void Actions::postUnlessAlert(std::function<void(ContentView&)> action) {
  post([action = std::move(action)](ContentView& view) {
    if (std::ranges::none_of(upgrade::alertsInOrder,
                             [&view](auto alert) { return view.deviceListView.isUp(alert); })) {
      action(view);
    }
  });
}

void Actions::appear() {
  post([](ContentView& view) { view.appear(); });
}

void Actions::select(std::optional<foundation::Uuid> device) {
  postUnlessAlert([device](ContentView& view) { view.deviceListView.select(device); });
}

void Actions::upload() {
  postUnlessAlert([](ContentView& view) { view.uploadClicked(); });
}

void Actions::refresh() {
  postUnlessAlert([](ContentView& view) { view.refreshClicked(); });
}

void Actions::sync() {
  postUnlessAlert([](ContentView& view) {
    if (!view.deviceExplorerView()) {
      view.syncClicked();
    }
  });
}

void Actions::confirm(upgrade::Alert alert) {
  post([alert](ContentView& view) { view.deviceListView.confirm(alert); });
}

void Actions::sendReport() {
  postUnlessAlert([](ContentView& view) {
    if (const auto sheet = view.deviceExplorerView()) {
      sheet->sendClicked();
    }
  });
}

void Actions::closeSheet() {
  postUnlessAlert([](ContentView& view) { view.showDeviceExplorer.set(false); });
}

void Actions::leave(Leaving leaving, std::function<void()> leave) {
  post([leaving, leave = std::move(leave)](ContentView& view) {
    const auto snapshot = snapshotOf(view);
    if (leaving == Leaving::byUser ? mayClose(snapshot) : !isBusy(snapshot)) {
      leave();
    }
  });
}

}  // namespace karvex::ui
