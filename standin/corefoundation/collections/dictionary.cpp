// Dictionaries: a table of entries with linear probing. Removing an entry closes the gap behind it, so that a
// search always ends at the first free place.
#include <CoreFoundation/CFDictionary.h>

#include <bit>
#include <cstdlib>

#include "standin/corefoundation/collections/outside_call.h"
#include "standin/corefoundation/collections/value_rules.h"
#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/gate/memory.h"

namespace cf {
namespace {

struct Entry {
  const void* key;
  const void* value;
  CFHashCode hash;  // 0: a free place
};

constexpr uint32_t kSmallestTable = 4;
constexpr uint32_t kLargestTable = 1U << 26;

}  // namespace
}  // namespace cf

struct __CFDictionary : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kDictionaryType;
  const cf::ValueRules* keyRules;
  const cf::ValueRules* valueRules;
  cf::Entry* entries;
  uint32_t places;  // 0 or a power of two
  uint32_t length;
  bool isMutable;
};

namespace cf {
namespace {

void finalizeDictionary(CFTypeRef cf) {
  const __CFDictionary* const d = static_cast<const __CFDictionary*>(cf);
  for (uint32_t i = 0; i < d->places; ++i) {
    if (d->entries[i].hash == 0) continue;
    giveUpValue(d->keyRules, d->entries[i].key, "CFRelease");
    giveUpValue(d->valueRules, d->entries[i].value, "CFRelease");
  }
  std::free(d->entries);
  if (d->keyRules) dropRules(d->keyRules);
  if (d->valueRules) dropRules(d->valueRules);
}

CFHashCode placeHash(const __CFDictionary* d, const void* key, const char* call) {
  if (key == nullptr && d->keyRules == &kObjectRules)
    misuse(call, "a null key in a dictionary of CFType keys");
  const CFHashCode h = hashValue(d->keyRules, key, call);
  return h == 0 ? 1 : h;
}

uint32_t homeOf(const __CFDictionary* d, CFHashCode hash) {
  return (hash ^ (hash >> 16)) & (d->places - 1);
}

// The entry of `key`, or the free place where it belongs; null in a table without places.
Entry* place(const __CFDictionary* d, const void* key, CFHashCode hash, const char* call) {
  if (d->places == 0) return nullptr;
  for (uint32_t i = homeOf(d, hash);; i = (i + 1) & (d->places - 1)) {
    Entry& entry = d->entries[i];
    if (entry.hash == 0) return &entry;
    if (entry.hash == hash && equalValues(d->keyRules, entry.key, key, call)) return &entry;
  }
}

const Entry* find(const __CFDictionary* d, const void* key, const char* call) {
  const Entry* const entry = place(d, key, placeHash(d, key, call), call);
  return entry && entry->hash != 0 ? entry : nullptr;
}

bool resize(__CFDictionary* d, uint32_t places) {
  Entry* const fresh =
      static_cast<Entry*>(standin::takeMemory([places] { return std::calloc(places, sizeof(Entry)); }));
  if (fresh == nullptr) return false;
  Entry* const old = d->entries;
  const uint32_t oldPlaces = d->places;
  d->entries = fresh;
  d->places = places;
  for (uint32_t i = 0; i < oldPlaces; ++i) {
    if (old[i].hash == 0) continue;
    uint32_t at = homeOf(d, old[i].hash);
    while (fresh[at].hash != 0) at = (at + 1) & (places - 1);
    fresh[at] = old[i];
  }
  std::free(old);
  return true;
}

// At most two thirds of the places are ever taken.
bool reserve(__CFDictionary* d, uint32_t length) {
  if (length > kLargestTable / 2) return false;
  const uint32_t wanted = std::bit_ceil(length + length / 2 + 1);
  if (wanted <= d->places) return true;
  return resize(d, wanted < kSmallestTable ? kSmallestTable : wanted);
}

enum class Existing { Keep, Replace };

void put(__CFDictionary* d, const void* key, const void* value, Existing existing, const char* call) {
  const CFHashCode hash = placeHash(d, key, call);
  Entry* entry = place(d, key, hash, call);
  const bool present = entry && entry->hash != 0;
  if (present && existing == Existing::Keep) return;
  if (!present) {
    if (!reserve(d, d->length + 1)) return;
    entry = place(d, key, hash, call);
  }
  const Entry old = *entry;
  *entry = {takeValue(d->keyRules, key, call), takeValue(d->valueRules, value, call), hash};
  if (present) {
    giveUpValue(d->keyRules, old.key, call);
    giveUpValue(d->valueRules, old.value, call);
  } else {
    ++d->length;
  }
}

void closeGap(__CFDictionary* d, uint32_t gap) {
  const uint32_t mask = d->places - 1;
  for (uint32_t i = (gap + 1) & mask; d->entries[i].hash != 0; i = (i + 1) & mask) {
    const uint32_t distance = (i - homeOf(d, d->entries[i].hash)) & mask;
    if (distance >= ((i - gap) & mask)) {
      d->entries[gap] = d->entries[i];
      gap = i;
    }
  }
  d->entries[gap] = {};
}

void remove(__CFDictionary* d, const void* key, const char* call) {
  const Entry* const entry = find(d, key, call);
  if (entry == nullptr) return;
  const Entry old = *entry;
  closeGap(d, static_cast<uint32_t>(entry - d->entries));
  --d->length;
  giveUpValue(d->keyRules, old.key, call);
  giveUpValue(d->valueRules, old.value, call);
}

__CFDictionary* makeDictionary(uint32_t length, const ValueRules& keyRules, const ValueRules& valueRules,
                               bool isMutable, const char* call) {
  __CFDictionary* const d = makeObject<__CFDictionary>();
  if (d == nullptr) return nullptr;
  d->isMutable = isMutable;
  d->keyRules = holdRules(keyRules);
  d->valueRules = holdRules(valueRules);
  if (d->keyRules == nullptr || d->valueRules == nullptr || (length > 0 && !reserve(d, length))) {
    release(d, call);
    return nullptr;
  }
  return d;
}

__CFDictionary* copyOf(const __CFDictionary* from, bool isMutable, const char* call) {
  __CFDictionary* const d = makeDictionary(from->length, *from->keyRules, *from->valueRules, isMutable, call);
  if (d == nullptr) return nullptr;
  for (uint32_t i = 0; i < from->places; ++i) {
    const Entry& entry = from->entries[i];
    if (entry.hash != 0) put(d, entry.key, entry.value, Existing::Keep, call);
  }
  return d;
}

Boolean equalDictionaries(CFTypeRef x, CFTypeRef y) {
  const __CFDictionary* const a = static_cast<const __CFDictionary*>(x);
  const __CFDictionary* const b = static_cast<const __CFDictionary*>(y);
  if (a->length != b->length) return false;
  if (a->keyRules->equal != b->keyRules->equal || a->valueRules->equal != b->valueRules->equal) return false;
  for (uint32_t i = 0; i < a->places; ++i) {
    if (a->entries[i].hash == 0) continue;
    const Entry* const other = find(b, a->entries[i].key, "CFEqual");
    if (!other || !equalValues(a->valueRules, a->entries[i].value, other->value, "CFEqual")) return false;
  }
  return true;
}

CFHashCode hashDictionary(CFTypeRef cf) {
  return static_cast<const __CFDictionary*>(cf)->length;
}

__CFDictionary* checkedMutable(CFMutableDictionaryRef d, const char* call) {
  checked(d, call);
  if (!d->isMutable) misuse(call, "the dictionary is immutable");
  return d;
}

}  // namespace

const CFRuntimeClass kDictionaryClass = {.className = "CFDictionary",
                                         .finalize = finalizeDictionary,
                                         .equal = equalDictionaries,
                                         .hash = hashDictionary};

}  // namespace cf

