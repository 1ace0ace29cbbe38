#pragma once

#include <optional>

#include "foundation/text/Uuid.hpp"
#include "upgrade/Alert.hpp"

namespace karvex::ui {

/// What the user can do, as a front sees it. No operation waits for what it starts; any thread.
class UserActions {
 public:
  virtual ~UserActions() = default;

  /// The window is on the screen.
  virtual void appear() = 0;
  virtual void select(std::optional<foundation::Uuid> device) = 0;
  virtual void upload() = 0;
  virtual void refresh() = 0;
  /// Opens the sheet of the equipment report.
  virtual void sync() = 0;
  /// The OK of an alert.
  virtual void confirm(upgrade::Alert alert) = 0;
  /// The send button of the sheet.
  virtual void sendReport() = 0;
  virtual void closeSheet() = 0;
};

}  // namespace karvex::ui
