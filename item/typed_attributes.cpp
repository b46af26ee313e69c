// One attribute of an item as a fixed host type: a value of another type is an exception, not converted.
#include "bridge/strings.h"
#include "host/array_before_guard.h"
#include "host/exceptions.h"
#include "item.h"

namespace {

// The item's attribute. Raises, with an empty result, when it has another type than this. Empty, without an
// exception, for a null key, and when the attribute is absent.
template <typename Reference>
Owned<Reference> copyAttribute(MDItemRef item, CFStringRef key, CFTypeID (*typeID)()) {
  if (!key) return {};
  auto value = adopt(MDItemCopyAttribute(item, key));
  if (!value) return {};
  if (CFGetTypeID(value.get()) != typeID()) {
    RaiseException("RuntimeException", "Wrong type used for getting attribute value.");
    return {};
  }
  return adopt(static_cast<Reference>(value.leak()));
}

}  // namespace

REALstring rbMDItemCopyAttributeString(REALobject self, REALstring name) {
  const MDItemRef item = itemOrRaise(self);
  if (!item) return nullptr;
  const auto key = RBString2CFString(name);
  const auto text = copyAttribute<CFStringRef>(item, key.get(), CFStringGetTypeID);
  return CFString2RBString(text.get()).leak();
}

HostBoolean rbMDItemCopyAttributeBoolean(REALobject self, REALstring name) {
  const MDItemRef item = itemOrRaise(self);
  if (!item) return false;
  const auto key = RBString2CFString(name);
  const auto truth = copyAttribute<CFBooleanRef>(item, key.get(), CFBooleanGetTypeID);
  return truth && CFBooleanGetValue(truth.get());
}

double rbMDItemCopyAttributeDouble(REALobject self, REALstring name) {
  const MDItemRef item = itemOrRaise(self);
  if (!item) return 0;
  const auto key = RBString2CFString(name);
  const auto number = copyAttribute<CFNumberRef>(item, key.get(), CFNumberGetTypeID);
  double value = 0;
  return number && CFNumberGetValue(number.get(), kCFNumberDoubleType, &value) ? value : 0;
}

// An empty array when the attribute is absent or of another type.
REALobject rbMDItemCopyAttributeStringArray(REALobject self, REALstring name) {
  const auto [made, item] = newArrayBeforeGuard(kStringElements, itemOrRaise, self);
  if (!item) return nullptr;
  auto array = adopt(made);
  const auto key = RBString2CFString(name);
  const auto strings = copyAttribute<CFArrayRef>(item, key.get(), CFArrayGetTypeID);
  if (strings) AddStringArray(array.get(), strings.get());
  return array.leak();
}
