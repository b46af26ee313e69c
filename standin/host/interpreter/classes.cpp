#include "standin/host/interpreter/classes.h"

#include <algorithm>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/types.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/plain_values.h"

namespace standin::host {
namespace {

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

Callable ofMethod(const Method& method) {
  const std::string name = method.declaration.name;
  Callable callable{method.declaration, method.text, [name](Call& call) {
                      return used([&] { return callWith(call.self, name, call.arguments); });
                    }};
  return callable;
}

void makeAssignable(Callable& callable) {
  callable.assigned = callable.declaration.result;
  callable.set = [name = callable.declaration.name](Call& call) {
    used([&] { return set(call.self, name, call.arguments.back()), Value(); });
  };
}

Callable ofProperty(const Property& property) {
  Callable callable{
      {property.name, {}, property.type},
      property.name + " As " + describe(property.type),
      [name = property.name](Call& call) { return used([&] { return get(call.self, name); }); }};
  // What is written there is released with the object, whatever it is: the host's own code may do that.
  const bool isReference = sameName(property.name, "Handle");
  if (!property.readOnly && !isReference) makeAssignable(callable);
  return callable;
}

void addMembers(ClassInfo& info, const Class& cls) {
  for (const Property& property : cls.properties) {
    if (membersNamed(info, property.name).empty()) info.members.push_back(ofProperty(property));
  }
  for (const Method& method : cls.methods) {
    info.members.push_back(ofMethod(method));
    if (method.setter) makeAssignable(info.members.back());
  }
  const auto addShared = [&info](const Declaration& declaration, const std::string& text, auto run) {
    info.members.push_back({declaration, text, run});
    info.members.back().isShared = true;
  };
  for (const Method& method : cls.sharedMethods) {
    addShared(method.declaration, method.text,
              [owner = cls.name, name = method.declaration.name](Call& call) {
                return used([&] { return callSharedWith(owner, name, call.arguments); });
              });
  }
  for (const Constant& each : cls.constants) {
    const ConstantDeclaration& declared = each.declaration;
    addShared({declared.name, {}, declared.type}, each.text,
              [owner = cls.name, name = declared.name](Call&) { return constant(owner, name); });
  }
  for (const Event& event : cls.events) info.events.push_back(event.declaration);
}

Value run(Machine& machine, const Function& function, const Value& self, std::vector<Value> arguments) {
  try {
    return machine.invoke(function, self, std::move(arguments));
  } catch (Thrown& thrown) {
    thrown.stack.push_back({"an event", 0});
    throw Uncaught{std::move(thrown)};
  }
}

HostObject& hostObject(const Value& object) {
  return *asKind<HostObject>(thingOf(object.reference()));
}

// Before an instance ends: the destructors of the program's classes, the innermost class's last.
void destroy(HostObject& object) {
  const Value self = Value::object(Ref::share(object));
  for (const ProgramClass* cls = object.cls.program; cls; cls = cls->base) {
    if (cls->machine && cls->destructor) cls->machine->invokeLater(*cls->destructor, self);
  }
}

}  // namespace

bool ClassInfo::isOrDerivesFrom(const ClassInfo& other) const {
  for (const ClassInfo* each = this; each; each = each->base) {
    if (each == &other) return true;
  }
  return false;
}

ClassInfo* Classes::find(std::string_view name) {
  if (const auto found = classes_.find(lower(name)); found != classes_.end()) return found->second.get();
  const Class* const cls = runtime().classes.find(name);
  std::vector<Callable> natives = nativeMembersOf(name);
  if (!cls && natives.empty() && !sameName(name, "Object")) return nullptr;
  ClassInfo& info = add(cls ? cls->name : std::string(name));
  info.members.assign(std::make_move_iterator(natives.begin()), std::make_move_iterator(natives.end()));
  if (!cls) return &info;
  if (cls->base) info.base = find(cls->base->name);
  addMembers(info, *cls);
  return &info;
}

ClassInfo& Classes::add(const std::string& name) {
  auto& place = classes_[lower(name)];
  place = std::make_unique<ClassInfo>();
  place->name = name;
  return *place;
}

const std::vector<Callable>& Classes::arrayMembersOf(const Type& element) {
  auto& members = arrayMembers_[lower(describe(element))];
  if (members.empty()) members = arrayMembers(element);
  return members;
}

std::vector<const Callable*> membersNamed(const ClassInfo& cls, std::string_view name) {
  std::vector<const Callable*> found;
  for (const ClassInfo* each = &cls; each; each = each->base) {
    for (const Callable& member : each->members) {
      if (sameName(member.declaration.name, name)) found.push_back(&member);
    }
    // A class has its own constructors, or those that it inherits.
    if (sameName(name, "Constructor") && !found.empty()) break;
  }
  return found;
}

std::vector<Callable> pluginFunctions() {
  std::vector<Callable> all;
  for (const Method& method : runtime().globals) {
    all.push_back({method.declaration, method.text, [name = method.declaration.name](Call& call) {
                     return used([&] { return callGlobalWith(name, call.arguments); });
                   }});
    all.back().isMember = false;
  }
  return all;
}

Value bareInstance(const std::string& name, const ProgramClass* program) {
  Value object = used([&] { return newInstance(name); });
  if (!program) return object;
  std::vector<Value>& fields = hostObject(object).fields;
  for (const Type& type : program->fields) fields.push_back(firstValue(type));
  std::vector<const ProgramClass*> classes;
  for (const ProgramClass* each = program; each; each = each->base) classes.insert(classes.begin(), each);
  for (const ProgramClass* const each : classes) {
    for (const Function* const event : each->events)
      setEventHandler(object, event->declaration.name, handlerOf(*each->machine, *event, object));
    if (each->initial) each->machine->invoke(*each->initial, object, {});
  }
  return object;
}

const ProgramClass* programClassOf(const Value& object) {
  return hostObject(object).cls.program;
}

void openClasses(const std::vector<ProgramClass*>& classes, Machine& machine) {
  for (ProgramClass* const each : classes) {
    auto cls = std::make_unique<Class>();
    if (each->info->base) {
      const Class* const base = runtime().classes.find(each->info->base->name);
      cls->base = base;
      cls->make = base->make;
      cls->wraps = base->wraps;
      cls->genuine = base->genuine;
      cls->dataOffset = base->dataOffset;
      cls->dataSize = base->dataSize;
      cls->constructor = base->constructor;
      cls->destructor = base->destructor;
    }
    cls->name = each->info->name;
    cls->program = each;
    cls->beforeEnd = destroy;
    each->machine = &machine;
    runtime().classes.add(std::move(cls));
  }
}

void closeClasses(const std::vector<ProgramClass*>& classes) {
  for (ProgramClass* const each : classes) {
    each->machine = nullptr;
    runtime().classes.retire(each->info->name);
  }
}

// The object is not held, or it would never end.
Handler handlerOf(Machine& machine, const Function& function, const Value& object) {
  return [&machine, &function, handle = object.handle()](const std::vector<Value>& arguments) {
    run(machine, function, Value::object(Ref::share(handle)), arguments);
  };
}

Handler handlerOf(Machine& machine, const Function& function, const Value& self, const Value& object) {
  return [&machine, &function, self, handle = object.handle()](const std::vector<Value>& given) {
    std::vector<Value> arguments = {Value::object(Ref::share(handle))};
    arguments.insert(arguments.end(), given.begin(), given.end());
    run(machine, function, self, std::move(arguments));
  };
}

}  // namespace standin::host
