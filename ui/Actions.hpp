#pragma once

#include <functional>
#include <optional>

#include "foundation/run/Queue.hpp"
#include "foundation/text/Uuid.hpp"
#include "ui/QuitRequest.hpp"
#include "ui/UserActions.hpp"
#include "upgrade/Alert.hpp"

namespace karvex::ui {

class ContentView;

/// The user's actions, handed to the main queue. When it gets there, an action whose control is disabled does
/// nothing, and while an alert is up nothing but its OK does anything. Any thread.
class Actions final : public UserActions {
 public:
  /// Both must outlive this object and the actions on their way.
  Actions(foundation::Queue& mainQueue, ContentView& view) : mainQueue_(mainQueue), view_(view) {}

  void appear() override;
  void select(std::optional<foundation::Uuid> device) override;
  void upload() override;
  void refresh() override;
  void sync() override;
  void confirm(upgrade::Alert alert) override;
  void sendReport() override;
  void closeSheet() override;

  /// Calls `leave` on the main thread if nothing stands against it then: an upgrade, of which a click may be
  /// on its way ahead of this, or a failure that nobody has seen. Ask again when the snapshot has changed;
  /// a QuitRequest says when.
  void leave(Leaving leaving, std::function<void()> leave);

 private:
  void post(std::function<void(ContentView&)> action);
  void postUnlessAlert(std::function<void(ContentView&)> action);

  foundation::Queue& mainQueue_;
  ContentView& view_;
};

}  // namespace karvex::ui
