// Makes the tree of a text.
#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <utility>

#include "standin/host/source/tokens.h"

namespace standin::host {
namespace {

using ExpressionKind = Expression::Kind;
using StatementKind = Statement::Kind;
using Branch = Statement::Branch;
using Role = MethodText::Role;

constexpr int kMostNesting = 200;

// From the one that binds loosest.
struct BinaryOperator {
  const char* text;
  int precedence;
};
constexpr BinaryOperator kBinaryOperators[] = {
    {"Or", 1}, {"Xor", 1}, {"And", 2}, {"=", 3}, {"<>", 3}, {"<", 3},  {">", 3},   {"<=", 3}, {">=", 3},
    {"Is", 3}, {"+", 4},   {"-", 4},   {"*", 5}, {"/", 5},  {"\\", 5}, {"Mod", 5}, {"^", 7}};
constexpr int kSignPrecedence = 6;  // of Not, - and + in front of a value

// Words that end a block of statements: whoever began it sees whether it is the right one.
const char* const kBlockEnds[] = {"End",     "Else", "ElseIf", "Case", "Catch",
                                  "Finally", "Next", "Wend",   "Loop"};
// Words that begin a declaration which isn't part of a block.
const char* const kDeclarations[] = {"Class", "Sub", "Function", "Event"};
// Who may use a member: here everybody may.
const char* const kScopes[] = {"Private", "Public"};

// What programs from elsewhere begin a statement with, and what is written here, if anything.
struct NotTaken {
  const char* word;
  const char* instead;
};
constexpr NotTaken kNotTaken[] = {{"Declare", ""},
                                  {"Delegate", ""},
                                  {"EndIf", "; write End If"},
                                  {"Enum", ""},
                                  {"GoTo", ""},
                                  {"Interface", ""},
                                  {"Module", "; leave its two lines out"},
                                  {"Namespace", ""},
                                  {"Structure", ""},
                                  {"Using", ""},
                                  {"Var", "; Dim declares variables"},
                                  {"With", ""}};

class Parser {
 public:
  explicit Parser(std::string_view source) : tokens_(tokensOf(source)) {}

  ProgramText program() {
    ProgramText parsed;
    while (now().kind != TokenKind::end) {
      skipScope();
      if (now().is("Class")) {
        parsed.classes.push_back(classText());
      } else if (now().is("Sub") || now().is("Function")) {
        parsed.methods.push_back(method());
      } else {
        const size_t before = at_;
        block(parsed.statements, true);
        if (at_ == before) failExpecting("a statement");
      }
    }
    return parsed;
  }

 private:
  struct Nesting {
    explicit Nesting(Parser& parser) : depth(parser.nesting_) {
      if (++depth > kMostNesting) failTooDeep(parser.now().place);
    }
    ~Nesting() { --depth; }
    int& depth;
  };

  // --- Tokens ---

  const Token& now() const { return tokens_[at_]; }
  const Token& following() const { return tokens_[std::min(at_ + 1, tokens_.size() - 1)]; }
  const Token& take() { return tokens_[now().kind == TokenKind::end ? at_ : at_++]; }
  bool atLineEnd() const { return now().kind == TokenKind::lineEnd; }
  bool atOneOf(std::span<const char* const> words) const {
    return std::any_of(words.begin(), words.end(), [this](const char* each) { return now().is(each); });
  }

  [[noreturn]] static void failTooDeep(Place place) {
    throw SourceError(place, "this nests more than " + std::to_string(kMostNesting) + " deep");
  }
  [[noreturn]] void failExpecting(const std::string& wanted) const {
    throw SourceError(now().place, "expected " + wanted + ", not " + now().describe());
  }

  bool takeIf(std::string_view wordOrSign) {
    if (!now().is(wordOrSign)) return false;
    take();
    return true;
  }

  void expect(const std::string& wordOrSign, const std::string& use = "") {
    if (!takeIf(wordOrSign)) failExpecting(wordOrSign + use);
  }

  void skipScope() {
    if (atOneOf(kScopes) || atName("Protected")) take();
  }

