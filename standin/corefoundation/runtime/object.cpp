#include "standin/corefoundation/runtime/object.h"

#include <cstring>

#include "standin/corefoundation/runtime/quarantine.h"

namespace cf {
namespace {

// Set in an object's count while its finalizer runs.
constexpr uint32_t kFinalizing = 0x80000000;

void destroy(Header* object, ClassEntry* entry, const char* call) {
  object->count = kFinalizing | 1;
  if (entry->cls->finalize) entry->cls->finalize(object);
  if (object->count != (kFinalizing | 1)) {
    misuse(call,
           std::string("the finalizer of ") + entry->cls->className + " left a reference to the object");
  }
  --*entry->live;
  quarantine(object);
}

}  // namespace

Header* allocateObject(CFTypeID type, size_t size) {
  Header* const object = static_cast<Header*>(takeObjectMemory(size));
  if (object == nullptr) return nullptr;
  std::memset(static_cast<void*>(object), 0, size);
  ClassEntry* const entry = &classTable[type];
  if (entry->live == nullptr) entry->live = &standin::ledgerLine(entry->cls->className);
  ++*entry->live;
  object->isa = entry;
  object->count = 1;
  return object;
}

CFTypeRef retain(CFTypeRef cf, const char* call) {
  classOf(cf, call);
  Header* const object = const_cast<Header*>(static_cast<const Header*>(cf));
  if (object->count != kConstantCount) ++object->count;
  return cf;
}

void release(CFTypeRef cf, const char* call) {
  ClassEntry* const entry = classOf(cf, call);
  Header* const object = const_cast<Header*>(static_cast<const Header*>(cf));
  if (object->count == kConstantCount) return;
  if (object->count == 1) {
    destroy(object, entry, call);
    return;
  }
  if (object->count == (kFinalizing | 1)) {
    misuse(call, std::string("released while it is being freed: a ") + entry->cls->className);
  }
  --object->count;
}

bool equal(CFTypeRef a, CFTypeRef b, const char* call) {
  const ClassEntry* const entry = classOf(a, call);
  if (classOf(b, call) != entry) return false;
  return a == b || (entry->cls->equal && entry->cls->equal(a, b));
}

CFHashCode hash(CFTypeRef cf, const char* call) {
  const ClassEntry* const entry = classOf(cf, call);
  return entry->cls->hash ? entry->cls->hash(cf) : reinterpret_cast<CFHashCode>(cf) >> 3;
}

// FNV-1a.
CFHashCode hashBytes(const void* bytes, size_t length) {
  const unsigned char* const p = static_cast<const unsigned char*>(bytes);
  CFHashCode h = 2166136261U;
  for (size_t i = 0; i < length; ++i) h = (h ^ p[i]) * 16777619U;
  return h;
}

CFHashCode hashDouble(double value) {
  if (value == 0) value = 0;  // the negative zero too
  return hashBytes(&value, sizeof value);
}

}  // namespace cf

using standin::Gate;

CFTypeID CFGetTypeID(CFTypeRef cf) {
  const Gate gate(__func__);
  if (gate.fails()) return 0;
  return cf::classOf(cf, __func__)->id;
}

// The platform's retain can't fail: the reference is taken even when this call was chosen to.
CFTypeRef CFRetain(CFTypeRef cf) {
  const Gate gate(__func__);
  return cf::retain(cf, __func__);
}

void CFRelease(CFTypeRef cf) {
  Gate gate(__func__);
  gate.detail(cf::classOf(cf, __func__)->cls->className);
  cf::release(cf, __func__);
}

CFIndex CFGetRetainCount(CFTypeRef cf) {
  const Gate gate(__func__);
  if (gate.fails()) return 0;
  cf::classOf(cf, __func__);
  return static_cast<CFIndex>(static_cast<const cf::Header*>(cf)->count & ~cf::kFinalizing);
}

Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2) {
  const Gate gate(__func__);
  if (gate.fails()) return false;
  return cf::equal(cf1, cf2, __func__);
}

CFHashCode CFHash(CFTypeRef cf) {
  const Gate gate(__func__);
  if (gate.fails()) return 0;
  return cf::hash(cf, __func__);
}
