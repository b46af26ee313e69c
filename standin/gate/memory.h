// Memory that isn't taken by operator new, and is as scarce.
#pragma once

#include <new>

namespace standin {

// What `take` answers, which is a block of memory of the C library's, or null. As with operator new, the
// program's new-handler is called for null, and if that comes back `take` is called again; null without a
// handler.
template <class Take>
auto takeMemory(const Take& take) {
  for (;;) {
    if (auto* const block = take()) return block;
    const std::new_handler handler = std::get_new_handler();
    if (!handler) return decltype(take())(nullptr);
    handler();
  }
}

}  // namespace standin