  bool atName(std::string_view name) const {
    return now().kind == TokenKind::name && sameName(now().text, name);
  }

  std::string name(const std::string& wanted) {
    if (now().kind == TokenKind::name) return take().text;
    failExpecting(wanted + (now().kind == TokenKind::word ? " that is no word of the language" : ""));
  }

  void endLine() {
    if (!atLineEnd()) failExpecting("the end of the line");
    take();
  }

  static std::string endFor(const std::string& end, const std::string& what, Place begun) {
    return end + " for the " + what + " of line " + std::to_string(begun.line);
  }

  // "End If", for what was begun there.
  void endOf(const std::string& what, Place begun) {
    const bool isIt = following().is(what) || sameName(following().text, what);
    if (!now().is("End") || !isIt) failExpecting(endFor("End " + what, what, begun));
    take();
    take();
  }

  // --- Expressions ---

  static Expression made(Expression expression) {
    for (const Expression& each : expression.operands)
      expression.depth = std::max(expression.depth, each.depth + 1);
    if (expression.depth > kMostNesting) failTooDeep(expression.place);
    return expression;
  }

  template <class... Operands>
  static Expression made(ExpressionKind kind, Place place, std::string text, Operands... operands) {
    Expression expression{kind, place, std::move(text)};
    (expression.operands.push_back(std::move(operands)), ...);
    return made(std::move(expression));
  }

  static Expression literal(Place place, Literal value) {
    Expression parsed{ExpressionKind::literal, place};
    parsed.literal = std::move(value);
    return parsed;
  }

  Expression expression() { return binary(1); }

  Expression binary(int leastPrecedence) {
    const Nesting nesting(*this);
    Expression left = operand();
    for (;;) {
      const auto* const found = std::find_if(std::begin(kBinaryOperators), std::end(kBinaryOperators),
                                             [this](const auto& each) { return now().is(each.text); });
      if (found == std::end(kBinaryOperators) || found->precedence < leastPrecedence) return left;
      const Place place = take().place;
      if (now().is("=") && now().place.column == place.column + 1)
        throw SourceError(place, "expected =, which compares; == is for query strings");
      Expression right = binary(found->precedence + 1);
      left = made(ExpressionKind::binary, place, found->text, std::move(left), std::move(right));
    }
  }

  // A sign in front of a number adds it to 0, or takes it away.
  Expression operand() {
    if (!atOneOf(std::array{"Not", "-", "+"})) return postfix();
    const Token& sign = take();
    Expression value = binary(kSignPrecedence);
    if (sign.text == "Not") return made(ExpressionKind::negation, sign.place, sign.text, std::move(value));
    if (value.kind == ExpressionKind::literal && sign.text == "-") {
      auto* const whole = std::get_if<int64_t>(&value.literal);
      if (whole && *whole != INT64_MIN) return literal(sign.place, -*whole);
      if (auto* const real = std::get_if<double>(&value.literal)) return literal(sign.place, -*real);
    }
    Expression zero = literal(sign.place, int64_t{0});
    return made(ExpressionKind::binary, sign.place, sign.text, std::move(zero), std::move(value));
  }

  Expression postfix() {
    Expression parsed = primary();
    for (;;) {
      const Place place = now().place;
      if (now().is(".")) {
        parsed = member(std::move(parsed));
      } else if (now().is("(")) {
        Expression call{ExpressionKind::arguments, parsed.place};
        call.operands.push_back(std::move(parsed));
        arguments(call.operands);
        parsed = made(std::move(call));
      } else if (takeIf("IsA")) {
        parsed = made(ExpressionKind::isA, place, "IsA", std::move(parsed));
        parsed.type = typeName();
      } else {
        return parsed;
      }
    }
  }

  Expression member(Expression object) {
    take();
    const Place place = now().place;
    return made(ExpressionKind::member, place, name("the name of a member"), std::move(object));
  }

  void arguments(std::vector<Expression>& list) {
    expect("(");
    if (takeIf(")")) return;
    do list.push_back(expression());
    while (takeIf(","));
    expect(")", " after the arguments");
  }

