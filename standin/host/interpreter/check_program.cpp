// A program as a whole: its classes, methods and global variables are known before any statement is checked.
#include <algorithm>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/checker.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

using Role = MethodText::Role;

HostObject& instanceOf(const Call& call) {
  return *asKind<HostObject>(thingOf(call.self.reference()));
}

Value invokeMethod(Call& call) {
  return call.machine.invoke(*call.callable.function, call.self, std::move(call.arguments));
}

// The method of the object's own class, or the nearest that it inherits.
Value dispatch(Call& call) {
  for (const ProgramClass* cls = instanceOf(call).cls.program;; cls = cls->base) {
    for (const Callable& each : cls->members) {
      if (each.run == dispatch && sameSignature(each.declaration, call.callable.declaration))
        return call.machine.invoke(*each.function, call.self, std::move(call.arguments));
    }
  }
}

Value constantOf(Call& call) {
  Frame frame{call.machine, {}};
  return call.callable.constant(frame);
}

Value field(Call& call) {
  return instanceOf(call).fields[call.callable.number];
}

Value setField(Call& call) {
  std::swap(instanceOf(call).fields[call.callable.number], call.arguments.back());
  return {};
}

// Declares everything, then checks the bodies.
class ProgramChecker {
 public:
  explicit ProgramChecker(ProgramParts& parts) : parts_(parts) {}

  void check() {
    addGlobal("args", {TypeKind::string, "", true});
    declareClasses();
    declareGlobals();
    for (const MethodText& method : parts_.text.methods) declareMethod(method);
    for (ProgramClass* const cls : parts_.programClasses) declareMembers(*cls);
    for (ProgramClass* const cls : parts_.programClasses) checkInitialValues(*cls);
    for (const auto& [function, text, cls] : bodies_)
      checkBody({parts_, globals_, cls}, text->body, *function);
    checkBody({parts_, globals_, nullptr}, parts_.text.statements, parts_.main, true);
  }

 private:
  // A body that is checked when all declarations are known.
  struct Body {
    Function* function;
    const MethodText* text;
    const ProgramClass* cls;
  };

  // --- Outside of classes ---

  void addGlobal(const std::string& name, const Type& type) {
    globals_.push_back({name, type, {parts_.globals.size(), true}});
    parts_.globals.push_back(type);
  }

  Checked constantIn(const ProgramClass* cls, const Statement& declared) {
    Scope scope{parts_, globals_, cls};
    return checkConstant(scope, declared);
  }

  void declareGlobals() {
    for (const Statement& each : parts_.text.statements) {
      const bool isConstant = each.kind == Statement::Kind::constant;
      if (!isConstant && each.kind != Statement::Kind::dim) continue;
      if (findName(globals_, each.name)) fail(each.place, each.name + " is declared already");
      if (isConstant) {
        Checked value = constantIn(nullptr, each);
        globals_.push_back({each.name, value.type, {}, std::move(value.code)});
      } else {
        addGlobal(each.name, resolved(parts_, each.type));
      }
    }
  }

  Declaration declarationOf(const MethodText& method) {
    Declaration declaration{method.name, {}, {}};
    bool preset = false;
    Scope outside{parts_, globals_, nullptr};
    for (const Statement& each : method.parameters) {
      Parameter parameter{each.name, resolved(parts_, each.type), false, {}};
      if (!each.expressions.empty()) {
        checkedAs(outside, each.expressions[0], parameter.type);
        parameter.preset = each.expressions[0].literal;
      } else if (preset) {
        fail(each.place, each.name + " lacks a default value, but one before it has one");
      }
      preset = parameter.preset.has_value();
      for (const Parameter& other : declaration.parameters) {
        if (sameName(other.name, each.name)) fail(each.place, each.name + " is declared already");
      }
      declaration.parameters.push_back(std::move(parameter));
    }
    if (method.result.type.kind != TypeKind::none) declaration.result = resolved(parts_, method.result);
    return declaration;
  }

  Function& newFunction(const MethodText& text, const ProgramClass* cls) {
    const std::string name = cls ? cls->name + "." + text.name : text.name;
    Function& function = parts_.bodies.emplace_back(Function{name, declarationOf(text)});
    bodies_.push_back({&function, &text, text.isShared ? nullptr : cls});
    return function;
  }

  void declareMethod(const MethodText& text) {
    const Function& function = newFunction(text, nullptr);
    add(parts_.methods, {function.declaration, shown(function.declaration), invokeMethod}, text.place);
    parts_.methods.back().isShared = true;
    parts_.methods.back().function = &function;
  }

  static Callable& add(std::deque<Callable>& all, Callable callable, Place place) {
    for (const Callable& other : all) {
      const bool isSame =
          sameSignature(other.declaration, callable.declaration) && !other.run == !callable.run;
      if (isSame) fail(place, callable.declaration.name + " is declared already, with these parameters");
    }
    return all.emplace_back(std::move(callable));
  }

  // --- Classes ---

