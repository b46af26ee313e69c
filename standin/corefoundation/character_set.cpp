// Character sets: one range of characters each.
#include <CoreFoundation/CFCharacterSet.h>

#include "standin/corefoundation/classes.h"
#include "standin/corefoundation/object.h"

struct __CFCharacterSet : cf::Header {
  static constexpr CFTypeID typeId = cf::kCharacterSetType;
  CFRange range;
};

namespace cf {
namespace {

constexpr CFIndex kEndOfCharacters = 0x110000;

// Sets without a character are equal wherever they start.
Boolean equalCharacterSets(CFTypeRef x, CFTypeRef y) {
  const CFRange a = static_cast<CFCharacterSetRef>(x)->range;
  const CFRange b = static_cast<CFCharacterSetRef>(y)->range;
  return a.length == b.length && (a.length == 0 || a.location == b.location);
}

CFHashCode hashCharacterSet(CFTypeRef cf) {
  return static_cast<CFHashCode>(static_cast<CFCharacterSetRef>(cf)->range.length);
}

}  // namespace

const CFRuntimeClass characterSetClass =
    classRecord("CFCharacterSet", nullptr, equalCharacterSets, hashCharacterSet);

}  // namespace cf

CFTypeID CFCharacterSetGetTypeID() {
  const standin::Gate gate{__func__};
  return gate.fails() ? 0 : cf::kCharacterSetType;
}

CFCharacterSetRef CFCharacterSetCreateWithCharactersInRange(CFAllocatorRef alloc, CFRange theRange) {
  const standin::Gate gate{__func__};
  if (theRange.location < 0 || theRange.length < 0 || theRange.location > cf::kEndOfCharacters ||
      theRange.length > cf::kEndOfCharacters - theRange.location) {
    cf::misuse(__func__, "a range beyond the characters of Unicode");
  }
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  __CFCharacterSet* const set = cf::makeObject<__CFCharacterSet>();
  if (set) set->range = theRange;
  return set;
}

Boolean CFCharacterSetIsCharacterMember(CFCharacterSetRef theSet, UniChar theChar) {
  const standin::Gate gate{__func__};
  const CFRange range = cf::checked(theSet, __func__)->range;
  return !gate.fails() && theChar >= range.location && theChar - range.location < range.length;
}
