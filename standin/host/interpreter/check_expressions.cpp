#include <algorithm>
#include <climits>
#include <iterator>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/checker.h"
#include "standin/host/things/plain_values.h"

namespace standin::host {
namespace {

using ExpressionKind = Expression::Kind;

const std::pair<const char*, Operator> kOperators[] = {
    {"+", Operator::add},          {"-", Operator::subtract},     {"*", Operator::multiply},
    {"/", Operator::divide},       {"\\", Operator::divideWhole}, {"Mod", Operator::modulo},
    {"^", Operator::power},        {"And", Operator::both},       {"Or", Operator::either},
    {"Xor", Operator::exactlyOne}, {"=", Operator::equal},        {"<>", Operator::unequal},
    {"<", Operator::less},         {">", Operator::greater},      {"<=", Operator::atMost},
    {">=", Operator::atLeast}};

Operator operatorNamed(const std::string& text) {
  return std::find_if(std::begin(kOperators), std::end(kOperators),
                      [&](const auto& row) { return text == row.first; })
      ->second;
}

bool isLogical(Operator op) {
  return op == Operator::both || op == Operator::either || op == Operator::exactlyOne;
}

// How many letters must be added, left out or changed to make one name the other.
size_t distanceOf(const std::string& one, const std::string& other) {
  std::vector<size_t> row(other.size() + 1);
  for (size_t i = 0; i < row.size(); ++i) row[i] = i;
  for (size_t i = 1; i <= one.size(); ++i) {
    size_t diagonal = std::exchange(row[0], i);
    for (size_t j = 1; j < row.size(); ++j) {
      const size_t changed = diagonal + (one[i - 1] != other[j - 1]);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
    }
  }
  return row.back();
}

std::string shownAll(const std::vector<Checked>& arguments) {
  std::string text;
  for (const Checked& each : arguments) text += (text.empty() ? "" : ", ") + shown(each.type);
  return text;
}

bool isDate(const Type& type) {
  return isObject(type) && sameName(type.className, "Date");
}

// Nil, or one of the things that it may stand for.
bool isReference(const Type& type) {
  return isObject(type) || type.array;
}

// The kind in which a binary operator computes values of these types; nothing where it takes none of them.
std::optional<TypeKind> operandKind(Operator op, const Type& left, const Type& right) {
  const bool equality = op == Operator::equal || op == Operator::unequal;
  if (isNumber(left) && isNumber(right)) {
    if (isLogical(op) && (isReal(left) || isReal(right))) return {};
    if (op == Operator::divide || op == Operator::power) return TypeKind::number;
    return commonKind(left.kind, right.kind);
  }
  if (isText(left) && isText(right) && (op == Operator::add || compares(op))) return TypeKind::string;
  if (isTruth(left) && isTruth(right) && (isLogical(op) || equality)) return TypeKind::boolean;
  if (isDate(left) && isDate(right) && compares(op)) return TypeKind::object;
  if (isReference(left) && isReference(right) && equality) return TypeKind::object;
  if (left.kind == TypeKind::color && sameType(left, right) && equality) return TypeKind::color;
  return {};
}

Value perform(const std::function<Value(Call&)>& run, Frame& frame, const Value& self,
              const std::vector<Code>& codes) {
  Call call{frame.machine, self, {}};
  call.arguments.reserve(codes.size());
  for (const Code& code : codes) call.arguments.push_back(code(frame));
  return run(call);
}

}  // namespace

const Named* findName(const Names& names, std::string_view name) {
  const auto found = std::find_if(names.rbegin(), names.rend(),
                                  [name](const Named& each) { return sameName(each.name, name); });
  return found == names.rend() ? nullptr : &*found;
}

std::string suggestion(std::string_view name, const std::vector<std::string>& names) {
  const std::string* nearest = nullptr;
  size_t least = name.size() / 3 + 1;
  for (const std::string& each : names) {
    const size_t distance = distanceOf(lower(name), lower(each));
    if (distance > least || (nearest && distance == least)) continue;
    least = distance;
    nearest = &each;
  }
  return nearest ? "; did you mean " + *nearest + "?" : "";
}

Type resolveType(ProgramParts& parts, const TypeName& name) {
  Type type = parseType(name.name);
  type.array = name.array;
  const bool isKept = type.kind == TypeKind::int32 || type.kind == TypeKind::uint32 ||
                      type.kind == TypeKind::int64 || !isWhole(elementOf(type));
  if (!isKept)
    fail(name.place,
         name.name + " is not taken; of whole numbers there are Integer, Int32, UInt32 and Int64");
  if (type.kind != TypeKind::object) return type;
  const ClassInfo* const cls = parts.classes.find(name.name);
  if (!cls || sameName(name.name, "App")) fail(name.place, "there is no type or class " + name.name);
  type.className = cls->name;
  return type;
}

// --- Types that fit ---

std::optional<int> Checker::distance(const Type& from, const Type& to) const {
  if (sameType(from, to)) return 0;
  if (isNone(from) || isNone(to)) return {};
  if (isVariant(to)) return 8;
  if (isVariant(from)) return 9;
  if (isNumber(from) && isNumber(to)) {
    if (isReal(from)) return to.kind == TypeKind::number ? 1 : isReal(to) ? 2 : 5;
    if (to.kind == TypeKind::int64) return 1;
    return isReal(to) ? (to.kind == TypeKind::number ? 2 : 3) : 4;
  }
  const bool isNil = sameType(from, kNilType);
  if (isNil && isReference(to)) return 1;
  if (!isObject(from) || !isObject(to) || isNil) return {};
  if (sameName(to.className, "Object")) return 7;
  const ClassInfo* const wanted = parts_.classes.find(to.className);
  const ClassInfo* each = parts_.classes.find(from.className);
  for (int steps = 0; each; each = each->base, ++steps) {
    if (each == wanted) return std::min(steps, 6);
  }
  return {};
}

Code Checker::coerced(Checked value, const Type& type) const {
  if (!distance(value.type, type)) {
    std::string hint;
    if (isText(type) && isNumber(value.type)) hint = "; Str makes a text of a number";
    if (isNumber(type) && isText(value.type)) hint = "; Val makes a number of a text";
    if (isObject(value.type) && isObject(type))
      hint = "; where it is one all the same, write " + shown(type) + "(...)";
    fail(value.place, "expected " + aValueOf(type) + ", not " + aValueOf(value.type) + hint);
  }
  const bool fits =
      sameType(value.type, type) || isVariant(type) || (isReference(type) && !isVariant(value.type));
  if (fits) return value.code;
  return [code = std::move(value.code), type](Frame& frame) { return converted(code(frame), type); };
}

Code Checker::checkedAs(const Expression& expression, const Type& type) {
  return coerced(checkExpression(expression), type);
}

// --- Expressions ---

Checked Checker::checkExpression(const Expression& expression) {
  switch (expression.kind) {
    case ExpressionKind::literal:
      return literal(expression);
    case ExpressionKind::color: {
      const Value color = Value::color(static_cast<uint32_t>(std::get<int64_t>(expression.literal)));
      return {{TypeKind::color, "", false}, [color](Frame&) { return color; }, expression.place};
    }
    case ExpressionKind::me:
      return self(expression.place);
    case ExpressionKind::super:
      fail(expression.place, "expected Super.NAME");
    case ExpressionKind::subject:
      return variable(subjects_.back(), expression.place);
    case ExpressionKind::name:
      return nameOf(expression, {});
    case ExpressionKind::member:
      return callOrIndex(membersOf(expression), expression.text, {}, expression.place);
    case ExpressionKind::arguments:
      return argumentsOf(expression);
    case ExpressionKind::unary:
      return unary(expression);
    case ExpressionKind::binary:
      return binary(expression);
    case ExpressionKind::isA:
      return isA(expression);
    case ExpressionKind::newObject:
      return newObject(expression);
    case ExpressionKind::addressOf:
      break;
  }
  fail(expression.place, "AddressOf may stand in AddHandler and RemoveHandler only");
}

Checked Checker::literal(const Expression& expression) const {
  Value value;
  Type type = kNilType;
  if (const auto* const truth = std::get_if<bool>(&expression.literal)) {
    value = *truth, type = kBoolean;
  } else if (const auto* const whole = std::get_if<int64_t>(&expression.literal)) {
    const bool small = *whole == static_cast<int32_t>(*whole);
    value = small ? Value(static_cast<int32_t>(*whole)) : Value(*whole);
    type = small ? kInteger : Type{TypeKind::int64, "", false};
  } else if (const auto* const real = std::get_if<double>(&expression.literal)) {
    value = *real, type = kDouble;
  } else if (const auto* const text = std::get_if<std::string>(&expression.literal)) {
    value = *text, type = kString;
  }
  return {type, [value](Frame&) { return value; }, expression.place};
}

Checked Checker::variable(const Named& named, Place place) const {
  if (named.constant) return {named.type, named.constant, place};
  if (named.isGlobal)
    return {named.type, [slot = named.slot](Frame& frame) { return frame.machine.globals[slot]; }, place};
  return {named.type, [slot = named.slot](Frame& frame) { return frame.slots[slot]; }, place};
}

Checked Checker::self(Place place) const {
  if (!hasObject_) fail(place, "there is no object here: this is no method of a class, or a shared one");
  return {{TypeKind::object, self_->info->name, false}, [](Frame& frame) { return frame.self; }, place};
}

const Named* Checker::variableNamed(std::string_view name) const {
  if (const Named* const local = findName(locals_, name)) return local;
  if (self_ && !membersNamed(*self_->info, name).empty()) return nullptr;
  return findName(globals_, name);
}

std::optional<Checker::Members> Checker::callables(std::string_view name, Place place) const {
  Members members;
  if (self_) members.candidates = membersNamed(*self_->info, name);
  leaveOutPrivate(members.candidates);
  if (!members.candidates.empty()) {
    if (hasObject_) members.object = self(place);
    return members;
  }
  const auto add = [&](const auto& all) {
    for (const Callable& each : all) {
      if (sameName(each.declaration.name, name)) members.candidates.push_back(&each);
    }
  };
  add(parts_.methods);
  if (members.candidates.empty()) add(functions());
  if (members.candidates.empty()) return {};
  return members;
}

void Checker::failUnknown(const std::string& name, Place place) const {
  std::vector<std::string> known;
  for (const Names* const names : {&locals_, &globals_}) {
    for (const Named& each : *names) known.push_back(each.name);
  }
  const ClassInfo* const cls = self_ ? self_->info : nullptr;
  for (const ClassInfo* each = cls; each; each = each->base) {
    for (const Callable& member : each->members) known.push_back(member.declaration.name);
  }
  for (const Callable& each : parts_.methods) known.push_back(each.declaration.name);
  for (const Callable& each : functions()) known.push_back(each.declaration.name);
  fail(place, "there is no variable, method or class " + name + suggestion(name, known));
}

Checked Checker::nameOf(const Expression& expression, const Written& written) {
  const std::string& name = expression.text;
  if (const Named* const found = variableNamed(name)) {
    Checked value = variable(*found, expression.place);
    if (written.empty()) return value;
    if (written.size() > 1 || !value.type.array)
      fail(expression.place, name + " is no array of one dimension, and no method");
    return indexed(std::move(value), checkExpression(*written.front()));
  }
  if (auto members = callables(name, expression.place))
    return callOrIndex(std::move(*members), name, written, expression.place);
  if (auto made = special(expression, written)) return std::move(*made);
  failUnknown(name, expression.place);
}

// What is written like a function, but takes types, or values of any type.
std::optional<Checked> Checker::special(const Expression& expression, const Written& written) {
  const std::string& name = expression.text;
  if (sameName(name, "Array")) return arrayOf(written, expression.place);
  if (sameName(name, "Ubound") && written.size() == 1) {
    Expression member{ExpressionKind::member, expression.place, "Ubound"};
    return callOrIndex(membersOfValue(checkExpression(*written[0]), member), name, {}, expression.place);
  }
  if (sameName(name, "CType") && written.size() == 2 && written[1]->kind == ExpressionKind::name)
    return cast(*written[0], resolve({written[1]->text, false, written[1]->place}), expression.place);
  const bool isType = parseType(name).kind != TypeKind::object || parts_.classes.find(name);
  if (!isType) return {};
  if (written.size() != 1)
    fail(expression.place, "expected " + name + "(value), or a shared member of " + name);
  return cast(*written[0], resolve({name, false, expression.place}), expression.place);
}

Checked Checker::argumentsOf(const Expression& expression) {
  Written written;
  for (size_t i = 1; i < expression.operands.size(); ++i) written.push_back(expression.operands[i].get());
  const Expression& callee = *expression.operands.front();
  if (callee.kind == ExpressionKind::name) return nameOf(callee, written);
  if (callee.kind == ExpressionKind::member)
    return callOrIndex(membersOf(callee), callee.text, written, callee.place);
  Checked array = checkExpression(callee);
  if (!array.type.array || written.size() != 1)
    fail(callee.place, "expected the name of a method or an array before (");
  return indexed(std::move(array), checkExpression(*written.front()));
}

Checked Checker::indexed(Checked array, Checked index) const {
  const Type element = elementOf(array.type);
  Code position = coerced(std::move(index), kInteger);
  return {element,
          [array = std::move(array.code), position = std::move(position), element](Frame& frame) {
            const Value elements = array(frame);
            return elementAt(elements, position(frame).integer(), element);
          },
          array.place};
}

Checked Checker::arrayOf(const Written& elements, Place place) {
  if (elements.empty()) fail(place, "expected at least one element, which tells the type of the array");
  Type type = {};
  std::vector<Code> codes;
  for (const Expression* const each : elements) {
    Checked element = checkExpression(*each);
    if (codes.empty()) type = element.type;
    if (isNone(type) || type.array || sameType(type, kNilType))
      fail(element.place, "an array can't have such elements");
    codes.push_back(coerced(std::move(element), type));
  }
  type.array = true;
  return {type,
          [codes = std::move(codes), type](Frame& frame) {
            const Value array = firstValue(type);
            for (const Code& code : codes) insertElement(array, arrayIn(array).count(), code(frame));
            return array;
          },
          place};
}

Checked Checker::unary(const Expression& expression) {
  Checked operand = checkExpression(*expression.operands.front());
  const bool negates = expression.text == "Not";
  const Type type = isReal(operand.type) ? kDouble : operand.type;
  const bool fits = isVariant(type) || (negates ? isTruth(type) || isWhole(type) : isNumber(type));
  if (!fits) fail(expression.place, expression.text + " takes no " + shown(type));
  if (expression.text == "+") return operand;
  Code code = [negates, type, operand = std::move(operand.code)](Frame& frame) {
    const Value value = operand(frame);
    if (!negates && isVariant(type)) return computedOfVariants(Operator::subtract, 0, value);
    if (!negates) return computed(Operator::subtract, type.kind, 0, value);
    if (value.kind() == Kind::boolean) return Value(!value.boolean());
    return computedOfVariants(Operator::exactlyOne, value, converted(-1, isVariant(type) ? kInteger : type));
  };
  return {type, std::move(code), expression.place};
}

Checked Checker::binary(const Expression& expression) {
  Checked left = checkExpression(*expression.operands[0]), right = checkExpression(*expression.operands[1]);
  const auto references = [](const Type& type) { return isReference(type) || isVariant(type); };
  const bool isIs = expression.text == "Is";
  const Operator op = isIs ? Operator::equal : operatorNamed(expression.text);
  if (isIs && references(left.type) && references(right.type)) {
    return {kBoolean,
            [one = std::move(left.code), other = std::move(right.code)](Frame& frame) -> Value {
              const Value a = one(frame);
              return a.handle() == other(frame).handle();
            },
            expression.place};
  }
  const bool values = !isNone(left.type) && !isNone(right.type);
  if (!isIs && values && (isVariant(left.type) || isVariant(right.type))) {
    return {compares(op) ? kBoolean : kVariant,
            [op, one = std::move(left.code), other = std::move(right.code)](Frame& frame) {
              const Value a = one(frame);
              return computedOfVariants(op, a, other(frame));
            },
            expression.place};
  }
  const auto kind = isIs ? std::nullopt : operandKind(op, left.type, right.type);
  if (!kind) {
    const bool joins = op == Operator::add && (isText(left.type) || isText(right.type));
    fail(expression.place, "'" + expression.text + "' takes no " + shown(left.type) + " and " +
                               shown(right.type) + (joins ? "; Str makes a text of a number" : ""));
  }
  if (*kind == TypeKind::boolean && (op == Operator::both || op == Operator::either)) {
    return {kBoolean,
            [decides = op == Operator::either, one = std::move(left.code),
             other = std::move(right.code)](Frame& frame) {
              const Value a = one(frame);
              return a.boolean() == decides ? a : other(frame);
            },
            expression.place};
  }
  return {compares(op) ? kBoolean : Type{*kind, "", false},
          [op, kind = *kind, one = std::move(left.code), other = std::move(right.code)](Frame& frame) {
            const Value a = one(frame);
            return computed(op, kind, a, other(frame));
          },
          expression.place};
}

Checked Checker::isA(const Expression& expression) {
  const Checked operand = checkExpression(*expression.operands.front());
  const Type type = resolve(expression.type);
  if (!isObject(type) || !(isObject(operand.type) || isVariant(operand.type)))
    fail(expression.place, "IsA takes an object and a class");
  const bool any = sameName(type.className, "Object");
  return {kBoolean,
          [code = operand.code, name = type.className, any](Frame& frame) -> Value {
            const Value object = code(frame);
            return host::isA(object, name) || (any && object.kind() == Kind::object && !object.isNil());
          },
          expression.place};
}

Checked Checker::cast(const Expression& expression, const Type& type, Place place) {
  Checked value = checkExpression(expression);
  if (!isObject(type) || isVariant(value.type)) return {type, coerced(std::move(value), type), place};
  if (!distance(value.type, type) && !distance(type, value.type))
    fail(place, aValueOf(value.type) + " is never " + aValueOf(type));
  Code code = [code = std::move(value.code), type](Frame& frame) {
    Value object = code(frame);
    if (!object.isNil() && !sameName(type.className, "Object") && !host::isA(object, type.className))
      host::raise("IllegalCastException", object.describe() + " is no " + type.className);
    return object;
  };
  return {type, std::move(code), place};
}

Checked Checker::newObject(const Expression& expression) {
  const Type type = resolve(expression.type);
  const ClassInfo* const cls = isObject(type) ? parts_.classes.find(type.className) : nullptr;
  if (!cls || sameName(type.className, "Object"))
    fail(expression.type.place, "New takes a class, not " + shown(type));
  const ProgramClass* program = nullptr;
  for (const ProgramClass& each : parts_.programClasses) {
    if (each.info == cls) program = &each;
  }
  Arguments arguments;
  for (const ExpressionPtr& each : expression.operands) arguments.push_back(checkExpression(*each));
  const Members members{membersNamed(*cls, "Constructor")};
  const Callable* const constructor = choose(members, arguments, false);
  // Without arguments an instance of a class that has no other constructor is made by none.
  const bool needsOne =
      !arguments.empty() || (!members.candidates.empty() && members.candidates[0]->function);
  if (!constructor && needsOne) failNoFit(members, "Constructor", arguments, expression.place);
  if (!constructor)
    return {type, [name = cls->name, program](Frame&) { return bareInstance(name, program); },
            expression.place};
  return {type,
          [name = cls->name, program, constructor,
           codes = argumentCodes(*constructor, std::move(arguments))](Frame& frame) {
            Value object = bareInstance(name, program);
            perform(constructor->run, frame, object, codes);
            return object;
          },
          expression.place};
}

// --- Members and calls ---

void Checker::leaveOutPrivate(Candidates& candidates) const {
  std::erase_if(candidates, [this](const Callable* each) {
    return each->onlyIn && (!self_ || self_->info != each->onlyIn);
  });
}

Checker::Members Checker::membersOfClass(const ClassInfo& cls, const Expression& member,
                                         std::optional<Checked> object) const {
  Members members{membersNamed(cls, member.text), std::move(object)};
  const bool isKnown = !members.candidates.empty();
  leaveOutPrivate(members.candidates);
  if (!members.candidates.empty()) return members;
  if (isKnown) fail(member.place, member.text + " is private to " + cls.name);
  std::vector<std::string> known;
  for (const ClassInfo* each = &cls; each; each = each->base) {
    for (const Callable& callable : each->members) known.push_back(callable.declaration.name);
  }
  const std::string hint =
      sameName(cls.name, "Variant") ? "; write CLASS(value)." + member.text : suggestion(member.text, known);
  fail(member.place, cls.name + " has no member " + member.text + hint);
}

Checker::Members Checker::membersOfValue(Checked object, const Expression& member) {
  Members members;
  if (object.type.array || isText(object.type)) {
    const auto add = [&](const auto& all, bool asText) {
      for (const Callable& each : all) {
        const bool fits = !asText || (!each.declaration.parameters.empty() &&
                                      sameName(each.declaration.parameters[0].name, "text"));
        if (fits && sameName(each.declaration.name, member.text)) members.candidates.push_back(&each);
      }
    };
    members.objectIsArgument = !object.type.array;
    if (members.objectIsArgument) {
      add(functions(), true);
    } else {
      add(parts_.classes.arrayMembersOf(elementOf(object.type)), false);
    }
  } else if (const ClassInfo* const cls = parts_.classes.find(shown(object.type))) {
    return membersOfClass(*cls, member, std::move(object));
  }
  if (members.candidates.empty()) fail(member.place, aValueOf(object.type) + " has no member " + member.text);
  members.object = std::move(object);
  return members;
}

Checker::Members Checker::membersOf(const Expression& member) {
  const Expression& object = *member.operands.front();
  if (object.kind == ExpressionKind::super) {
    Checked me = self(object.place);
    if (!self_->info->base) fail(object.place, self_->info->name + " inherits no class");
    Members members = membersOfClass(*self_->info->base, member, std::move(me));
    members.isSuper = true;
    return members;
  }
  const bool mayBeClass = object.kind == ExpressionKind::name && !variableNamed(object.text) &&
                          !callables(object.text, object.place);
  if (const ClassInfo* const cls = mayBeClass ? parts_.classes.find(object.text) : nullptr)
    return membersOfClass(*cls, member, {});
  return membersOfValue(checkExpression(object), member);
}

const Callable* Checker::choose(const Members& members, const Arguments& arguments, bool sets) const {
  const Callable* best = nullptr;
  int least = INT_MAX;
  for (const Callable* const each : members.candidates) {
    const std::vector<Parameter>& parameters = each->declaration.parameters;
    if (sets ? !each->set : !each->run) continue;
    const size_t given = arguments.size() - (sets ? 1 : 0);
    if (given > parameters.size()) continue;
    int sum = 0;
    for (size_t i = 0; i < parameters.size() && sum >= 0; ++i) {
      const auto one = i < given              ? distance(arguments[i].type, parameters[i].type)
                       : parameters[i].preset ? std::optional(0)
                                              : std::nullopt;
      sum = one ? sum + *one : INT_MIN;
    }
    const auto stored = sets ? distance(arguments.back().type, each->assigned) : 0;
    if (sum < 0 || !stored || sum + *stored >= least) continue;
    least = sum + *stored;
    best = each;
  }
  return best;
}

void Checker::failNoFit(const Members& members, const std::string& name, const Arguments& arguments,
                        Place place) const {
  std::string text;
  for (const Callable* const each : members.candidates) text += (text.empty() ? "" : "; ") + each->text;
  if (text.empty()) text = "there is none";
  fail(place, name + "(" + shownAll(arguments) + ") fits none of: " + text);
}

Checked Checker::callOrIndex(Members members, const std::string& name, const Written& written, Place place) {
  Arguments arguments;
  if (members.objectIsArgument) arguments.push_back(*members.object);
  for (const Expression* const each : written) arguments.push_back(checkExpression(*each));
  if (const Callable* const found = choose(members, arguments, false))
    return called(*found, std::move(members), std::move(arguments), place);
  const Callable* const whole = written.size() == 1 ? choose(members, {}, false) : nullptr;
  if (whole && whole->declaration.result.array)
    return indexed(called(*whole, std::move(members), {}, place), std::move(arguments.back()));
  failNoFit(members, name, arguments, place);
}

std::vector<Code> Checker::argumentCodes(const Callable& callable, Arguments arguments) const {
  const std::vector<Parameter>& parameters = callable.declaration.parameters;
  std::vector<Code> codes;
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (i < arguments.size()) {
      codes.push_back(coerced(std::move(arguments[i]), parameters[i].type));
    } else {
      const Value preset = converted(valueOf(*parameters[i].preset, parameters[i].type), parameters[i].type);
      codes.push_back([preset](Frame&) { return preset; });
    }
  }
  return codes;
}

