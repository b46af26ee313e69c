// What can be called: functions, methods, properties and constants, whoever has them.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/interpreter/machine.h"

namespace standin::host {

struct ClassInfo;

struct Call {
  Machine& machine;
  const Value& self;  // nil of functions and shared methods
  // Of the types of the parameters. Of `set`, the last is the value to set.
  std::vector<Value> arguments;
};

struct Callable {
  Declaration declaration;
  std::string text;                     // for messages
  std::function<Value(Call&)> run;      // null: can only be set
  std::function<void(Call&)> set = {};  // null: can't be set
  Type assigned = {};                   // what is set
  const Function* function = nullptr;   // of a method of the program
  bool isMember = true;                 // false: a function outside of classes
  bool isShared = false;
  const ClassInfo* onlyIn = nullptr;  // a private member's class
};

struct ClassInfo {
  std::string name;
  const ClassInfo* base = nullptr;
  std::deque<Callable> members;
  std::vector<Declaration> events;

  bool isOrDerivesFrom(const ClassInfo& other) const;
};

using Native = Value (*)(Call&);

// A row of a table: the declaration as one would write it, and what it does. `set` is for what can be
// assigned to.
struct NativeMember {
  const char* className;
  const char* declaration;
  Native run;
  Native set = nullptr;
  bool isShared = false;
};
Callable callableOf(const NativeMember& row);

// The functions that every program has. One whose first parameter is called "text" is also a member of texts:
// Left(name, 3) and name.Left(3).
const std::vector<Callable>& functions();
// The members that the language's own types and classes have beside their plain properties: Variant, Color,
// App and the host's classes.
std::vector<Callable> nativeMembersOf(std::string_view className);
// Of an array of such elements.
std::vector<Callable> arrayMembers(const Type& element);

}  // namespace standin::host
