#include "ui/console/TerminalFront.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include "ui/console/Screen.hpp"
#include "ui/console/TerminalMode.hpp"

namespace karvex::ui::console {
namespace {

/// How often the bar of blocks is drawn anew while it moves, in milliseconds.
constexpr int progressInterval = 100;
constexpr int forever = -1;

/// The last line of the terminal stays free: the line feed behind the page would scroll it.
PageSize pageSize() {
  constexpr PageSize usual{.columns = 80, .lines = 23};
  winsize size{};
  const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 && size.ws_row > 1;
  return isKnown ? PageSize{.columns = size.ws_col, .lines = size.ws_row - std::size_t{1}} : usual;
}

void writeOut(std::string_view text) {
  while (!text.empty()) {
    const auto written = ::write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0 && errno != EINTR) {
      return;  // A terminal that has gone shows as the end of standard input.
    }
    text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
}

/// The page from the top left corner, with nothing of the one before behind its lines and below it (ECMA-48:
/// CUP, EL, ED).
std::string drawingOf(const std::vector<StyledLine>& page) {
  std::string text = "\x1b[H";
  for (const auto& line : page) {
    text += withSequences(line) + "\x1b[K\r\n";
  }
  return text + "\x1b[J";
}

/// A run that is left leaves a device half programmed, or the service untold of one that is done.
bool mayQuit(const Snapshot& snapshot) {
  return !snapshot.isRunning && !snapshot.isReporting;
}

bool showsMovingBar(const Snapshot& snapshot) {
  return std::ranges::any_of(snapshot.rows, &DeviceRow::showsProgress);
}

}  // namespace

TerminalFront::TerminalFront(ContentView& view, Actions& actions, std::function<void()> quit)
    : view_(view),
      actions_(actions),
      quit_(std::move(quit)),
      wakeDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      snapshot_(snapshotOf(view)) {
  if (wakeDescriptor_ < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  subscriptions_ = observe(view, [this] {
    auto snapshot = snapshotOf(view_);
    const std::lock_guard lock(mutex_);
    snapshot_ = std::move(snapshot);
    wake();
  });
  thread_ = std::thread([this] { run(); });
}

TerminalFront::~TerminalFront() {
  subscriptions_.clear();
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
    wake();
  }
  thread_.join();
  ::close(wakeDescriptor_);
}

void TerminalFront::notice(std::string_view line) {
  const std::lock_guard lock(mutex_);
  notice_ = line;
  wake();
}

void TerminalFront::wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(wakeDescriptor_, &one, sizeof one);
}

Snapshot TerminalFront::current() {
  const std::lock_guard lock(mutex_);
  return snapshot_;
}

void TerminalFront::run() {
  const TerminalMode mode;
  std::array<pollfd, 2> sources{pollfd{wakeDescriptor_, POLLIN, 0}, pollfd{STDIN_FILENO, POLLIN, 0}};
  while (true) {
    {
      const std::lock_guard lock(mutex_);
      if (isEnding_) {
        return;
      }
    }
    draw();
    quitWhenIdle();
    poll(sources.data(), sources.size(), showsMovingBar(current()) ? progressInterval : forever);
    std::uint64_t wakes = 0;
    [[maybe_unused]] const auto count = ::read(wakeDescriptor_, &wakes, sizeof wakes);
    if (sources[1].revents == 0) {
      continue;
    }
    std::array<char, 64> bytes;
    const auto length = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (length <= 0 && (sources[1].revents & (POLLHUP | POLLERR)) != 0) {
      sources[1].fd = -1;  // Nobody is there any more.
      wantsToQuit_ = true;
    }
    for (const auto key : keysIn({bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))})) {
      handle(key);
    }
  }
}

void TerminalFront::draw() {
  std::string notice;
  {
    const std::lock_guard lock(mutex_);
    notice = notice_;
  }
  const auto snapshot = current();
  if (wantsToQuit_ && !mayQuit(snapshot)) {
    notice =
        "An upgrade is running. Karvex ends when it is over: equipment must not be left half programmed.";
  }
  auto drawing = drawingOf(pageOf(snapshot, upgrade::currentLoadProgress(), notice, pageSize()));
  if (drawing != drawn_) {
    writeOut(drawing);
    drawn_ = std::move(drawing);
  }
}

void TerminalFront::quitWhenIdle() {
  if (wantsToQuit_ && !hasQuit_ && mayQuit(current())) {
    hasQuit_ = true;
    quit_();
  }
}

void TerminalFront::handle(Key key) {
  const auto snapshot = current();
  if (key == Key::quit) {
    wantsToQuit_ = true;
  } else if (snapshot.alert) {
    if (key == Key::enter) {
      actions_.confirm(snapshot.alert->alert);
    }
  } else if (snapshot.showsDeviceExplorer) {
    if (key == Key::enter) {
      actions_.sendReport();
    } else if (key == Key::close || key == Key::escape) {
      actions_.closeSheet();
    }
  } else {
    switch (key) {
      case Key::up:
        return moveSelection(-1);
      case Key::down:
        return moveSelection(1);
      case Key::upload:
        return actions_.upload();
      case Key::refresh:
        return actions_.refresh();
      case Key::sync:
        return actions_.sync();
      default:
        return;
    }
  }
}

void TerminalFront::moveSelection(int step) {
  const auto snapshot = current();
  if (snapshot.rows.empty()) {
    return;
  }
  const auto last = static_cast<std::ptrdiff_t>(snapshot.rows.size()) - 1;
  const auto selected = std::ranges::find_if(
      snapshot.rows, [&snapshot](const DeviceRow& row) { return row.id == snapshot.selected; });
  const auto place = selected == snapshot.rows.end()
                         ? (step > 0 ? 0 : last)
                         : std::clamp<std::ptrdiff_t>(selected - snapshot.rows.begin() + step, 0, last);
  actions_.select(snapshot.rows[static_cast<std::size_t>(place)].id);
}

}  // namespace karvex::ui::console
