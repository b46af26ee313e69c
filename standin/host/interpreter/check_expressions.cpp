#include <algorithm>
#include <climits>
#include <span>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/checker.h"
#include "standin/host/program/fit.h"
#include "standin/host/things/event_handlers.h"
#include "standin/host/things/objects.h"
#include "standin/host/things/plain_values.h"

namespace standin::host {
namespace {

using ExpressionKind = Expression::Kind;

// --- Names ---

// Whether the names differ in two letters at the most, which stand together.
bool isNear(const std::string& one, const std::string& other) {
  const size_t shorter = std::min(one.size(), other.size()), longer = std::max(one.size(), other.size());
  size_t same = 0, atEnd = 0;
  while (same < shorter && one[same] == other[same]) ++same;
  while (same + atEnd < shorter && one[one.size() - 1 - atEnd] == other[other.size() - 1 - atEnd]) ++atEnd;
  return same + atEnd >= (shorter + 1) / 2 && same + atEnd + 2 >= longer;
}

// A name that is probably meant: "; did you mean NAME?", or nothing. Many are near to a single letter.
std::string suggestion(const std::string& name, const std::vector<std::string>& known) {
  if (name.size() < 2) return "";
  const auto found = std::find_if(known.begin(), known.end(),
                                  [&](const std::string& each) { return isNear(lower(each), lower(name)); });
  return found == known.end() ? "" : "; did you mean " + *found + "?";
}

void addNames(std::vector<std::string>& known, const std::deque<Callable>& callables) {
  for (const Callable& each : callables) known.push_back(each.declaration.name);
}

void addMembers(std::vector<std::string>& known, const ProgramClass* cls) {
  for (; cls; cls = cls->base) addNames(known, cls->members);
}

// --- Calls ---

Value perform(const Callable& callable, Native use, Frame& frame, const Value& self,
              const std::vector<Code>& codes) {
  Call call{frame.machine, callable, self, {}};
  call.arguments.reserve(codes.size() + 1);
  if (callable.takesSelf) call.arguments.push_back(self);
  for (const Code& code : codes) call.arguments.push_back(code(frame));
  return use(call);
}

Value invokeDirectly(Call& call) {
  return call.machine.invoke(*call.callable.function, call.self, std::move(call.arguments));
}

bool isOperator(const Expression& expression) {
  return expression.kind == ExpressionKind::negation || expression.kind == ExpressionKind::binary;
}

class ExpressionChecker {
 public:
  explicit ExpressionChecker(Scope& scope) : scope_(scope), parts_(scope.parts) {}

  Checked check(const Expression& expression) {
    const Place place = expression.place;
    switch (expression.kind) {
      case ExpressionKind::literal:
      case ExpressionKind::color: {
        const bool isColor = expression.kind == ExpressionKind::color;
        const Value value =
            valueOf(expression.literal, isColor ? Type{TypeKind::color, "", false} : kNilType);
        return {typeOf(value), place, [value](Frame&) { return value; }};
      }
      case ExpressionKind::me:
        return me(place);
      case ExpressionKind::super:
        fail(place, "expected Super.NAME");
      case ExpressionKind::subject:
        return variable(scope_.subjects.back(), place);
      case ExpressionKind::name:
        return named(expression, {});
      case ExpressionKind::member:
        return callOrIndex(membersOf(expression), expression.text, {}, place);
      case ExpressionKind::arguments:
        return callOrIndex(expression);
      case ExpressionKind::negation:
        return negation(expression);
      case ExpressionKind::binary:
        return binary(expression);
      case ExpressionKind::isA:
        return isA(expression);
      case ExpressionKind::newObject:
        break;
    }
    return newObject(expression);
  }

  Code coerced(Checked value, const Type& type) const {
    if (!distance(parts_, value.type, type)) {
      std::string hint;
      if (is(TypeKind::string, type) && isNumber(value.type)) hint = "; Str makes a text of a number";
      if (isNumber(type) && is(TypeKind::string, value.type)) hint = "; Val makes a number of a text";
      if (is(TypeKind::object, value.type) && is(TypeKind::object, type))
        hint = "; where it is one all the same, write " + shown(type) + "(...)";
      fail(value.place, "expected " + aValueOf(type) + ", not " + aValueOf(value.type) + hint);
    }
    const bool isVariant = is(TypeKind::variant, value.type);
    if (sameType(value.type, type) || is(TypeKind::variant, type) || (isReference(type) && !isVariant))
      return std::move(value.code);
    return [code = std::move(value.code), type](Frame& frame) { return converted(code(frame), type); };
  }

