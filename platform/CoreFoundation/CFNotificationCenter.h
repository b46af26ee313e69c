#pragma once

#include "CFDictionary.h"
#include "CFString.h"

typedef struct __CFNotificationCenter* CFNotificationCenterRef;
typedef CFIndex CFNotificationSuspensionBehavior;
typedef void (*CFNotificationCallback)(CFNotificationCenterRef center, void* observer, CFStringRef name,
                                       const void* object, CFDictionaryRef userInfo);

enum {
  CFNotificationSuspensionBehaviorDrop = 1,
  CFNotificationSuspensionBehaviorCoalesce = 2,
  CFNotificationSuspensionBehaviorHold = 3,
  CFNotificationSuspensionBehaviorDeliverImmediately = 4
};

CF_EXPORT CFTypeID CFNotificationCenterGetTypeID(void);
CF_EXPORT CFNotificationCenterRef CFNotificationCenterGetLocalCenter(void);
CF_EXPORT void CFNotificationCenterAddObserver(CFNotificationCenterRef center, const void* observer,
                                               CFNotificationCallback callBack, CFStringRef name,
                                               const void* object,
                                               CFNotificationSuspensionBehavior suspensionBehavior);
CF_EXPORT void CFNotificationCenterRemoveEveryObserver(CFNotificationCenterRef center, const void* observer);
CF_EXPORT void CFNotificationCenterPostNotification(CFNotificationCenterRef center, CFStringRef name,
                                                    const void* object, CFDictionaryRef userInfo,
                                                    Boolean deliverImmediately);