  void declareClasses() {
    std::vector<const ClassText*> waiting;
    for (const ClassText& text : parts_.text.classes) {
      if (parts_.classes.find(text.name) || parseType(text.name).kind != TypeKind::object)
        fail(text.place, "there is a class or type " + text.name + " already");
      parts_.classes.add(text.name);
      waiting.push_back(&text);
    }
    // Each after the one that it inherits.
    while (!waiting.empty()) {
      const auto ready = std::find_if(waiting.begin(), waiting.end(), [&](const ClassText* text) {
        return std::none_of(waiting.begin(), waiting.end(), [&](const ClassText* other) {
          return sameName(other->name, text->base.type.className);
        });
      });
      if (ready == waiting.end()) fail(waiting.front()->place, waiting.front()->name + " inherits itself");
      declareClass(**ready);
      waiting.erase(ready);
    }
  }

  void declareClass(const ClassText& text) {
    ProgramClass& cls = *parts_.classes.find(text.name);
    cls.text = &text;
    parts_.programClasses.push_back(&cls);
    if (text.base.type.kind == TypeKind::none) return;
    const Type base = resolved(parts_, text.base);
    if (!is(TypeKind::object, base) || sameName(base.className, "Object"))
      fail(text.base.place, shown(base) + " is no class that can be inherited");
    cls.base = parts_.classes.find(base.className);
  }

  void declareMembers(ProgramClass& cls) {
    if (cls.base) {
      cls.fields = cls.base->fields;
      cls.handlers = cls.base->handlers;
    }
    for (const Statement& each : cls.text->constants) {
      Checked value = constantIn(&cls, each);
      Callable& added = addMember(cls, {each.name, {}, value.type}, constantOf, each.place);
      added.isShared = true;
      added.constant = std::move(value.code);
    }
    for (const Statement& each : cls.text->properties) {
      const Type type = resolved(parts_, each.type);
      Callable& added = addMember(cls, {each.name, {}, type}, field, each.place);
      added.set = setField;
      added.number = cls.fields.size();
      cls.fields.push_back({type, {}});
    }
    for (const MethodText& each : cls.text->methods) addMethod(cls, each);
  }

  static bool hasEvent(const ProgramClass& cls, const std::string& name) {
    for (const ProgramClass* each = &cls; each; each = each->base) {
      for (const Declaration& event : each->events) {
        if (sameName(event.name, name)) return true;
      }
    }
    return false;
  }

  Callable& addMember(ProgramClass& cls, Declaration declaration, Native run, Place place) {
    std::string text = shown(declaration);
    return add(cls.members, {std::move(declaration), std::move(text), run}, place);
  }

  void addMethod(ProgramClass& cls, const MethodText& text) {
    const Function& function = newFunction(text, &cls);
    const Declaration& declared = function.declaration;
    if (text.role == Role::event) {
      const Declaration& event = eventNamed(cls, text.name, text.place);
      if (!sameSignature(declared, event)) fail(text.place, "expected Event " + shown(event));
      cls.handlers.push_back(&function);
    } else if (sameName(text.name, "Destructor")) {
      if (!declared.parameters.empty() || declared.result.kind != TypeKind::none)
        fail(text.place, "a Destructor is a Sub without parameters");
      cls.destructor = &function;
    } else if (text.role == Role::method && hasEvent(cls, text.name)) {
      fail(text.place, text.name + " is an event: write Event " + text.name);
    } else if (text.role == Role::setter) {
      Callable& added = addMember(cls, {text.name, {}, declared.parameters[0].type}, nullptr, text.place);
      added.set = invokeMethod;
      added.function = &function;
    } else {
      const bool isReplaceable =
          text.role == Role::method && !text.isShared && !sameName(text.name, "Constructor");
      Callable& added = addMember(cls, declared, isReplaceable ? dispatch : invokeMethod, text.place);
      added.isShared = text.isShared;
      added.function = &function;
    }
  }

  // What is inherited has been checked before.
  void checkInitialValues(ProgramClass& cls) {
    if (cls.base) std::copy(cls.base->fields.begin(), cls.base->fields.end(), cls.fields.begin());
    Scope scope{parts_, globals_, &cls};
    size_t number = cls.fields.size() - cls.text->properties.size();
    for (const Statement& each : cls.text->properties) {
      auto& [type, first] = cls.fields[number++];
      if (!each.expressions.empty()) first = checkedAs(scope, each.expressions[0], type);
    }
  }

  ProgramParts& parts_;
  Names globals_;
  std::vector<Body> bodies_;
};

}  // namespace

std::string shown(const Declaration& declaration) {
  std::string text;
  for (const Parameter& each : declaration.parameters)
    text += (text.empty() ? "" : ", ") + each.name + " As " + shown(each.type);
  text = declaration.name + "(" + text + ")";
  return declaration.result.kind == TypeKind::none ? text : text + " As " + shown(declaration.result);
}

void check(ProgramParts& parts) {
  ProgramChecker(parts).check();
}

}  // namespace standin::host
