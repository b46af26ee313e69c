#include <algorithm>
#include <utility>

#include "standin/host/host.h"
#include "standin/host/interpreter/checker.h"

namespace standin::host {
namespace {

using StatementKind = Statement::Kind;

// The variables of a block end with it, the last one first.
struct BlockVariables {
  ~BlockVariables() {
    while (last > first) frame.slots[--last] = Value();
  }
  Frame& frame;
  const size_t first;
  size_t last;
};

class BodyChecker {
 public:
  BodyChecker(const Scope& scope, Function& function, bool isOutermost)
      : scope_(scope), function_(function), isOutermost_(isOutermost) {}

  void check(const Block& statements) {
    for (const Parameter& each : function_.declaration.parameters)
      scope_.locals.push_back({each.name, each.type, {slots_++}});
    function_.body = block(statements);
    function_.slots = slots_;
  }

 private:
  Action block(const Block& statements) {
    struct Step {
      int line;
      Action action;
    };
    const size_t names = scope_.locals.size(), firstSlot = slots_;
    ++blockDepth_;
    std::vector<Step> steps;
    for (const Statement& each : statements) steps.push_back({each.place.line, statement(each)});
    --blockDepth_;
    scope_.locals.resize(names);
    return [steps = std::move(steps), firstSlot, lastSlot = slots_](Frame& frame) {
      const auto run = [&] {
        const BlockVariables variables{frame, firstSlot, lastSlot};
        for (const Step& step : steps) {
          frame.line = step.line;
          frame.machine.step();
          if (const Flow flow = step.action(frame); flow.kind != Flow::next) return flow;
        }
        return Flow{};
      };
      const Flow flow = run();
      frame.machine.throwPending();  // of the destructors, too
      return flow;
    };
  }

  // What a block computes between its statements: exceptions are of the line where it stands.
  Code between(const Expression& expression, const Type& type) {
    return [line = expression.place.line, code = checkedAs(scope_, expression, type)](Frame& frame) {
      frame.line = line;
      return code(frame);
    };
  }

  Action statement(const Statement& each) {
    using Check = Action (BodyChecker::*)(const Statement&);
    // By the statements' kinds.
    static constexpr Check kChecks[] = {
        &BodyChecker::dim,      &BodyChecker::constant, &BodyChecker::assign, &BodyChecker::call,
        &BodyChecker::ifElse,   &BodyChecker::select,   &BodyChecker::forTo,  &BodyChecker::forEach,
        &BodyChecker::loop,     &BodyChecker::leave,    &BodyChecker::leave,  &BodyChecker::giveBack,
        &BodyChecker::tryCatch, &BodyChecker::handler,  &BodyChecker::handler};
    return (this->*kChecks[static_cast<int>(each.kind)])(each);
  }

  // A variable has the next slot. That of a Catch may have no name.
  const Named& declare(Named named, Place place) {
    const bool isKnown = !named.name.empty() && findName(scope_.locals, named.name);
    if (isKnown) fail(place, named.name + " is declared already");
    if (!named.constant) named.slot.number = slots_++;
    scope_.locals.push_back(std::move(named));
    return scope_.locals.back();
  }

  // What is outermost outside of methods was found before; see ProgramChecker.
  const Named& declareHere(Named named, Place place) {
    if (isOutermost_ && blockDepth_ == 1) return *findName(scope_.globals, named.name);
    return declare(std::move(named), place);
  }

  Action dim(const Statement& declared) {
    const Type type = resolved(scope_.parts, declared.type);
    Code first = [type](Frame&) { return firstValue(type); };
    if (declared.hasBound) {
      first = [type, bound = checkedAs(scope_, declared.expressions[0], kInteger)](Frame& frame) {
        const Value array = firstValue(type);
        resize(array, bound(frame).integer());
        return array;
      };
    } else if (!declared.expressions.empty()) {
      first = checkedAs(scope_, declared.expressions[0], type);
    }
    return [first = std::move(first),
            slot = declareHere({declared.name, type}, declared.place).slot](Frame& frame) {
      Value value = first(frame);
      std::swap(slot.in(frame), value);
      return Flow{};
    };
  }

  Action constant(const Statement& declared) {
    Checked value = checkConstant(scope_, declared);
    declareHere({declared.name, value.type, {}, std::move(value.code)}, declared.place);
    return [](Frame&) { return Flow{}; };
  }

  Action assign(const Statement& each) { return checkAssignment(scope_, each); }

  Action handler(const Statement& each) { return checkHandler(scope_, each); }

