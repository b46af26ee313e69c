#include "shotlight/memory.h"

#include <unistd.h>

#include <new>

#include "shotlight/commands.h"

namespace shotlight {
namespace {

void setNewHandler() {
  std::set_new_handler(endWithoutMemory);
}

// The libraries take memory as soon as they are loaded, long before main: only what stands in this section
// comes before them.
[[gnu::used, gnu::section(".preinit_array")]] void (*const kFirstOfAll)() = setNewHandler;

}  // namespace

void endWithoutMemory() {
  constexpr char kMessage[] =
      "shotlight: there is not enough memory for this; search fewer folders, show fewer attributes, or close "
      "other programs\n";
  const ssize_t written = ::write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
  static_cast<void>(written);  // nobody else can be told
  ::_exit(kError);
}

}  // namespace shotlight
