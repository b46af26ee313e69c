// Methods found by name and arguments, and called.
#include <climits>
#include <span>
#include <vector>

#include "standin/host/host.h"
#include "standin/host/program/conversions.h"
#include "standin/host/program/fit.h"
#include "standin/host/program/plugin_calls.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/plain_values.h"

namespace standin::host {
namespace {

using Arguments = std::span<const Value>;

std::string describeArguments(Arguments arguments) {
  std::string text;
  for (const Value& argument : arguments) {
    text += (text.empty() ? "" : ", ") + argument.describe();
    if (!argument.isNil() && !argument.isReference()) text += std::string(" as ") + name(argument.kind());
  }
  return "(" + text + ")";
}

// Nothing when the arguments do not fit.
std::optional<int> distanceOf(const Declaration& declaration, Arguments arguments) {
  if (arguments.size() > declaration.parameters.size()) return {};
  int sum = 0;
  for (size_t i = 0; i < declaration.parameters.size(); ++i) {
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
                     Arguments arguments) {
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
                            std::string_view name, Arguments arguments) {
  if (const Method* const method = choose(methods, where, name, arguments)) return *method;
  const std::string known = candidates(methods, name);
  if (known.empty()) throw CallError(where + " has no method " + std::string(name));
  throw CallError(where + "." + std::string(name) + describeArguments(arguments) + " fits none of:" + known);
}

Value callMethod(const Method& method, Words words, Arguments arguments) {
  const std::vector<Parameter>& parameters = method.declaration.parameters;
  std::vector<Value> presets;
  for (size_t i = arguments.size(); i < parameters.size(); ++i)
    presets.push_back(valueOf(*parameters[i].preset, parameters[i].type));
  std::vector<Ref> variants;
  for (size_t i = 0; i < parameters.size(); ++i) {
    const Value& value = i < arguments.size() ? arguments[i] : presets[i - arguments.size()];
    appendWords(words, parameters[i].type, value, variants);
  }
  return callPlugin(method.function, words, method.declaration.result, method.declaration.name.c_str());
}

}  // namespace

Value constructWith(std::string_view className, std::span<const Value> arguments) {
  const Class& cls = knownClass(className);
  const Method* const constructor = choose(cls.methods, cls.name, "Constructor", arguments);
  if (!constructor && !arguments.empty()) chooseOrThrow(cls.methods, cls.name, "Constructor", arguments);
  Value object = newInstance(className);
  if (constructor) callMethod(*constructor, {wordOf(object.handle())}, arguments);
  return object;
}

Value callWith(const Value& object, std::string_view name, std::span<const Value> arguments) {
  const Class& cls = instanceIn(object, name, "called on").cls.withMembers();
  const Method& method = chooseOrThrow(cls.methods, cls.name, name, arguments);
  // Held for the call, whatever the method does to the variable that host code has the object in.
  const Ref held = object.reference();
  return callMethod(method, {wordOf(held.get())}, arguments);
}

Value callSharedWith(std::string_view className, std::string_view name, std::span<const Value> arguments) {
  const Class& cls = knownClass(className);
  return callMethod(chooseOrThrow(cls.sharedMethods, cls.name, name, arguments), {}, arguments);
}

Value callGlobalWith(std::string_view name, std::span<const Value> arguments) {
  return callMethod(chooseOrThrow(runtime().globals, "the host", name, arguments), {}, arguments);
}

Value constant(std::string_view className, std::string_view name) {
  const Class& cls = knownClass(className);
  for (const Constant& constant : cls.constants) {
    if (!sameName(constant.declaration.name, name)) continue;
    return valueOf(constant.declaration.value, constant.declaration.type);
  }
  throw CallError(cls.name + " has no constant " + std::string(name));
}

}  // namespace standin::host
