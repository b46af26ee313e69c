// Reference counts, the class table, and the functions that serve objects of every class.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "standin/corefoundation/classes.h"
#include "standin/corefoundation/object.h"
#include "standin/corefoundation/quarantine.h"
#include "standin/corefoundation/string.h"

namespace cf {
namespace {

// Set in an object's count while its finalizer runs.
constexpr uint32_t kFinalizing = 0x80000000;

constinit CFTypeID nextRegisteredType = kFirstRegisteredType;

const ClassEntry* entryAt(uintptr_t word) {
  const uintptr_t offset = word - reinterpret_cast<uintptr_t>(&classTable[0]);
  if (offset >= sizeof(classTable) || offset % sizeof(ClassEntry) != 0) return nullptr;
  const ClassEntry* const entry = &classTable[offset / sizeof(ClassEntry)];
  return entry->cls ? entry : nullptr;
}

std::string address(const void* pointer) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", pointer);
  return text;
}

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

void misuse(const char* call, const std::string& what) {
  const char* const outermost = standin::currentCall();
  if (std::strcmp(outermost, call) == 0 || outermost[0] == '(') standin::die(call, what);
  standin::die(call, what + " (inside " + outermost + ")");
}

void misuseOfReference(const char* call, CFTypeRef cf, const char* wanted) {
  const std::string need = std::string(" where ") + wanted + " is needed";
  if (cf == nullptr) misuse(call, "null" + need);
  const std::string at = " at " + address(cf);
  if ((reinterpret_cast<uintptr_t>(cf) & 3) != 0) misuse(call, "no object" + at + need);
  const Header* const object = static_cast<const Header*>(cf);
  if (const ClassEntry* freed = freedClass(object)) {
    misuse(call, std::string("a freed ") + freed->cls->className + at + need);
  }
  const ClassEntry* const entry = entryAt(reinterpret_cast<uintptr_t>(object->isa));
  if (entry == nullptr) misuse(call, "no object" + at + need);
  misuse(call, std::string("a ") + entry->cls->className + at + need);
}

void misuseOfType(const char* call, CFTypeRef cf, CFTypeID wanted) {
  const std::string name = std::string("a ") + classTable[wanted].cls->className;
  misuseOfReference(call, cf, name.c_str());
}

ClassEntry* classOf(CFTypeRef cf, const char* call) {
  if (cf != nullptr && (reinterpret_cast<uintptr_t>(cf) & 3) == 0) {
    ClassEntry* const entry = static_cast<const Header*>(cf)->isa;
    if (entryAt(reinterpret_cast<uintptr_t>(entry))) return entry;
  }
  misuseOfReference(call, cf, "a living object");
}

Header* allocateObject(CFTypeID type, size_t size) {
  Header* const object = static_cast<Header*>(std::calloc(1, size));
  if (object == nullptr) return nullptr;
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

OutsideCall::OutsideCall() : open_(std::strncmp(standin::currentCall(), "CF", 2) == 0) {
  if (open_) new (storage_) standin::Callout;
}

OutsideCall::~OutsideCall() {
  if (open_) std::launder(reinterpret_cast<standin::Callout*>(storage_))->~Callout();
}

}  // namespace cf

CFTypeID CFGetTypeID(CFTypeRef cf) {
  const standin::Gate gate{__func__};
  if (gate.fails()) return 0;
  return cf::classOf(cf, __func__)->id;
}

// A retain can't fail where the platform has none that does: the reference is taken even when the call was
// chosen.
CFTypeRef CFRetain(CFTypeRef cf) {
  const standin::Gate gate{__func__};
  return cf::retain(cf, __func__);
}

void CFRelease(CFTypeRef cf) {
  standin::Gate gate{__func__};
  gate.detail(cf::classOf(cf, __func__)->cls->className);
  cf::release(cf, __func__);
}

CFIndex CFGetRetainCount(CFTypeRef cf) {
  const standin::Gate gate{__func__};
  if (gate.fails()) return 0;
  cf::classOf(cf, __func__);
  return static_cast<CFIndex>(static_cast<const cf::Header*>(cf)->count & ~cf::kFinalizing);
}

Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2) {
  const standin::Gate gate{__func__};
  if (gate.fails()) return false;
  return cf::equal(cf1, cf2, __func__);
}

CFHashCode CFHash(CFTypeRef cf) {
  const standin::Gate gate{__func__};
  if (gate.fails()) return 0;
  return cf::hash(cf, __func__);
}

CFStringRef CFCopyTypeIDDescription(CFTypeID type_id) {
  const standin::Gate gate{__func__};
  if (gate.fails() || type_id >= cf::kTypeLimit) return nullptr;
  const CFRuntimeClass* const cls = cf::classTable[type_id].cls;
  return cls ? cf::makeNarrowString(cls->className, std::strlen(cls->className)) : nullptr;
}

CFTypeID _CFRuntimeRegisterClass(const CFRuntimeClass* cls) {
  const standin::Gate gate{__func__};
  if (cls == nullptr || cls->className == nullptr)
    cf::misuse(__func__, "no class, or a class without a name");
  if (gate.fails() || cf::nextRegisteredType == cf::kTypeLimit) return 0;
  const CFTypeID id = cf::nextRegisteredType++;
  cf::classTable[id] = {cls, nullptr, id, 0};
  return id;
}

CFTypeRef _CFRuntimeCreateInstance(CFAllocatorRef allocator, CFTypeID typeID, CFIndex extraBytes,
                                   unsigned char*) {
  const standin::Gate gate{__func__};
  if (typeID < cf::kFirstRegisteredType || typeID >= cf::nextRegisteredType) {
    cf::misuse(__func__, "type " + std::to_string(typeID) + " was never registered");
  }
  if (extraBytes < 0) cf::misuse(__func__, "a size below 0");
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  cf::Header* const object = cf::allocateObject(typeID, sizeof(cf::Header) + static_cast<size_t>(extraBytes));
  if (object && object->isa->cls->init) object->isa->cls->init(object);
  return object;
}