  bool isConstant(const Expression& expression) const {
    const Named* const named = variableNamed(scope_, expression.text);
    if (expression.kind == ExpressionKind::name) return named && named->constant;
    if (expression.kind == ExpressionKind::member) return expression.operands[0].kind == ExpressionKind::name;
    if (expression.kind == ExpressionKind::literal || expression.kind == ExpressionKind::color) return true;
    return isOperator(expression) && std::all_of(expression.operands.begin(), expression.operands.end(),
                                                 [this](const Expression& each) { return isConstant(each); });
  }

  // To variables, to what can be set, and to elements of arrays.
  Action assignment(const Statement& statement) {
    const Expression& target = statement.expressions[0];
    Checked value = check(statement.expressions[1]);
    if (value.type.kind == TypeKind::none) fail(value.place, "this has no value");
    const bool isCall = target.kind == ExpressionKind::arguments;
    const Expression& callee = isCall ? target.operands[0] : target;
    const bool isName = callee.kind == ExpressionKind::name;
    const Named* const named = isName ? variableNamed(scope_, callee.text) : nullptr;
    if (named && !isCall) {
      if (named->constant) fail(callee.place, named->name + " is a constant");
      return [slot = named->slot, code = coerced(std::move(value), named->type)](Frame& frame) {
        Value stored = code(frame);
        std::swap(slot.in(frame), stored);  // what was there ends when the new value is in its place
        return Flow{};
      };
    }
    std::optional<Members> members;
    if (callee.kind == ExpressionKind::member) members = membersOf(callee);
    if (isName && !named) members = callables(callee.text, callee.place);
    Arguments arguments = isCall ? checkAll(Written(target.operands).subspan(1)) : Arguments();
    arguments.push_back(value);
    if (const Callable* const found = members ? choose(*members, arguments, true) : nullptr) {
      arguments.pop_back();
      std::vector<Code> codes = argumentCodes(*found, std::move(arguments));
      codes.push_back(coerced(std::move(value), found->declaration.result));
      return
          [found, object = objectOf(*found, *members, callee.place), codes = std::move(codes)](Frame& frame) {
            perform(*found, found->set, frame, object(frame), codes);
            return Flow{};
          };
    }
    Checked array = isCall && arguments.size() == 2 ? check(callee) : Checked{};
    if (array.type.array) {
      return [array = array.code, index = coerced(std::move(arguments[0]), kInteger),
              code = coerced(std::move(value), elementOf(array.type))](Frame& frame) {
        const Value elements = array(frame);
        const int64_t at = index(frame).integer();
        setElement(elements, at, code(frame));
        return Flow{};
      };
    }
    if (!members) check(target);  // names what is unknown
    if (members && std::none_of(members->candidates.begin(), members->candidates.end(),
                                [](const Callable* each) { return each->set; }))
      fail(target.place, callee.text + " can be read and not written");
    fail(target.place, aValueOf(value.type) + " can't be assigned here");
  }

