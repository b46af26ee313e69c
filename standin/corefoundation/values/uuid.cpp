#include <CoreFoundation/CFUUID.h>
#include <sys/random.h>

#include <cstdio>
#include <cstring>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"
#include "standin/corefoundation/strings/string.h"

struct __CFUUID : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kUUIDType;
  CFUUIDBytes bytes;
};

namespace cf {
namespace {

Boolean equalUUIDs(CFTypeRef a, CFTypeRef b) {
  return std::memcmp(&static_cast<CFUUIDRef>(a)->bytes, &static_cast<CFUUIDRef>(b)->bytes,
                     sizeof(CFUUIDBytes)) == 0;
}

CFHashCode hashUUID(CFTypeRef cf) {
  return hashBytes(&static_cast<CFUUIDRef>(cf)->bytes, sizeof(CFUUIDBytes));
}

CFUUIDRef makeUUID(const CFUUIDBytes& bytes) {
  __CFUUID* const uuid = makeObject<__CFUUID>();
  if (uuid) uuid->bytes = bytes;
  return uuid;
}

}  // namespace

const CFRuntimeClass kUUIDClass = {.className = "CFUUID", .equal = equalUUIDs, .hash = hashUUID};

}  // namespace cf

using standin::Gate;

CFTypeID CFUUIDGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kUUIDType;
}

CFUUIDRef CFUUIDCreate(CFAllocatorRef alloc) {
  const Gate gate(__func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  CFUUIDBytes bytes;
  if (getrandom(&bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) return nullptr;
  // Version 4, of random numbers, in the usual variant.
  bytes.byte6 = static_cast<UInt8>((bytes.byte6 & 0x0F) | 0x40);
  bytes.byte8 = static_cast<UInt8>((bytes.byte8 & 0x3F) | 0x80);
  return cf::makeUUID(bytes);
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef alloc, CFUUIDBytes bytes) {
  const Gate gate(__func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  return cf::makeUUID(bytes);
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
  const Gate gate(__func__);
  cf::checked(uuid, __func__);
  return gate.fails() ? CFUUIDBytes{} : uuid->bytes;
}

CFStringRef CFUUIDCreateString(CFAllocatorRef alloc, CFUUIDRef uuid) {
  const Gate gate(__func__);
  cf::checked(uuid, __func__);
  if (gate.fails() || !cf::canAllocate(alloc, __func__)) return nullptr;
  UInt8 bytes[sizeof(CFUUIDBytes)];
  std::memcpy(bytes, &uuid->bytes, sizeof bytes);
  std::string text;
  for (size_t i = 0; i < sizeof bytes; ++i) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02X", bytes[i]);
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += digits;
  }
  return cf::makeNarrowString(text.data(), text.size());
}
