#include "standin/host/interpreter/classes.h"

#include <algorithm>
#include <utility>

#include "standin/host/interpreter/values.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

HostObject& hostObject(const Value& object) {
  return *asKind<HostObject>(thingOf(object.reference()));
}

struct ProgramHandler {
  void operator()(std::vector<Value> arguments) const {
    const Value sender = Value::object(Ref::share(object));
    if (added) arguments.insert(arguments.begin(), sender);
    try {
      machine.invoke(function, added.value_or(sender), std::move(arguments));
    } catch (Thrown& thrown) {
      thrown.isFinal = true;
      thrown.stack.push_back({"an event", 0});
      machine.surroundings.endWait();
      throw;
    } catch (...) {
      machine.surroundings.endWait();
      throw;
    }
  }

  Machine& machine;
  const Function& function;
  std::optional<Value> added;
  void* object;
};

// --- The plug-in's members ---

// A mistake that only the host finds is an exception of the program.
template <class Use>
Value used(Use use) {
  try {
    Value result = use();
    passOnExceptions();
    return result;
  } catch (const CallError& error) {
    raise("RuntimeException", error.what());
  }
}

const std::string& nameOf(const Call& call) {
  return call.callable.declaration.name;
}

Value callMethod(Call& call) {
  try {
    return used([&] { return callWith(call.self, nameOf(call), call.arguments); });
  } catch (const Thrown&) {
    call.machine.raisedForArrays += call.callable.declaration.result.array;
    throw;
  }
}
Value callShared(Call& call) {
  return used([&] { return callSharedWith(call.callable.owner, nameOf(call), call.arguments); });
}
Value callGlobal(Call& call) {
  return used([&] { return callGlobalWith(nameOf(call), call.arguments); });
}
Value getConstant(Call& call) {
  return constant(call.callable.owner, nameOf(call));
}
Value getProperty(Call& call) {
  return used([&] { return get(call.self, nameOf(call)); });
}
Value setProperty(Call& call) {
  return used([&] { return set(call.self, nameOf(call), call.arguments.back()), Value(); });
}

void addMembers(ProgramClass& known, const Class& cls) {
  for (const Property& property : cls.properties) {
    if (!membersNamed(known, property.name).empty()) continue;
    // What is written to a Handle is released with the object, whatever it is: the host's own code may do
    // that.
    const bool isFixed = property.readOnly || sameName(property.name, "Handle");
    known.members.push_back({{property.name, {}, property.type},
                             property.name + " As " + describe(property.type),
                             getProperty,
                             isFixed ? nullptr : setProperty});
  }
  for (const Method& method : cls.methods)
    known.members.push_back(
        {method.declaration, method.text, callMethod, method.setter ? setProperty : nullptr});
  for (const Method& method : cls.sharedMethods)
    known.members.push_back({method.declaration, method.text, callShared, nullptr, true, false, cls.name});
  for (const Constant& each : cls.constants)
    known.members.push_back({{each.declaration.name, {}, each.declaration.type},
                             each.text,
                             getConstant,
                             nullptr,
                             true,
                             false,
                             cls.name});
  for (const Event& event : cls.events) known.events.push_back(event.declaration);
}

// --- The language's members ---

Callable callableOf(const NativeMember& row) {
  return {parseMethod(row.declaration), row.declaration, row.run, row.set, row.isShared};
}

// A function whose first parameter is called "text" is also a member of texts: Left(name, 3) and
// name.Left(3).
void addFunctions(ProgramClass& text) {
  for (const NativeMember& row : nativeFunctions()) {
    Callable callable = callableOf(row);
    std::vector<Parameter>& parameters = callable.declaration.parameters;
    if (parameters.empty() || parameters[0].name != "text") continue;
    parameters.erase(parameters.begin());
    callable.takesSelf = true;
    text.members.push_back(std::move(callable));
  }
}

void addNatives(ProgramClass& cls, std::string_view className, const Type& element) {
  for (const NativeMember& row : nativeMembers()) {
    if (!sameName(row.className, className)) continue;
    Callable& added = cls.members.emplace_back(callableOf(row));
    const auto fill = [&element](Type& type) {
      if (type.className == "Element") type = element;
    };
    fill(added.declaration.result);
    for (Parameter& parameter : added.declaration.parameters) fill(parameter.type);
  }
}

// --- Instances of the program's classes ---