  // The method gets the object first, and then what the event declares.
  Action handler(const Statement& statement) {
    const Expression& eventName = statement.expressions[0];
    const Expression& method = statement.expressions[1];
    Checked object = check(eventName.operands[0]);
    const bool isObject = is(TypeKind::object, object.type);
    const ProgramClass* const cls = isObject ? parts_.classes.find(shown(object.type)) : nullptr;
    if (!cls) fail(eventName.place, aValueOf(object.type) + " has no events");
    const Declaration& event = eventNamed(*cls, eventName.text, eventName.place);
    const auto members = method.kind == ExpressionKind::member ? std::optional(membersOf(method))
                                                               : callables(method.text, method.place);
    if (!members) failUnknown(method.text, method.place);
    Declaration wanted{method.text, event.parameters, {}};
    wanted.parameters.insert(wanted.parameters.begin(), {"sender", object.type, false, {}});
    const Callable* found = nullptr;
    for (const Callable* const each : members->candidates) {
      Declaration declared = each->declaration;
      // The object may be taken as one of a class that its own one inherits.
      const bool takes =
          !declared.parameters.empty() && distance(parts_, object.type, declared.parameters[0].type);
      if (takes) declared.parameters[0].type = object.type;
      if (each->function && sameSignature(declared, wanted)) found = each;
    }
    if (!found) fail(method.place, "expected a Sub of the program: " + shown(wanted));
    return [adds = statement.kind == Statement::Kind::addHandler, object = std::move(object.code),
            name = event.name, function = found->function,
            self = objectOf(*found, *members, method.place)](Frame& frame) {
      const Value sender = object(frame), added = self(frame);
      if (sender.isNil()) raise("NilObjectException", "an event of an object that is Nil");
      const Event* const known = findEvent(asKind<HostObject>(thingOf(sender.reference()))->cls, name);
      const Handler* const attached = findHandler(sender.reference().object(), *known);
      if (attached && (adds || !isHandlerOf(*attached, *function, added)))
        raise("RuntimeException",
              name + " of this object has " + (adds ? "a handler already" : "another handler"));
      setEventHandler(sender, name, adds ? handlerOf(frame.machine, *function, sender, added) : nullptr);
      return Flow{};
    };
  }

 private:
  using Written = std::span<const Expression>;  // arguments as they are written
  using Arguments = std::vector<Checked>;

  // What may be called by a name, and on which object; of what needs no object on none.
  struct Members {
    std::vector<const Callable*> candidates = {};
    std::optional<Checked> object = {};
    bool isSuper = false;  // not what a class that inherits has instead
  };

  Checked variable(const Named& named, Place place) const {
    if (named.constant) return {named.type, place, named.constant};
    return {named.type, place, [slot = named.slot](Frame& frame) { return slot.in(frame); }};
  }

  Checked me(Place place) const {
    if (!scope_.self) fail(place, "there is no object here: this is no method of a class");
    return {{TypeKind::object, scope_.self->name, false}, place, [](Frame& frame) { return frame.self; }};
  }

  std::optional<Members> callables(std::string_view name, Place place) const {
    if (scope_.self) {
      if (Members members{membersNamed(*scope_.self, name), me(place)}; !members.candidates.empty())
        return members;
    }
    for (const auto* const all : {&parts_.methods, &parts_.functions}) {
      Members members;
      for (const Callable& each : *all) {
        if (sameName(each.declaration.name, name)) members.candidates.push_back(&each);
      }
      if (!members.candidates.empty()) return members;
    }
    return {};
  }

  [[noreturn]] void failUnknown(const std::string& name, Place place) const {
    std::vector<std::string> known;
    for (const Names* const names : {&std::as_const(scope_.locals), &scope_.globals}) {
      for (const Named& each : *names) known.push_back(each.name);
    }
    addMembers(known, scope_.self);
    addNames(known, parts_.methods);
    addNames(known, parts_.functions);
    for (const std::string& each : parts_.classes.names()) {
      const auto members = membersNamed(*parts_.classes.find(each), name);
      if (!members.empty() && members[0]->isShared) fail(place, "expected " + each + "." + name);
    }
    fail(place, "there is no variable, method or class " + name + suggestion(name, known));
  }

  Checked named(const Expression& expression, Written written) {
    const std::string& name = expression.text;
    if (const Named* const found = variableNamed(scope_, name)) {
      Checked value = variable(*found, expression.place);
      if (written.empty()) return value;
      if (written.size() > 1 || !value.type.array)
        fail(expression.place, name + " is no array of one dimension, and no method");
      return indexed(std::move(value), check(written[0]));
    }
    if (const auto members = callables(name, expression.place))
      return callOrIndex(*members, name, written, expression.place);
    if (auto made = special(expression, written)) return std::move(*made);
    failUnknown(name, expression.place);
  }

  // What is written like a function, but takes types, or values of any type.
  std::optional<Checked> special(const Expression& expression, Written written) {
    const std::string& name = expression.text;
    const Place place = expression.place;
    if (sameName(name, "Array")) return arrayOf(written, place);
    if (sameName(name, "Ubound") && written.size() == 1) {
      const Expression member{ExpressionKind::member, place, name};
      return callOrIndex(membersOfValue(check(written[0]), member), name, {}, place);
    }
    const Type type = parseType(name);
    if (type.kind == TypeKind::object && !parts_.classes.find(name)) return {};
    if (written.size() != 1) fail(place, "expected " + name + "(value), or a shared member of " + name);
    return cast(written[0], resolved(parts_, {type, place}), place);
  }

