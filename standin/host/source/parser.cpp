#include "standin/host/source/parser.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "standin/host/source/tokens.h"

namespace standin::host {
namespace {

using ExpressionKind = Expression::Kind;
using StatementKind = Statement::Kind;

constexpr int kMostNesting = 200;

struct BinaryOperator {
  const char* text;
  int precedence;
};
constexpr BinaryOperator kBinaryOperators[] = {
    {"Or", 1}, {"Xor", 1}, {"And", 2}, {"=", 3}, {"<>", 3}, {"<", 3}, {">", 3},  {"<=", 3},
    {">=", 3}, {"Is", 3},  {"+", 4},   {"-", 4}, {"*", 5},  {"/", 5}, {"\\", 5}, {"Mod", 5}};
constexpr int kLowestPrecedence = 1;

// Words that end a block of statements: whoever began it sees whether it is the right one.
const char* const kBlockEnds[] = {"End",     "Else", "ElseIf", "Case", "Catch",
                                  "Finally", "Next", "Wend",   "Loop"};

class Parser {
 public:
  explicit Parser(std::string_view source) : tokens_(tokensOf(source)) {}

  ProgramText program() {
    ProgramText parsed;
    while (now().kind != TokenKind::end) {
      if (now().is("Class")) {
        parsed.classes.push_back(classText());
      } else if (now().is("Sub") || now().is("Function")) {
        parsed.methods.push_back(method());
      } else {
        const size_t before = at_;
        block(parsed.statements, true);
        if (at_ == before) fail("expected a statement, not " + now().describe());
      }
    }
    return parsed;
  }

 private:
  struct Nesting {
    explicit Nesting(Parser& parser) : depth(parser.nesting_) {
      if (++depth > kMostNesting)
        parser.fail("this nests more than " + std::to_string(kMostNesting) + " deep");
    }
    ~Nesting() { --depth; }
    int& depth;
  };

  // --- Tokens ---

  const Token& now() const { return tokens_[at_]; }
  const Token& following() const { return tokens_[std::min(at_ + 1, tokens_.size() - 1)]; }
  const Token& take() { return tokens_[now().kind == TokenKind::end ? at_ : at_++]; }

  [[noreturn]] void fail(const std::string& what) const { throw SourceError(now().place, what); }
  [[noreturn]] void failExpecting(const std::string& wanted) const {
    fail("expected " + wanted + ", not " + now().describe());
  }

  bool takeIf(std::string_view wordOrSign) {
    if (!now().is(wordOrSign)) return false;
    take();
    return true;
  }

  void expect(const std::string& wordOrSign, const std::string& use = "") {
    if (!takeIf(wordOrSign)) failExpecting(wordOrSign + use);
  }

  bool atName(std::string_view name) const {
    return now().kind == TokenKind::name && sameName(now().text, name);
  }

  bool takeName(std::string_view name) {
    if (!atName(name)) return false;
    take();
    return true;
  }

  std::string name(const char* wanted) {
    if (now().kind != TokenKind::name)
      failExpecting(std::string(wanted) +
                    (now().kind == TokenKind::word ? " that is no word of the language" : ""));
    return take().text;
  }

  void endLine() {
    if (now().kind != TokenKind::lineEnd) failExpecting("the end of the line");
    take();
  }

  bool atLineEnd() const { return now().kind == TokenKind::lineEnd; }

  // "End If", for what was begun there.
  void endOf(const std::string& what, Place begun) {
    const std::string wanted = "End " + what + " for the " + what + " of line " + std::to_string(begun.line);
    if (!now().is("End")) failExpecting(wanted);
    const Token& second = following();
    if (!second.is(what) && !(second.kind == TokenKind::name && sameName(second.text, what)))
      fail("expected " + wanted + ", not 'End " + second.text + "'");
    take();
    take();
    endLine();
  }

  // --- Expressions ---

  ExpressionPtr made(Expression expression) const {
    for (const ExpressionPtr& each : expression.operands) {
      if (each) expression.depth = std::max(expression.depth, each->depth + 1);
    }
    if (expression.depth > kMostNesting)
      throw SourceError(expression.place,
                        "this expression nests more than " + std::to_string(kMostNesting) + " deep");
    return std::make_unique<Expression>(std::move(expression));
  }

  template <class... Operands>
  ExpressionPtr made(ExpressionKind kind, Place place, std::string text, Operands... operands) const {
    Expression expression{kind, place, std::move(text)};
    (expression.operands.push_back(std::move(operands)), ...);
    return made(std::move(expression));
  }

