// The local notification centre. A notification is delivered at once, on the spot, to the observers that were
// registered when it was posted, in the order of their registration; one that is removed before its turn
// isn't called any more. Registering the same thing twice means being called twice.
#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/system/objects.h"

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

const CFRuntimeClass kCenterClass = {.className = "CFNotificationCenter"};

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
    center = standin::makeObject<__CFNotificationCenter>(kCFAllocatorDefault, centerType());
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
  const Gate gate(__func__);
  return centerType();
}

CFNotificationCenterRef CFNotificationCenterGetLocalCenter(void) {
  const Gate gate(__func__);  // never fails: every process has one
  return localCenter();
}

void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                     CFNotificationCallback callBack, CFStringRef name, const void* object,
                                     CFNotificationSuspensionBehavior) {
  const Gate gate(__func__);
  checkCenter(__func__, center);
  if (!callBack) standin::die(__func__, "the callback is null");
  if (name) checkName(__func__, name);
  if (gate.fails()) return;
  registrations().push_back(std::make_shared<Registration>(observer, callBack, name, object));
}

void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer) {
  const Gate gate(
      __func__);  // never fails: if a removal were left out, an observer that is gone would be called
  checkCenter(__func__, center);
  std::erase_if(registrations(), [&](const std::shared_ptr<Registration>& registration) {
    if (registration->observer != observer) return false;
    registration->active = false;
    return true;
  });
}

void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFStringRef name,
                                          const void* object, CFDictionaryRef userInfo, Boolean) {
  const Gate gate(__func__);
  checkCenter(__func__, center);
  if (!name) standin::die(__func__, "the name is null");
  checkName(__func__, name);
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
