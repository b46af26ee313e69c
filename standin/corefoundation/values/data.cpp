#include <CoreFoundation/CFData.h>

#include <algorithm>
#include <cstring>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"

struct __CFData : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kDataType;
  CFIndex length;

  const UInt8* bytes() const { return reinterpret_cast<const UInt8*>(this + 1); }
};

namespace cf {
namespace {

Boolean equalData(CFTypeRef x, CFTypeRef y) {
  const __CFData* const a = static_cast<const __CFData*>(x);
  const __CFData* const b = static_cast<const __CFData*>(y);
  return a->length == b->length && std::equal(a->bytes(), a->bytes() + a->length, b->bytes());
}

CFHashCode hashData(CFTypeRef cf) {
  const __CFData* const data = static_cast<const __CFData*>(cf);
  constexpr CFIndex kEnough = 128;  // the front tells most data apart
  return hashBytes(data->bytes(), static_cast<size_t>(std::min(data->length, kEnough)));
}

}  // namespace

const CFRuntimeClass kDataClass = {.className = "CFData", .equal = equalData, .hash = hashData};

}  // namespace cf

using standin::Gate;

CFTypeID CFDataGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kDataType;
}

CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length) {
  const Gate gate(__func__);
  cf::checkBuffer(bytes, length, "bytes", __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  __CFData* const data = cf::makeObject<__CFData>(static_cast<size_t>(length));
  if (data == nullptr) return nullptr;
  data->length = length;
  if (length > 0) std::memcpy(data + 1, bytes, static_cast<size_t>(length));
  return data;
}

CFIndex CFDataGetLength(CFDataRef theData) {
  const Gate gate(__func__);
  cf::checked(theData, __func__);
  return gate.fails() ? 0 : theData->length;
}

const UInt8* CFDataGetBytePtr(CFDataRef theData) {
  const Gate gate(__func__);
  cf::checked(theData, __func__);
  return gate.fails() ? nullptr : theData->bytes();
}
