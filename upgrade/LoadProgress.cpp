#include "upgrade/LoadProgress.hpp"

#include "loader/load_status.hpp"
#include "loader/programming_worker.hpp"

namespace karvex::upgrade {

LoadProgress currentLoadProgress() {
  const auto progress = loader::get_load_progress();
  return {.blocksSent = progress.blocks_sent, .blocksToSend = progress.blocks_to_send};
}

std::string_view statusText(std::uint32_t status) {
  const auto* text = loader::load_status_text(status);
  return text == nullptr ? std::string_view() : std::string_view(text);
}

bool isProgramming(std::uint32_t status) {
  return status == loader::LOAD_STATUS_PROGRAMMING;
}

}  // namespace karvex::upgrade