  Checked callOrIndex(const Expression& expression) {
    const Written written = Written(expression.operands).subspan(1);
    const Expression& callee = expression.operands[0];
    if (callee.kind == ExpressionKind::name) return named(callee, written);
    if (callee.kind == ExpressionKind::member)
      return callOrIndex(membersOf(callee), callee.text, written, callee.place);
    Checked array = check(callee);
    if (!array.type.array || written.size() != 1)
      fail(callee.place, "expected the name of a method or an array before (");
    return indexed(std::move(array), check(written[0]));
  }

  Checked indexed(Checked array, Checked index) const {
    const Type element = elementOf(array.type);
    return {
        element, array.place,
        [array = std::move(array.code), index = coerced(std::move(index), kInteger), element](Frame& frame) {
          const Value elements = array(frame);
          return elementAt(elements, index(frame).integer(), element);
        }};
  }

  Checked arrayOf(Written elements, Place place) {
    if (elements.empty()) fail(place, "expected at least one element, which tells the type of the array");
    Arguments checked = checkAll(elements);
    Type type = checked[0].type;
    if (type.kind == TypeKind::none || type.array || sameType(type, kNilType))
      fail(checked[0].place, "an array can't have such elements");
    std::vector<Code> codes;
    for (Checked& each : checked) codes.push_back(coerced(std::move(each), type));
    type.array = true;
    return {type, place, [codes = std::move(codes), type](Frame& frame) {
              const Value array = firstValue(type);
              for (const Code& code : codes) insertElement(array, arrayIn(array).count(), code(frame));
              return array;
            }};
  }

  Checked negation(const Expression& expression) {
    Checked operand = check(expression.operands[0]);
    const Operator& differs = operatorNamed("Xor");
    if (!resultOf(differs, operand.type, operand.type))
      fail(expression.place, "Not takes no " + shown(operand.type));
    Code code = [&differs, operand = std::move(operand.code)](Frame& frame) {
      const Value value = operand(frame);
      if (value.kind() == Kind::boolean) return Value(!value.boolean());
      return computed(differs, value, converted(-1, typeOf(value)));
    };
    return {operand.type, expression.place, std::move(code)};
  }

  Checked binary(const Expression& expression) {
    Checked left = check(expression.operands[0]), right = check(expression.operands[1]);
    const auto mayRefer = [](const Type& type) { return isReference(type) || is(TypeKind::variant, type); };
    const bool isIs = expression.text == "Is";
    if (isIs && mayRefer(left.type) && mayRefer(right.type)) {
      return {kBoolean, expression.place,
              [one = std::move(left.code), other = std::move(right.code)](Frame& frame) -> Value {
                const Value a = one(frame);
                return a.handle() == other(frame).handle();
              }};
    }
    const Operator& op = operatorNamed(isIs ? "=" : expression.text);
    const bool adds = expression.text == "+", decides = expression.text == "Or";
    // What is in a variant becomes text where text is added.
    for (auto [one, other] : {std::pair(&left, &right), std::pair(&right, &left)}) {
      if (adds && is(TypeKind::string, one->type) && is(TypeKind::variant, other->type))
        *other = {kString, other->place, coerced(std::move(*other), kString)};
    }
    const auto type = isIs ? std::nullopt : resultOf(op, left.type, right.type);
    if (!type) {
      const bool joins = adds && (is(TypeKind::string, left.type) || is(TypeKind::string, right.type));
      const bool texts = is(TypeKind::string, left.type) && is(TypeKind::string, right.type);
      fail(expression.place, "'" + expression.text + "' takes no " + shown(left.type) + " and " +
                                 shown(right.type) + (joins ? "; Str makes a text of a number" : "") +
                                 (texts ? "; a quote within a text is written twice" : ""));
    }
    if (is(TypeKind::boolean, left.type) && is(TypeKind::boolean, right.type) &&
        (decides || expression.text == "And")) {
      return {*type, expression.place,
              [decides, one = std::move(left.code), other = std::move(right.code)](Frame& frame) {
                const Value a = one(frame);
                return a.boolean() == decides ? a : other(frame);
              }};
    }
    return {*type, expression.place,
            [&op, one = std::move(left.code), other = std::move(right.code)](Frame& frame) {
              const Value a = one(frame);
              return computed(op, a, other(frame));
            }};
  }

