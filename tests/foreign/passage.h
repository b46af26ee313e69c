// How a call passes through the gate into another Core Foundation: libCoreFoundation.so of this folder stands
// before a library that knows nothing of the gate, under the name that programs are linked to. Its functions
// have the names of those behind them; data are taken from there at once, as nothing here defines any.
#pragma once

#include <type_traits>

#include "standin/gate/gate.h"
#include "tests/foreign/objects.h"

namespace foreign {

// The next function of that name behind this library; without one the process ends with a message.
void* findOriginal(const char* name);

// The function behind, found at the first call: the library behind may call through here while it is
// initialised, which is before this one is.
template <class Function>
class Original;
template <class Result, class... Parameters>
class Original<Result(Parameters...)> {
 public:
  typedef Result Function(Parameters...);
  Function* named(const char* name) {
    if (!function_) function_ = reinterpret_cast<Function*>(findOriginal(name));
    return function_;
  }

 private:
  Function* function_ = nullptr;
};

// A call that was made to fail answers 0, null or false.
template <class Result, class... Parameters>
Result pass(Original<Result(Parameters...)>& original, const char* name,
            std::type_identity_t<Parameters>... arguments) {
  const standin::Gate gate(name);
  if (gate.fails()) return Result();
  const auto function = original.named(name);
  const Behind behind;
  return function(arguments...);
}

// The same for a function whose result is the caller's.
template <class Result, class... Parameters>
Result create(Original<Result(Parameters...)>& original, const char* name,
              std::type_identity_t<Parameters>... arguments) {
  const standin::Gate gate(name);
  if (gate.fails()) return nullptr;
  const auto function = original.named(name);
  const Creation creation;
  const Result object = [&] {
    const Behind behind;
    return function(arguments...);
  }();
  creation.count(object);
  return object;
}

}  // namespace foreign