  ExpressionPtr expression() { return binary(kLowestPrecedence); }

  ExpressionPtr binary(int least) {
    const Nesting nesting(*this);
    ExpressionPtr left = unary();
    for (;;) {
      const auto* const found = std::find_if(std::begin(kBinaryOperators), std::end(kBinaryOperators),
                                             [this](const auto& each) { return now().is(each.text); });
      if (found == std::end(kBinaryOperators) || found->precedence < least) return left;
      const Place place = take().place;
      ExpressionPtr right = binary(found->precedence + 1);
      left = made(ExpressionKind::binary, place, found->text, std::move(left), std::move(right));
    }
  }

  ExpressionPtr unary() {
    for (const char* const sign : {"Not", "-", "+"}) {
      if (!now().is(sign)) continue;
      const Nesting nesting(*this);
      const Place place = take().place;
      return made(ExpressionKind::unary, place, sign, unary());
    }
    return power();
  }

  ExpressionPtr power() {
    ExpressionPtr left = postfix();
    while (now().is("^")) {
      const Place place = take().place;
      const bool negative = takeIf("-");
      ExpressionPtr right = postfix();
      if (negative) right = made(ExpressionKind::unary, place, "-", std::move(right));
      left = made(ExpressionKind::binary, place, "^", std::move(left), std::move(right));
    }
    return left;
  }

  ExpressionPtr postfix() {
    ExpressionPtr parsed = primary();
    for (;;) {
      const Place place = now().place;
      if (takeIf(".")) {
        const Place memberPlace = now().place;
        parsed = made(ExpressionKind::member, memberPlace, name("the name of a member"), std::move(parsed));
      } else if (now().is("(")) {
        parsed = arguments(std::move(parsed));
      } else if (takeIf("IsA")) {
        parsed = made(ExpressionKind::isA, place, "IsA", std::move(parsed));
        parsed->type = typeName();
      } else {
        return parsed;
      }
    }
  }

  ExpressionPtr arguments(ExpressionPtr callee) {
    Expression call{ExpressionKind::arguments, callee->place};
    call.operands.push_back(std::move(callee));
    bracketedArguments(call.operands);
    return made(std::move(call));
  }

  void bracketedArguments(std::vector<ExpressionPtr>& list) {
    expect("(");
    if (takeIf(")")) return;
    do list.push_back(expression());
    while (takeIf(","));
    expect(")", " after the arguments");
  }

  ExpressionPtr literal(Literal value) {
    Expression parsed{ExpressionKind::literal, now().place};
    parsed.literal = std::move(value);
    take();
    return made(std::move(parsed));
  }

  ExpressionPtr primary() {
    const Place place = now().place;
    switch (now().kind) {
      case TokenKind::whole:
        return literal(now().whole);
      case TokenKind::real:
        return literal(now().real);
      case TokenKind::text:
        return literal(now().text);
      case TokenKind::color: {
        ExpressionPtr color = literal(now().whole);
        color->kind = ExpressionKind::color;
        return color;
      }
      case TokenKind::name:
        return made(ExpressionKind::name, place, take().text);
      default:
        break;
    }
    if (now().is("True")) return literal(true);
    if (now().is("False")) return literal(false);
    if (now().is("Nil")) return literal(std::monostate{});
    if (takeIf("Me") || takeIf("Self")) return made(ExpressionKind::me, place, "Me");
    if (takeIf("Super")) return made(ExpressionKind::super, place, "Super");
    if (takeIf("New")) return newObject(place);
    if (takeIf("AddressOf")) return addressOf(place);
    if (takeIf("(")) {
      ExpressionPtr inner = expression();
      expect(")", " after the expression");
      return inner;
    }
    failExpecting("a value");
  }

  ExpressionPtr newObject(Place place) {
    Expression parsed{ExpressionKind::newObject, place};
    parsed.type.place = now().place;
    parsed.type.name = name("the name of a class");
    if (now().is("(")) bracketedArguments(parsed.operands);
    return made(std::move(parsed));
  }

  ExpressionPtr addressOf(Place place) {
    ExpressionPtr target = postfix();
    const bool named = target->kind == ExpressionKind::name || target->kind == ExpressionKind::member;
    if (!named) throw SourceError(target->place, "expected the name of a method after AddressOf");
    return made(ExpressionKind::addressOf, place, "AddressOf", std::move(target));
  }