  Checked isA(const Expression& expression) {
    Checked operand = check(expression.operands[0]);
    const Type type = resolved(parts_, expression.type);
    const bool mayBe = is(TypeKind::object, operand.type) || is(TypeKind::variant, operand.type);
    if (!is(TypeKind::object, type) || !mayBe) fail(expression.place, "IsA takes an object and a class");
    return {kBoolean, expression.place, [code = std::move(operand.code), type](Frame& frame) -> Value {
              const Value object = code(frame);
              return !object.isNil() && host::distance(object, type).has_value();
            }};
  }

  Checked cast(const Expression& expression, const Type& type, Place place) {
    Checked value = check(expression);
    if (!is(TypeKind::object, type) || is(TypeKind::variant, value.type))
      return {type, place, coerced(std::move(value), type)};
    if (!distance(parts_, value.type, type) && !distance(parts_, type, value.type))
      fail(place,
           aValueOf(value.type) + " is never " + aValueOf(type) +
               (is(TypeKind::object, value.type) ? "" : "; New " + type.className + "(...) makes one"));
    Code code = [code = std::move(value.code), type](Frame& frame) {
      Value object = code(frame);
      if (!object.isNil() && !host::distance(object, type))
        raise("IllegalCastException", object.describe() + " is no " + type.className);
      return object;
    };
    return {type, place, std::move(code)};
  }

  Checked newObject(const Expression& expression) {
    const Type type = resolved(parts_, expression.type);
    const ProgramClass* const cls =
        is(TypeKind::object, type) ? parts_.classes.find(type.className) : nullptr;
    if (!cls || sameName(cls->name, "Object"))
      fail(expression.type.place, "New takes a class, not " + shown(type));
    Arguments arguments = checkAll(expression.operands);
    Members members{membersNamed(*cls, "Constructor")};
    // Without arguments an instance of a class that has no constructor of the program is made by none.
    const bool needsOne =
        !arguments.empty() || (!members.candidates.empty() && members.candidates[0]->function);
    const Callable* const constructor = choose(members, arguments);
    if (!constructor && needsOne) failNoFit(members, "Constructor", arguments, expression.place);
    if (!constructor)
      return {type, expression.place, [cls](Frame& frame) { return bareInstance(*cls, frame.machine); }};
    return {type, expression.place,
            [cls, constructor, codes = argumentCodes(*constructor, std::move(arguments))](Frame& frame) {
              Value object = bareInstance(*cls, frame.machine);
              perform(*constructor, constructor->run, frame, object, codes);
              return object;
            }};
  }

  // --- Members and calls ---

  Members membersOfClass(const ProgramClass& cls, const Expression& member,
                         std::optional<Checked> object) const {
    Members members{membersNamed(cls, member.text), std::move(object)};
    if (!members.candidates.empty()) return members;
    std::vector<std::string> known;
    addMembers(known, &cls);
    const bool isVariant = sameName(cls.name, "Variant");
    fail(member.place,
         cls.name + " has no member " + member.text +
             (isVariant ? "; write CLASS(value)." + member.text : suggestion(member.text, known)));
  }

  Members membersOfValue(Checked object, const Expression& member) const {
    const bool isNone = object.type.kind == TypeKind::none;
    const ProgramClass* const cls = isNone ? nullptr : parts_.classes.find(shown(object.type));
    if (!cls) fail(member.place, aValueOf(object.type) + " has no member " + member.text);
    return membersOfClass(*cls, member, std::move(object));
  }

