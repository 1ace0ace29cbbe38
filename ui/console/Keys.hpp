#pragma once

#include <string_view>
#include <vector>

namespace karvex::ui::console {

enum class Key { up, down, enter, escape, upload, refresh, sync, close, quit };

/// The keys in the bytes of a terminal, without those that mean nothing here. Bytes that begin a sequence and
/// don't end it are the keys that they are by themselves. Pure.
std::vector<Key> keysIn(std::string_view bytes);

}  // namespace karvex::ui::console
