// Finds out what the names of a program stand for, whether the types of its values fit, and makes functions
// of its expressions and statements. Everything throws SourceError, whose text names what would fit.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/interpreter/classes.h"
#include "standin/host/interpreter/values.h"

namespace standin::host {

// What a program is made into before it runs. Everything stays where it is: what was checked refers to it.
struct ProgramParts {
  ProgramText text = {};
  Classes classes = {};
  std::vector<ProgramClass*> programClasses = {};  // its own, each after the one that it inherits
  std::deque<Callable> methods = {};               // outside of classes
  std::deque<Callable> functions = allFunctions();
  std::deque<Function> bodies = {};
  std::vector<Type> globals = {};
  Function main{"the program"};
};

// Fills in what is made of the text.
void check(ProgramParts& parts);

struct Checked {
  Type type;
  Place place;
  Code code;
};

// Where a variable is.
struct Slot {
  size_t number = 0;
  bool isGlobal = false;
  Value& in(Frame& frame) const { return (isGlobal ? frame.machine.globals : frame.slots)[number]; }
};

// A name that a program gave to a value.
struct Named {
  std::string name;
  Type type;
  Slot slot = {};
  Code constant = {};  // of a constant
};

// Names in the order of their declaration, the nearest last.
using Names = std::vector<Named>;
const Named* findName(const Names& names, std::string_view name);

// What is known where an expression stands: in a method's body, or outside of methods.
struct Scope {
  ProgramParts& parts;
  const Names& globals;
  const ProgramClass* self;  // null outside of classes
  Names locals = {};
  Names subjects = {};  // of Select Case
};

// Null also where a member of the class has the name.
const Named* variableNamed(const Scope& scope, std::string_view name);
Type resolved(ProgramParts& parts, const TypeName& name);
// Nothing where a value of the first type is none of the other; otherwise how far it is from it.
std::optional<int> distance(ProgramParts& parts, const Type& from, const Type& to);
// The event of that name, of the class or one that it inherits.
const Declaration& eventNamed(const ProgramClass& cls, const std::string& name, Place place);
std::string shown(const Declaration& declaration);  // for messages
[[noreturn]] void fail(Place place, const std::string& what);

Checked checkExpression(Scope& scope, const Expression& expression);
// As a value of the type.
Code checkedAs(Scope& scope, const Expression& expression, const Type& type);
Code coerced(Scope& scope, Checked value, const Type& type);
Checked checkConstant(Scope& scope, const Statement& declared);
// Of assign, addHandler and removeHandler.
Action checkAssignment(Scope& scope, const Statement& statement);
Action checkHandler(Scope& scope, const Statement& statement);
// Fills in the function's body.
void checkBody(const Scope& scope, const Block& statements, Function& function, bool isOutermost = false);

}  // namespace standin::host
