#include "app/TerminalPage.hpp"

#include <unistd.h>

#include <string_view>
#include <utility>

#include "foundation/Log.hpp"

namespace karvex::app {
namespace {

std::string_view withoutLineEnd(std::string_view text) {
  return text.substr(0, text.find_last_not_of('\n') + 1);
}

}  // namespace

TerminalPage::TerminalPage(ui::ContentView& view, ui::Actions& actions, std::function<void()> quit,
                           bool showLog)
    : showsLog_(showLog || isatty(STDERR_FILENO) != 0), front_(view, actions, std::move(quit)) {
  const auto notice = [this](std::string_view text) { front_.notice(withoutLineEnd(text)); };
  foundation::log::redirectPrint(notice);
  foundation::log::redirectDebug(notice);
  if (showsLog_) {
    foundation::log::redirectSystem(notice);
  }
}

TerminalPage::~TerminalPage() {
  foundation::log::redirectSystem(nullptr);
  foundation::log::redirectPrint(nullptr);
  foundation::log::redirectDebug(nullptr);
}

}  // namespace karvex::app
