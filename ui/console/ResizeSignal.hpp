#pragma once

#include <csignal>

namespace karvex::ui::console {

/// Tells that the terminal has another size, by adding to the counter of an event descriptor (eventfd). One
/// at a time.
class ResizeSignal {
 public:
  /// The descriptor must not block, and outlive this object.
  explicit ResizeSignal(int eventDescriptor);
  ~ResizeSignal();
  ResizeSignal(const ResizeSignal&) = delete;
  ResizeSignal& operator=(const ResizeSignal&) = delete;

 private:
  struct sigaction before_{};
};

}  // namespace karvex::ui::console
