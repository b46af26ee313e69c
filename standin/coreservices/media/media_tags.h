// What a reader of tags says about one file: tags with their values, all as text, unchanged.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace standin::metadata {

// By group and name, "EXIF:Make".
using MediaTags = std::map<std::string, std::vector<std::string>, std::less<>>;

// Of texts that are each ended by a zero byte, a tag and a value in turn. Nothing for anything else.
std::optional<MediaTags> parseMediaTags(std::string_view texts);

}  // namespace standin::metadata
