// The table of classes.
#pragma once

#include <array>
#include <cstdint>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/corefoundation/runtime/header.h"

namespace cf {

inline constexpr CFTypeID kAllocatorType = 2;
inline constexpr CFTypeID kBagType = 6;
inline constexpr CFTypeID kStringType = 7;
inline constexpr CFTypeID kNullType = 16;
inline constexpr CFTypeID kSetType = 17;
inline constexpr CFTypeID kDictionaryType = 18;
inline constexpr CFTypeID kArrayType = 19;
inline constexpr CFTypeID kDataType = 20;
inline constexpr CFTypeID kBooleanType = 21;
inline constexpr CFTypeID kNumberType = 22;
inline constexpr CFTypeID kCharacterSetType = 23;
inline constexpr CFTypeID kErrorType = 27;
inline constexpr CFTypeID kURLType = 29;
inline constexpr CFTypeID kUUIDType = 39;
inline constexpr CFTypeID kTimeZoneType = 41;
inline constexpr CFTypeID kDateType = 42;
inline constexpr CFTypeID kFirstRegisteredType = 256;
inline constexpr CFTypeID kTypeLimit = 1024;

// Objects with this count are constants: never freed, never counted.
inline constexpr uint32_t kConstantCount = 0x7FFFFFFF;

struct ClassEntry {
  const CFRuntimeClass* cls;
  long* live;  // the ledger's line, looked up when the first object is made
  CFTypeID id;
  uint32_t spare;  // keeps the entries 16 bytes apart
};
static_assert(sizeof(ClassEntry) == 16, "ClassEntry");

extern std::array<ClassEntry, kTypeLimit> classTable;

// The entry at the address `word`; null for every other number, and for an entry that no class has.
inline const ClassEntry* findEntry(uintptr_t word) {
  const uintptr_t offset = word - reinterpret_cast<uintptr_t>(&classTable[0]);
  if (offset >= sizeof(classTable) || offset % sizeof(ClassEntry) != 0) return nullptr;
  const ClassEntry* const entry = &classTable[offset / sizeof(ClassEntry)];
  return entry->cls ? entry : nullptr;
}

}  // namespace cf