// What gives the object that a member is used on; of a shared member, nothing.
Code Checker::objectCode(const Callable& callable, const Members& members, Place place) const {
  if (members.objectIsArgument || callable.isShared || !callable.isMember)
    return [](Frame&) { return Value(); };
  if (!members.object)
    fail(place, callable.declaration.name + " is a member of objects, and there is none here");
  if (!isObject(members.object->type)) return members.object->code;
  return [code = members.object->code, name = callable.declaration.name](Frame& frame) {
    Value object = code(frame);
    if (object.isNil()) host::raise("NilObjectException", name + " of an object that is Nil");
    return object;
  };
}

Checked Checker::called(const Callable& callable, Members members, Arguments arguments, Place place) {
  Code object = objectCode(callable, members, place);
  auto run = callable.run;
  if (members.isSuper && callable.function) {
    run = [function = callable.function](Call& call) {
      return call.machine.invoke(*function, call.self, std::move(call.arguments));
    };
  }
  return {callable.declaration.result,
          [run = std::move(run), object = std::move(object),
           codes = argumentCodes(callable, std::move(arguments))](Frame& frame) {
            return perform(run, frame, object(frame), codes);
          },
          place};
}

// --- Where values are stored ---

Target Checker::target(const Expression& expression, const Checked& value) {
  const bool isCall = expression.kind == ExpressionKind::arguments;
  const Expression& place = isCall ? *expression.operands.front() : expression;
  Arguments arguments;
  if (place.kind == ExpressionKind::name) {
    if (const Named* const named = variableNamed(place.text); named && !isCall) {
      if (named->constant) fail(place.place, named->name + " is a constant");
      return {named->type,
              [slot = named->slot, isGlobal = named->isGlobal](Frame& frame, const Value& stored) {
                // What was there ends when the new value is in its place.
                const Value before =
                    std::exchange(isGlobal ? frame.machine.globals[slot] : frame.slots[slot], stored);
              }};
    }
  }
  std::optional<Members> members;
  if (place.kind == ExpressionKind::member) members = membersOf(place);
  if (place.kind == ExpressionKind::name && !variableNamed(place.text))
    members = callables(place.text, place.place);
  for (size_t i = 1; isCall && i < expression.operands.size(); ++i)
    arguments.push_back(checkExpression(*expression.operands[i]));
  if (members) {
    arguments.push_back(value);
    const Callable* const found = choose(*members, arguments, true);
    arguments.pop_back();
    if (found) {
      Code object = objectCode(*found, *members, place.place);
      return {found->assigned,
              [found, object = std::move(object), codes = argumentCodes(*found, std::move(arguments))](
                  Frame& frame, const Value& stored) {
                const Value self = object(frame);
                Call call{frame.machine, self, {}};
                for (const Code& code : codes) call.arguments.push_back(code(frame));
                call.arguments.push_back(stored);
                found->set(call);
              }};
    }
  }
  if (isCall && arguments.size() == 1) {
    Checked array = checkExpression(place);
    if (array.type.array) {
      return {elementOf(array.type),
              [array = std::move(array.code), index = coerced(std::move(arguments[0]), kInteger)](
                  Frame& frame, const Value& stored) {
                const Value elements = array(frame);
                setElement(elements, index(frame).integer(), stored);
              }};
    }
  }
  if (!members) checkExpression(expression);  // names what is unknown
  std::string settable;
  for (const Callable* const each : members ? members->candidates : Candidates{}) {
    if (each->set) settable += (settable.empty() ? "; it takes " : ", ") + shown(each->assigned);
  }
  fail(expression.place, aValueOf(value.type) + " can't be assigned here" + settable);
}

}  // namespace standin::host