using standin::Gate;

CFTypeID CFDictionaryGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kDictionaryType;
}

// Of equal keys the first one and its value stay.
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex numValues, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks) {
  const Gate gate(__func__);
  if (numValues < 0 || static_cast<uint32_t>(numValues) > cf::kLargestTable / 2) {
    cf::misuse(__func__, "an impossible number of values");
  }
  if (numValues > 0 && (keys == nullptr || values == nullptr)) {
    cf::misuse(__func__, "null keys or values with a number");
  }
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  __CFDictionary* const d = cf::makeDictionary(static_cast<uint32_t>(numValues), cf::rulesOf(keyCallBacks),
                                               cf::rulesOf(valueCallBacks), false, __func__);
  if (d == nullptr) return nullptr;
  for (CFIndex i = 0; i < numValues; ++i) cf::put(d, keys[i], values[i], cf::Existing::Keep, __func__);
  return d;
}

CFDictionaryRef CFDictionaryCreateCopy(CFAllocatorRef allocator, CFDictionaryRef theDict) {
  const Gate gate(__func__);
  cf::checked(theDict, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::copyOf(theDict, false, __func__);
}

// The capacity is a hint that nothing depends on.
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks) {
  const Gate gate(__func__);
  if (capacity < 0) cf::misuse(__func__, "a capacity below 0");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeDictionary(0, cf::rulesOf(keyCallBacks), cf::rulesOf(valueCallBacks), true, __func__);
}

