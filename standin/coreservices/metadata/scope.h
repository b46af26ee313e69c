// Where a query looks.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <optional>
#include <string>
#include <vector>

#include "standin/coreservices/disk/walk_filter.h"

namespace standin::metadata {

// An element of a scope: one of the six keys that mean places, or a folder's path.
struct ScopeElement {
  enum class Place { Folder, Home, Indexed, Network } place;
  std::string path;  // of a Folder
};
using Scope = std::vector<ScopeElement>;

// `array` holds URLs and strings: anything else ends the process in the name of `call`. Strings are keys or
// paths; a path is taken as it stands.
Scope scopeOf(const char* call, CFArrayRef array);

// Keeps what was given for takeSearchScope().
void noteScope(CFArrayRef array, OptionBits options);

// The folders whose contents no query looks at, unless its scope names them: set with setIndexedFolders().
const std::vector<std::string>& excludedFolders();

// Whether a query looks at what its scope names, and not at what lies below: set with
// setLooksAtScopesAlone().
bool looksAtScopesAlone();

// Set with setWalkLimits().
const WalkFilter& walkFilter();

// The folders that a scope means now; without one, those that count as indexed. There is no network. Only
// what lies in the scopes around it, too, counts.
std::vector<std::string> foldersOf(const std::optional<Scope>& scope, const std::vector<Scope>& around = {});

}  // namespace standin::metadata
