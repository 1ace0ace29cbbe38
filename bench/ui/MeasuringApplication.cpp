#include "bench/ui/MeasuringApplication.hpp"

#include <QEvent>
#include <QMetaEnum>

namespace karvex::bench {

bool MeasuringApplication::notify(QObject* receiver, QEvent* event) {
  if (depth_ > 0) {  // Within a handler: belongs to its time.
    return QApplication::notify(receiver, event);
  }
  // Afterwards neither needs to exist any more.
  const auto* kind = QMetaEnum::fromType<QEvent::Type>().valueToKey(event->type());
  auto name = std::string(receiver->metaObject()->className()) + " " + (kind != nullptr ? kind : "own event");
  ++depth_;
  const auto start = std::chrono::steady_clock::now();
  const bool isDone = QApplication::notify(receiver, event);
  const auto took = std::chrono::steady_clock::now() - start;
  --depth_;
  handlers_.push_back({took, std::move(name)});
  if (afterHandler) {
    afterHandler();
  }
  return isDone;
}

}  // namespace karvex::bench