  Expression primary() {
    const Token& token = now();
    if (token.kind == TokenKind::name) return made(ExpressionKind::name, token.place, take().text);
    if (token.kind == TokenKind::literal) return literal(token.place, take().literal);
    if (token.kind == TokenKind::color) {
      Expression color = literal(token.place, take().literal);
      color.kind = ExpressionKind::color;
      return color;
    }
    if (takeIf("True")) return literal(token.place, true);
    if (takeIf("False")) return literal(token.place, false);
    if (takeIf("Nil")) return literal(token.place, {});
    if (takeIf("Me") || takeIf("Self")) return made(ExpressionKind::me, token.place, "Me");
    if (takeIf("Super")) return made(ExpressionKind::super, token.place, "Super");
    if (takeIf("New")) {
      Expression parsed{ExpressionKind::newObject, token.place};
      parsed.type = typeName();
      if (now().is("(")) arguments(parsed.operands);
      return made(std::move(parsed));
    }
    if (!takeIf("(")) failExpecting("a value");
    Expression inner = expression();
    expect(")", " after the expression");
    return inner;
  }

  TypeName typeName() {
    const Place place = now().place;
    TypeName parsed{parseType(name("the name of a type or class")), place};
    if (now().is("(") && following().is(")")) {
      take();
      take();
      parsed.type.array = true;
    }
    return parsed;
  }

  // --- Statements ---

  void block(Block& statements, bool outermost = false) {
    while (now().kind != TokenKind::end && !atOneOf(kBlockEnds)) {
      if (atOneOf(kDeclarations)) {
        if (outermost) return;
        throw SourceError(
            now().place,
            now().describe() + " can't stand inside of another statement, Sub, Function or Class");
      }
      statement(statements);
      endLine();
    }
  }

  // What follows the statement's first word. The end of its last line is left.
  struct Row {
    const char* word;
    StatementKind kind;
    void (Parser::*parse)(Statement&);
  };

  void statement(Block& statements) {
    static constexpr Row kRows[] = {
        {"Dim", StatementKind::dim, &Parser::variable},
        {"Const", StatementKind::constant, &Parser::constant},
        {"Redim", StatementKind::call, &Parser::redim},
        {"Call", StatementKind::call, &Parser::call},
        {"If", StatementKind::ifElse, &Parser::ifElse},
        {"Select", StatementKind::select, &Parser::select},
        {"For", StatementKind::forTo, &Parser::forLoop},
        {"While", StatementKind::loop, &Parser::whileLoop},
        {"Do", StatementKind::loop, &Parser::doLoop},
        {"Exit", StatementKind::exit, &Parser::leave},
        {"Continue", StatementKind::next, &Parser::leave},
        {"Return", StatementKind::giveBack, &Parser::giveBack},
        {"Try", StatementKind::tryCatch, &Parser::tryCatch},
        {"Raise", StatementKind::call, &Parser::raise},
        {"AddHandler", StatementKind::addHandler, &Parser::handler},
        {"RemoveHandler", StatementKind::removeHandler, &Parser::handler},
    };
    const Nesting nesting(*this);
    const auto* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                         [this](const Row& each) { return now().is(each.word); });
    if (row == std::end(kRows)) {
      statements.push_back(assignmentOrCall());
      return;
    }
    statements.push_back({row->kind, take().place});
    (this->*row->parse)(statements.back());
    while (row->kind == StatementKind::dim && takeIf(",")) anotherVariable(statements);
  }

  // "a, b As Integer": the type is that of the next variable which has one.
  void anotherVariable(Block& statements) {
    statements.push_back({StatementKind::dim, now().place});
    variable(statements.back());
    const TypeName& type = statements.back().type;
    for (auto each = statements.rbegin() + 1; each != statements.rend() && each->kind == StatementKind::dim;
         ++each) {
      if (type.type.kind == TypeKind::none || each->type.type.kind != TypeKind::none) return;
      const bool array = each->type.type.array;
      each->type = type;
      each->type.type.array = array;
    }
  }

