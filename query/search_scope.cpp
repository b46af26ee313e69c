// Where a query searches.
#include "bridge/folder_items.h"
#include "bridge/strings.h"
#include "host/array_elements.h"
#include "query.h"

namespace {

const CFIndex kExpectedPlaces = 20;

template <typename Reference>
void append(CFMutableArrayRef scope, const Owned<Reference>& place) {
  if (place) CFArrayAppendValue(scope, place.get());
}

void appendFolders(CFMutableArrayRef scope, REALobject paths) {
  const int32_t upperBound = REALGetArrayUBound(paths);
  for (int32_t i = 0; i <= upperBound; ++i) {
    const auto item = handleAt(paths, i, REALGetArrayValueObject);
    append(scope, CreateCFURLfromFolderItem(item.get()));
  }
}

void appendOptions(CFMutableArrayRef scope, REALobject options) {
  const int32_t upperBound = REALGetArrayUBound(options);
  for (int32_t i = 0; i <= upperBound; ++i) {
    const auto string = handleAt(options, i, REALGetArrayString);
    append(scope, RBString2CFString(string.get()));
  }
}

}  // namespace

// Folders first, then options, as they are. What can't be had or converted is left out, and if that is
// everything, the scope is an empty one.
void rbMDQuerySetSearchScope(REALobject self, REALobject paths, REALobject options) {
  const MDQueryRef query = queryOrRaise(self);
  if (!query) return;
  const auto scope =
      adopt(CFArrayCreateMutable(kCFAllocatorDefault, kExpectedPlaces, &kCFTypeArrayCallBacks));
  if (!scope) return;
  if (paths) appendFolders(scope.get(), paths);
  if (options) appendOptions(scope.get(), options);
  MDQuerySetSearchScope(query, scope.get(), kNilOptions);
}
