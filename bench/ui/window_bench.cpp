// How fast the window answers: window_bench run [BOARDS] | window_bench start [TIMES]
//
// run    a whole upgrade on the rig in real time: the longest handler of the toolkit's thread, beside the
// longest time
//        that the core's main queue was blocked
// start  from the start of the process to the filled table, with what it is spent on: the median of some
// starts
//
// On the display that there is, or on the offscreen platform where there is none.

#include <fmt/format.h>

#include <QProcess>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "app/WindowProgram.hpp"
#include "app/rig/RigCore.hpp"
#include "app/rig/WindowCommand.hpp"
#include "bench/ui/MeasuringApplication.hpp"
#include "foundation/Log.hpp"
#include "ui/qt/DeviceTable.hpp"

namespace {

using namespace karvex;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr Milliseconds handlerBound{16};
constexpr Milliseconds startBound{300};

/// Measures how long a job that is posted to the main queue waits there, for as long as it lives.
class BlockedTime {
 public:
  explicit BlockedTime(foundation::Runtime& runtime) : thread_([this, &runtime] { measure(runtime); }) {}
  ~BlockedTime() {
    isOver_ = true;
    thread_.join();
  }
  BlockedTime(const BlockedTime&) = delete;
  BlockedTime& operator=(const BlockedTime&) = delete;

  Milliseconds longest() const { return Milliseconds(longest_.load()); }

 private:
  void measure(foundation::Runtime& runtime) {
    constexpr std::chrono::milliseconds pause{20};
    while (!isOver_) {
      runtime.mainQueue().post([this, posted = Clock::now()] {
        longest_ = std::max(longest_.load(), Milliseconds(Clock::now() - posted).count());
      });
      std::this_thread::sleep_for(pause);
    }
  }

  std::atomic<double> longest_ = 0;
  std::atomic<bool> isOver_ = false;
  std::thread thread_;
};

int benchRun(bench::MeasuringApplication& application, std::size_t boards) {
  const app::CommonOptions common{.realTime = true};
  const app::ApplicationOptions options{.equipment = {.boards = boards}, .upgradeFrom = 1};
  app::RunRecord record;
  Milliseconds blocked{};
  const auto start = Clock::now();
  {
    foundation::Runtime* runtime = nullptr;
    app::WindowProgram program([&] {
      auto core = std::make_unique<app::RigCore>(common, options, record, [](const app::RunRecord&) {});
      runtime = &core->runtime();
      return core;
    });
    const BlockedTime blockedTime(*runtime);
    program.run();
    blocked = blockedTime.longest();
  }
  const auto upgraded = std::ranges::count_if(record.boards, &app::RunRecord::Board::isReported);
  auto handlers = application.handlers();
  std::ranges::sort(handlers, std::greater{}, &bench::MeasuringApplication::Handler::took);
  fmt::print("{} of {} boards upgraded in {:.1f} s on the platform {}.\n", upgraded, boards,
             Milliseconds(Clock::now() - start).count() / 1000,
             QGuiApplication::platformName().toStdString());
  fmt::print("The core's main queue was blocked for up to {:.0f} ms.\n", blocked.count());
  fmt::print("{} handlers of the toolkit's thread; the longest:\n", handlers.size());
  for (std::size_t i = 0; i < std::min<std::size_t>(5, handlers.size()); ++i) {
    fmt::print("  {:7.2f} ms  {}\n", Milliseconds(handlers[i].took).count(), handlers[i].event);
  }
  const auto longest = handlers.empty() ? 0.0 : Milliseconds(handlers.front().took).count();
  fmt::print("longest handler / bound of {:.0f} ms = {:.2f}\n", handlerBound.count(),
             longest / handlerBound.count());
  return upgraded == static_cast<std::ptrdiff_t>(boards) ? 0 : 1;
}

/// One start, told in milliseconds since `processStart`.
int startOnce(int count, char** arguments, Clock::time_point processStart) {
  const auto tell = [processStart](const char* stage) {
    fmt::print("{}\t{:.2f}\n", stage, Milliseconds(Clock::now() - processStart).count());
  };
  tell("main() entered");
  bench::MeasuringApplication application(count, arguments);
  tell("toolkit ready");
  foundation::log::redirectSystem([](std::string_view) {});
  app::RunRecord record;
  const app::CommonOptions common;
  const app::ApplicationOptions options;
  app::WindowProgram program(
      [&] { return std::make_unique<app::RigCore>(common, options, record, [](const app::RunRecord&) {}); });
  tell("rig, core and window made");
  const auto* table = program.window().findChild<ui::qt::DeviceTable*>();
  application.afterHandler = [&, isShown = false]() mutable {
    if (!isShown && program.window().isVisible()) {
      isShown = true;
      tell("window shown");
    }
    if (table->model()->rowCount() > 0 && application.handlers().back().event.ends_with(" UpdateRequest")) {
      tell("table filled and drawn");
      application.afterHandler = nullptr;
      QApplication::exit();
    }
  };
  program.run();
  return 0;
}

/// The stages of several starts, each in a process of its own.
int benchStart(const char* program, int times) {
  std::vector<std::string> stages;
  std::map<std::string, std::vector<double>> moments;
  for (int i = 0; i < times; ++i) {
    QProcess process;
    const auto now = Clock::now().time_since_epoch().count();
    process.start(QString::fromLocal8Bit(program), {QStringLiteral("start-once"), QString::number(now)});
    process.waitForFinished();
    for (const auto& line : process.readAllStandardOutput().split('\n')) {
      const auto fields = line.split('\t');
      if (fields.size() == 2) {
        auto& times_ = moments[fields[0].toStdString()];
        if (times_.empty()) {
          stages.push_back(fields[0].toStdString());
        }
        times_.push_back(fields[1].toDouble());
      }
    }
  }
  double before = 0;
  for (const auto& stage : stages) {
    auto& all = moments[stage];
    std::ranges::sort(all);
    const auto median = all[all.size() / 2];
    fmt::print("{:7.1f} ms  (+{:6.1f})  {}\n", median, median - before, stage);
    before = median;
  }
  fmt::print("start to filled table / bound of {:.0f} ms = {:.2f} (median of {})\n", startBound.count(),
             before / startBound.count(), times);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (!app::hasDisplay() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  const std::string_view what = argc > 1 ? argv[1] : "";
  const int number = argc > 2 ? QByteArray(argv[2]).toInt() : 0;
  int ownCount = 1;
  if (what == "start-once" && argc > 2) {
    return startOnce(ownCount, argv, Clock::time_point(Clock::duration(QByteArray(argv[2]).toLongLong())));
  }
  if (what == "start") {
    return benchStart(argv[0], number > 0 ? number : 11);
  }
  if (what == "run") {
    bench::MeasuringApplication application(ownCount, argv);
    return benchRun(application, number > 0 ? static_cast<std::size_t>(number) : 3);
  }
  fmt::print(stderr, "use: window_bench run [BOARDS] | window_bench start [TIMES]\n");
  return 2;
}
