// MDQueryZNK: the host class through which host code runs a metadata query.
#pragma once

#include <CoreServices/CoreServices.h>

#include "host/startup.h"

struct MDQueryData {
  MDQueryRef query;  // owned by the instance; host code may overwrite it, which retains and releases nothing
  REALobject tag;    // a variant that host code stores here; the host locks it, the destructor unlocks it
};
static_assert(sizeof(MDQueryData) == 8, "2 words");

inline MDQueryData* queryData(REALobject query) {
  return instanceData<MDQueryData>(query, MDQueryClass);
}

// Raises "NilObjectException" with "MDQuery Reference is nil".
[[gnu::noinline, gnu::cold]] void raiseNilQuery();

// The instance's query, borrowed. Without one it raises as above and returns null; the caller returns its
// neutral value at once.
inline MDQueryRef queryOrRaise(REALobject self) {
  const MDQueryRef query = queryData(self)->query;
  if (!query) raiseNilQuery();
  return query;
}

// The constructors. The number counts the arguments, with the instance as the first. They leave the instance
// without a query, silently, when the query string is empty or the service rejects it, and when the parent of
// a subset has no query.
void rbMDQueryCreate2(REALobject self, REALstring queryString);
void rbMDQueryCreate3(REALobject self, REALstring queryString, REALobject valueListAttributes);
void rbMDQueryCreate4(REALobject self, REALstring queryString, REALobject valueListAttributes,
                      REALobject sortingAttributes);
void rbMDQueryCreateSubset3(REALobject self, REALobject parent, REALstring queryString);
void rbMDQueryCreateSubset4(REALobject self, REALobject parent, REALstring queryString,
                            REALobject valueListAttributes);
void rbMDQueryCreateSubset5(REALobject self, REALobject parent, REALstring queryString,
                            REALobject valueListAttributes, REALobject sortingAttributes);
void MDQueryDestructor(REALobject self);

HostBoolean rbMDQueryExecute(REALobject self, int32_t flags);
HostBoolean rbMDQueryIsGatheringComplete(REALobject self);
int32_t rbMDQueryGetResultCount(REALobject self);
REALobject rbMDQueryCopyValueListAttributes(REALobject self);
REALobject rbMDQueryCopySortingAttributes(REALobject self);
REALstring rbMDQueryCopyQueryString(REALobject self);
void rbMDQueryStop(REALobject self);
void rbMDQueryDisableUpdates(REALobject self);
void rbMDQueryEnableUpdates(REALobject self);
void rbMDQuerySetMaxCount(REALobject self, int32_t size);

// search_scope.cpp
void rbMDQuerySetSearchScope(REALobject self, REALobject paths, REALobject options);

// sorting.cpp: 0 and false on a system without the functions
int32_t rbMDQueryGetSortOptionFlagsForAttribute(REALobject self, REALstring fieldName);
HostBoolean rbMDQuerySetSortOptionFlagsForAttribute(REALobject self, REALstring fieldName, uint32_t flags);
HostBoolean rbMDQuerySetSortOrder(REALobject self, REALobject sortingAttrs);

// batching.cpp: a snapshot of the parameters, which changes nothing until it is assigned back
REALobject rbMDQueryBatchingParams(REALobject self);
void rbMDQuerySetBatchingParameters(REALobject self, REALobject value);

// results.cpp
REALobject rbMDQueryGetResultAtIndex(REALobject self, int32_t index);
REALobject rbMDQueryGetResultArray(REALobject self, int32_t limit);
int32_t rbMDQueryGetIndexOfResult(REALobject self, REALobject result);
REALobject rbMDQueryGetAttributeValueOfResultAtIndex(REALobject self, REALstring name, uint32_t index);
REALobject rbMDQueryCopyValuesOfAttribute(REALobject self, REALstring name);
uint32_t rbMDQueryGetCountOfResultsWithAttributeValue(REALobject self, REALstring name, REALobject value);

// events.cpp: raises the host event that belongs to a notification of the query.
enum MDQueryEvent { kProgressEvent, kFinishEvent, kUpdateEvent, kEventCount };
extern REALevent MDQueryEvents[kEventCount];
void MyCallBack(CFNotificationCenterRef center, void* observer, CFStringRef name, const void* object,
                CFDictionaryRef userInfo);