  Members membersOf(const Expression& member) {
    const Expression& object = member.operands[0];
    if (object.kind == ExpressionKind::super) {
      Checked self = me(object.place);
      if (!scope_.self->base) fail(object.place, scope_.self->name + " inherits no class");
      Members members = membersOfClass(*scope_.self->base, member, std::move(self));
      members.isSuper = true;
      return members;
    }
    const bool mayBeClass = object.kind == ExpressionKind::name && !variableNamed(scope_, object.text) &&
                            !callables(object.text, object.place);
    if (const ProgramClass* const cls = mayBeClass ? parts_.classes.find(object.text) : nullptr)
      return membersOfClass(*cls, member, {});
    return membersOfValue(check(object), member);
  }

  Arguments checkAll(Written written) {
    Arguments arguments;
    for (const Expression& each : written) arguments.push_back(check(each));
    return arguments;
  }

  // The one whose parameters are nearest to the arguments; with `sets`, the last of them is the value to set.
  const Callable* choose(const Members& members, const Arguments& arguments, bool sets = false) const {
    const Callable* best = nullptr;
    int least = INT_MAX;
    for (const Callable* const each : members.candidates) {
      const std::vector<Parameter>& parameters = each->declaration.parameters;
      const size_t given = arguments.size() - (sets ? 1 : 0);
      if ((sets ? !each->set : !each->run) || given > parameters.size()) continue;
      std::optional<int> sum = sets ? distance(parts_, arguments.back().type, each->declaration.result) : 0;
      for (size_t i = 0; i < parameters.size() && sum; ++i) {
        const bool isLeftOut = i >= given && parameters[i].preset;
        const auto one = isLeftOut   ? std::optional(0)
                         : i < given ? distance(parts_, arguments[i].type, parameters[i].type)
                                     : std::nullopt;
        sum = one ? std::optional(*sum + *one) : std::nullopt;
      }
      if (!sum || *sum >= least) continue;
      least = *sum;
      best = each;
    }
    return best;
  }

  [[noreturn]] void failNoFit(const Members& members, const std::string& name, const Arguments& arguments,
                              Place place) const {
    std::string given, known;
    for (const Checked& each : arguments) given += (given.empty() ? "" : ", ") + shown(each.type);
    for (const Callable* const each : members.candidates) known += (known.empty() ? "" : "; ") + each->text;
    fail(place, name + "(" + given + ") fits none of: " + (known.empty() ? "there is none" : known));
  }

  Checked callOrIndex(const Members& members, const std::string& name, Written written, Place place) {
    Arguments arguments = checkAll(written);
    if (const Callable* const found = choose(members, arguments))
      return called(*found, members, std::move(arguments), place);
    const Callable* const whole = written.size() == 1 ? choose(members, {}) : nullptr;
    if (!whole || !whole->declaration.result.array) failNoFit(members, name, arguments, place);
    return indexed(called(*whole, members, {}, place), std::move(arguments[0]));
  }

  std::vector<Code> argumentCodes(const Callable& callable, Arguments arguments) const {
    const std::vector<Parameter>& parameters = callable.declaration.parameters;
    std::vector<Code> codes;
    for (size_t i = 0; i < parameters.size(); ++i) {
      const Type& type = parameters[i].type;
      if (i < arguments.size()) {
        codes.push_back(coerced(std::move(arguments[i]), type));
      } else {
        codes.push_back(
            [preset = converted(valueOf(*parameters[i].preset, type), type)](Frame&) { return preset; });
      }
    }
    return codes;
  }

  // What gives the object that a member is used on; nil where it needs none.
  Code objectOf(const Callable& callable, const Members& members, Place place) const {
    if (callable.isShared) return [](Frame&) { return Value(); };
    const std::string& name = callable.declaration.name;
    if (!members.object) fail(place, name + " is a member of objects, and there is none here");
    if (!is(TypeKind::object, members.object->type)) return members.object->code;
    return [code = members.object->code, name](Frame& frame) {
      Value object = code(frame);
      if (object.isNil()) raise("NilObjectException", name + " of an object that is Nil");
      return object;
    };
  }

  Checked called(const Callable& callable, const Members& members, Arguments arguments, Place place) const {
    const Native run = members.isSuper && callable.function ? invokeDirectly : callable.run;
    return {callable.declaration.result, place,
            [&callable, run, object = objectOf(callable, members, place),
             codes = argumentCodes(callable, std::move(arguments))](Frame& frame) {
              return perform(callable, run, frame, object(frame), codes);
            }};
  }

