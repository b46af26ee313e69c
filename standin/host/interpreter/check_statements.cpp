#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/checker.h"
#include "standin/host/things/event_handlers.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

using StatementKind = Statement::Kind;
using ExpressionKind = Expression::Kind;

struct LoopKind {
  const char* word;
  Flow exit, next;
};
constexpr LoopKind kLoops[] = {{"For", Flow::exitFor, Flow::continueFor},
                               {"Do", Flow::exitDo, Flow::continueDo},
                               {"While", Flow::exitWhile, Flow::continueWhile}};

const LoopKind& loopNamed(std::string_view word) {
  return *std::find_if(std::begin(kLoops), std::end(kLoops),
                       [word](const auto& each) { return word == each.word; });
}

// What a turn of the loop leads to: nothing where the loop goes on, otherwise what comes after the loop.
std::optional<Flow> afterTurn(Flow flow, const LoopKind& loop) {
  if (flow == Flow::next || flow == loop.next) return {};
  return flow == loop.exit ? Flow::next : flow;
}

// The variables of a block end with it, the last one first.
struct BlockVariables {
  ~BlockVariables() {
    while (last > first) frame.slots[--last] = Value();
  }
  Frame& frame;
  const size_t first;
  size_t last;
};

}  // namespace

void Checker::declareParameters(const Declaration& declaration) {
  for (const Parameter& parameter : declaration.parameters) {
    locals_.push_back({parameter.name, parameter.type, slots_++});
  }
}

void Checker::checkBody(const Block& statements, Function& function, Names* globals) {
  function_ = &function;
  outermost_ = globals;
  function.body = block(statements);
  function.slots = slots_;
}

Action Checker::block(const Block& statements) {
  struct Step {
    int line;
    Action action;
  };
  const size_t names = locals_.size(), firstSlot = slots_;
  ++blockDepth_;
  std::vector<Step> steps;
  for (const Statement& each : statements) steps.push_back({each.place.line, statement(each)});
  --blockDepth_;
  locals_.resize(names);
  return [steps = std::move(steps), firstSlot, lastSlot = slots_](Frame& frame) {
    const BlockVariables variables{frame, firstSlot, lastSlot};
    for (const Step& step : steps) {
      frame.line = step.line;
      frame.machine.step();
      if (const Flow flow = step.action(frame); flow != Flow::next) return flow;
    }
    frame.machine.throwPending();
    return Flow::next;
  };
}

const Named& Checker::declare(const std::string& name, const Type& type, Place place) {
  if (findName(locals_, name)) fail(place, name + " is declared already");
  if (outermost_ && blockDepth_ == 1) {
    // Its declaration was found before; see declareGlobals.
    const auto found = std::find_if(outermost_->begin(), outermost_->end(),
                                    [&](const Named& each) { return sameName(each.name, name); });
    return *found;
  }
  locals_.push_back({name, type, slots_++});
  return locals_.back();
}

Action Checker::statement(const Statement& each) {
  switch (each.kind) {
    case StatementKind::dim:
      return dim(each);
    case StatementKind::constant: {
      Type type = {};
      Code code = checkConstant(*each.expressions[0], type);
      if (!outermost_ || blockDepth_ > 1) {
        if (findName(locals_, each.name)) fail(each.place, each.name + " is declared already");
        locals_.push_back({each.name, type, 0, false, std::move(code)});
      }
      return [](Frame&) { return Flow::next; };
    }
    case StatementKind::redim:
      return redim(each);
    case StatementKind::assign:
      return assign(each);
    case StatementKind::call:
      return call(each);
    case StatementKind::ifElse:
      return ifElse(each.branches);
    case StatementKind::select:
      return select(each);
    case StatementKind::forTo:
      return forTo(each);
    case StatementKind::forEach:
      return forEach(each);
    case StatementKind::loop:
      return loop(each);
    case StatementKind::exit:
    case StatementKind::next:
      return leave(each);
    case StatementKind::giveBack:
      return giveBack(each);
    case StatementKind::tryCatch:
      return tryCatch(each);
    case StatementKind::raise:
      return raise(each);
    case StatementKind::addHandler:
    case StatementKind::removeHandler:
      return handler(each);
  }
  return {};
}

