// Texts in the encodings that host strings come in.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace standin::host {

// Text that is not well-formed in its encoding, a character that the target lacks, or an encoding that the
// host does not know: no result. An unknown encoding (0xFFFF) is read as MacRoman.
std::optional<std::string> convert(std::string_view bytes, uint32_t from, uint32_t to);

}  // namespace standin::host
