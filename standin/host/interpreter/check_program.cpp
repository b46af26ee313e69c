// A program as a whole: its classes, methods and global variables are known before any statement is checked.
#include <algorithm>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/checker.h"
#include "standin/host/source/parser.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

// Declares everything, then checks the bodies.
class ProgramChecker {
 public:
  explicit ProgramChecker(ProgramParts& parts) : parts_(parts) {}

  void check() {
    for (const Callable& each : pluginFunctions()) parts_.methods.push_back(each);
    globals_.push_back(global("args", {TypeKind::string, "", true}));
    declareClasses();
    declareGlobals();
    for (const MethodText& method : parts_.text.methods) declareMethod(method);
    for (ProgramClass& cls : parts_.programClasses) declareMembers(cls);
    for (const Later& each : bodies_) checkBody(each);
    Checker(parts_, globals_, nullptr, false).checkBody(parts_.text.statements, parts_.main, &globals_);
  }

 private:
  // A body that is checked when all declarations are known.
  struct Later {
    Function* function;
    const Block* statements;
    const ProgramClass* cls;
    bool hasObject;
  };

  Named global(const std::string& name, const Type& type) {
    parts_.globals.push_back(type);
    return {name, type, parts_.globals.size() - 1, true};
  }

  void checkBody(const Later& later) {
    Checker checker(parts_, globals_, later.cls, later.hasObject);
    checker.declareParameters(later.function->declaration);
    checker.checkBody(*later.statements, *later.function);
  }

  // --- Outside of classes ---

  void requireNew(const std::string& name, Place place) const {
    if (findName(globals_, name)) fail(place, name + " is declared already");
  }

  void declareGlobals() {
    for (const Statement& each : parts_.text.statements) {
      if (each.kind == Statement::Kind::dim) {
        requireNew(each.name, each.place);
        if (each.type.name.empty()) fail(each.place, "expected As and the type of " + each.name);
        globals_.push_back(global(each.name, resolveType(parts_, each.type)));
      } else if (each.kind == Statement::Kind::constant) {
        requireNew(each.name, each.place);
        Type type = {};
        Code code = Checker(parts_, globals_, nullptr, false).checkConstant(*each.expressions[0], type);
        globals_.push_back({each.name, type, 0, false, std::move(code)});
      }
    }
  }

  Declaration declarationOf(const MethodText& method, const ProgramClass* cls) const {
    Declaration declaration{method.name, {}, {}};
    bool preset = false;
    for (const MethodText::Parameter& each : method.parameters) {
      Parameter parameter{each.name, resolveType(parts_, each.type), each.assigns, {}};
      if (each.preset) {
        Type type = {};
        if (each.preset->kind != Expression::Kind::literal)
          fail(each.preset->place, "expected a literal as the default value");
        parameter.preset = each.preset->literal;
        Checker(parts_, globals_, cls, false).checkedAs(*each.preset, parameter.type);
      } else if (preset && !each.assigns) {
        fail(each.place, each.name + " lacks a default value, but one before it has one");
      }
      preset = preset || parameter.preset;
      for (const Parameter& other : declaration.parameters) {
        if (sameName(other.name, each.name)) fail(each.place, each.name + " is declared already");
      }
      declaration.parameters.push_back(std::move(parameter));
    }
    if (!method.result.name.empty()) declaration.result = resolveType(parts_, method.result);
    return declaration;
  }

  static std::string textOf(const Declaration& declaration) {
    std::string text;
    for (const Parameter& each : declaration.parameters) {
      text += (text.empty() ? "" : ", ") + std::string(each.assigns ? "Assigns " : "") + each.name + " As " +
              shown(each.type);
    }
    text = declaration.name + "(" + text + ")";
    return isNone(declaration.result) ? text : text + " As " + shown(declaration.result);
  }

  Function& newFunction(const std::string& name, Declaration declaration, const Block* body,
                        const ProgramClass* cls, bool hasObject) {
    Function& function = parts_.functions.emplace_back(Function{name, std::move(declaration)});
    if (body) bodies_.push_back({&function, body, cls, hasObject});
    return function;
  }

  void declareMethod(const MethodText& text) {
    Declaration declaration = declarationOf(text, nullptr);
    for (const Callable& other : parts_.methods) {
      if (sameSignature(other.declaration, declaration))
        fail(text.place, text.name + " is declared already, with these parameters");
    }
    parts_.methods.push_back(
        callableOf(newFunction(text.name, std::move(declaration), &text.body, nullptr, false)));
    parts_.methods.back().isMember = false;
  }