  // "a(10)", "b As Integer = 5", "c As New Dictionary"; without a type where a comma follows.
  void variable(Statement& declared) {
    declared.place = declared.type.place = now().place;
    declared.name = name("the name of a variable");
    const bool array = takeIf("(");
    declared.hasBound = array && !takeIf(")");
    if (declared.hasBound) {
      declared.expressions.push_back(expression());
      expect(")", " after the upper bound");
    }
    if (!now().is(",")) {
      expect("As", " and the type of " + declared.name);
      if (now().is("New")) {
        declared.expressions.push_back(primary());
        declared.type = declared.expressions.back().type;
      } else {
        declared.type = typeName();
        if (!declared.hasBound && takeIf("=")) declared.expressions.push_back(expression());
      }
    }
    declared.type.type.array |= array;
  }

  void constant(Statement& parsed) {
    parsed.name = name("the name of a constant");
    if (takeIf("As")) parsed.type = typeName();
    expect("=", " and the value of " + parsed.name);
    parsed.expressions.push_back(expression());
  }

  // As if they were written as calls: "Redim a(9)" as a.Redim(9), "Raise e" as Raise(e).
  void redim(Statement& parsed) {
    Expression array = postfix();
    if (array.kind != ExpressionKind::arguments || array.operands.size() != 2)
      throw SourceError(array.place, "expected an array and its upper bound in brackets");
    array.operands[0] = made(ExpressionKind::member, array.place, "Redim", std::move(array.operands[0]));
    parsed.expressions.push_back(made(std::move(array)));
  }

  void raise(Statement& parsed) {
    const Expression function = made(ExpressionKind::name, parsed.place, "Raise");
    parsed.expressions.push_back(made(ExpressionKind::arguments, parsed.place, "", function, expression()));
  }

  void call(Statement& parsed) { parsed.expressions.push_back(postfix()); }

  // A call may have its arguments without brackets: then what stands in brackets first is but a part of the
  // first one.
  Statement assignmentOrCall() {
    Statement parsed{StatementKind::call, now().place};
    const size_t start = at_;
    for (const auto& [word, instead] : kNotTaken) {
      const bool isCall = following().kind == TokenKind::sign;
      if (atName(word) && !isCall)
        throw SourceError(parsed.place, "'" + now().text + "' is not taken" + instead);
    }
    if (now().kind != TokenKind::name && !atOneOf(std::array{"Me", "Self", "Super"}))
      failExpecting("a statement");
    parsed.expressions.push_back(postfix());
    if (takeIf("=")) {
      parsed.kind = StatementKind::assign;
      parsed.expressions.push_back(expression());
    } else if (!atLineEnd() && !now().is("Else")) {
      at_ = start;
      Expression call{ExpressionKind::arguments, now().place};
      call.operands.push_back(primary());
      while (now().is(".")) call.operands[0] = member(std::move(call.operands[0]));
      do call.operands.push_back(expression());
      while (takeIf(","));
      parsed.expressions[0] = made(std::move(call));
    }
    return parsed;
  }

  // One that is always taken.
  Branch& added(Statement& parsed, Place place) {
    parsed.branches.push_back({place, literal(place, true)});
    return parsed.branches.back();
  }

  Branch& conditional(Statement& parsed, Place place) {
    Branch& branch = added(parsed, place);
    branch.condition = expression();
    expect("Then", " after the condition");
    return branch;
  }

  void body(Block& statements) {
    endLine();
    block(statements);
  }

  void ifElse(Statement& parsed) {
    Branch& first = conditional(parsed, parsed.place);
    if (!atLineEnd()) {
      statement(first.body);
      if (takeIf("Else")) statement(added(parsed, now().place).body);
      return;
    }
    body(first.body);
    while (takeIf("ElseIf")) body(conditional(parsed, now().place).body);
    if (takeIf("Else")) {
      if (now().is("If")) failExpecting("ElseIf, in one word, or the end of the line");
      body(added(parsed, now().place).body);
    }
    endOf("If", parsed.place);
  }

  void select(Statement& parsed) {
    expect("Case", " after Select");
    parsed.expressions.push_back(expression());
    endLine();
    for (bool isElse = false; !isElse && takeIf("Case");) {
      Branch& branch = added(parsed, now().place);
      isElse = takeIf("Else");
      if (!isElse) branch.condition = caseTests();
      body(branch.body);
    }
    endOf("Select", parsed.place);
  }