  TypeName typeName() {
    TypeName type;
    type.place = now().place;
    type.name = name("the name of a type");
    if (now().is("(") && following().is(")")) {
      take();
      take();
      type.array = true;
    }
    return type;
  }

  // --- Statements ---

  void block(Block& statements, bool outermost = false) {
    for (;;) {
      if (now().kind == TokenKind::end) return;
      const bool ends = std::any_of(std::begin(kBlockEnds), std::end(kBlockEnds),
                                    [this](const char* each) { return now().is(each); });
      if (ends) return;
      if (now().is("Class") || now().is("Sub") || now().is("Function")) {
        if (outermost) return;
        fail(now().describe() + " can't stand inside of another statement, Sub, Function or Class");
      }
      statement(statements);
      endLine();
    }
  }

  Statement made(StatementKind kind) const { return {kind, now().place}; }

  // The last token of the statement is left when it is the end of its line.
  void statement(Block& statements) {
    const Nesting nesting(*this);
    struct Row {
      const char* word;
      Statement (Parser::*parse)();
    };
    static constexpr Row kRows[] = {
        {"If", &Parser::ifElse},
        {"Select", &Parser::select},
        {"For", &Parser::forLoop},
        {"While", &Parser::whileLoop},
        {"Do", &Parser::doLoop},
        {"Exit", &Parser::exit},
        {"Continue", &Parser::next},
        {"Return", &Parser::giveBack},
        {"Try", &Parser::tryCatch},
        {"Raise", &Parser::raise},
        {"Const", &Parser::constant},
        {"Redim", &Parser::redim},
        {"Call", &Parser::explicitCall},
        {"AddHandler", &Parser::addHandler},
        {"RemoveHandler", &Parser::addHandler},
    };
    if (now().is("Dim")) return dim(statements);
    for (const Row& row : kRows) {
      if (now().is(row.word)) return statements.push_back((this->*row.parse)());
    }
    statements.push_back(assignmentOrCall());
  }

  void dim(Block& statements) {
    take();
    do {
      statements.push_back(made(StatementKind::dim));
      variable(statements.back());
      // "a, b As Integer": the type is that of the next variable which has one.
      for (auto each = statements.rbegin() + 1;
           !statements.back().type.name.empty() && each != statements.rend() &&
           each->kind == StatementKind::dim && each->type.name.empty();
           ++each) {
        each->type.name = statements.back().type.name;
        each->type.place = statements.back().type.place;
      }
    } while (takeIf(","));
  }

  // "a(10)", "b As Integer = 5", "c As New Dictionary"; without a type where a comma follows.
  void variable(Statement& declared) {
    declared.name = name("the name of a variable");
    bool array = false;
    if (takeIf("(")) {
      array = true;
      if (!now().is(")")) {
        declared.hasBound = true;
        declared.expressions.push_back(expression());
      }
      expect(")", "; arrays have one dimension");
    }
    if (now().is(",")) {
      declared.type.array = array;
      return;
    }
    expect("As", " and the type of " + declared.name);
    if (now().is("New")) {
      const Place place = take().place;
      declared.expressions.push_back(newObject(place));
      declared.type = declared.expressions.back()->type;
    } else {
      declared.type = typeName();
      if (!declared.hasBound && takeIf("=")) declared.expressions.push_back(expression());
    }
    declared.type.array = declared.type.array || array;
  }

  Statement constant() {
    Statement parsed = made(StatementKind::constant);
    take();
    parsed.name = name("the name of a constant");
    if (takeIf("As")) parsed.type = typeName();
    expect("=", " and the value of " + parsed.name);
    parsed.expressions.push_back(expression());
    return parsed;
  }

  Statement redim() {
    Statement parsed = made(StatementKind::redim);
    take();
    ExpressionPtr array = postfix();
    if (array->kind != ExpressionKind::arguments || array->operands.size() != 2)
      throw SourceError(array->place, "expected an array and its upper bound in brackets");
    parsed.expressions = std::move(array->operands);
    return parsed;
  }

  Statement explicitCall() {
    take();
    Statement parsed = made(StatementKind::call);
    parsed.expressions.push_back(postfix());
    return parsed;
  }

