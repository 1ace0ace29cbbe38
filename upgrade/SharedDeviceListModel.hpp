#pragma once

#include "foundation/Published.hpp"

namespace karvex::upgrade {

/// The three flags that govern the buttons. Main thread.
class SharedDeviceListModel {
 public:
  foundation::Published<bool> isUploadButtonDisabled{true};
  foundation::Published<bool> loadingInProgress{false};
  foundation::Published<bool> actionButtonsDisabled{false};

  /// Nothing can be uploaded until a device is selected; the other buttons are free.
  void resetUploadControls() { setAll(true); }

  /// A device is selected and attached: it can be uploaded.
  void enableUploadControls() { setAll(false); }

 private:
  void setAll(bool uploadDisabled) {
    isUploadButtonDisabled.set(uploadDisabled);
    loadingInProgress.set(false);
    actionButtonsDisabled.set(false);
  }
};

}  // namespace karvex::upgrade
