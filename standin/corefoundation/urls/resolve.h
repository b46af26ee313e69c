// Relative URLs made absolute, by the rules of RFC 1808.
#pragma once

#include <string>

#include "standin/corefoundation/urls/parse.h"

namespace cf {

// The absolute form of `relative` against an absolute base; an opaque base gives its scheme only.
std::string resolve(const URLParts& base, const URLParts& relative);

}  // namespace cf
