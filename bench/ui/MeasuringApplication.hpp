#pragma once

#include <QApplication>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace karvex::bench {

/// An application that times each of its handlers, from the event loop's call to its return.
class MeasuringApplication final : public QApplication {
 public:
  using QApplication::QApplication;

  struct Handler {
    std::chrono::nanoseconds took{};
    std::string event;  ///< whose, and of which kind
  };

  /// Called behind each handler that the event loop started.
  std::function<void()> afterHandler;

  /// All of them, in their order.
  const std::vector<Handler>& handlers() const { return handlers_; }

  bool notify(QObject* receiver, QEvent* event) override;

 private:
  std::vector<Handler> handlers_;
  int depth_ = 0;
};

}  // namespace karvex::bench
