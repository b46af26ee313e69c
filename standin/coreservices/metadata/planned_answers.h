// Answers that a test puts in the place of a metadata service's own, to reach values that no file has.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

#include "standin/gate/gate.h"

namespace standin {

// The next call of that name, also one that the stand-in makes itself, answers this value. The reference is
// handed over with it: a Copy function passes it on to its caller, a Get function keeps it until
// clearAnswers(). For these calls: MDItemCopyAttribute, MDItemCopyAttributes, MDItemCopyAttributeNames, the
// MDSchemaCopy functions, MDQueryCopyValuesOfAttribute and MDQueryGetAttributeValueOfResultAtIndex.
STANDIN_API void planAnswer(const std::string& call, CFTypeRef value);
// Drops the plans that were not used.
STANDIN_API void clearAnswers();

}  // namespace standin

namespace standin::metadata {

// The caller's; null when the call is to answer for itself.
CFTypeRef takePlannedAnswer(const char* call);
// The same, borrowed.
CFTypeRef borrowPlannedAnswer(const char* call);

}  // namespace standin::metadata
