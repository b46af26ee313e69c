#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"

struct __CFNull : cf::Header {};

namespace cf {

const CFRuntimeClass kNullClass = {.className = "CFNull"};

namespace {
constinit __CFNull theNull{{&classTable[kNullType], kConstantCount}};
}

}  // namespace cf

using standin::Gate;

const CFNullRef kCFNull = &cf::theNull;

CFTypeID CFNullGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kNullType;
}