  // With Assigns at its last parameter a method is what `NAME(...) = value` calls.
  static Callable callableOf(const Function& function) {
    Callable callable{function.declaration, textOf(function.declaration), {}};
    callable.function = &function;
    const auto run = [&function](Call& call) {
      return call.machine.invoke(function, call.self, std::move(call.arguments));
    };
    std::vector<Parameter>& parameters = callable.declaration.parameters;
    if (parameters.empty() || !parameters.back().assigns) {
      callable.run = run;
    } else {
      callable.assigned = parameters.back().type;
      parameters.pop_back();
      callable.set = run;
    }
    return callable;
  }

  // --- Classes ---

  void declareClasses() {
    std::vector<ClassText*> waiting;
    for (ClassText& text : parts_.text.classes) {
      if (parts_.classes.find(text.name) || parseType(text.name).kind != TypeKind::object)
        fail(text.place, "there is a class or type " + text.name + " already");
      parts_.classes.add(text.name);
      waiting.push_back(&text);
    }
    // Each after the one that it inherits.
    while (!waiting.empty()) {
      const auto ready = std::find_if(waiting.begin(), waiting.end(), [&](const ClassText* text) {
        return std::none_of(waiting.begin(), waiting.end(),
                            [&](const ClassText* other) { return sameName(other->name, text->base.name); });
      });
      if (ready == waiting.end()) fail(waiting.front()->place, waiting.front()->name + " inherits itself");
      declareClass(**ready);
      waiting.erase(ready);
    }
  }

  void declareClass(ClassText& text) {
    ProgramClass cls;
    cls.text = &text;
    cls.info = parts_.classes.find(text.name);
    if (!text.base.name.empty()) {
      const Type base = resolveType(parts_, text.base);
      const bool inherits = isObject(base) && !sameName(base.className, "Object");
      if (!inherits) fail(text.base.place, text.base.name + " is no class that can be inherited");
      cls.info->base = parts_.classes.find(base.className);
    }
    for (const ProgramClass& each : parts_.programClasses) {
      if (each.info == cls.info->base) cls.base = &each;
    }
    parts_.programClasses.push_back(std::move(cls));
  }

  void declareMembers(ProgramClass& cls) {
    if (cls.base) {
      cls.fields = cls.base->fields;
      cls.methods = cls.base->methods;
    }
    for (const ConstantText& each : cls.text->constants) addConstant(cls, each);
    for (const PropertyText& each : cls.text->properties) addProperty(cls, each);
    for (const MethodText& each : cls.text->methods) addMethod(cls, each);
    for (const MethodText& each : cls.text->events) addEvent(cls, each);
    addInitialValues(cls);
  }

  Callable& addMember(ProgramClass& cls, Callable member, bool isShared, bool isPrivate, Place place) {
    for (const Callable& other : cls.info->members) {
      const bool isSame = sameSignature(other.declaration, member.declaration) &&
                          static_cast<bool>(other.run) == static_cast<bool>(member.run);
      if (isSame)
        fail(place, cls.info->name + " has a member " + member.declaration.name + " like this already");
    }
    member.isShared = isShared;
    if (isPrivate) member.onlyIn = cls.info;
    return cls.info->members.emplace_back(std::move(member));
  }

  void addConstant(ProgramClass& cls, const ConstantText& text) {
    Type type = {};
    Code code = Checker(parts_, globals_, &cls, false).checkConstant(*text.value, type);
    Callable callable{{text.name, {}, type}, text.name + " As " + shown(type), [code](Call& call) {
                        Frame frame{call.machine, {}, {}};
                        return code(frame);
                      }};
    addMember(cls, std::move(callable), true, false, text.place);
  }

  void addProperty(ProgramClass& cls, const PropertyText& text) {
    const Type type = resolveType(parts_, text.type);
    Callable callable{{text.name, {}, type}, text.name + " As " + shown(type), {}};
    callable.assigned = type;
    if (text.getter || text.setter) {
      addAccessors(cls, text, callable);
    } else if (text.isShared) {
      const size_t slot = global("", type).slot;
      callable.run = [slot](Call& call) { return call.machine.globals[slot]; };
      callable.set = [slot](Call& call) { std::swap(call.machine.globals[slot], call.arguments.back()); };
    } else {
      const size_t slot = cls.fields.size();
      cls.fields.push_back(type);
      const auto field = [slot](Call& call) -> Value& {
        return asKind<HostObject>(thingOf(call.self.reference()))->fields[slot];
      };
      callable.run = [field](Call& call) { return field(call); };
      callable.set = [field](Call& call) { std::swap(field(call), call.arguments.back()); };
    }
    addMember(cls, std::move(callable), text.isShared, text.isPrivate, text.place);
  }