  Scope& scope_;
  ProgramParts& parts_;
};

}  // namespace

void fail(Place place, const std::string& what) {
  throw SourceError(place, what);
}

const Named* findName(const Names& names, std::string_view name) {
  const auto found = std::find_if(names.rbegin(), names.rend(),
                                  [name](const Named& each) { return sameName(each.name, name); });
  return found == names.rend() ? nullptr : &*found;
}

const Named* variableNamed(const Scope& scope, std::string_view name) {
  if (const Named* const local = findName(scope.locals, name)) return local;
  if (scope.self && !membersNamed(*scope.self, name).empty()) return nullptr;
  return findName(scope.globals, name);
}

Type resolved(ProgramParts& parts, const TypeName& name) {
  Type type = name.type;
  const TypeKind kind = type.kind;
  if (kind == TypeKind::none) fail(name.place, "expected As and a type");
  const bool isTaken = kind == TypeKind::int32 || kind == TypeKind::uint32 || kind == TypeKind::int64 ||
                       !isNumber(kind) || isReal(kind);
  if (!isTaken)
    fail(name.place, describe(elementOf(type)) +
                         " is not taken; of whole numbers there are Integer, Int32, UInt32 and Int64");
  if (kind != TypeKind::object) return type;
  const ProgramClass* const cls = parts.classes.find(type.className);
  if (!cls || sameName(type.className, "App"))
    fail(name.place,
         "there is no type or class " + type.className + suggestion(type.className, parts.classes.names()));
  type.className = cls->name;
  return type;
}

std::optional<int> distance(ProgramParts& parts, const Type& from, const Type& to) {
  if (sameType(from, to)) return 0;
  if (from.kind == TypeKind::none || to.kind == TypeKind::none) return {};
  if (is(TypeKind::variant, to)) return 8;
  if (is(TypeKind::variant, from)) return 9;
  if (isNumber(from) && isNumber(to)) {
    // From the one that loses nothing to the one that loses most.
    if (isReal(from.kind)) return to.kind == TypeKind::number ? 1 : isReal(to.kind) ? 2 : 5;
    return to.kind == TypeKind::int64 ? 1 : to.kind == TypeKind::number ? 2 : isReal(to.kind) ? 3 : 4;
  }
  const bool isNil = sameType(from, kNilType);
  if (isNil && isReference(to)) return 1;
  if (!is(TypeKind::object, from) || !is(TypeKind::object, to) || isNil) return {};
  if (sameName(to.className, "Object")) return 7;
  const ProgramClass* each = parts.classes.find(from.className);
  for (int steps = 0; each; each = each->base, ++steps) {
    if (sameName(each->name, to.className)) return std::min(steps, 6);
  }
  return {};
}

const Declaration& eventNamed(const ProgramClass& cls, const std::string& name, Place place) {
  std::vector<std::string> known;
  for (const ProgramClass* each = &cls; each; each = each->base) {
    for (const Declaration& event : each->events) {
      if (sameName(event.name, name)) return event;
      known.push_back(event.name);
    }
  }
  fail(place, cls.name + " has no event " + name + suggestion(name, known));
}

Checked checkExpression(Scope& scope, const Expression& expression) {
  return ExpressionChecker(scope).check(expression);
}

Code coerced(Scope& scope, Checked value, const Type& type) {
  return ExpressionChecker(scope).coerced(std::move(value), type);
}

Code checkedAs(Scope& scope, const Expression& expression, const Type& type) {
  return coerced(scope, checkExpression(scope, expression), type);
}

Checked checkConstant(Scope& scope, const Statement& declared) {
  const Expression& expression = declared.expressions[0];
  if (!ExpressionChecker(scope).isConstant(expression))
    fail(expression.place, "expected a value that is known before the program runs");
  Checked value = checkExpression(scope, expression);
  if (declared.type.type.kind == TypeKind::none) return value;
  const Type type = resolved(scope.parts, declared.type);
  return {type, expression.place, coerced(scope, std::move(value), type)};
}

Action checkAssignment(Scope& scope, const Statement& statement) {
  return ExpressionChecker(scope).assignment(statement);
}

Action checkHandler(Scope& scope, const Statement& statement) {
  return ExpressionChecker(scope).handler(statement);
}

}  // namespace standin::host
