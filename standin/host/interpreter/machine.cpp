#include "standin/host/interpreter/machine.h"

#include <sys/resource.h>

#include <algorithm>

#include "standin/host/host.h"
#include "standin/host/things/plain_values.h"

namespace standin::host {
namespace {

// Half of the stack, and 4 MB at the most, is the program's; the rest is for what it calls last.
const char* lowestFrame() {
  constexpr rlim_t kMost = 4 << 20;
  rlimit stack{};
  const bool known = getrlimit(RLIMIT_STACK, &stack) == 0 && stack.rlim_cur != RLIM_INFINITY;
  const rlim_t usable = known ? std::min(stack.rlim_cur / 2, kMost) : kMost;
  return static_cast<const char*>(__builtin_frame_address(0)) - usable;
}

}  // namespace

void raise(const char* className, const std::string& message, int errorNumber) {
  const Value exception = newInstance(className);
  set(exception, "Message", message);
  set(exception, "ErrorNumber", errorNumber);
  throw Thrown{exception};
}

void passOnExceptions() {
  const std::vector<Exception> raised = takeExceptions();
  if (raised.empty()) return;
  const Exception& first = raised.front();
  raise(first.className.c_str(), first.message, first.errorNumber);
}

Machine::Machine(const Surroundings& around) : surroundings(around), stackLimit_(lowestFrame()) {}

void Machine::askWhetherToGoOn() {
  if (!surroundings.mayGoOn()) throw Interruption{};
}

void Machine::requireStack() const {
  if (static_cast<const char*>(__builtin_frame_address(0)) < stackLimit_)
    raise("StackOverflowException", "methods call each other too deep");
}

Value Machine::invoke(const Function& function, const Value& self, std::vector<Value> arguments) {
  requireStack();
  Frame frame{*this, self, std::move(arguments)};
  frame.slots.resize(function.slots);
  frame.result = emptyValue(function.declaration.result);
  try {
    function.body(frame);
  } catch (Thrown& thrown) {
    thrown.stack.push_back({function.name, frame.line});
    throw;
  }
  return frame.result;
}

void Machine::invokeLater(const Function& function, const Value& self) noexcept {
  if (closed_) return;
  const std::exception_ptr before = std::exchange(pending_, nullptr);
  try {
    invoke(function, self, {});
    throwPending();
  } catch (...) {
    pending_ = std::current_exception();
  }
  if (before) pending_ = before;
}

}  // namespace standin::host
