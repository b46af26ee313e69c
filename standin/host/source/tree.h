// source/: the text of a program of the host language, as far as it can be understood without knowing what
// its names stand for. May include language/.
//
// A program as its text has it.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/language/declarations.h"

namespace standin::host {

// Both from 1. A character outside of ASCII is one column.
struct Place {
  int line = 0;
  int column = 0;
};

// What is wrong, what was expected, and, where names are meant, which there are; without the place.
class SourceError : public std::runtime_error {
 public:
  SourceError(Place where, const std::string& what) : std::runtime_error(what), place(where) {}
  const Place place;
};

// As it is written: whether there is such a class is not known. Of kind none where a type is missing.
struct TypeName {
  Type type = {};
  Place place = {};
};

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
    negation,   // Not of operand 0
    binary,     // text: an operator
    isA,        // operand 0, type
    newObject   // type, and the operands for its constructor
  };
  Kind kind;
  Place place;
  std::string text = {};
  std::vector<Expression> operands = {};
  Literal literal = {};
  TypeName type = {};
  int depth = 1;  // of the tree below it, itself included
};

struct Statement;
using Block = std::vector<Statement>;

struct Statement {
  // One of its bodies.
  struct Branch {
    Place place;
    Expression condition;   // of If and Select; of Else it is True
    std::string name = {};  // of Catch: the variable, or empty
    TypeName type = {};     // of Catch: the class, or none
    Block body = {};
  };
  enum class Kind {
    dim,         // name, type; maybe expression 0, its value, or (hasBound) the upper bound of an array
    constant,    // name, maybe type, expression 0
    assign,      // expression 0 becomes 1
    call,        // expression 0
    ifElse,      // branches
    select,      // expression 0, branches
    forTo,       // name, type; expressions: from, to, step; downwards; branch 0
    forEach,     // name, type; expression 0; branch 0
    loop,        // name: "While" or "Do"; expressions 0 and 1: go on while, before and after branch 0
    exit,        // name: what is left ("For", "Do", "While", "Sub", or empty: the innermost loop)
    next,        // name: what is continued
    giveBack,    // Return: maybe expression 0
    tryCatch,    // branch 0, those of Catch, and that of Finally
    addHandler,  // expression 0 (the event), 1 (the method)
    removeHandler
  };
  Kind kind;
  Place place;
  std::string name = {};
  TypeName type = {};
  std::vector<Expression> expressions = {};
  std::vector<Branch> branches = {};
  bool downwards = false;  // of forTo
  bool hasBound = false;   // of dim
};

struct MethodText {
  // The accessors of a computed property are methods of its name.
  enum class Role { method, event, getter, setter };
  Place place;
  std::string name = {};
  Block parameters = {};  // as Dim declares variables; expression 0 is the default value
  TypeName result = {};
  Block body = {};
  Role role = Role::method;
  bool isShared = false;  // of a class, and called without an object
};

struct ClassText {
  Place place;
  std::string name = {};
  TypeName base = {};
  std::vector<MethodText> methods = {};
  std::vector<Statement> properties = {};  // as Dim declares them
  std::vector<Statement> constants = {};
};

struct ProgramText {
  Block statements;  // outside of methods and classes
  std::vector<MethodText> methods;
  std::vector<ClassText> classes;
};

// Throws SourceError for the first mistake. Expressions and statements nest 200 deep at the most, so that
// whoever walks through the tree needs little of the stack.
ProgramText parseProgram(std::string_view source);

}  // namespace standin::host
