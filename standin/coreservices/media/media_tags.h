// What exiftool prints about one file: tags with their values, all as text, unchanged.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin::metadata {

// By group and name, "EXIF:Make".
using MediaTags = std::map<std::string, std::vector<std::string>, std::less<>>;

// Nothing for what isn't JSON. A file without any tags is an empty text, or an array with one empty object.
std::optional<MediaTags> parseMediaTags(std::string_view json);

}  // namespace standin::metadata
