#pragma once

#include <functional>
#include <memory>

#include "device/DeviceExplorer.hpp"
#include "foundation/Published.hpp"
#include "foundation/run/Task.hpp"
#include "upgrade/Platform.hpp"

namespace karvex::ui {

/// The sheet that sends the equipment report, without a toolkit. Each opening of the sheet has one of its
/// own; a report that is under way when the sheet is closed goes on, and its result is dropped. Main thread.
class DeviceExplorerView : public std::enable_shared_from_this<DeviceExplorerView> {
 public:
  /// `dismiss` closes the sheet. The platform must outlive the report.
  static std::shared_ptr<DeviceExplorerView> create(const upgrade::Platform& platform,
                                                    std::function<void()> dismiss);

  std::function<void()> dismiss;
  device::DeviceExplorer deviceList;
  /// A report is under way.
  foundation::Published<bool> isLoading{false};

  /// The send button: scans the bus and posts what it found. Closes the sheet if the service answered.
  void sendClicked();

  /// The sheet is off the screen: nothing is dismissed any more.
  void closed() { dismiss = nullptr; }

 private:
  DeviceExplorerView(const upgrade::Platform& platform, std::function<void()> dismissAction);
  static foundation::Task<> send(std::shared_ptr<DeviceExplorerView> self);

  foundation::Runtime& runtime_;
};

}  // namespace karvex::ui
