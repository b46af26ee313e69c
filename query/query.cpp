// The life of a query object, its plain operations, and the tables of its class.
#include "query.h"

#include "bridge/strings.h"
#include "host/array_before_guard.h"
#include "host/exceptions.h"
#include "host/owned.h"

namespace {

// Observes this query's notifications only. The centre doesn't lock the instance: the destructor removes it.
void observe(REALobject self, MDQueryRef query) {
  const CFNotificationCenterRef center = CFNotificationCenterGetLocalCenter();
  const CFStringRef names[] = {kMDQueryProgressNotification, kMDQueryDidUpdateNotification,
                               kMDQueryDidFinishNotification};
  for (const CFStringRef name : names) {
    CFNotificationCenterAddObserver(center, self, MyCallBack, name, query,
                                    CFNotificationSuspensionBehaviorDeliverImmediately);
  }
}

// What all six constructors do. An attribute array that a constructor doesn't have is nil here; the parent is
// null unless the query is a subset.
void construct(REALobject self, MDQueryRef parent, REALstring queryString, REALobject valueListAttributes,
               REALobject sortingAttributes) {
  const auto text = RBString2CFString(queryString);
  if (!text) return;
  const auto valueLists = NewCFStringArray(valueListAttributes);
  const auto sorting = NewCFStringArray(sortingAttributes);
  const MDQueryRef query =
      parent ? MDQueryCreateSubset(kCFAllocatorDefault, parent, text.get(), valueLists.get(), sorting.get())
             : MDQueryCreate(kCFAllocatorDefault, text.get(), valueLists.get(), sorting.get());
  queryData(self)->query = query;
  if (query) observe(self, query);
}

void constructSubset(REALobject self, REALobject parent, REALstring queryString,
                     REALobject valueListAttributes, REALobject sortingAttributes) {
  const MDQueryRef query = parent ? queryData(parent)->query : nullptr;
  if (query) construct(self, query, queryString, valueListAttributes, sortingAttributes);
}

REALobject attributeArray(REALobject self, CFArrayRef (*copyAttributes)(MDQueryRef)) {
  const auto [made, query] = newArrayBeforeGuard(kStringElements, queryOrRaise, self);
  if (!query) return nullptr;
  auto array = adopt(made);
  const auto attributes = adopt(copyAttributes(query));
  if (attributes) AddStringArray(array.get(), attributes.get());
  return array.leak();
}

}  // namespace

void raiseNilQuery() {
  RaiseException("NilObjectException", "MDQuery Reference is nil");
}

void rbMDQueryCreate2(REALobject self, REALstring queryString) {
  construct(self, nullptr, queryString, nullptr, nullptr);
}

void rbMDQueryCreate3(REALobject self, REALstring queryString, REALobject valueListAttributes) {
  construct(self, nullptr, queryString, valueListAttributes, nullptr);
}

void rbMDQueryCreate4(REALobject self, REALstring queryString, REALobject valueListAttributes,
                      REALobject sortingAttributes) {
  construct(self, nullptr, queryString, valueListAttributes, sortingAttributes);
}

void rbMDQueryCreateSubset3(REALobject self, REALobject parent, REALstring queryString) {
  constructSubset(self, parent, queryString, nullptr, nullptr);
}

void rbMDQueryCreateSubset4(REALobject self, REALobject parent, REALstring queryString,
                            REALobject valueListAttributes) {
  constructSubset(self, parent, queryString, valueListAttributes, nullptr);
}

void rbMDQueryCreateSubset5(REALobject self, REALobject parent, REALstring queryString,
                            REALobject valueListAttributes, REALobject sortingAttributes) {
  constructSubset(self, parent, queryString, valueListAttributes, sortingAttributes);
}

void MDQueryDestructor(REALobject self) {
  MDQueryData* const data = queryData(self);
  // No notification may reach the instance from here on. Releasing the query then stops it.
  if (data->query) CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetLocalCenter(), self);
  releaseField(data->query);
  releaseField(data->tag);
}

HostBoolean rbMDQueryExecute(REALobject self, int32_t flags) {
  const MDQueryRef query = queryOrRaise(self);
  return query && MDQueryExecute(query, static_cast<CFOptionFlags>(flags));
}

HostBoolean rbMDQueryIsGatheringComplete(REALobject self) {
  const MDQueryRef query = queryOrRaise(self);
  return query && MDQueryIsGatheringComplete(query);
}

int32_t rbMDQueryGetResultCount(REALobject self) {
  const MDQueryRef query = queryOrRaise(self);
  return query ? MDQueryGetResultCount(query) : 0;
}

REALobject rbMDQueryCopyValueListAttributes(REALobject self) {
  return attributeArray(self, MDQueryCopyValueListAttributes);
}

REALobject rbMDQueryCopySortingAttributes(REALobject self) {
  return attributeArray(self, MDQueryCopySortingAttributes);
}

REALstring rbMDQueryCopyQueryString(REALobject self) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query) return nullptr;
  const auto text = adopt(MDQueryCopyQueryString(query));
  return CFString2RBString(text.get()).leak();
}