// Before an instance ends: the destructors of the program's classes, the innermost class's last.
void destroy(HostObject& object) {
  const Value self = Value::object(Ref::share(object));
  for (const ProgramClass* cls = object.cls.program; cls; cls = cls->base) {
    if (cls->machine && cls->destructor) cls->machine->invokeLater(*cls->destructor, self);
  }
}

}  // namespace

ProgramClass* Classes::find(std::string_view name) {
  if (const auto found = classes_.find(lower(name)); found != classes_.end()) return found->second.get();
  const bool isArray = name.ends_with("()");
  const Type type = parseType(name);
  const Class* const cls = runtime().classes.find(name);
  ProgramClass& made = add(cls ? cls->name : std::string(name));
  addNatives(made, isArray ? "()" : name, {type.kind, type.className, false});
  if (is(TypeKind::string, type)) addFunctions(made);
  if (cls && cls->base) made.base = find(cls->base->name);
  if (cls) addMembers(made, *cls);
  if (cls || !made.members.empty() || sameName(name, "Object")) return &made;
  classes_.erase(lower(name));
  return nullptr;
}

ProgramClass& Classes::add(const std::string& name) {
  return *(classes_[lower(name)] = std::make_unique<ProgramClass>(ProgramClass{name}));
}

std::vector<std::string> Classes::names() const {
  std::vector<std::string> names = registeredClasses();
  for (const NativeMember& row : nativeMembers()) {
    const std::string name = row.className;
    if ((names.empty() || name != names.back()) && name != "()") names.push_back(name);
  }
  for (const auto& [lowerCase, cls] : classes_) {
    if (cls->text) names.push_back(cls->name);
  }
  return names;
}

std::vector<const Callable*> membersNamed(const ProgramClass& cls, std::string_view name) {
  std::vector<const Callable*> found;
  for (const ProgramClass* each = &cls; each; each = each->base) {
    for (const Callable& member : each->members) {
      if (sameName(member.declaration.name, name)) found.push_back(&member);
    }
    // A class has its own constructors, or those that it inherits.
    if (sameName(name, "Constructor") && !found.empty()) break;
  }
  return found;
}

std::deque<Callable> allFunctions() {
  std::deque<Callable> all;
  for (const Method& method : runtime().globals)
    all.push_back({method.declaration, method.text, callGlobal, nullptr, true});
  for (const NativeMember& row : nativeFunctions()) {
    all.push_back(callableOf(row));
    all.back().isShared = true;
  }
  return all;
}

Value bareInstance(const ProgramClass& cls, Machine& machine) {
  machine.requireStack();
  Value object = used([&] { return newInstance(cls.name); });
  if (!cls.text) return object;
  std::vector<Value>& fields = hostObject(object).fields;
  for (const auto& field : cls.fields) fields.push_back(firstValue(field.type));
  for (const Function* const handler : cls.handlers)
    setEventHandler(object, handler->declaration.name, handlerOf(machine, *handler, object, {}));
  Frame frame{machine, object};
  for (size_t i = 0; i < fields.size(); ++i) {
    if (cls.fields[i].first) fields[i] = cls.fields[i].first(frame);
  }
  return object;
}

void openClasses(const std::vector<ProgramClass*>& classes, Machine& machine) {
  for (ProgramClass* const each : classes) {
    auto cls = std::make_unique<Class>();
    if (each->base) {
      const Class* const base = runtime().classes.find(each->base->name);
      cls->base = base;
      cls->make = base->make;
      cls->wraps = base->wraps;
      cls->genuine = base->genuine;
      cls->dataOffset = base->dataOffset;
      cls->dataSize = base->dataSize;
      cls->constructor = base->constructor;
      cls->destructor = base->destructor;
    }
    cls->name = each->name;
    cls->program = each;
    cls->beforeEnd = destroy;
    each->machine = &machine;
    runtime().classes.add(std::move(cls));
  }
}

void closeClasses(const std::vector<ProgramClass*>& classes) {
  for (ProgramClass* const each : classes) {
    each->machine = nullptr;
    runtime().classes.retire(each->name);
  }
}

Handler handlerOf(Machine& machine, const Function& function, const Value& object,
                  std::optional<Value> added) {
  return ProgramHandler{machine, function, std::move(added), object.handle()};
}

bool isHandlerOf(const Handler& handler, const Function& function, const Value& added) {
  const auto* const own = handler.target<ProgramHandler>();
  return own && &own->function == &function && own->added && own->added->handle() == added.handle();
}

}  // namespace standin::host
