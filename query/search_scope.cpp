// Where a query searches.
#include "bridge/folder_items.h"
#include "bridge/strings.h"
#include "host/array_elements.h"
#include "query.h"

namespace {

const CFIndex kScopeCapacity = 20;

template <typename Reference>
void append(CFMutableArrayRef scope, const Owned<Reference>& entry) {
  if (entry) CFArrayAppendValue(scope, entry.get());
}

void appendFolders(CFMutableArrayRef scope, REALobject paths) {
  const int32_t upperBound = REALGetArrayUBound(paths);
  for (int32_t i = 0; i <= upperBound; ++i) {
    const auto item = ownedElementAt(paths, i, REALGetArrayValueObject);
    append(scope, CreateCFURLfromFolderItem(item.get()));
  }
}

void appendOptions(CFMutableArrayRef scope, REALobject options) {
  const int32_t upperBound = REALGetArrayUBound(options);
  for (int32_t i = 0; i <= upperBound; ++i) {
    const auto string = ownedElementAt(options, i, REALGetArrayString);
    append(scope, RBString2CFString(string.get()));
  }
}

}  // namespace

// Folders first, then the options, unchanged. What can't be read or converted is left out; if nothing is
// left, the query gets an empty scope.
void rbMDQuerySetSearchScope(REALobject self, REALobject paths, REALobject options) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query) return;
  const auto scope = adopt(CFArrayCreateMutable(kCFAllocatorDefault, kScopeCapacity, &kCFTypeArrayCallBacks));
  if (!scope) return;
  if (paths) appendFolders(scope.get(), paths);
  if (options) appendOptions(scope.get(), options);
  MDQuerySetSearchScope(query, scope.get(), kNilOptions);
}