Action Checker::dim(const Statement& declared) {
  if (declared.type.name.empty()) fail(declared.place, "expected As and the type of " + declared.name);
  const Type type = resolve(declared.type);
  Code first = [type](Frame&) { return firstValue(type); };
  if (declared.hasBound) {
    first = [type, bound = checkedAs(*declared.expressions[0], kInteger)](Frame& frame) {
      const Value array = firstValue(type);
      resize(array, bound(frame).integer());
      return array;
    };
  } else if (!declared.expressions.empty()) {
    first = checkedAs(*declared.expressions[0], type);
  }
  const Named variable = declare(declared.name, type, declared.place);
  return [first = std::move(first), slot = variable.slot, isGlobal = variable.isGlobal](Frame& frame) {
    Value value = first(frame);
    std::swap(isGlobal ? frame.machine.globals[slot] : frame.slots[slot], value);
    return Flow::next;
  };
}

Code Checker::checkConstant(const Expression& expression, Type& type) {
  using Kind = Expression::Kind;
  const auto isConstant = [this](const Expression& each, const auto& self) -> bool {
    if (each.kind == Kind::name) {
      const Named* const named = variableNamed(each.text);
      return named && named->constant;
    }
    if (each.kind == Kind::member) return each.operands[0]->kind == Kind::name;
    const bool fits = each.kind == Kind::literal || each.kind == Kind::color || each.kind == Kind::unary ||
                      each.kind == Kind::binary;
    return fits && std::all_of(each.operands.begin(), each.operands.end(),
                               [&](const auto& operand) { return self(*operand, self); });
  };
  if (!isConstant(expression, isConstant))
    fail(expression.place, "expected a value that is known before the program runs");
  Checked value = checkExpression(expression);
  type = value.type;
  return value.code;
}

Action Checker::redim(const Statement& each) {
  Checked array = checkExpression(*each.expressions[0]);
  if (!array.type.array) fail(each.place, "Redim takes an array, not " + aValueOf(array.type));
  return [array = std::move(array.code), bound = checkedAs(*each.expressions[1], kInteger)](Frame& frame) {
    resize(array(frame), bound(frame).integer());
    return Flow::next;
  };
}

Action Checker::assign(const Statement& each) {
  Checked value = checkExpression(*each.expressions[1]);
  if (isNone(value.type)) fail(value.place, "this has no value");
  Target to = target(*each.expressions[0], value);
  return [store = std::move(to.store), code = coerced(std::move(value), to.type)](Frame& frame) {
    store(frame, code(frame));
    return Flow::next;
  };
}

Action Checker::call(const Statement& each) {
  const Expression& expression = *each.expressions[0];
  const bool isCall = expression.kind == ExpressionKind::arguments ||
                      expression.kind == ExpressionKind::name || expression.kind == ExpressionKind::member;
  if (!isCall || (expression.kind == ExpressionKind::name && variableNamed(expression.text)))
    fail(expression.place, "expected a statement, such as a call of a method");
  return [code = checkExpression(expression).code](Frame& frame) {
    code(frame);
    return Flow::next;
  };
}

Action Checker::ifElse(const std::vector<Branch>& branches) {
  struct Way {
    Code condition;
    Action body;
  };
  std::vector<Way> ways;
  for (const Branch& branch : branches) {
    Code condition =
        branch.condition ? checkedAs(*branch.condition, kBoolean) : [](Frame&) -> Value { return true; };
    ways.push_back({std::move(condition), block(branch.body)});
  }
  return [ways = std::move(ways)](Frame& frame) {
    for (const Way& way : ways) {
      if (way.condition(frame).boolean()) return way.body(frame);
    }
    return Flow::next;
  };
}

