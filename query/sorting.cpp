// The order of a query's results. Not every system has the three functions: start-up looks them up.
#include "bridge/strings.h"
#include "query.h"

int32_t rbMDQueryGetSortOptionFlagsForAttribute(REALobject self, REALstring fieldName) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query || !myMDQueryGetSortOptionFlagsForAttribute) return 0;
  const auto name = RBString2CFString(fieldName);
  if (!name) return 0;
  return static_cast<int32_t>(myMDQueryGetSortOptionFlagsForAttribute(query, name.get()));
}

// Looking for the getter is enough: a system has both functions or neither.
HostBoolean rbMDQuerySetSortOptionFlagsForAttribute(REALobject self, REALstring fieldName, uint32_t flags) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query || !myMDQueryGetSortOptionFlagsForAttribute) return false;
  const auto name = RBString2CFString(fieldName);
  return name && myMDQuerySetSortOptionFlagsForAttribute(query, name.get(), flags);
}

HostBoolean rbMDQuerySetSortOrder(REALobject self, REALobject sortingAttrs) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query || !myMDQuerySetSortOrder) return false;
  const auto attributes = NewCFStringArray(sortingAttrs);
  return attributes && myMDQuerySetSortOrder(query, attributes.get());
}
