#include <CoreFoundation/CFNumber.h>

#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/object.h"

struct __CFBoolean : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kBooleanType;
};

namespace cf {

const CFRuntimeClass kBooleanClass = {.className = "CFBoolean"};

namespace {
constinit __CFBoolean trueObject{{&classTable[kBooleanType], kConstantCount}};
constinit __CFBoolean falseObject{{&classTable[kBooleanType], kConstantCount}};
}  // namespace

}  // namespace cf

using standin::Gate;

const CFBooleanRef kCFBooleanTrue = &cf::trueObject;
const CFBooleanRef kCFBooleanFalse = &cf::falseObject;

CFTypeID CFBooleanGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kBooleanType;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) {
  const Gate gate(__func__);
  if (gate.fails()) return false;
  return cf::checked(boolean, __func__) == &cf::trueObject;
}
