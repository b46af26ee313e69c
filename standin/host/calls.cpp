// Methods found by name and arguments, and called.
#include <algorithm>
#include <climits>

#include "standin/host/conversions.h"
#include "standin/host/objects.h"
#include "standin/host/runtime.h"

namespace standin::host {
namespace {

using Arguments = std::vector<Value>;

std::string describeArguments(const Arguments& arguments) {
  std::string text;
  for (const Value& argument : arguments) {
    text += (text.empty() ? "" : ", ") + argument.describe();
    if (!argument.isNil() && !argument.isReference()) text += std::string(" as ") + name(argument.kind());
  }
  return "(" + text + ")";
}

// Nothing when the arguments do not fit.
std::optional<int> distanceOf(const Declaration& declaration, const Arguments& arguments) {
  if (arguments.size() > declaration.parameters.size()) return {};
  int sum = 0;
  for (std::size_t i = 0; i < declaration.parameters.size(); ++i) {
    const Parameter& parameter = declaration.parameters[i];
    if (i >= arguments.size()) {
      if (!parameter.preset) return {};
      continue;
    }
    const auto one = distance(arguments[i], parameter.type);
    if (!one) return {};
    sum += *one;
  }
  return sum;
}

std::string candidates(const std::vector<Method>& methods, std::string_view name) {
  std::string text;
  for (const Method& method : methods) {
    if (sameName(method.declaration.name, name)) text += "\n  " + method.text;
  }
  return text;
}

// The nearest overload; null when none fits.
const Method* choose(const std::vector<Method>& methods, const std::string& where, std::string_view name,
                     const Arguments& arguments) {
  const Method* best = nullptr;
  int least = INT_MAX;
  bool tie = false;
  for (const Method& method : methods) {
    if (!sameName(method.declaration.name, name)) continue;
    const auto distance = distanceOf(method.declaration, arguments);
    if (!distance || *distance > least) continue;
    tie = *distance == least;
    least = *distance;
    best = &method;
  }
  if (tie) {
    throw CallError(where + "." + std::string(name) + describeArguments(arguments) +
                    " could be any of:" + candidates(methods, name));
  }
  return best;
}

const Method& chooseOrThrow(const std::vector<Method>& methods, const std::string& where,
                            std::string_view name, const Arguments& arguments) {
  if (const Method* const method = choose(methods, where, name, arguments)) return *method;
  const std::string known = candidates(methods, name);
  if (known.empty()) throw CallError(where + " has no method " + std::string(name));
  throw CallError(where + "." + std::string(name) + describeArguments(arguments) + " fits none of:" + known);
}

Value callMethod(const Method& method, Words words, const Arguments& arguments) {
  std::vector<Ref> kept;
  for (std::size_t i = 0; i < method.declaration.parameters.size(); ++i) {
    const Parameter& parameter = method.declaration.parameters[i];
    const Value value = i < arguments.size() ? arguments[i] : valueOf(*parameter.preset, parameter.type);
    appendWords(words, parameter.type, value, kept);
  }
  return callPlugin(method.function, words, method.declaration.result, method.declaration.name.c_str());
}

const Class& classOrThrow(std::string_view name) {
  const Class* const cls = runtime().classes.find(name);
  if (!cls) throw CallError("no class " + std::string(name));
  return *cls;
}

}  // namespace

Value newInstance(std::string_view className) {
  const Class* const cls = availableClass(className);
  if (!cls) throw CallError("no class " + std::string(className));
  return Value::object(Ref::adopt(newObject(*cls, Side::host)));
}

Value constructWith(std::string_view className, const std::vector<Value>& arguments) {
  const Class& cls = classOrThrow(className);
  const Method* const constructor = choose(cls.methods, cls.name, "Constructor", arguments);
  if (!constructor && !arguments.empty()) chooseOrThrow(cls.methods, cls.name, "Constructor", arguments);
  Value object = newInstance(className);
  if (constructor) callMethod(*constructor, {wordOf(object.handle())}, arguments);
  return object;
}

Value callWith(const Value& object, std::string_view name, const std::vector<Value>& arguments) {
  const HostObject& instance = instanceIn(object, std::string(name) + " called on");
  const Method& method = chooseOrThrow(instance.cls.methods, instance.cls.name, name, arguments);
  // Held for the call, whatever the method does to the variable that host code has the object in.
  const Ref held = object.reference();
  return callMethod(method, {wordOf(held.get())}, arguments);
}

Value callSharedWith(std::string_view className, std::string_view name, const std::vector<Value>& arguments) {
  const Class& cls = classOrThrow(className);
  return callMethod(chooseOrThrow(cls.sharedMethods, cls.name, name, arguments), {}, arguments);
}

Value callGlobalWith(std::string_view name, const std::vector<Value>& arguments) {
  return callMethod(chooseOrThrow(runtime().globals, "the host", name, arguments), {}, arguments);
}

Value constant(std::string_view className, std::string_view name) {
  const Class& cls = classOrThrow(className);
  for (const Constant& constant : cls.constants) {
    if (!sameName(constant.declaration.name, name)) continue;
    return valueOf(constant.declaration.value, constant.declaration.type);
  }
  throw CallError(cls.name + " has no constant " + std::string(name));
}

bool isA(const Value& object, std::string_view className) {
  const auto* const instance =
      object.kind() == Kind::object ? dynamic_cast<const HostObject*>(&thingAt(object.handle())) : nullptr;
  const Class* const cls = runtime().classes.find(className);
  return instance && cls && instance->cls.isOrDerivesFrom(*cls);
}

void* instanceData(const Value& object) {
  return instanceIn(object, "instance data asked of").data();
}

}  // namespace standin::host
