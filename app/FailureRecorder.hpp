#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Observers.hpp"
#include "ui/ContentView.hpp"
#include "ui/Observation.hpp"

namespace karvex::app {

/// Notes each failure that a user is shown, in whatever front. Main thread.
class FailureRecorder {
 public:
  /// `note` gets what the user reads, in one text. The view must outlive the recorder.
  FailureRecorder(ui::ContentView& view, std::function<void(std::string_view failure)> note);
  FailureRecorder(const FailureRecorder&) = delete;
  FailureRecorder& operator=(const FailureRecorder&) = delete;

 private:
  void look();

  ui::ContentView& view_;
  std::function<void(std::string_view)> note_;
  std::optional<upgrade::Alert> up_;  ///< the alert that was up when it looked last
  std::string stopNotice_;            ///< likewise
  std::vector<foundation::Subscription> subscriptions_;
};

}  // namespace karvex::app