  // A call may have its arguments without brackets: then what stands in brackets first is but a part of the
  // first one.
  Statement assignmentOrCall() {
    Statement parsed = made(StatementKind::call);
    const size_t start = at_;
    if (now().kind == TokenKind::word && !now().is("Me") && !now().is("Self") && !now().is("Super"))
      failExpecting("a statement");
    if (now().kind != TokenKind::name && now().kind != TokenKind::word) failExpecting("a statement");
    ExpressionPtr target = postfix();
    if (takeIf("=")) {
      parsed.kind = StatementKind::assign;
      parsed.expressions.push_back(std::move(target));
      parsed.expressions.push_back(expression());
      return parsed;
    }
    if (!atLineEnd() && !now().is("Else")) {
      at_ = start;
      target = calleeAlone();
      Expression call{ExpressionKind::arguments, target->place};
      call.operands.push_back(std::move(target));
      do call.operands.push_back(expression());
      while (takeIf(","));
      target = made(std::move(call));
    }
    parsed.expressions.push_back(std::move(target));
    return parsed;
  }

  // A name and members of it, up to where arguments begin.
  ExpressionPtr calleeAlone() {
    ExpressionPtr callee = primary();
    while (takeIf(".")) {
      const Place place = now().place;
      callee = made(ExpressionKind::member, place, name("the name of a member"), std::move(callee));
    }
    return callee;
  }

  Statement ifElse() {
    Statement parsed = made(StatementKind::ifElse);
    const Place begun = take().place;
    parsed.branches.push_back(conditional(begun));
    if (!atLineEnd()) {
      statement(parsed.branches.back().body);
      if (now().is("Else")) {
        parsed.branches.push_back({take().place, {}, {}, {}, {}});
        statement(parsed.branches.back().body);
      }
      return parsed;
    }
    endLine();
    block(parsed.branches.back().body);
    while (now().is("ElseIf")) {
      const Place place = take().place;
      parsed.branches.push_back(conditional(place));
      endLine();
      block(parsed.branches.back().body);
    }
    if (now().is("Else")) {
      parsed.branches.push_back({take().place, {}, {}, {}, {}});
      endLine();
      block(parsed.branches.back().body);
    }
    endOfStatement("If", begun);
    return parsed;
  }

  Branch conditional(Place place) {
    Branch branch{place, expression(), {}, {}, {}};
    expect("Then", " after the condition");
    return branch;
  }

  // As endOf, but the line's end is left, as of every statement.
  void endOfStatement(const std::string& what, Place begun) {
    endOf(what, begun);
    --at_;
  }

  Statement select() {
    Statement parsed = made(StatementKind::select);
    const Place begun = take().place;
    expect("Case", " after Select");
    parsed.expressions.push_back(expression());
    endLine();
    while (now().is("Case")) {
      Branch branch{take().place, {}, {}, {}, {}};
      if (!takeIf("Else")) branch.condition = caseTests();
      endLine();
      block(branch.body);
      parsed.branches.push_back(std::move(branch));
      if (!parsed.branches.back().condition) break;
    }
    endOfStatement("Select", begun);
    return parsed;
  }

  ExpressionPtr caseTests() {
    ExpressionPtr tests;
    do {
      const Place place = now().place;
      ExpressionPtr one = caseTest(place);
      tests = tests ? made(ExpressionKind::binary, place, "Or", std::move(tests), std::move(one))
                    : std::move(one);
    } while (takeIf(","));
    return tests;
  }

  ExpressionPtr subject(Place place, const char* sign, ExpressionPtr other) const {
    return made(ExpressionKind::binary, place, sign, made(ExpressionKind::subject, place, ""),
                std::move(other));
  }

  ExpressionPtr caseTest(Place place) {
    if (takeIf("Is")) {
      for (const char* const sign : {"=", "<>", "<", ">", "<=", ">="}) {
        if (takeIf(sign)) return subject(place, sign, expression());
      }
      failExpecting("a comparison, such as >=, after Case Is");
    }
    ExpressionPtr first = expression();
    if (!takeIf("To")) return subject(place, "=", std::move(first));
    ExpressionPtr last = expression();
    return made(ExpressionKind::binary, place, "And", subject(place, ">=", std::move(first)),
                subject(place, "<=", std::move(last)));
  }

