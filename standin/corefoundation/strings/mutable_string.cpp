#include "standin/corefoundation/strings/mutable_string.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/gate/memory.h"

namespace cf {
namespace {

bool reserve(MutableString* s, size_t length) {
  if (length <= s->capacity) return true;
  if (length > kMaxStringLength) return false;
  const size_t wanted = std::max<size_t>({length, s->capacity + s->capacity / 2, 16});
  void* const grown = standin::takeMemory([&] { return std::realloc(s->units, wanted * sizeof(UniChar)); });
  if (grown == nullptr) return false;
  s->units = static_cast<UniChar*>(grown);
  s->capacity = wanted;
  return true;
}

void checkLimit(const MutableString* s, size_t length, const char* call) {
  if (s->limit != 0 && length > s->limit) {
    misuse(call, "length " + std::to_string(length) + " is above the string's maximum of " +
                     std::to_string(s->limit));
  }
}

MutableString* makeMutable(CFIndex maxLength, const char* call) {
  if (maxLength < 0) misuse(call, "a maximum length below 0");
  MutableString* const s = makeObject<MutableString>();
  if (s == nullptr) return nullptr;
  s->kindBits = static_cast<unsigned>(StringKind::Mutable);
  s->limit = static_cast<uint32_t>(maxLength);
  // Never null: a view of the text tells narrow from wide by the pointers.
  if (!reserve(s, 1)) {
    release(s, call);
    return nullptr;
  }
  return s;
}

bool append(MutableString* s, Text text, const char* call) {
  const size_t length = s->length + text.length;
  checkLimit(s, length, call);
  const bool itself = text.wide == s->units;
  if (!reserve(s, length)) return false;
  if (itself) text.wide = s->units;
  for (size_t i = 0; i < text.length; ++i) s->units[s->length + i] = text[i];
  s->length = length;
  return true;
}

}  // namespace

MutableString* checkedMutable(CFMutableStringRef s, const char* call) {
  checked(s, call);
  if (s->kind() != StringKind::Mutable) misuse(call, "the string is immutable");
  return static_cast<MutableString*>(s);
}

bool setUnits(MutableString* s, const UniChar* units, size_t length, const char* call) {
  checkLimit(s, length, call);
  if (!reserve(s, length)) return false;
  std::memmove(s->units, units, length * sizeof(UniChar));
  s->length = length;
  return true;
}

}  // namespace cf

using standin::Gate;

CFMutableStringRef CFStringCreateMutable(CFAllocatorRef alloc, CFIndex maxLength) {
  const Gate gate(__func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  return cf::makeMutable(maxLength, __func__);
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef alloc, CFIndex maxLength, CFStringRef theString) {
  const Gate gate(__func__);
  cf::checked(theString, __func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  MutableString* const copy = cf::makeMutable(maxLength, __func__);
  if (copy && !cf::append(copy, cf::textOf(theString), __func__)) {
    cf::release(copy, __func__);
    return nullptr;
  }
  return copy;
}

void CFStringAppend(CFMutableStringRef theString, CFStringRef appendedString) {
  const Gate gate(__func__);
  MutableString* const s = cf::checkedMutable(theString, __func__);
  cf::checked(appendedString, __func__);
  if (!gate.fails()) cf::append(s, cf::textOf(appendedString), __func__);
}

void CFStringAppendCharacters(CFMutableStringRef theString, const UniChar* chars, CFIndex numChars) {
  const Gate gate(__func__);
  MutableString* const s = cf::checkedMutable(theString, __func__);
  if (numChars < 0) cf::misuse(__func__, "a length below 0");
  if (numChars == 0 || gate.fails()) return;
  if (chars == nullptr) cf::misuse(__func__, "null characters with a length");
  cf::append(s, {nullptr, chars, static_cast<size_t>(numChars)}, __func__);
}
