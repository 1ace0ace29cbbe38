#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace karvex::service {

using FormItem = std::pair<std::string, std::string>;

/// The items as the query of a URL (RFC 3986, 3.4), in the order given: name, "=" and value, joined by "&".
/// What a query can't hold, or what a reader of forms would take for something else ("&", "=", "+", "%",
/// "#"), stands as percent escapes of its UTF-8 bytes; a blank is %20.
std::string formText(const std::vector<FormItem>& items);

}  // namespace karvex::service
