// What start-up sets, once, before any method of the plug-in can run. Afterwards it is only read; nothing is
// torn down.
#pragma once

#include <CoreServices/CoreServices.h>

#include "records.h"

// Hidden also where it is only declared, which -fvisibility=hidden doesn't do: otherwise compilers take its
// address from a table.
#pragma GCC visibility push(hidden)

typedef void* Resolver(const char* name);

extern Resolver* gResolver;                // the host's: returns the address of a service by name, or null
extern double rbversion;                   // the host's version, such as 2013.03; 0 if the host doesn't tell
extern int32_t CurrentREALControlVersion;  // 9 to 12, chosen from rbversion

// Query functions that not every system has, looked up by name in built applications only. Null in the
// development environment, and on a system that lacks them.
extern uint32_t (*myMDQueryGetSortOptionFlagsForAttribute)(MDQueryRef query, CFStringRef fieldName);
extern Boolean (*myMDQuerySetSortOptionFlagsForAttribute)(MDQueryRef query, CFStringRef fieldName,
                                                          uint32_t flags);
extern Boolean (*myMDQuerySetSortOrder)(MDQueryRef query, CFArrayRef sortingAttrs);

// What is registered: the three classes, and the global method.
extern REALclassDefinition MDItemClass;
extern REALclassDefinition MDQueryClass;
extern REALclassDefinition MDQueryBatchingParamsClass;
extern const REALmethodDefinition SpotlightSharedMethods[1];

#pragma GCC visibility pop
