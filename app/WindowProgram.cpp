#include "app/WindowProgram.hpp"

#include <QApplication>
#include <utility>

#include "ui/Observation.hpp"
#include "ui/TerminationSignals.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::app {

WindowProgram::WindowProgram(MakeCore makeCore)
    : snapshots_([this](const ui::Snapshot& snapshot) { window_->draw(snapshot); }),
      thread_([this, makeCore = std::move(makeCore)] { runCore(makeCore); }) {
  try {
    core_ = made_.get_future().get();
    window_ = std::make_unique<ui::qt::MainWindow>(
        ui::qt::WindowLinks{core_->actions(), upgrade::currentLoadProgress,
                            [this](ui::Leaving leaving) { closeUnlessRunning(leaving); }});
  } catch (...) {
    endCore();
    throw;
  }
}

WindowProgram::~WindowProgram() {
  endCore();
}

void WindowProgram::endCore() {
  if (core_ != nullptr) {
    core_->runtime().stopMain();
  }
  isOver_.set_value();
  thread_.join();
}

void WindowProgram::run() {
  const ui::TerminationSignals terminationSignals([this] {
    QMetaObject::invokeMethod(&toolkit_, [this] { window_->closeByOrder(); }, Qt::QueuedConnection);
  });
  window_->show();
  core_->shown();
  QApplication::exec();
}

/// The core's thread, from its begin to its end.
void WindowProgram::runCore(const MakeCore& makeCore) {
  std::unique_ptr<ApplicationCore> core;
  try {
    core = makeCore();
  } catch (...) {
    made_.set_exception(std::current_exception());
    return;
  }
  auto& view = core->view();
  const auto publish = [this, &view] { snapshots_.put(ui::snapshotOf(view)); };
  auto subscriptions = ui::observe(view, publish);
  publish();
  made_.set_value(core.get());
  core->runtime().runMain();
  subscriptions.clear();
  QMetaObject::invokeMethod(&toolkit_, [] { QApplication::exit(); }, Qt::QueuedConnection);
  isOver_.get_future().wait();
}

void WindowProgram::closeUnlessRunning(ui::Leaving leaving) {
  core_->actions().leave(leaving, [this] {
    QMetaObject::invokeMethod(&toolkit_, [this] { window_->closeForGood(); }, Qt::QueuedConnection);
  });
}

}  // namespace karvex::app
