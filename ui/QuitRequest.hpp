#pragma once

#include <optional>

#include "ui/Snapshot.hpp"

namespace karvex::ui {

/// Who wants the program to end.
enum class Leaving {
  byUser,   ///< somebody looks on, and is to see a failure first
  byOrder,  ///< of the system, or because nobody is there any more
};

/// A wish that the program ends, kept by a front until it can be followed. A user's is dropped when a run
/// that went on meanwhile ends in a failure: that one is to be seen, also if no alert tells of it. Whoever
/// still wants to leave then asks once more.
class QuitRequest {
 public:
  /// A user takes no order back.
  void make(Leaving leaving) {
    if (leaving_ != Leaving::byOrder) {
      leaving_ = leaving;
    }
    hasSeenRun_ = isRunning_;
  }

  /// To be told of each snapshot that is shown, from the first on.
  void see(const Snapshot& shown) {
    isBusy_ = isBusy(shown);
    isRunning_ = shown.isRunning;
    if (isRunning_) {
      hasSeenRun_ = true;
      hasSeenSuccess_ = false;
    } else if (shown.alert && shown.alert->alert == upgrade::Alert::procedureComplete) {
      hasSeenSuccess_ = true;
    }
    if (!isBusy_ && leaving_ == Leaving::byUser && hasSeenRun_ && !hasSeenSuccess_) {
      leaving_.reset();
    }
  }

  /// There is a wish, but an upgrade is under way. The user is to be told.
  bool isHeldBack() const { return leaving_ && isBusy_; }
  /// Whose wish to hand to Actions::leave() now; none if there is none, or if it is held back.
  std::optional<Leaving> due() const { return isBusy_ ? std::nullopt : leaving_; }

 private:
  std::optional<Leaving> leaving_;
  bool isBusy_ = false;
  bool isRunning_ = false;
  bool hasSeenRun_ = false;      ///< since the wish was made last
  bool hasSeenSuccess_ = false;  ///< of the last run
};

}  // namespace karvex::ui
