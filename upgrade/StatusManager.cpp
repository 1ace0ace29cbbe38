#include "upgrade/StatusManager.hpp"

#include "loader/load_status.hpp"

namespace karvex::upgrade {

std::pair<bool, std::uint32_t> StatusManager::pollStatus() {
  const auto status = loader::get_load_status();
  if (status != statusState.get()) {
    statusState.set(status);
    statusChanged.set(true);
  }
  return {statusChanged.get(), statusState.get()};
}

}  // namespace karvex::upgrade
