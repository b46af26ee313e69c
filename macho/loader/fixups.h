// The streams of opcodes that say which words of an image hold addresses: its own (rebases) and those of
// others' symbols (binds).
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "macho/format/bytes.h"
#include "macho/format/format.h"

namespace macho {

// How an address is written. Those in text are operands of instructions, in pages that are not writable
// later.
enum class FixupKind : uint8_t {
  kPointer = kPointerType,
  kTextAbsolute = kTextAbsoluteType,
  kTextRelative = kTextRelativeType,  // the distance from the end of the word; binds only
};

// A word of the image: segment by index, offset in it. Not checked against the segment: the visitor does
// that.
struct FixupPlace {
  uint32_t segment, offset;
  FixupKind kind = FixupKind::kPointer;
};

struct Bind {
  FixupPlace place;
  std::string symbol;  // as in the file, underscore included
  int32_t addend;
  int32_t library;  // ordinal; 0 and below are special
  bool weak;
};
inline constexpr int32_t kSelfOrdinal = 0, kLowestOrdinal = -3;

// `limit` bounds the number of visits, which a small hostile stream could otherwise make endless. Both throw
// FormatError for what they don't understand.
void readRebases(Bytes stream, uint32_t limit, const std::function<void(FixupPlace)>& visit);

enum class BindStream { kOrdinary, kLazy };
void readBinds(Bytes stream, BindStream kind, uint32_t limit, const std::function<void(const Bind&)>& visit);

}  // namespace macho