Action Checker::select(const Statement& each) {
  Checked subject = checkExpression(*each.expressions[0]);
  if (isNone(subject.type)) fail(subject.place, "this has no value");
  const size_t slot = slots_++;
  subjects_.push_back({"", subject.type, slot});
  Action branches = ifElse(each.branches);
  subjects_.pop_back();
  return [slot, code = std::move(subject.code), branches = std::move(branches)](Frame& frame) {
    frame.slots[slot] = code(frame);
    return branches(frame);
  };
}

const Named& Checker::loopVariable(const Statement& each, const Type& type) {
  if (each.type.name.empty()) {
    if (const Named* const known = variableNamed(each.name); known && !known->constant) {
      if (!sameType(known->type, type) && !(isNumber(known->type) && isNumber(type)))
        fail(each.place, each.name + " is " + aValueOf(known->type) + ", not " + aValueOf(type));
      return *known;
    }
    fail(each.place, "expected a type: For " +
                         std::string(each.kind == StatementKind::forEach ? "Each " : "") + each.name +
                         " As " + shown(type));
  }
  if (findName(locals_, each.name)) fail(each.place, each.name + " is declared already");
  locals_.push_back({each.name, resolve(each.type), slots_++});
  return locals_.back();
}

Action Checker::forTo(const Statement& each) {
  const size_t names = locals_.size();
  Checked first = checkExpression(*each.expressions[0]);
  const Named variable = loopVariable(each, first.type);
  if (!isNumber(variable.type))
    fail(each.place, "a For loop counts with numbers, not with " + aValueOf(variable.type));
  const Type type = variable.type, wide = isReal(type) ? kDouble : Type{TypeKind::int64, "", false};
  Code from = coerced(std::move(first), type);
  Code to = checkedAs(*each.expressions[1], wide);
  Code step = each.expressions.size() > 2 ? checkedAs(*each.expressions[2], wide)
                                          : [one = converted(1, wide)](Frame&) { return one; };
  loops_.push_back("For");
  Action body = block(each.branches[0].body);
  loops_.pop_back();
  locals_.resize(names);
  const auto place = [slot = variable.slot, isGlobal = variable.isGlobal](Frame& frame) -> Value& {
    return isGlobal ? frame.machine.globals[slot] : frame.slots[slot];
  };
  const auto beyond = [wide](const Value& value, const Value& end, bool falls) {
    return computed(falls ? Operator::less : Operator::greater, wide.kind, value, end).boolean();
  };
  return [=, from = std::move(from), to = std::move(to), step = std::move(step), body = std::move(body),
          downwards = each.downwards](Frame& frame) {
    for (place(frame) = from(frame);;) {
      Value width = step(frame);
      const bool falls =
          downwards != computed(Operator::less, wide.kind, width, converted(0, wide)).boolean();
      if (beyond(place(frame), to(frame), falls)) return Flow::next;
      if (const auto after = afterTurn(body(frame), kLoops[0])) return *after;
      frame.machine.step();
      const Value next = computed(downwards ? Operator::subtract : Operator::add, wide.kind,
                                  converted(place(frame), wide), width);
      place(frame) = converted(next, type);
      if (!computed(Operator::equal, wide.kind, next, place(frame)).boolean())
        return Flow::next;  // no such number
    }
  };
}

