#include "ui/console/LineFront.hpp"

#include <utility>

#include "ui/console/Changes.hpp"

namespace karvex::ui::console {

LineFront::LineFront(ContentView& view, Actions& actions, Options options)
    : view_(view),
      actions_(actions),
      options_(std::move(options)),
      last_(snapshotOf(view)),
      subscriptions_(observe(view, [this] { look(); })) {}

void LineFront::look() {
  auto snapshot = snapshotOf(view_);
  for (const auto& line : changesBetween(last_, snapshot)) {
    options_.write(line);
  }
  const bool isNewAlert = snapshot.alert && (!last_.alert || last_.alert->alert != snapshot.alert->alert);
  last_ = std::move(snapshot);
  if (isNewAlert && options_.answersAlerts) {
    actions_.confirm(last_.alert->alert);
  }
}

}  // namespace karvex::ui::console
