// The global method that opens the system's search window.
#include <Carbon/Carbon.h>

#include "bridge/strings.h"
#include "host/startup.h"

// The platform's status, unchanged; 0 is success. A nil string is passed on as null.
static int32_t rbHISearchWindowShow(REALstring searchString) {
  const auto text = RBString2CFString(searchString);
  return HISearchWindowShow(text.get(), kNilOptions);
}

constexpr REALmethodDefinition SpotlightSharedMethods[1] = {
    {rbHISearchWindowShow, "ShotlightZNK(searchString as string) as integer"},
};