  Action call(const Statement& each) {
    using Kind = Expression::Kind;
    const Expression& expression = each.expressions[0];
    const bool isName = expression.kind == Kind::name && !variableNamed(scope_, expression.text);
    if (!isName && expression.kind != Kind::arguments && expression.kind != Kind::member)
      fail(expression.place, "expected a statement, such as a call of a method");
    return [code = checkExpression(scope_, expression).code](Frame& frame) {
      code(frame);
      return Flow{};
    };
  }

  Action ifElse(const Statement& each) {
    struct Way {
      Code condition;
      Action body;
    };
    std::vector<Way> ways;
    for (const auto& branch : each.branches) {
      Code condition = between(branch.condition, kBoolean);
      ways.push_back({std::move(condition), block(branch.body)});
    }
    return [ways = std::move(ways)](Frame& frame) {
      for (const Way& way : ways) {
        if (way.condition(frame).boolean()) return way.body(frame);
      }
      return Flow{};
    };
  }

  Action select(const Statement& each) {
    Checked subject = checkExpression(scope_, each.expressions[0]);
    if (subject.type.kind == TypeKind::none) fail(subject.place, "this has no value");
    const size_t slot = slots_++;
    scope_.subjects.push_back({"", subject.type, {slot}});
    Action branches = ifElse(each);
    scope_.subjects.pop_back();
    return [slot, code = std::move(subject.code), branches = std::move(branches)](Frame& frame) {
      const BlockVariables variables{frame, slot, slot + 1};
      frame.slots[slot] = code(frame);
      return branches(frame);
    };
  }

  // --- Loops ---

  // The turns of a loop.
  struct Turns {
    Action body;
    size_t loop;

    // One more: what comes after the loop, or nothing where it goes on.
    std::optional<Flow> operator()(Frame& frame) const {
      const Flow flow = body(frame);
      const bool isOwn = flow.loop == loop;
      if (flow.kind == Flow::exit && isOwn) return Flow{};
      if (flow.kind != Flow::next && !(flow.kind == Flow::proceed && isOwn)) return flow;
      frame.machine.step();
      return {};
    }
  };

  Turns turnsOf(const Statement& each, const std::string& word) {
    loops_.push_back(word);
    Turns turns{block(each.branches[0].body), loops_.size()};
    loops_.pop_back();
    return turns;
  }

  Named loopVariable(const Statement& each, const Type& type) {
    if (each.type.type.kind != TypeKind::none)
      return declare({each.name, resolved(scope_.parts, each.type)}, each.place);
    const Named* const known = variableNamed(scope_, each.name);
    if (!known || known->constant) {
      const std::string form = each.kind == StatementKind::forEach ? "For Each " : "For ";
      fail(each.place, "expected a type: " + form + each.name + " As " + shown(type));
    }
    if (!sameType(known->type, type) && !(isNumber(known->type) && isNumber(type)))
      fail(each.place, each.name + " is " + aValueOf(known->type) + ", not " + aValueOf(type));
    return *known;
  }

  Action forTo(const Statement& each) {
    const size_t names = scope_.locals.size();
    Checked first = checkExpression(scope_, each.expressions[0]);
    const Named variable = loopVariable(each, first.type);
    const Type type = variable.type, wide = isReal(type.kind) ? kDouble : kInt64;
    if (!isNumber(type)) fail(each.place, "a For loop counts with numbers, not with " + aValueOf(type));
    Code from = coerced(scope_, std::move(first), type);
    Code to = between(each.expressions[1], wide), step = between(each.expressions[2], wide);
    Turns turns = turnsOf(each, "For");
    scope_.locals.resize(names);
    const Operator &less = operatorNamed("<"), &atMost = operatorNamed("<="), &atLeast = operatorNamed(">=");
    const Operator& changes = operatorNamed(each.downwards ? "-" : "+");
    return [=, &less, &atMost, &atLeast, &changes, slot = variable.slot, from = std::move(from),
            to = std::move(to), step = std::move(step), turns = std::move(turns),
            downwards = each.downwards](Frame& frame) {
      for (slot.in(frame) = from(frame);;) {
        const Value width = step(frame), end = to(frame);
        const bool falls = downwards != computed(less, width, 0).boolean();
        if (!computed(falls ? atLeast : atMost, slot.in(frame), end).boolean()) return Flow{};
        if (const auto after = turns(frame)) return *after;
        const Value before = slot.in(frame);
        slot.in(frame) = converted(computed(changes, before, width), type);
        // Beyond the last number of the type there is none.
        const Value &lower = falls ? before : slot.in(frame), &higher = falls ? slot.in(frame) : before;
        if (computed(less, lower, higher).boolean()) return Flow{};
      }
    };
  }

