#include "ui/console/LineFront.hpp"

#include <utility>

#include "ui/Texts.hpp"
#include "ui/console/SnapshotDiff.hpp"

namespace karvex::ui::console {

LineFront::LineFront(ContentView& view, std::function<void(std::string_view line)> write)
    : view_(view),
      write_(std::move(write)),
      last_(snapshotOf(view)),
      subscriptions_(observe(view, [this] { look(); })) {}

void LineFront::look() {
  auto snapshot = snapshotOf(view_);
  for (const auto& line : changesBetween(last_, snapshot)) {
    write_(line);
  }
  last_ = std::move(snapshot);
  quitIfIdle();
}

void LineFront::quitWhenIdle(std::function<void()> quit) {
  quit_ = std::move(quit);
  if (isBusy(last_)) {
    write_(texts::closingHeldBack);
  }
  quitIfIdle();
}

void LineFront::quitIfIdle() {
  if (quit_ && !isBusy(last_)) {
    std::exchange(quit_, nullptr)();
  }
}

}  // namespace karvex::ui::console
