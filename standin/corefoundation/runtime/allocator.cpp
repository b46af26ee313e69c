// Allocators. All memory comes from the C library, so an allocator is a name: the system's, and the one that
// has no memory to give.
#include "standin/corefoundation/runtime/allocator.h"

#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/runtime/misuse.h"
#include "standin/gate/gate.h"

struct __CFAllocator : cf::Header {
  static constexpr CFTypeID kTypeId = cf::kAllocatorType;
};

namespace cf {

const CFRuntimeClass kAllocatorClass = {.className = "CFAllocator"};

namespace {
constinit __CFAllocator systemDefault{{&classTable[kAllocatorType], kConstantCount}};
constinit __CFAllocator withoutMemory{{&classTable[kAllocatorType], kConstantCount}};
}  // namespace

bool canAllocate(CFAllocatorRef allocator, const char* call) {
  return allocator == nullptr || checked(allocator, call) != &withoutMemory;
}

}  // namespace cf

using standin::Gate;

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorSystemDefault = &cf::systemDefault;
const CFAllocatorRef kCFAllocatorNull = &cf::withoutMemory;

double kCFCoreFoundationVersionNumber = 855.17;  // macOS 10.9

CFTypeID CFAllocatorGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kAllocatorType;
}
