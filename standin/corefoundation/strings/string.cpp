// Immutable strings: making them and reading their units.
#include "standin/corefoundation/strings/string.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/strings/encodings.h"

namespace cf {
namespace {

void finalizeString(CFTypeRef cf) {
  const __CFString* const s = static_cast<const __CFString*>(cf);
  if (s->kind() == StringKind::Mutable) std::free(static_cast<const MutableString*>(s)->units);
}

Boolean equalStrings(CFTypeRef a, CFTypeRef b) {
  const Text x = textOf(static_cast<CFStringRef>(a));
  const Text y = textOf(static_cast<CFStringRef>(b));
  if (x.length != y.length) return false;
  if (x.narrow && y.narrow) return std::memcmp(x.narrow, y.narrow, x.length) == 0;
  if (x.wide && y.wide) return std::memcmp(x.wide, y.wide, x.length * sizeof(UniChar)) == 0;
  for (size_t i = 0; i < x.length; ++i) {
    if (x[i] != y[i]) return false;
  }
  return true;
}

// By units, so that equal text has one hash whichever way it is stored.
CFHashCode hashString(CFTypeRef cf) {
  const Text text = textOf(static_cast<CFStringRef>(cf));
  CFHashCode h = static_cast<CFHashCode>(text.length);
  for (size_t i = 0; i < text.length; ++i) h = h * 31 + text[i];
  return h ^ (h >> 15);
}

// An immutable string without its text, for which `room` bytes follow it.
__CFString* makeBlock(StringKind kind, size_t length, size_t room) {
  __CFString* const s = makeObject<__CFString>(room);
  if (s == nullptr) return nullptr;
  s->length = length;
  s->kindBits = static_cast<unsigned>(kind);
  return s;
}

CFStringRef substring(Text text, CFRange range) {
  const size_t start = static_cast<size_t>(range.location);
  const size_t length = static_cast<size_t>(range.length);
  return text.narrow ? makeNarrowString(text.narrow + start, length) : makeString(text.wide + start, length);
}

}  // namespace

const CFRuntimeClass kStringClass = {
    .className = "CFString", .finalize = finalizeString, .equal = equalStrings, .hash = hashString};

bool isASCII(const void* bytes, size_t length) {
  // Several bytes at once, the rest one by one.
  const char* p = static_cast<const char*>(bytes);
  const char* const end = p + length;
  for (uint64_t some = 0; static_cast<size_t>(end - p) >= sizeof some; p += sizeof some) {
    std::memcpy(&some, p, sizeof some);
    if ((some & 0x8080808080808080) != 0) return false;
  }
  return std::none_of(p, end, [](char c) { return (c & 0x80) != 0; });
}

bool isASCII(const UniChar* units, size_t length) {
  return std::none_of(units, units + length, [](UniChar c) { return c >= 0x80; });
}

Text textOf(CFStringRef s) {
  switch (s->kind()) {
    case StringKind::Narrow:
      return {reinterpret_cast<const char*>(s + 1), nullptr, s->length};
    case StringKind::Wide:
      return {nullptr, reinterpret_cast<const UniChar*>(s + 1), s->length};
    case StringKind::Mutable:
      break;
  }
  return {nullptr, static_cast<const MutableString*>(s)->units, s->length};
}

CFStringRef makeNarrowString(const char* bytes, size_t length) {
  if (length > kMaxStringLength) return nullptr;
  __CFString* const s = makeBlock(StringKind::Narrow, length, length + 1);
  if (s && length > 0) std::memcpy(s + 1, bytes, length);
  return s;
}

CFStringRef makeString(const UniChar* units, size_t length) {
  if (length > kMaxStringLength) return nullptr;
  const bool isNarrow = isASCII(units, length);
  __CFString* const s = isNarrow ? makeBlock(StringKind::Narrow, length, length + 1)
                                 : makeBlock(StringKind::Wide, length, length * sizeof(UniChar));
  if (s == nullptr) return nullptr;
  if (isNarrow) {
    std::copy(units, units + length, reinterpret_cast<char*>(s + 1));
  } else {
    std::memcpy(s + 1, units, length * sizeof(UniChar));
  }
  return s;
}

void checkRange(CFRange range, size_t length, const char* call) {
  if (range.location >= 0 && range.length >= 0 &&
      static_cast<uint64_t>(range.location) + static_cast<uint64_t>(range.length) <= length) {
    return;
  }
  misuse(call, "range " + std::to_string(range.location) + "+" + std::to_string(range.length) +
                   " is outside of length " + std::to_string(length));
}

}  // namespace cf

using standin::Gate;

CFTypeID CFStringGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kStringType;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef alloc, const UniChar* chars, CFIndex numChars) {
  const Gate gate(__func__);
  cf::checkBuffer(chars, numChars, "characters", __func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  const auto length = static_cast<size_t>(numChars);
  const bool aligned = reinterpret_cast<uintptr_t>(chars) % alignof(UniChar) == 0;
  if (aligned || length == 0) return cf::makeString(chars, length);
  // The machine reads units at odd addresses, too; C++ does not.
  std::vector<UniChar> units(length);
  std::memcpy(units.data(), chars, length * sizeof(UniChar));
  return cf::makeString(units.data(), length);
}

CFStringRef CFStringCreateWithSubstring(CFAllocatorRef alloc, CFStringRef str, CFRange range) {
  const Gate gate(__func__);
  cf::checked(str, __func__);
  cf::checkRange(range, str->length, __func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  return cf::substring(cf::textOf(str), range);
}

// An immutable string is its own copy.
CFStringRef CFStringCreateCopy(CFAllocatorRef alloc, CFStringRef theString) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  if (theString->kind() != StringKind::Mutable) {
    return static_cast<CFStringRef>(cf::retain(theString, __func__));
  }
  return cf::substring(cf::textOf(theString), {0, static_cast<CFIndex>(theString->length)});
}

CFIndex CFStringGetLength(CFStringRef theString) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  return gate.fails() ? 0 : static_cast<CFIndex>(theString->length);
}

UniChar CFStringGetCharacterAtIndex(CFStringRef theString, CFIndex idx) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  cf::checkRange({idx, 1}, theString->length, __func__);
  return gate.fails() ? 0 : cf::textOf(theString)[static_cast<size_t>(idx)];
}

void CFStringGetCharacters(CFStringRef theString, CFRange range, UniChar* buffer) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  cf::checkRange(range, theString->length, __func__);
  if (range.length > 0 && buffer == nullptr) cf::misuse(__func__, "null buffer");
  if (gate.fails()) return;
  const cf::Text text = cf::textOf(theString);
  for (CFIndex i = 0; i < range.length; ++i) buffer[i] = text[static_cast<size_t>(range.location + i)];
}

const UniChar* CFStringGetCharactersPtr(CFStringRef theString) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  return gate.fails() ? nullptr : cf::textOf(theString).wide;
}

const char* CFStringGetCStringPtr(CFStringRef theString, CFStringEncoding encoding) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  if (gate.fails() || !cf::extendsASCII(encoding)) return nullptr;
  return cf::textOf(theString).narrow;
}
