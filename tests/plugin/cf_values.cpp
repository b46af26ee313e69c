#include "tests/plugin/cf_values.h"

#include "standin/corefoundation/CFRuntime.h"
#include "standin/gate/gate.h"

CFOwner cfText(const std::string& utf8) {
  return own(makeString(utf8).leak());
}

CFOwner cfNumber(CFNumberType type, const void* value) {
  return own(CFNumberCreate(kCFAllocatorDefault, type, value));
}

CFOwner cfInt32(int32_t value) {
  return cfNumber(kCFNumberSInt32Type, &value);
}

CFOwner cfInt64(int64_t value) {
  return cfNumber(kCFNumberSInt64Type, &value);
}

CFOwner cfReal(double value) {
  return cfNumber(kCFNumberDoubleType, &value);
}

namespace {

CFOwner arrayOf(const std::vector<CFTypeRef>& values, const CFArrayCallBacks* callBacks) {
  const CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, callBacks);
  for (const CFTypeRef value : values) CFArrayAppendValue(array, value);
  return own(array);
}

}  // namespace

CFOwner cfArray(const std::vector<CFTypeRef>& values) {
  return arrayOf(values, &kCFTypeArrayCallBacks);
}

CFOwner cfUnretainedArray(const std::vector<CFTypeRef>& values) {
  return arrayOf(values, nullptr);
}

CFOwner cfDictionary(const std::vector<std::pair<CFTypeRef, CFTypeRef>>& pairs) {
  const CFMutableDictionaryRef dictionary = CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
  for (const auto& [key, value] : pairs) CFDictionarySetValue(dictionary, key, value);
  return own(dictionary);
}

CFOwner cfWitness() {
  static const CFRuntimeClass kClass = {
      .version = 0,
      .className = "Witness",
      .init = nullptr,
      .copy = nullptr,
      .finalize = [](CFTypeRef) { standin::logNote("value finalized"); },
      .equal = nullptr,
      .hash = nullptr,
      .copyFormattingDesc = nullptr,
      .copyDebugDesc = nullptr,
      .reclaim = nullptr,
      .refcount = nullptr,
  };
  static const CFTypeID type = _CFRuntimeRegisterClass(&kClass);
  return own(_CFRuntimeCreateInstance(kCFAllocatorDefault, type, 0, nullptr));
}