void rbMDQueryStop(REALobject self) {
  if (const MDQueryRef query = queryOrRaise(self)) MDQueryStop(query);
}

void rbMDQueryDisableUpdates(REALobject self) {
  if (const MDQueryRef query = queryOrRaise(self)) MDQueryDisableUpdates(query);
}

void rbMDQueryEnableUpdates(REALobject self) {
  if (const MDQueryRef query = queryOrRaise(self)) MDQueryEnableUpdates(query);
}

void rbMDQuerySetMaxCount(REALobject self, int32_t size) {
  if (const MDQueryRef query = queryOrRaise(self)) MDQuerySetMaxCount(query, size);
}

static constexpr REALproperty MDQueryProperties[] = {
    REALproperty::field("Handle", "Integer", offsetof(MDQueryData, query)),
    REALproperty::field("Tag", "Variant", offsetof(MDQueryData, tag)),
};

// clang-format off
static constexpr REALmethodDefinition MDQueryMethods[] = {
    {rbMDQueryGetCountOfResultsWithAttributeValue, "CountOfResultsWithAttributeValue(name as string, Value as variant) as UInt32"},
    {rbMDQueryGetAttributeValueOfResultAtIndex, "AttributeValueOfResultAtIndex(name as string, index as UInt32) as variant"},
    {rbMDQueryCopyValuesOfAttribute, "ValuesOfAttribute(name as string) as variant()"},
    {rbMDQueryGetIndexOfResult, "IndexOfResult(it as MDItemZNK) as integer"},
    {rbMDQueryCreate2, "Constructor(queryString as string)"},
    {rbMDQueryCreate3, "Constructor(queryString as string, valueListAttributes() as string)"},
    {rbMDQueryCreate4, "Constructor(queryString as string, valueListAttributes() as string, sortingAttributes() as string)"},
    {rbMDQueryCreateSubset3, "Constructor(query as MDQueryZNK, queryString as string)"},
    {rbMDQueryCreateSubset4, "Constructor(query as MDQueryZNK, queryString as string, valueListAttributes() as string)"},
    {rbMDQueryCreateSubset5, "Constructor(query as MDQueryZNK, queryString as string, valueListAttributes() as string, sortingAttributes() as string)"},
    {rbMDQueryGetResultAtIndex, "ResultAtIndex(index as integer) as MDItemZNK"},
    {rbMDQueryGetResultArray, "Results(limit as integer = -1) as MDItemZNK()"},
    {rbMDQueryBatchingParams, rbMDQuerySetBatchingParameters, "BatchingParameters as MDQueryBatchingParamsZNK"},
    {rbMDQueryExecute, "Execute(flags as integer) as boolean"},
    {rbMDQueryIsGatheringComplete, "IsGatheringComplete as boolean"},
    {rbMDQueryGetResultCount, "ResultCount as integer"},
    {rbMDQueryCopyValueListAttributes, "ValueListAttributes as string()"},
    {rbMDQueryCopySortingAttributes, "SortingAttributes as string()"},
    {rbMDQueryCopyQueryString, "QueryString as string"},
    {rbMDQueryStop, "Stop"},
    {rbMDQueryDisableUpdates, "DisableUpdates"},
    {rbMDQueryEnableUpdates, "EnableUpdates"},
    {rbMDQuerySetMaxCount, "SetMaxCount(size as integer)"},
    {rbMDQuerySetSearchScope, "SetSearchScope(paths() as folderitem, options() as string)"},
    {rbMDQueryGetSortOptionFlagsForAttribute, "GetSortOptionFlagsForAttribute(fieldName as string) as integer"},
    {rbMDQuerySetSortOptionFlagsForAttribute, "SetSortOptionFlagsForAttribute(fieldName as string, flags as UInt32) as Boolean"},
    {rbMDQuerySetSortOrder, "SetSortOrder(sortingAttrs() as string) as Boolean"},
};
// clang-format on

// The values of the scope constants are the names of the service's own scope keys, passed on unchanged.
static constexpr REALconstant MDQueryConstants[] = {
    {"kMDQueryReverseSortOrderFlag=1"},
    {"kMDQuerySynchronous=1"},
    {"kMDQueryWantsUpdates=4"},
    {"kMDQueryScopeHome=\"kMDQueryScopeHome\""},
    {"kMDQueryScopeComputer=\"kMDQueryScopeComputer\""},
    {"kMDQueryScopeNetwork=\"kMDQueryScopeNetwork\""},
    {"kMDQueryScopeAllIndexed=\"kMDQueryScopeAllIndexed\""},
    {"kMDQueryScopeComputerIndexed=\"kMDQueryScopeComputerIndexed\""},
    {"kMDQueryScopeNetworkIndexed=\"kMDQueryScopeNetworkIndexed\""},
};

REALclassDefinition MDQueryClass = REALclassDefinition("MDQueryZNK", sizeof(MDQueryData), MDQueryDestructor)
                                       .with(MDQueryProperties)
                                       .with(MDQueryMethods)
                                       .with(MDQueryEvents)
                                       .with(MDQueryConstants);
