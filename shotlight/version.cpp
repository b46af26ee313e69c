#include "shotlight/version.h"

namespace shotlight {

// A source of its own: a commit compiles nothing else again.
const char programVersion[] = PROJECT_VERSION
#include "commit.inc"  // made by cmake/WriteCommit.cmake
    ;

}  // namespace shotlight