  Statement forLoop() {
    Statement parsed = made(StatementKind::forTo);
    const Place begun = take().place;
    if (takeIf("Each")) parsed.kind = StatementKind::forEach;
    parsed.name = name("the name of a variable");
    if (takeIf("As")) parsed.type = typeName();
    if (parsed.kind == StatementKind::forEach) {
      expect("In", " after the variable of For Each");
      parsed.expressions.push_back(expression());
    } else {
      range(parsed);
    }
    endLine();
    parsed.branches.push_back({begun, {}, {}, {}, {}});
    block(parsed.branches.back().body);
    const std::string wanted = "Next for the For of line " + std::to_string(begun.line);
    if (!takeIf("Next")) failExpecting(wanted);
    if (now().kind == TokenKind::name && !atName(parsed.name)) failExpecting("Next " + parsed.name);
    if (!atLineEnd()) name("the loop's variable");
    return parsed;
  }

  void range(Statement& loop) {
    expect("=", " and the first value of " + loop.name);
    loop.expressions.push_back(expression());
    loop.downwards = now().is("DownTo");
    if (!takeIf("DownTo")) expect("To", " or DownTo");
    loop.expressions.push_back(expression());
    if (takeIf("Step")) loop.expressions.push_back(expression());
  }

  // The condition of going on, or null.
  ExpressionPtr goesOn() {
    if (takeIf("While")) return expression();
    if (!now().is("Until")) return {};
    const Place place = take().place;
    return made(ExpressionKind::unary, place, "Not", expression());
  }

  Statement whileLoop() {
    Statement parsed = made(StatementKind::loop);
    parsed.isWhile = true;
    const Place begun = take().place;
    parsed.expressions.push_back(expression());
    parsed.expressions.emplace_back();
    endLine();
    parsed.branches.push_back({begun, {}, {}, {}, {}});
    block(parsed.branches.back().body);
    if (!takeIf("Wend")) failExpecting("Wend for the While of line " + std::to_string(begun.line));
    return parsed;
  }

  Statement doLoop() {
    Statement parsed = made(StatementKind::loop);
    const Place begun = take().place;
    parsed.expressions.push_back(goesOn());
    endLine();
    parsed.branches.push_back({begun, {}, {}, {}, {}});
    block(parsed.branches.back().body);
    if (!takeIf("Loop")) failExpecting("Loop for the Do of line " + std::to_string(begun.line));
    parsed.expressions.push_back(goesOn());
    return parsed;
  }

  Statement exit() { return leaving(StatementKind::exit, {"For", "Do", "While", "Sub", "Function"}); }
  Statement next() { return leaving(StatementKind::next, {"For", "Do", "While"}); }

  Statement leaving(StatementKind kind, std::initializer_list<const char*> words) {
    Statement parsed = made(kind);
    take();
    for (const char* const word : words) {
      if (takeIf(word)) parsed.name = word;
    }
    return parsed;
  }

  Statement giveBack() { return withExpression(StatementKind::giveBack, !following().is("Else")); }
  Statement raise() { return withExpression(StatementKind::raise, true); }

  Statement withExpression(StatementKind kind, bool mayFollow) {
    Statement parsed = made(kind);
    take();
    if (mayFollow && !atLineEnd()) parsed.expressions.push_back(expression());
    if (kind == StatementKind::raise && parsed.expressions.empty()) failExpecting("an exception");
    return parsed;
  }

  Statement tryCatch() {
    Statement parsed = made(StatementKind::tryCatch);
    const Place begun = take().place;
    endLine();
    parsed.branches.push_back({begun, {}, {}, {}, {}});
    block(parsed.branches.back().body);
    while (now().is("Catch")) {
      Branch branch{take().place, {}, {}, {}, {}};
      if (!atLineEnd()) branch.name = name("the name of a variable");
      if (!branch.name.empty() && takeIf("As")) branch.type = typeName();
      endLine();
      block(branch.body);
      parsed.branches.push_back(std::move(branch));
    }
    if (takeIf("Finally")) {
      endLine();
      block(parsed.last);
    } else if (parsed.branches.size() == 1) {
      failExpecting("Catch or Finally");
    }
    endOfStatement("Try", begun);
    return parsed;
  }

  Statement addHandler() {
    Statement parsed =
        made(now().is("AddHandler") ? StatementKind::addHandler : StatementKind::removeHandler);
    take();
    parsed.expressions.push_back(postfix());
    if (parsed.expressions[0]->kind != ExpressionKind::member)
      throw SourceError(parsed.expressions[0]->place, "expected an event of an object, such as query.Finish");
    expect(",", " and AddressOf");
    if (!now().is("AddressOf")) failExpecting("AddressOf and the name of a method");
    parsed.expressions.push_back(expression());
    return parsed;
  }

  // --- Methods and classes ---

