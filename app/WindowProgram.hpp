#pragma once

#include <QObject>
#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "foundation/Runtime.hpp"
#include "ui/Actions.hpp"
#include "ui/ContentView.hpp"
#include "ui/qt/Mailbox.hpp"
#include "ui/qt/MainWindow.hpp"

namespace karvex::app {

/// The application's objects. Made, run and destroyed on the core's main thread.
class WindowCore {
 public:
  virtual ~WindowCore() = default;
  virtual foundation::Runtime& runtime() = 0;
  virtual ui::ContentView& view() = 0;
  virtual ui::Actions& actions() = 0;
  /// The window is on the screen, and has told the actions so. The toolkit's thread.
  virtual void shown() {}
};

/// The application behind a window. The toolkit has the process's main thread; the core has a thread of its
/// own, which is the main thread of its runtime, and may be blocked for seconds without the window noticing.
/// All operations on the toolkit's thread.
class WindowProgram {
 public:
  using MakeCore = std::function<std::unique_ptr<WindowCore>()>;

  /// Starts the core, and waits until it is made. The QApplication must exist. Throws what `makeCore` throws.
  explicit WindowProgram(MakeCore makeCore);
  /// Ends the core behind the jobs that its main queue holds already.
  ~WindowProgram();
  WindowProgram(const WindowProgram&) = delete;
  WindowProgram& operator=(const WindowProgram&) = delete;

  ui::qt::MainWindow& window() { return *window_; }

  /// Shows the window until the user closes it, or the core stops its main queue. Call it once.
  void run();

 private:
  void runCore(const MakeCore& makeCore);
  void closeUnlessRunning();

  QObject toolkit_;  // Takes what the core's thread asks the toolkit's for.
  ui::qt::Mailbox<ui::Snapshot> snapshots_;
  std::promise<WindowCore*> made_;
  std::promise<void> isOver_;  // The window uses the core no more.
  WindowCore* core_ = nullptr;
  std::unique_ptr<ui::qt::MainWindow> window_;
  std::thread thread_;
};

}  // namespace karvex::app