Action Checker::forEach(const Statement& each) {
  const size_t names = locals_.size();
  Checked array = checkExpression(*each.expressions[0]);
  if (!array.type.array) fail(array.place, "For Each takes an array, not " + aValueOf(array.type));
  const Type element = elementOf(array.type);
  const Named variable = loopVariable(each, element);
  Checked current{element, [slot = slots_](Frame& frame) { return frame.slots[slot]; }, each.place};
  const size_t slot = slots_++;
  Code value = coerced(std::move(current), variable.type);
  loops_.push_back("For");
  Action body = block(each.branches[0].body);
  loops_.pop_back();
  locals_.resize(names);
  return [=, array = std::move(array.code), value = std::move(value), body = std::move(body)](Frame& frame) {
    const BlockVariables variables{frame, slot, slot + 1};
    const Value elements = array(frame);
    for (int64_t i = 0; i < arrayIn(elements).count(); ++i) {
      frame.slots[slot] = elementAt(elements, i, element);
      (variable.isGlobal ? frame.machine.globals : frame.slots)[variable.slot] = value(frame);
      if (const auto after = afterTurn(body(frame), kLoops[0])) return *after;
      frame.machine.step();
    }
    return Flow::next;
  };
}

Action Checker::loop(const Statement& each) {
  const LoopKind& kind = loopNamed(each.isWhile ? "While" : "Do");
  const Code always = [](Frame&) -> Value { return true; };
  Code before = each.expressions[0] ? checkedAs(*each.expressions[0], kBoolean) : always;
  Code after = each.expressions[1] ? checkedAs(*each.expressions[1], kBoolean) : always;
  loops_.emplace_back(kind.word);
  Action body = block(each.branches[0].body);
  loops_.pop_back();
  return [&kind, before = std::move(before), after = std::move(after), body = std::move(body)](Frame& frame) {
    while (before(frame).boolean()) {
      if (const auto left = afterTurn(body(frame), kind)) return *left;
      frame.machine.step();
      if (!after(frame).boolean()) break;
    }
    return Flow::next;
  };
}

Action Checker::leave(const Statement& each) {
  const bool exits = each.kind == StatementKind::exit;
  Flow flow = Flow::giveBack;
  if (each.name != "Sub" && each.name != "Function") {
    const bool isInside = each.name.empty()
                              ? !loops_.empty()
                              : std::find(loops_.begin(), loops_.end(), each.name) != loops_.end();
    if (!isInside)
      fail(each.place, "there is no " + (each.name.empty() ? "loop" : each.name + " loop") + " around this");
    const LoopKind& kind = loopNamed(each.name.empty() ? loops_.back() : each.name);
    flow = exits ? kind.exit : kind.next;
  }
  return [flow](Frame&) { return flow; };
}

Action Checker::giveBack(const Statement& each) {
  const Type& result = function_->declaration.result;
  if (each.expressions.empty()) {
    if (!isNone(result)) fail(each.place, "expected " + aValueOf(result) + " after Return");
    return [](Frame&) { return Flow::giveBack; };
  }
  if (isNone(result)) fail(each.place, "a Sub gives nothing back; write Return alone, or make it a Function");
  return [code = checkedAs(*each.expressions[0], result)](Frame& frame) {
    frame.result = code(frame);
    return Flow::giveBack;
  };
}

Action Checker::tryCatch(const Statement& each) {
  struct Catcher {
    std::string className;
    size_t slot;
    Action body;
  };
  Action body = block(each.branches[0].body);
  std::vector<Catcher> catchers;
  for (size_t i = 1; i < each.branches.size(); ++i) {
    const Branch& branch = each.branches[i];
    Type type{TypeKind::object, "RuntimeException", false};
    if (!branch.type.name.empty() && !distance(resolve(branch.type), type))
      fail(branch.type.place, branch.type.name + " is no class of exceptions");
    if (!branch.type.name.empty()) type = resolve(branch.type);
    const size_t names = locals_.size(), slot = slots_++;
    if (findName(locals_, branch.name)) fail(branch.place, branch.name + " is declared already");
    locals_.push_back({branch.name, type, slot});
    catchers.push_back({type.className, slot, block(branch.body)});
    locals_.resize(names);
  }
  return [body = std::move(body), catchers = std::move(catchers), last = block(each.last)](Frame& frame) {
    std::optional<Thrown> thrown;
    Flow flow = Flow::next;
    const auto attempt = [&](const Action& action) {
      thrown.reset();
      try {
        flow = action(frame);
      } catch (Thrown& exception) {
        thrown = std::move(exception);
      }
    };
    attempt(body);
    const Value exception = thrown ? thrown->exception : Value();
    const auto found = std::find_if(catchers.begin(), catchers.end(), [&](const Catcher& catcher) {
      return host::isA(exception, catcher.className);
    });
    if (thrown && found != catchers.end()) {
      frame.slots[found->slot] = exception;
      const BlockVariables variables{frame, found->slot, found->slot + 1};
      attempt(found->body);
    }
    if (const Flow after = last(frame); after != Flow::next) return after;
    if (thrown) throw std::move(*thrown);
    return flow;
  };
}

