// The attributes of files, and values as the search sees them: plain C++, because a search looks at every
// file and makes Core Foundation objects only of what is asked for afterwards.
#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

namespace standin::metadata {

// One for each key of the schema, in its order.
enum class FileAttribute : uint8_t {
  None,
#define ATTRIBUTE(name, type, displayName, description) name,
#include "standin/coreservices/attributes/schema.inc"
#undef ATTRIBUTE
};

// None for a key that the schema doesn't know. Keys are case-sensitive.
FileAttribute fileAttributeNamed(std::string_view key);

struct Date {
  double seconds;  // since 2001-01-01 00:00:00 GMT
  bool operator==(const Date&) const = default;
};

// Text is UTF-8 and borrowed: good until the source is asked again or dies. It may hold bytes that aren't
// UTF-8, because a name on disk may; see text.h for how those read.
using Value = std::variant<bool, int64_t, double, Date, std::string_view>;

}  // namespace standin::metadata
