#include "standin/coreservices/media/media_tags.h"

namespace standin::metadata {
namespace {

std::optional<std::string_view> takeText(std::string_view& texts) {
  const size_t end = texts.find('\0');
  if (end == std::string_view::npos) return {};
  const std::string_view text = texts.substr(0, end);
  texts.remove_prefix(end + 1);
  return text;
}

}  // namespace

std::optional<MediaTags> parseMediaTags(std::string_view texts) {
  MediaTags tags;
  while (!texts.empty()) {
    const auto tag = takeText(texts);
    const auto value = tag ? takeText(texts) : std::nullopt;
    if (!value) return {};
    tags[std::string(*tag)].emplace_back(*value);
  }
  return tags;
}

}  // namespace standin::metadata
