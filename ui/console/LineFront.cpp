#include "ui/console/LineFront.hpp"

#include <utility>

#include "ui/Texts.hpp"
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
  quitIfIdle();
}

void LineFront::quitWhenIdle(std::function<void()> quit) {
  quit_ = std::move(quit);
  if (isBusy(last_)) {
    options_.write(texts::closingHeldBack);
  }
  quitIfIdle();
}

void LineFront::quitIfIdle() {
  if (quit_ && !isBusy(last_)) {
    std::exchange(quit_, nullptr)();
  }
}

}  // namespace karvex::ui::console
