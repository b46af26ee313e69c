#include "standin/corefoundation/classes.h"
#include "standin/corefoundation/object.h"

struct __CFNull : cf::Header {};

namespace cf {

const CFRuntimeClass nullClass = classRecord("CFNull", nullptr, nullptr, nullptr);

namespace {
constinit __CFNull theNull{{&classTable[kNullType], kConstantCount}};
}

}  // namespace cf

const CFNullRef kCFNull = &cf::theNull;

CFTypeID CFNullGetTypeID() {
  const standin::Gate gate{__func__};
  return gate.fails() ? 0 : cf::kNullType;
}
