// The streams of opcodes that say which words of an image hold addresses: its own (rebases) and those of
// others' symbols (binds).
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "macho/format/bytes.h"

namespace macho {

// A word of the image: segment by index, offset in it. Not checked against the segment: the visitor does
// that.
struct FixupPlace {
  uint32_t segment, offset;
};

struct Bind {
  FixupPlace place;
  std::string symbol;  // as in the file, underscore included
  int32_t addend;
  int32_t library;  // ordinal; 0 and below are special
  bool weak;
};
inline constexpr int32_t kSelfOrdinal = 0;

// `limit` bounds the number of visits, which a small hostile stream could otherwise make endless. Both throw
// FormatError for what they don't understand.
void readRebases(Bytes stream, uint32_t limit, const std::function<void(FixupPlace)>& visit);

enum class BindStream { kOrdinary, kLazy };
void readBinds(Bytes stream, BindStream kind, uint32_t limit, const std::function<void(const Bind&)>& visit);

}  // namespace macho
