#include <CoreFoundation/CFError.h>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"
#include "standin/corefoundation/strings/string.h"

struct __CFError : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kErrorType;
  CFStringRef domain;
  CFIndex code;
  CFDictionaryRef userInfo;
};

namespace cf {
namespace {

const __CFError* errorOf(CFTypeRef cf) {
  return static_cast<const __CFError*>(cf);
}

void finalizeError(CFTypeRef cf) {
  const __CFError* const error = errorOf(cf);
  if (error->domain) release(error->domain, "CFRelease");
  if (error->userInfo) release(error->userInfo, "CFRelease");
}

Boolean equalErrors(CFTypeRef x, CFTypeRef y) {
  const __CFError* const a = errorOf(x);
  const __CFError* const b = errorOf(y);
  return a->code == b->code && equal(a->domain, b->domain, "CFEqual") &&
         equal(a->userInfo, b->userInfo, "CFEqual");
}

CFHashCode hashError(CFTypeRef cf) {
  return static_cast<CFHashCode>(errorOf(cf)->code);
}

CFDictionaryRef copyInfo(CFDictionaryRef userInfo) {
  if (userInfo) return CFDictionaryCreateCopy(nullptr, userInfo);
  return CFDictionaryCreate(nullptr, nullptr, nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                            &kCFTypeDictionaryValueCallBacks);
}

}  // namespace

const CFRuntimeClass kErrorClass = {
    .className = "CFError", .finalize = finalizeError, .equal = equalErrors, .hash = hashError};

}  // namespace cf

using standin::Gate;

CFTypeID CFErrorGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kErrorType;
}

// Without user info the error has an empty dictionary.
CFErrorRef CFErrorCreate(CFAllocatorRef allocator, CFStringRef domain, CFIndex code,
                         CFDictionaryRef userInfo) {
  const Gate gate(__func__);
  cf::checked(domain, __func__);
  if (userInfo && cf::classOf(userInfo, __func__)->id != cf::kDictionaryType) {
    cf::misuseOfType(__func__, userInfo, cf::kDictionaryType);
  }
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  __CFError* const error = cf::makeObject<__CFError>();
  if (error == nullptr) return nullptr;
  error->code = code;
  error->domain = CFStringCreateCopy(nullptr, domain);
  error->userInfo = cf::copyInfo(userInfo);
  if (error->domain && error->userInfo) return error;
  cf::release(error, __func__);
  return nullptr;
}

CFStringRef CFErrorGetDomain(CFErrorRef err) {
  const Gate gate(__func__);
  cf::checked(err, __func__);
  return gate.fails() ? nullptr : err->domain;
}

CFIndex CFErrorGetCode(CFErrorRef err) {
  const Gate gate(__func__);
  cf::checked(err, __func__);
  return gate.fails() ? 0 : err->code;
}

CFDictionaryRef CFErrorCopyUserInfo(CFErrorRef err) {
  const Gate gate(__func__);
  cf::checked(err, __func__);
  if (gate.fails()) return nullptr;
  cf::retain(err->userInfo, __func__);
  return err->userInfo;
}
