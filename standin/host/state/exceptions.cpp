#include "standin/host/state/exceptions.h"

#include <utility>

#include "standin/host/state/runtime.h"

namespace standin::host {

void raise(Exception exception) {
  runtime().exceptions.push_back(std::move(exception));
}

bool requireIndex(int64_t index, int64_t end) {
  if (index >= 0 && index < end) return true;
  raise({"OutOfBoundsException", "", 0});
  return false;
}

std::vector<Exception> takeExceptions() {
  return std::exchange(runtime().exceptions, {});
}

}  // namespace standin::host