  void addAccessors(ProgramClass& cls, const PropertyText& text, Callable& callable) {
    const std::string name = cls.info->name + "." + text.name;
    if (text.getter) {
      callable.run = callableOf(newFunction(name, declarationOf(*text.getter, &cls), &text.getter->body, &cls,
                                            !text.isShared))
                         .run;
    }
    if (text.setter) {
      callable.set = callableOf(newFunction(name, declarationOf(*text.setter, &cls), &text.setter->body, &cls,
                                            !text.isShared))
                         .set;
    }
  }

  void addMethod(ProgramClass& cls, const MethodText& text) {
    const Function& function = newFunction(cls.info->name + "." + text.name, declarationOf(text, &cls),
                                           &text.body, &cls, !text.isShared);
    const bool isDestructor = sameName(text.name, "Destructor");
    if (isDestructor &&
        (!function.declaration.parameters.empty() || text.isShared || !text.result.name.empty()))
      fail(text.place, "a Destructor is a Sub without parameters");
    if (isDestructor) {
      cls.destructor = &function;
      return;
    }
    Callable callable = callableOf(function);
    if (!text.isShared && !text.isPrivate && !sameName(text.name, "Constructor")) {
      const auto dispatch = [number = numberOf(cls, function)](Call& call) {
        const Function* const actual = programClassOf(call.self)->methods[number];
        return call.machine.invoke(*actual, call.self, std::move(call.arguments));
      };
      if (callable.run) callable.run = dispatch;
      if (callable.set) callable.set = dispatch;
    }
    addMember(cls, std::move(callable), text.isShared, text.isPrivate, text.place);
  }

  // Of the method that it replaces, or a new one.
  static size_t numberOf(ProgramClass& cls, const Function& function) {
    for (size_t i = 0; i < cls.methods.size(); ++i) {
      if (!sameSignature(cls.methods[i]->declaration, function.declaration)) continue;
      cls.methods[i] = &function;
      return i;
    }
    cls.methods.push_back(&function);
    return cls.methods.size() - 1;
  }

  void addEvent(ProgramClass& cls, const MethodText& text) {
    std::vector<std::string> known;
    for (const ClassInfo* each = cls.info; each; each = each->base) {
      for (const Declaration& event : each->events) {
        known.push_back(event.name);
        if (!sameName(event.name, text.name)) continue;
        const Declaration declaration = declarationOf(text, &cls);
        if (!sameSignature(declaration, event)) fail(text.place, "expected Event " + textOf(event));
        cls.events.push_back(
            &newFunction(cls.info->name + "." + text.name, declaration, &text.body, &cls, true));
        return;
      }
    }
    fail(text.place, cls.info->name + " inherits no event " + text.name + suggestion(text.name, known));
  }

  // One method that assigns them all.
  void addInitialValues(ProgramClass& cls) {
    Block& statements = parts_.initialValues.emplace_back();
    for (PropertyText& each : cls.text->properties) {
      if (!each.initial) continue;
      if (each.isShared)
        fail(each.place, "a shared property has no initial value; assign it where the program begins");
      Statement assigned{Statement::Kind::assign, each.place};
      auto object = std::make_unique<Expression>(Expression{Expression::Kind::me, each.place});
      Expression member{Expression::Kind::member, each.place, each.name};
      member.operands.push_back(std::move(object));
      assigned.expressions.push_back(std::make_unique<Expression>(std::move(member)));
      assigned.expressions.push_back(std::move(each.initial));
      statements.push_back(std::move(assigned));
    }
    if (!statements.empty()) cls.initial = &newFunction(cls.info->name, {}, &statements, &cls, true);
  }

  ProgramParts& parts_;
  Names globals_;
  std::vector<Later> bodies_;
};

}  // namespace

void check(ProgramParts& parts) {
  ProgramChecker(parts).check();
}

}  // namespace standin::host
