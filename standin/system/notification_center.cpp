// The local notification centre. A notification is delivered at once, on the spot, to the observers that were
// registered when it was posted, in the order of their registration; one that is removed before its turn
// isn't called any more. Registering the same thing twice means being called twice.
#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/gate/gate.h"

struct __CFNotificationCenter {
  CFRuntimeBase base;
};

namespace {

using standin::Gate;

struct Registration {
  Registration(const void* observer, CFNotificationCallback callback, CFStringRef name, const void* object)
      : observer(observer),
        callback(callback),
        name(name ? CFStringCreateCopy(kCFAllocatorDefault, name) : nullptr),
        object(object) {}
  ~Registration() {
    if (name) CFRelease(name);
  }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

  bool wants(CFStringRef posted, const void* from) const {
    return (!object || object == from) && (!name || CFEqual(name, posted));
  }

  const void* observer;  // neither the observer nor the object is retained
  CFNotificationCallback callback;
  CFStringRef name;    // null: every name
  const void* object;  // null: every object
  bool active = true;
};

using Registrations = std::vector<std::shared_ptr<Registration>>;

Registrations& registrations() {
  static Registrations* const all = new Registrations;  // never destroyed, like the centre
  return *all;
}

const CFRuntimeClass kCenterClass = {
    0,      "CFNotificationCenter", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    nullptr};

CFTypeID centerType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kCenterClass);
  return type;
}

CFNotificationCenterRef localCenter() {
  static CFNotificationCenterRef center;
  if (!center) {
    // The centre lives as long as the process, so it is nobody's leak and stays out of the ledger.
    long& line = standin::ledgerLine("CFNotificationCenter");
    const long before = line;
    const CFIndex extraBytes = sizeof(__CFNotificationCenter) - sizeof(CFRuntimeBase);
    center = const_cast<CFNotificationCenterRef>(static_cast<const __CFNotificationCenter*>(
        _CFRuntimeCreateInstance(kCFAllocatorDefault, centerType(), extraBytes, nullptr)));
    line = before;
  }
  return center;
}

void checkCenter(const char* call, CFNotificationCenterRef center) {
  if (center != localCenter()) standin::die(call, "this is not the local notification centre");
}

void checkName(const char* call, CFStringRef name) {
  if (CFGetTypeID(name) != CFStringGetTypeID()) standin::die(call, "the name is no string");
}

}  // namespace

CFTypeID CFNotificationCenterGetTypeID(void) {
  Gate gate{"CFNotificationCenterGetTypeID"};
  return centerType();
}

CFNotificationCenterRef CFNotificationCenterGetLocalCenter(void) {
  Gate gate{"CFNotificationCenterGetLocalCenter"};  // every process has one: it never fails
  return localCenter();
}

void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                     CFNotificationCallback callBack, CFStringRef name, const void* object,
                                     CFNotificationSuspensionBehavior) {
  constexpr const char* kCall = "CFNotificationCenterAddObserver";
  Gate gate{kCall};
  checkCenter(kCall, center);
  if (!callBack) standin::die(kCall, "the callback is null");
  if (name) checkName(kCall, name);
  if (gate.fails()) return;
  registrations().push_back(std::make_shared<Registration>(observer, callBack, name, object));
}

void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer) {
  constexpr const char* kCall = "CFNotificationCenterRemoveEveryObserver";
  Gate gate{kCall};  // a removal that were left out would call an observer that is gone: it never fails
  checkCenter(kCall, center);
  std::erase_if(registrations(), [&](const std::shared_ptr<Registration>& registration) {
    if (registration->observer != observer) return false;
    registration->active = false;
    return true;
  });
}

void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFStringRef name,
                                          const void* object, CFDictionaryRef userInfo, Boolean) {
  constexpr const char* kCall = "CFNotificationCenterPostNotification";
  Gate gate{kCall};
  checkCenter(kCall, center);
  if (!name) standin::die(kCall, "the name is null");
  checkName(kCall, name);
  if (gate.fails()) return;
  Registrations interested;
  for (const auto& registration : registrations()) {
    if (registration->wants(name, object)) interested.push_back(registration);
  }
  for (const auto& registration : interested) {
    if (!registration->active) continue;
    standin::Callout callout;
    registration->callback(center, const_cast<void*>(registration->observer), name, object, userInfo);
  }
}
