#pragma once

#include "../CarbonCore/Files.h"

typedef struct __MDQuery* MDQueryRef;

enum { kMDQuerySynchronous = 1, kMDQueryWantsUpdates = 4 };

CS_EXPORT CFTypeID MDQueryGetTypeID(void);
CS_EXPORT MDQueryRef MDQueryCreate(CFAllocatorRef allocator, CFStringRef queryString,
                                   CFArrayRef valueListAttrs, CFArrayRef sortingAttrs);
CS_EXPORT MDQueryRef MDQueryCreateSubset(CFAllocatorRef allocator, MDQueryRef query, CFStringRef queryString,
                                         CFArrayRef valueListAttrs, CFArrayRef sortingAttrs);
CS_EXPORT CFStringRef MDQueryCopyQueryString(MDQueryRef query);
CS_EXPORT CFArrayRef MDQueryCopyValueListAttributes(MDQueryRef query);
CS_EXPORT CFArrayRef MDQueryCopySortingAttributes(MDQueryRef query);
CS_EXPORT Boolean MDQueryExecute(MDQueryRef query, CFOptionFlags optionFlags);
CS_EXPORT void MDQueryStop(MDQueryRef query);
CS_EXPORT void MDQueryDisableUpdates(MDQueryRef query);
CS_EXPORT void MDQueryEnableUpdates(MDQueryRef query);
CS_EXPORT Boolean MDQueryIsGatheringComplete(MDQueryRef query);
CS_EXPORT CFIndex MDQueryGetResultCount(MDQueryRef query);
CS_EXPORT const void* MDQueryGetResultAtIndex(MDQueryRef query, CFIndex idx);
CS_EXPORT CFIndex MDQueryGetIndexOfResult(MDQueryRef query, const void* result);
CS_EXPORT void MDQuerySetMaxCount(MDQueryRef query, CFIndex size);
CS_EXPORT Boolean MDQuerySetSortOrder(MDQueryRef query, CFArrayRef sortingAttrs);
CS_EXPORT uint32_t MDQueryGetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName);
CS_EXPORT Boolean MDQuerySetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName, uint32_t flags);

// Notifications, and the keys of the dictionary that they carry
CS_EXPORT const CFStringRef kMDQueryProgressNotification;
CS_EXPORT const CFStringRef kMDQueryDidUpdateNotification;
CS_EXPORT const CFStringRef kMDQueryDidFinishNotification;
CS_EXPORT const CFStringRef kMDQueryUpdateAddedItems;
CS_EXPORT const CFStringRef kMDQueryUpdateChangedItems;
CS_EXPORT const CFStringRef kMDQueryUpdateRemovedItems;
