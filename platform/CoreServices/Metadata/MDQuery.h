#pragma once

#include "../CarbonCore/Files.h"

typedef struct __MDQuery* MDQueryRef;

enum { kMDQuerySynchronous = 1, kMDQueryWantsUpdates = 4 };

typedef struct {
  size_t first_max_num;
  size_t first_max_ms;
  size_t progress_max_num;
  size_t progress_max_ms;
  size_t update_max_num;
  size_t update_max_ms;
} MDQueryBatchingParams;
static_assert(sizeof(MDQueryBatchingParams) == 24, "MDQueryBatchingParams");

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
CS_EXPORT void* MDQueryGetAttributeValueOfResultAtIndex(MDQueryRef query, CFStringRef name, CFIndex idx);
CS_EXPORT CFArrayRef MDQueryCopyValuesOfAttribute(MDQueryRef query, CFStringRef name);
CS_EXPORT CFIndex MDQueryGetCountOfResultsWithAttributeValue(MDQueryRef query, CFStringRef name,
                                                             CFTypeRef value);
CS_EXPORT MDQueryBatchingParams MDQueryGetBatchingParameters(MDQueryRef query);
CS_EXPORT void MDQuerySetBatchingParameters(MDQueryRef query, MDQueryBatchingParams params);
CS_EXPORT void MDQuerySetSearchScope(MDQueryRef query, CFArrayRef scopeDirectories, OptionBits scopeOptions);
CS_EXPORT void MDQuerySetMaxCount(MDQueryRef query, CFIndex size);
CS_EXPORT Boolean MDQuerySetSortOrder(MDQueryRef query, CFArrayRef sortingAttrs);
CS_EXPORT uint32_t MDQueryGetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName);
CS_EXPORT Boolean MDQuerySetSortOptionFlagsForAttribute(MDQueryRef query, CFStringRef fieldName,
                                                        uint32_t flags);

// Notifications, and the keys of the dictionary that they carry
CS_EXPORT const CFStringRef kMDQueryProgressNotification;
CS_EXPORT const CFStringRef kMDQueryDidUpdateNotification;
CS_EXPORT const CFStringRef kMDQueryDidFinishNotification;
CS_EXPORT const CFStringRef kMDQueryUpdateAddedItems;
CS_EXPORT const CFStringRef kMDQueryUpdateChangedItems;
CS_EXPORT const CFStringRef kMDQueryUpdateRemovedItems;

// An attribute of results, and not of items
CS_EXPORT const CFStringRef kMDQueryResultContentRelevance;

// Scopes
CS_EXPORT const CFStringRef kMDQueryScopeHome;
CS_EXPORT const CFStringRef kMDQueryScopeComputer;
CS_EXPORT const CFStringRef kMDQueryScopeNetwork;
CS_EXPORT const CFStringRef kMDQueryScopeAllIndexed;
CS_EXPORT const CFStringRef kMDQueryScopeComputerIndexed;
CS_EXPORT const CFStringRef kMDQueryScopeNetworkIndexed;
