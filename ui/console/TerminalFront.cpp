#include "ui/console/TerminalFront.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "ui/Texts.hpp"
#include "ui/console/ResizeSignal.hpp"
#include "ui/console/TerminalMode.hpp"

namespace karvex::ui::console {
namespace {

/// How often the bar of blocks is drawn anew while it moves, in milliseconds.
constexpr int progressInterval = 100;
constexpr int forever = -1;

/// A cause is often followed by its consequences, in lines of their own.
constexpr std::size_t mostNotices = 3;

/// The last line of the terminal stays free: the line feed behind the page would scroll it.
PageSize pageSize() {
  constexpr PageSize usual{.columns = 80, .lines = 23};
  winsize size{};
  const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 && size.ws_row > 1;
  return isKnown ? PageSize{.columns = size.ws_col, .lines = size.ws_row - std::size_t{1}} : usual;
}

/// The page from the top left corner, with nothing of the one before behind its lines and below it (ECMA-48:
/// CUP, EL, ED).
std::string drawingOf(const std::vector<StyledLine>& page, Colours colours) {
  std::string text = "\x1b[H";
  for (const auto& line : page) {
    text += withSequences(line, colours) + "\x1b[K\r\n";
  }
  return text + "\x1b[J";
}

/// ECMA-48: ED.
constexpr std::string_view clearAll = "\x1b[2J";

bool showsMovingBar(const Snapshot& snapshot) {
  return std::ranges::any_of(snapshot.rows, [&snapshot](const auto& row) { return showsBar(snapshot, row); });
}

}  // namespace

TerminalFront::TerminalFront(ContentView& view, Actions& actions, std::function<void()> quit)
    : view_(view),
      actions_(actions),
      quit_(std::move(quit)),
      wakeDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      told_{.snapshot = snapshotOf(view)},
      // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets the environment
      colours_(coloursOf(std::getenv("NO_COLOR"), std::getenv("TERM"))) {
  told_.wish.see(told_.snapshot);
  if (wakeDescriptor_ < 0) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  subscriptions_ = observe(view, [this] {
    auto snapshot = snapshotOf(view_);
    const std::lock_guard lock(mutex_);
    told_.snapshot = std::move(snapshot);
    told_.wish.see(told_.snapshot);
    wake();
  });
  terminationSignals_.emplace([this] { askToLeave(Leaving::byOrder); });
  thread_ = std::thread([this] { run(); });
}

TerminalFront::~TerminalFront() {
  subscriptions_.clear();
  {
    const std::lock_guard lock(mutex_);
    told_.isEnding = true;
    wake();
  }
  thread_.join();
  terminationSignals_.reset();  // The terminal is back by now.
  ::close(wakeDescriptor_);
}

void TerminalFront::notice(std::string_view line) {
  const std::lock_guard lock(mutex_);
  told_.notices.emplace_back(line);
  if (told_.notices.size() > mostNotices) {
    told_.notices.erase(told_.notices.begin());
  }
  wake();
}

void TerminalFront::askToLeave(Leaving leaving) {
  const std::lock_guard lock(mutex_);
  told_.wish.make(leaving);
  wake();
}

void TerminalFront::wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(wakeDescriptor_, &one, sizeof one);
}

TerminalFront::Told TerminalFront::told() {
  const std::lock_guard lock(mutex_);
  return told_;
}

void TerminalFront::run() {
  const TerminalMode mode;
  const ResizeSignal resizeSignal(wakeDescriptor_);
  while (!told().isEnding) {
    draw();
    leaveWhenIdle();
    std::array<pollfd, 2> sources{pollfd{wakeDescriptor_, POLLIN, 0},
                                  pollfd{isHungUp_ ? -1 : STDIN_FILENO, POLLIN, 0}};
    poll(sources.data(), sources.size(), showsMovingBar(told().snapshot) ? progressInterval : forever);
    std::uint64_t wakes = 0;
    [[maybe_unused]] const auto count = ::read(wakeDescriptor_, &wakes, sizeof wakes);
    takeKeys(sources[1].revents);
  }
}

void TerminalFront::takeKeys(short events) {
  if (events == 0) {
    return;
  }
  std::array<char, 64> bytes;
  const auto length = ::read(STDIN_FILENO, bytes.data(), bytes.size());
  if (length <= 0 && (events & (POLLHUP | POLLERR)) != 0) {
    isHungUp_ = true;  // Nobody is there any more.
    askToLeave(Leaving::byOrder);
  }
  for (const auto key : keysIn({bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))})) {
    handle(key);
  }
}

void TerminalFront::draw() {
  auto [snapshot, notices, wish, isEnding] = told();
  if (wish.isHeldBack()) {
    notices.emplace_back(texts::closingHeldBack);
  }
  const auto size = pageSize();
  auto drawing = drawingOf(pageOf(snapshot, upgrade::currentLoadProgress(), notices, size), colours_);
  if (size != std::exchange(drawnSize_, size)) {
    TerminalMode::write(clearAll);  // The terminal has moved about what was there.
  } else if (drawing == drawn_) {
    return;
  }
  TerminalMode::write(drawing);
  drawn_ = std::move(drawing);
}

void TerminalFront::leaveWhenIdle() {
  if (const auto leaving = told().wish.due()) {
    actions_.leave(*leaving, quit_);
  }
}

void TerminalFront::handle(Key key) {
  const auto snapshot = told().snapshot;
  if (key == Key::quit) {
    // An alert that is up has been seen.
    askToLeave(snapshot.alert ? Leaving::byOrder : Leaving::byUser);
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
  const auto snapshot = told().snapshot;
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
