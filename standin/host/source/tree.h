// A program as its text has it: nothing is known yet of what names stand for, or of the types of values.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standin/host/language/declarations.h"
#include "standin/host/source/source_error.h"

namespace standin::host {

struct TypeName {
  std::string name;
  bool array = false;
  Place place;
};

struct Expression;
using ExpressionPtr = std::unique_ptr<Expression>;

struct Expression {
  enum class Kind {
    literal,
    color,  // the literal's number
    me,
    super,
    subject,    // what Select Case compares
    name,       // text
    member,     // text, of operand 0
    arguments,  // operand 0 called with, or at the index of, the others
    unary,      // text: Not, -, +
    binary,     // text: an operator
    isA,        // operand 0, type
    newObject,  // type, and the operands for its constructor
    addressOf   // operand 0, a name or member
  };
  Kind kind;
  Place place;
  std::string text = {};
  Literal literal = {};
  TypeName type = {};
  std::vector<ExpressionPtr> operands = {};
  int depth = 1;  // of the tree below it, itself included
};

struct Statement;
using Block = std::vector<Statement>;

// One of the bodies of a statement, and when it is run.
struct Branch {
  Place place;
  ExpressionPtr condition;  // of If and Select; none of Else
  std::string name;         // of Catch: the variable, or empty
  TypeName type;            // of Catch: the class, or without a name
  Block body;
};

struct Statement {
  enum class Kind {
    dim,         // name, type; maybe expression 0, its value, or (hasBound) the upper bound of an array
    constant,    // name, expression 0
    redim,       // expression 0 (the array), 1 (the upper bound)
    assign,      // expression 0 becomes 1
    call,        // expression 0
    ifElse,      // branches
    select,      // expression 0, branches
    forTo,       // name, type; expressions: from, to, and step where there is one; downwards; branch 0
    forEach,     // name, type; expression 0; branch 0
    loop,        // expressions 0 and 1, either may be null: go on while, before and after branch 0
    exit,        // name: what is left ("For", "Do", "While", "Sub", or empty: the innermost loop)
    next,        // name: what is continued
    giveBack,    // Return: maybe expression 0
    tryCatch,    // branch 0, then those of Catch; `last` is Finally
    raise,       // expression 0
    addHandler,  // expression 0 (the event), 1 (AddressOf)
    removeHandler
  };
  Kind kind;
  Place place;
  std::string name = {};
  TypeName type = {};
  std::vector<ExpressionPtr> expressions = {};
  std::vector<Branch> branches = {};
  Block last = {};
  bool downwards = false;  // of forTo
  bool isWhile = false;    // of a loop: While and Wend, not Do and Loop
  bool hasBound = false;   // of dim
};

struct MethodText {
  struct Parameter {
    std::string name;
    TypeName type;
    ExpressionPtr preset;
    bool assigns = false;
    Place place;
  };
  Place place;
  std::string name;
  std::vector<Parameter> parameters;
  TypeName result;  // without a name where there is none
  Block body;
  bool isShared = false;
  bool isPrivate = false;
};

struct PropertyText {
  Place place;
  std::string name;
  TypeName type;
  ExpressionPtr initial;
  std::optional<MethodText> getter, setter;  // of a computed one, either or both
  bool isShared = false;
  bool isPrivate = false;
};

struct ConstantText {
  Place place;
  std::string name;
  ExpressionPtr value;
};

struct ClassText {
  Place place;
  std::string name;
  TypeName base;  // without a name where there is none
  std::vector<MethodText> methods;
  std::vector<MethodText> events;
  std::vector<PropertyText> properties;
  std::vector<ConstantText> constants;
};

struct ProgramText {
  Block statements;  // outside of methods and classes
  std::vector<MethodText> methods;
  std::vector<ClassText> classes;
};

}  // namespace standin::host
