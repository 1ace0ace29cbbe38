#include "ui/console/CharacterWidth.hpp"

#include <clocale>
#include <cwchar>

namespace karvex::ui::console {
namespace {

static_assert(sizeof(wchar_t) == sizeof(char32_t), "the C library's characters are those of Unicode");

/// The tables for all of Unicode, whatever the language of the program's user.
locale_t unicodeTables() {
  static const locale_t tables = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t{});
  return tables;
}

}  // namespace

std::size_t widthOf(char32_t character) {
  const auto tables = unicodeTables();
  if (tables == locale_t{}) {
    return 1;
  }
  const auto before = uselocale(tables);  // Of this thread alone.
  const int width = wcwidth(static_cast<wchar_t>(character));
  uselocale(before);
  return width < 0 ? 1 : static_cast<std::size_t>(width);
}

}  // namespace karvex::ui::console