Action Checker::raise(const Statement& each) {
  Code code = checkedAs(*each.expressions[0], {TypeKind::object, "RuntimeException", false});
  return [code = std::move(code)](Frame& frame) -> Flow {
    const Value exception = code(frame);
    if (exception.isNil()) host::raise("NilObjectException", "Raise of Nil");
    throw Thrown{exception};
  };
}

// The method gets the object first, and then what the event declares.
Action Checker::handler(const Statement& each) {
  const Expression& eventName = *each.expressions[0];
  Checked object = checkExpression(*eventName.operands[0]);
  const ClassInfo* cls = isObject(object.type) ? parts_.classes.find(object.type.className) : nullptr;
  const Declaration* event = nullptr;
  std::vector<std::string> known;
  for (; cls && !event; cls = cls->base) {
    for (const Declaration& declared : cls->events) {
      known.push_back(declared.name);
      if (sameName(declared.name, eventName.text)) event = &declared;
    }
  }
  if (!event)
    fail(eventName.place,
         shown(object.type) + " has no event " + eventName.text + suggestion(eventName.text, known));
  const Expression& method = *each.expressions[1]->operands[0];
  const auto members = method.kind == ExpressionKind::member ? std::optional(membersOf(method))
                                                             : callables(method.text, method.place);
  if (!members) failUnknown(method.text, method.place);
  Declaration wanted = *event;
  wanted.parameters.insert(wanted.parameters.begin(), Parameter{"sender", object.type, false, {}});
  const auto fits = [&](const Callable* candidate) {
    const auto& parameters = candidate->declaration.parameters;
    return candidate->function && isNone(candidate->declaration.result) &&
           parameters.size() == wanted.parameters.size() && distance(object.type, parameters[0].type) &&
           std::equal(
               parameters.begin() + 1, parameters.end(), wanted.parameters.begin() + 1,
               [](const Parameter& one, const Parameter& other) { return sameType(one.type, other.type); });
  };
  const auto found = std::find_if(members->candidates.begin(), members->candidates.end(), fits);
  if (found == members->candidates.end()) {
    std::string parameters;
    for (const Parameter& parameter : wanted.parameters)
      parameters += (parameters.empty() ? "" : ", ") + parameter.name + " As " + shown(parameter.type);
    fail(method.place, "expected a Sub of the program: " + method.text + "(" + parameters + ")");
  }
  return [adds = each.kind == StatementKind::addHandler, object = std::move(object.code), name = event->name,
          function = (*found)->function, self = objectCode(**found, *members, method.place)](Frame& frame) {
    const Value sender = object(frame);
    if (sender.isNil()) host::raise("NilObjectException", "AddHandler for an object that is Nil");
    const Event* const known = findEvent(asKind<HostObject>(thingOf(sender.reference()))->cls, name);
    if (adds && findHandler(sender.reference().object(), *known))
      host::raise("RuntimeException", name + " of this object has a handler already");
    setEventHandler(sender, name, adds ? handlerOf(frame.machine, *function, self(frame), sender) : nullptr);
    return Flow::next;
  };
}

}  // namespace standin::host
