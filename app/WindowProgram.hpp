#pragma once

#include <QObject>
#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "app/ApplicationCore.hpp"
#include "ui/qt/Mailbox.hpp"
#include "ui/qt/MainWindow.hpp"

namespace karvex::app {

/// The application behind a window. The toolkit has the process's main thread; the core has a thread of its
/// own, which is the main thread of its runtime, and may be blocked for seconds without the window noticing.
/// All operations on the toolkit's thread.
class WindowProgram {
 public:
  using MakeCore = std::function<std::unique_ptr<ApplicationCore>()>;

  /// Starts the core, and waits until it is made. The QApplication must exist. Throws what `makeCore` throws.
  explicit WindowProgram(MakeCore makeCore);
  /// Ends the core behind the jobs that its main queue holds already.
  ~WindowProgram();
  WindowProgram(const WindowProgram&) = delete;
  WindowProgram& operator=(const WindowProgram&) = delete;

  ui::qt::MainWindow& window() { return *window_; }

  /// Shows the window until the user or a signal (TerminationSignals) closes it, or the core stops its main
  /// queue. Call it once.
  void run();

 private:
  void runCore(const MakeCore& makeCore);
  void endCore();
  void closeUnlessRunning(ui::Leaving leaving);

  QObject toolkit_;  // Takes what the core's thread asks the toolkit's for.
  ui::qt::Mailbox<ui::Snapshot> snapshots_;
  std::promise<ApplicationCore*> made_;
  std::promise<void> isOver_;  // The window uses the core no more.
  ApplicationCore* core_ = nullptr;
  std::unique_ptr<ui::qt::MainWindow> window_;
  std::thread thread_;
};

}  // namespace karvex::app
