#include "standin/host/program/plugin_calls.h"

#include <cstring>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/host.h"
#include "standin/host/program/conversions.h"
#include "standin/host/program/fit.h"
#include "standin/host/state/exceptions.h"
#include "standin/host/things/handles.h"
#include "standin/host/things/plain_values.h"

namespace standin::host {
namespace {

int callDepth = 0;

struct CallUnderway {
  CallUnderway() { ++callDepth; }
  ~CallUnderway() { --callDepth; }
};

// The function's result in as many bytes as it has, or zeros when an exception was thrown through it.
uint64_t rawResult(void* function, const Words& words, const Type& result) {
  const Callout callout;
  const CallUnderway underway;
  uint64_t raw = 0;
  try {
    if (result.isHandle()) return callMachine<uint32_t>(function, words);
    switch (result.kind) {
      case TypeKind::none:
        callMachine<void>(function, words);
        return 0;
      case TypeKind::single: {
        const auto single = callMachine<float>(function, words);
        std::memcpy(&raw, &single, sizeof single);
        return raw;
      }
      case TypeKind::number: {
        const auto number = callMachine<double>(function, words);
        std::memcpy(&raw, &number, sizeof number);
        return raw;
      }
      case TypeKind::int64:
      case TypeKind::uint64:
        return callMachine<uint64_t>(function, words);
      default:
        return callMachine<uint32_t>(function, words);
    }
  } catch (const Raised&) {
    return 0;  // the exception is on record
  }
}

Value takenResult(uint32_t word, const Type& type, const char* method) {
  void* const handle = addressIn(word);
  if (!handle) return emptyValue(type);
  Counted* const thing = findThing(handle);
  if (!thing) die(method, "the plug-in returned an address that is no living handle of this host");
  requireType(*thing, type, method);
  takeFromPlugin(*thing, method);
  return handleValue(type, Ref::adopt(*thing));
}

}  // namespace

Value callPlugin(void* function, const Words& words, const Type& result, const char* method) {
  uint64_t raw = rawResult(function, words, result);
  if (result.kind == TypeKind::boolean && settings().wholeBooleans && raw > 1)
    throw CallError(method + std::string(" gave a boolean that is neither 0 nor 1: ") + std::to_string(raw));
  Value value = result.isHandle() ? takenResult(static_cast<uint32_t>(raw), result, method)
                                  : plainValue(result.kind, &raw);
  rethrowHandlerError();
  return value;
}

void callSetter(void* function, Words words, const Type& type, const Value& value, const char* name) {
  std::vector<Ref> variants;
  appendWords(words, type, value, variants);
  callPlugin(function, words, {}, name);
}

bool pluginCallUnderway() {
  return callDepth > 0;
}

}  // namespace standin::host