  Expression caseTests() {
    Expression tests = caseTest();
    while (takeIf(",")) {
      const Place place = now().place;
      tests = made(ExpressionKind::binary, place, "Or", std::move(tests), caseTest());
    }
    return tests;
  }

  static Expression subject(Place place, const std::string& sign, Expression other) {
    return made(ExpressionKind::binary, place, sign, Expression{ExpressionKind::subject, place},
                std::move(other));
  }

  Expression caseTest() {
    const Place place = now().place;
    if (takeIf("Is")) {
      if (!atOneOf(std::array{"=", "<>", "<", ">", "<=", ">="}))
        failExpecting("a comparison, such as >=, after Case Is");
      const std::string& sign = take().text;
      return subject(place, sign, expression());
    }
    Expression first = expression();
    if (!takeIf("To")) return subject(place, "=", std::move(first));
    return made(ExpressionKind::binary, place, "And", subject(place, ">=", std::move(first)),
                subject(place, "<=", expression()));
  }

  void loopBody(Statement& parsed, const std::string& end, const std::string& word) {
    body(added(parsed, parsed.place).body);
    if (!takeIf(end)) failExpecting(endFor(end, word, parsed.place));
  }

  void forLoop(Statement& parsed) {
    if (takeIf("Each")) parsed.kind = StatementKind::forEach;
    parsed.name = name("the name of a variable");
    if (takeIf("As")) parsed.type = typeName();
    if (parsed.kind == StatementKind::forEach) {
      expect("In", " after the variable of For Each");
      parsed.expressions.push_back(expression());
    } else {
      expect("=", " and the first value of " + parsed.name);
      parsed.expressions.push_back(expression());
      parsed.downwards = takeIf("DownTo");
      if (!parsed.downwards) expect("To", " or DownTo");
      parsed.expressions.push_back(expression());
      parsed.expressions.push_back(takeIf("Step") ? expression() : literal(parsed.place, int64_t{1}));
    }
    loopBody(parsed, "Next", "For");
    if (atName(parsed.name)) take();
  }

  // The condition of going on.
  Expression goesOn() {
    const Place place = now().place;
    if (takeIf("While")) return expression();
    if (takeIf("Until")) return made(ExpressionKind::negation, place, "Not", expression());
    return literal(place, true);
  }

  void whileLoop(Statement& parsed) {
    parsed.name = "While";
    parsed.expressions.push_back(expression());
    parsed.expressions.push_back(literal(parsed.place, true));
    loopBody(parsed, "Wend", parsed.name);
  }

  void doLoop(Statement& parsed) {
    parsed.name = "Do";
    parsed.expressions.push_back(goesOn());
    loopBody(parsed, "Loop", parsed.name);
    parsed.expressions.push_back(goesOn());
  }

  void leave(Statement& parsed) {
    const bool isMethod = parsed.kind == StatementKind::exit && atOneOf(std::array{"Sub", "Function"});
    if (isMethod || atOneOf(std::array{"For", "Do", "While"})) parsed.name = take().text;
  }

  void giveBack(Statement& parsed) {
    if (!atLineEnd() && !now().is("Else")) parsed.expressions.push_back(expression());
  }

  void tryCatch(Statement& parsed) {
    body(added(parsed, parsed.place).body);
    while (now().is("Catch")) {
      Branch& branch = added(parsed, take().place);
      if (!atLineEnd()) branch.name = name("the name of a variable");
      if (takeIf("As")) branch.type = typeName();
      body(branch.body);
    }
    const bool catches = parsed.branches.size() > 1;
    Branch& last = added(parsed, now().place);
    if (takeIf("Finally")) {
      body(last.body);
    } else if (!catches) {
      failExpecting("Catch or Finally");
    }
    endOf("Try", parsed.place);
  }

