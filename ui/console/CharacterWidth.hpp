#pragma once

#include <cstddef>

namespace karvex::ui::console {

/// How many columns of a terminal a character takes: none for marks that go onto the one before, two for
/// those of East Asian scripts and for emoji, one for all others. A guess for what the C library's tables
/// don't know: a terminal that knows more draws such a character wider. Any thread.
std::size_t widthOf(char32_t character);

}  // namespace karvex::ui::console
