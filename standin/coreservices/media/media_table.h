// Which tags of exiftool mean which attribute.
#pragma once

#include <array>
#include <span>
#include <string_view>

#include "standin/coreservices/media/media_conversions.h"

namespace standin::metadata {

struct MediaRow {
  FileAttribute attribute;
  Conversion convert;
  // In order of preference; empty from some place on. "Group:Name", with a # after it where the value is
  // wanted as a number rather than in words. A name without a group is whichever of the groups exiftool
  // itself prefers.
  std::array<std::string_view, 10> tags;
};

// The rows of one attribute stand together, also in order of preference.
std::span<const MediaRow> mediaTable();

bool isMediaAttribute(FileAttribute attribute);

// What the tags of one file mean. The first tag that means something decides, but for Codecs and MediaTypes,
// which have a value of every tag that means something.
MediaAttributes attributesOf(const MediaTags& tags);

}  // namespace standin::metadata