  void handler(Statement& parsed) {
    parsed.expressions.push_back(postfix());
    if (parsed.expressions[0].kind != ExpressionKind::member)
      throw SourceError(parsed.expressions[0].place, "expected an event of an object, such as query.Finish");
    expect(",", " and AddressOf");
    expect("AddressOf", " and the name of a method");
    parsed.expressions.push_back(postfix());
    const Expression& method = parsed.expressions[1];
    if (method.kind != ExpressionKind::name && method.kind != ExpressionKind::member)
      throw SourceError(method.place, "expected the name of a method after AddressOf");
  }

  // --- Methods and classes ---

  MethodText method() {
    MethodText parsed{now().place};
    const std::string what = take().text;
    if (what == "Event") parsed.role = Role::event;
    parsed.name = name("the name of a method");
    if (takeIf("(") && !takeIf(")")) {
      do parsed.parameters.push_back(parameter());
      while (takeIf(","));
      expect(")", " after the parameters");
    }
    if (what == "Function" || (what == "Event" && now().is("As"))) {
      expect("As", " and the type of the result of " + parsed.name);
      parsed.result = typeName();
    }
    bodyOf(parsed, what);
    return parsed;
  }

  void bodyOf(MethodText& parsed, const std::string& what) {
    body(parsed.body);
    endOf(what, parsed.place);
    endLine();
  }

  Statement parameter() {
    for (const char* const each : {"ByRef", "ParamArray", "Extends", "Assigns"}) {
      if (atName(each)) throw SourceError(now().place, "'" + now().text + "' is not taken");
    }
    if (atName("Optional") || atName("ByVal")) take();
    Statement declared{StatementKind::dim, now().place};
    variable(declared);
    const bool isPreset = !declared.hasBound && !declared.expressions.empty();
    if (declared.hasBound || (isPreset && declared.expressions[0].kind != ExpressionKind::literal))
      throw SourceError(declared.expressions[0].place, "expected a literal as the default value");
    return declared;
  }

  ClassText classText() {
    ClassText parsed{take().place};
    parsed.name = name("the name of a class");
    if (atLineEnd() && following().is("Inherits")) take();  // on a line of its own
    if (takeIf("Inherits")) parsed.base = typeName();
    endLine();
    while (!now().is("End")) memberOf(parsed);
    endOf("Class", parsed.place);
    endLine();
    return parsed;
  }

  void memberOf(ClassText& cls) {
    skipScope();
    const bool isShared = takeIf("Shared");
    if (isShared && !atOneOf(std::array{"Sub", "Function"})) failExpecting("Sub or Function after Shared");
    if (atOneOf(std::array{"Sub", "Function", "Event"})) {
      cls.methods.push_back(method());
      cls.methods.back().isShared = isShared;
    } else if (now().is("Const")) {
      cls.constants.push_back({StatementKind::constant, take().place});
      constant(cls.constants.back());
      endLine();
    } else if (now().kind == TokenKind::name || atOneOf(std::array{"Dim", "Property"})) {
      property(cls);
    } else {
      failExpecting("a property, Sub, Function, Event, Const or End Class");
    }
  }

  void property(ClassText& cls) {
    Statement declared{StatementKind::dim, now().place};
    const bool mayBeComputed = takeIf("Property");
    if (!mayBeComputed) takeIf("Dim");
    variable(declared);
    if (declared.hasBound || declared.type.type.kind == TypeKind::none)
      throw SourceError(declared.place, "expected one property, without bounds, in a line");
    endLine();
    const auto atAccessor = [this] { return atName("Get") || atName("Set"); };
    if (!mayBeComputed || !atAccessor()) {
      cls.properties.push_back(std::move(declared));
      return;
    }
    while (atAccessor()) cls.methods.push_back(accessor(declared));
    endOf("Property", declared.place);
    endLine();
  }

  MethodText accessor(const Statement& property) {
    MethodText parsed{now().place, property.name};
    const std::string what = take().text;
    parsed.role = sameName(what, "Get") ? Role::getter : Role::setter;
    if (parsed.role == Role::getter) {
      parsed.result = property.type;
    } else {
      parsed.parameters.push_back({StatementKind::dim, property.place, "value", property.type});
    }
    bodyOf(parsed, what);
    return parsed;
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