  MethodText method() {
    MethodText parsed;
    parsed.place = now().place;
    const bool isFunction = now().is("Function");
    const std::string what = take().text;
    parsed.name = name("the name of a method");
    parameters(parsed);
    if (isFunction) {
      expect("As", " and the type of the result of " + parsed.name);
      parsed.result = typeName();
    }
    endLine();
    block(parsed.body);
    endOf(what, parsed.place);
    return parsed;
  }

  void parameters(MethodText& method) {
    if (!takeIf("(") || takeIf(")")) return;
    do {
      if (atName("Optional") || atName("ByVal")) take();
      if (atName("ByRef") || atName("ParamArray") || atName("Extends"))
        fail("'" + now().text + "' is not taken");
      MethodText::Parameter parameter;
      parameter.assigns = takeName("Assigns");
      parameter.place = now().place;
      parameter.name = name("the name of a parameter");
      const bool array = takeIf("(");
      if (array) expect(")");
      expect("As", " and the type of " + parameter.name);
      parameter.type = typeName();
      parameter.type.array = parameter.type.array || array;
      if (takeIf("=")) parameter.preset = expression();
      method.parameters.push_back(std::move(parameter));
    } while (takeIf(","));
    expect(")", " after the parameters");
  }

  ClassText classText() {
    ClassText parsed;
    parsed.place = take().place;
    parsed.name = name("the name of a class");
    if (atLineEnd() && following().is("Inherits")) take();  // on a line of its own
    if (takeIf("Inherits")) {
      parsed.base.place = now().place;
      parsed.base.name = name("the name of a class");
    }
    endLine();
    while (!now().is("End")) member(parsed);
    endOf("Class", parsed.place);
    return parsed;
  }

  void member(ClassText& cls) {
    const bool isPrivate = takeName("Private");
    if (!isPrivate) takeName("Public");
    const bool isShared = takeIf("Shared");
    if (now().is("Sub") || now().is("Function")) {
      cls.methods.push_back(method());
      cls.methods.back().isPrivate = isPrivate;
      cls.methods.back().isShared = isShared;
    } else if (now().is("Event") && !isPrivate && !isShared) {
      cls.events.push_back(event());
    } else if (now().is("Const") && !isPrivate && !isShared) {
      Statement parsed = constant();
      cls.constants.push_back({parsed.place, parsed.name, std::move(parsed.expressions[0])});
      endLine();
    } else if (now().is("Dim") || now().is("Property") || now().kind == TokenKind::name) {
      cls.properties.push_back(property());
      cls.properties.back().isPrivate = isPrivate;
      cls.properties.back().isShared = isShared;
    } else {
      failExpecting("a property, Sub, Function, Event, Const or End Class");
    }
  }

  MethodText event() {
    MethodText parsed;
    parsed.place = take().place;
    parsed.name = name("the name of an event");
    parameters(parsed);
    if (takeIf("As")) parsed.result = typeName();
    endLine();
    block(parsed.body);
    endOf("Event", parsed.place);
    return parsed;
  }

  PropertyText property() {
    PropertyText parsed;
    const bool mayBeComputed = takeIf("Property");
    if (!mayBeComputed) takeIf("Dim");
    Statement declared = made(StatementKind::dim);
    parsed.place = now().place;
    variable(declared);
    if (now().is(",") || declared.hasBound) failExpecting("one property, without bounds, in a line");
    parsed.name = declared.name;
    parsed.type = declared.type;
    if (!declared.expressions.empty()) parsed.initial = std::move(declared.expressions[0]);
    endLine();
    if (mayBeComputed && !parsed.initial && (atName("Get") || atName("Set"))) accessors(parsed);
    return parsed;
  }

  void accessors(PropertyText& property) {
    while (atName("Get") || atName("Set")) {
      const bool isGetter = atName("Get");
      MethodText accessor;
      accessor.place = take().place;
      accessor.name = property.name;
      if (isGetter) {
        accessor.result = property.type;
      } else {
        accessor.parameters.push_back({"value", property.type, {}, true, accessor.place});
      }
      endLine();
      block(accessor.body);
      endOf(isGetter ? "Get" : "Set", accessor.place);
      (isGetter ? property.getter : property.setter) = std::move(accessor);
    }
    endOf("Property", property.place);
  }

  const std::vector<Token> tokens_;
  size_t at_ = 0;
  int nesting_ = 0;
};

}  // namespace

ProgramText parseProgram(std::string_view source) {
  return Parser(source).program();
}

}  // namespace standin::host
