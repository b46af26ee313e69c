// Between the bytes of file names and the paths of URLs.
#pragma once

#include <string>
#include <string_view>

namespace cf {

// Bytes of a file name as they stand in the path of a URL.
std::string escapePath(std::string_view bytes);
// The text's escapes must be complete.
std::string unescape(std::string_view text);

}  // namespace cf
