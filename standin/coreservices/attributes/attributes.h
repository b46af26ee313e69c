// attributes/: what the attributes of files are (the schema), and their values, dates and text, with nothing
// of where they come from or of who asks for them. It includes no other room: files/, media/ and language/
// share it, so that none of them needs to know another one.
//
// Values are plain C++, because a search looks at every file, and Core Foundation objects are made
// afterwards, of what is asked for.
#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

#include "standin/coreservices/attributes/dates.h"

namespace standin::metadata {

// One for each key of the schema, in its order.
enum class FileAttribute : uint8_t {
  None,
#define ATTRIBUTE(name, type, displayName, description) name,
#include "standin/coreservices/attributes/schema.inc"
#undef ATTRIBUTE
};

// Text is UTF-8 and borrowed: good until the source is asked again or dies. It may hold bytes that aren't
// UTF-8, because a name on disk may; see text.h for how those read.
using Value = std::variant<bool, int64_t, double, Date, std::string_view>;

}  // namespace standin::metadata
