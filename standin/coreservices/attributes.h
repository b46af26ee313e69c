// The attributes that a file system itself knows, and values as the search sees them: plain C++, because a
// search looks at every file and makes Core Foundation objects only of what is asked for afterwards.
#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

namespace standin::metadata {

enum class FileAttribute : uint8_t {
  None,
  FSName,
  DisplayName,
  Path,
  FSSize,
  FSCreationDate,
  FSContentChangeDate,
  ContentCreationDate,
  ContentModificationDate,
  FSOwnerUserID,
  FSOwnerGroupID,
  FSInvisible,
  FSNodeCount,
  FSExists,
  FSIsReadable,
  FSIsWriteable
};

inline constexpr FileAttribute kFirstFileAttribute = FileAttribute::FSName;
inline constexpr FileAttribute kLastFileAttribute = FileAttribute::FSIsWriteable;

// None for a key that isn't an attribute of the file system. Keys are case-sensitive.
FileAttribute fileAttributeNamed(std::string_view key);

struct Date {
  double seconds;  // since 2001-01-01 00:00:00 GMT
};

// Text is UTF-8 and borrowed: good until the source is asked again or dies. It may hold bytes that aren't
// UTF-8, because a name on disk may; see text.h for how those read.
using Value = std::variant<bool, int64_t, double, Date, std::string_view>;

}  // namespace standin::metadata