  Action forEach(const Statement& each) {
    const size_t names = scope_.locals.size();
    Checked array = checkExpression(scope_, each.expressions[0]);
    if (!array.type.array) fail(array.place, "For Each takes an array, not " + aValueOf(array.type));
    const Type element = elementOf(array.type);
    const Named variable = loopVariable(each, element);
    const size_t slot = slots_++;
    Code value = coerced(scope_, {element, each.place, [slot](Frame& frame) { return frame.slots[slot]; }},
                         variable.type);
    Turns turns = turnsOf(each, "For");
    scope_.locals.resize(names);
    return [=, to = variable.slot, array = std::move(array.code), value = std::move(value),
            turns = std::move(turns)](Frame& frame) {
      const BlockVariables variables{frame, slot, slot + 1};
      const Value elements = array(frame);
      for (int64_t i = 0; i < arrayIn(elements).count(); ++i) {
        frame.slots[slot] = elementAt(elements, i, element);
        to.in(frame) = value(frame);
        if (const auto after = turns(frame)) return *after;
      }
      return Flow{};
    };
  }

  Action loop(const Statement& each) {
    Code before = between(each.expressions[0], kBoolean), after = between(each.expressions[1], kBoolean);
    return [before = std::move(before), after = std::move(after),
            turns = turnsOf(each, each.name)](Frame& frame) {
      while (before(frame).boolean()) {
        if (const auto left = turns(frame)) return *left;
        if (!after(frame).boolean()) break;
      }
      return Flow{};
    };
  }

  Action leave(const Statement& each) {
    Flow flow{Flow::giveBack};
    if (each.name != "Sub" && each.name != "Function") {
      flow = {each.kind == StatementKind::exit ? Flow::exit : Flow::proceed, loops_.size()};
      while (flow.loop > 0 && !each.name.empty() && loops_[flow.loop - 1] != each.name) --flow.loop;
      if (flow.loop == 0)
        fail(each.place,
             "there is no " + (each.name.empty() ? "loop" : each.name + " loop") + " around this");
    }
    return [flow](Frame&) { return flow; };
  }

  // --- Methods and exceptions ---

  Action giveBack(const Statement& each) {
    const Type& result = function_.declaration.result;
    const bool isSub = result.kind == TypeKind::none;
    if (isSub != each.expressions.empty())
      fail(each.place, isSub ? "a Sub gives nothing back; write Return alone, or make it a Function"
                             : "expected " + aValueOf(result) + " after Return");
    if (isSub) return [](Frame&) { return Flow{Flow::giveBack}; };
    return [code = checkedAs(scope_, each.expressions[0], result)](Frame& frame) {
      frame.result = code(frame);
      return Flow{Flow::giveBack};
    };
  }

  Action tryCatch(const Statement& each) {
    struct Catcher {
      std::string className;
      size_t slot;
      Action body;
    };
    const Type any{TypeKind::object, "RuntimeException", false};
    Action body = block(each.branches.front().body), last = block(each.branches.back().body);
    std::vector<Catcher> catchers;
    for (size_t i = 1; i + 1 < each.branches.size(); ++i) {
      const auto& branch = each.branches[i];
      const Type type = branch.type.type.kind == TypeKind::none ? any : resolved(scope_.parts, branch.type);
      if (!distance(scope_.parts, type, any))
        fail(branch.type.place, shown(type) + " is no class of exceptions");
      const size_t names = scope_.locals.size();
      const size_t slot = declare({branch.name, type}, branch.place).slot.number;
      catchers.push_back({type.className, slot, block(branch.body)});
      scope_.locals.resize(names);
    }
    return [body = std::move(body), catchers = std::move(catchers), last = std::move(last)](Frame& frame) {
      std::optional<Thrown> thrown;
      int line = 0;  // of what threw it
      Flow flow;
      // The first exception counts, not those of destructors on its way.
      const auto keep = [&](const auto& use) {
        try {
          use();
        } catch (Thrown& exception) {
          if (exception.isFinal) throw;
          if (thrown) return;
          thrown = std::move(exception);
          line = frame.line;
        }
      };
      const auto attempt = [&](const Action& action) {
        thrown.reset();
        keep([&] { flow = action(frame); });
        keep([&] { frame.machine.throwPending(); });
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
      if (const Flow after = last(frame); after.kind != Flow::next) return after;
      if (!thrown) return flow;
      frame.line = line;
      throw std::move(*thrown);
    };
  }

  Scope scope_;
  Function& function_;
  const bool isOutermost_;  // outside of methods
  int blockDepth_ = 0;
  size_t slots_ = 0;
  std::vector<std::string> loops_;  // the words of those around the statement
};

}  // namespace

void checkBody(const Scope& scope, const Block& statements, Function& function, bool isOutermost) {
  BodyChecker(scope, function, isOutermost).check(statements);
}

}  // namespace standin::host