CFMutableDictionaryRef CFDictionaryCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                                     CFDictionaryRef theDict) {
  const Gate gate(__func__);
  cf::checked(theDict, __func__);
  if (capacity < 0) cf::misuse(__func__, "a capacity below 0");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::copyOf(theDict, true, __func__);
}

CFIndex CFDictionaryGetCount(CFDictionaryRef theDict) {
  const Gate gate(__func__);
  cf::checked(theDict, __func__);
  return gate.fails() ? 0 : static_cast<CFIndex>(theDict->length);
}

Boolean CFDictionaryContainsKey(CFDictionaryRef theDict, const void* key) {
  const Gate gate(__func__);
  cf::checked(theDict, __func__);
  return !gate.fails() && cf::find(theDict, key, __func__) != nullptr;
}

const void* CFDictionaryGetValue(CFDictionaryRef theDict, const void* key) {
  const Gate gate(__func__);
  cf::checked(theDict, __func__);
  if (gate.fails()) return nullptr;
  const cf::Entry* const entry = cf::find(theDict, key, __func__);
  return entry ? entry->value : nullptr;
}

Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef theDict, const void* key, const void** value) {
  const Gate gate(__func__);
  cf::checked(theDict, __func__);
  if (gate.fails()) return false;
  const cf::Entry* const entry = cf::find(theDict, key, __func__);
  if (entry && value) *value = entry->value;
  return entry != nullptr;
}

void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values) {
  const Gate gate(__func__);
  cf::checked(theDict, __func__);
  if (gate.fails()) return;
  for (uint32_t i = 0; i < theDict->places; ++i) {
    const cf::Entry& entry = theDict->entries[i];
    if (entry.hash == 0) continue;
    if (keys) *keys++ = entry.key;
    if (values) *values++ = entry.value;
  }
}

void CFDictionaryApplyFunction(CFDictionaryRef theDict, CFDictionaryApplierFunction applier, void* context) {
  const Gate gate(__func__);
  cf::checked(theDict, __func__);
  if (applier == nullptr) cf::misuse(__func__, "null function");
  if (gate.fails()) return;
  const cf::Entry* const entries = theDict->entries;
  const uint32_t length = theDict->length;
  for (uint32_t i = 0; i < theDict->places; ++i) {
    if (entries[i].hash == 0) continue;
    {
      const cf::OutsideCall outside;
      applier(entries[i].key, entries[i].value, context);
    }
    cf::checked(theDict, __func__);
    if (theDict->entries != entries || theDict->length != length) {
      cf::misuse(__func__, "the function changed the dictionary that it is applied to");
    }
  }
}

void CFDictionaryAddValue(CFMutableDictionaryRef theDict, const void* key, const void* value) {
  const Gate gate(__func__);
  cf::checkedMutable(theDict, __func__);
  if (!gate.fails()) cf::put(theDict, key, value, cf::Existing::Keep, __func__);
}

// An equal key that is there already is replaced together with its value.
void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value) {
  const Gate gate(__func__);
  cf::checkedMutable(theDict, __func__);
  if (!gate.fails()) cf::put(theDict, key, value, cf::Existing::Replace, __func__);
}

void CFDictionaryRemoveValue(CFMutableDictionaryRef theDict, const void* key) {
  const Gate gate(__func__);
  cf::checkedMutable(theDict, __func__);
  if (!gate.fails()) cf::remove(theDict, key, __func__);
}

void CFDictionaryRemoveAllValues(CFMutableDictionaryRef theDict) {
  const Gate gate(__func__);
  cf::checkedMutable(theDict, __func__);
  if (gate.fails()) return;
  cf::Entry* const entries = theDict->entries;
  const uint32_t places = theDict->places;
  theDict->entries = nullptr;
  theDict->places = 0;
  theDict->length = 0;
  for (uint32_t i = 0; i < places; ++i) {
    if (entries[i].hash == 0) continue;
    cf::giveUpValue(theDict->keyRules, entries[i].key, __func__);
    cf::giveUpValue(theDict->valueRules, entries[i].value, __func__);
  }
  std::free(entries);
}
