// What programs may name and call: the functions, and the classes of the language, of the plug-in and of the
// program, each with members.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/host.h"
#include "standin/host/interpreter/machine.h"
#include "standin/host/source/tree.h"

namespace standin::host {

struct Callable;

struct Call {
  Machine& machine;
  const Callable& callable;
  const Value& self;             // nil of what needs no object
  std::vector<Value> arguments;  // of the parameters' types; of `set`, the last is the value to set

  int64_t whole(size_t index) const { return arguments[index].integer(); }
  double number(size_t index) const { return arguments[index].number(); }
};
using Native = Value (*)(Call&);

// A function, method, property or constant, whoever has it.
struct Callable {
  Declaration declaration;
  std::string text;                    // for messages
  Native run = nullptr;                // null: can only be set
  Native set = nullptr;                // null: can't be set; else the value is of the result's type
  bool isShared = false;               // it needs no object
  bool takesSelf = false;              // the object is the first argument
  std::string owner = {};              // of the plug-in's shared members: their class
  const Function* function = nullptr;  // of the program's
  size_t number = 0;                   // of a property of the program, among those of its class
  Code constant = {};                  // of a constant of the program
};

// A row of a table: the class, or none of a function, the declaration as one would write it, and what it
// does. Of arrays the class is "()", and their elements are of the type Element.
struct NativeMember {
  const char* className;
  const char* declaration;
  Native run;
  Native set = nullptr;
  bool isShared = false;
};
std::span<const NativeMember> nativeMembers();
std::span<const NativeMember> nativeFunctions();

// A class that a program may name.
struct ProgramClass {
  std::string name;
  const ProgramClass* base = nullptr;
  std::deque<Callable> members = {};
  std::vector<Declaration> events = {};

  // The rest is of the program's own, whose instances are those of a class of the host (state/classes.h).
  // What is inherited comes first.
  struct Field {
    Type type;
    Code first;  // null: the type's
  };
  const ClassText* text = nullptr;
  std::vector<Field> fields = {};              // the properties that it keeps in its instances
  std::vector<const Function*> handlers = {};  // of events, by the names of their declarations
  const Function* destructor = nullptr;
  Machine* machine = nullptr;  // while the program runs
};

class Classes {
 public:
  // By its name, or that of an array's type ("Date()"); null where there is none.
  ProgramClass* find(std::string_view name);
  // The name must be free.
  ProgramClass& add(const std::string& name);
  // Of all of them, but for the types of arrays.
  std::vector<std::string> names() const;

 private:
  std::map<std::string, std::unique_ptr<ProgramClass>> classes_;  // by lower-case names
};

// The members of that name, those of the class before those of the classes that it inherits.
std::vector<const Callable*> membersNamed(const ProgramClass& cls, std::string_view name);
// Those that every program has, and the global methods of the plug-in.
std::deque<Callable> allFunctions();
Callable callableOf(const Function& function);

// A new instance, without a call of a constructor.
Value bareInstance(const ProgramClass& cls, Machine& machine);
// The host has the classes, each behind the one that it inherits, from `open` on until `close`.
void openClasses(const std::vector<ProgramClass*>& classes, Machine& machine);
void closeClasses(const std::vector<ProgramClass*>& classes);

// What the host calls for an event of the object, which it doesn't hold: a method of the object, or one that
// was added, which gets the object first and is called on `added`.
Handler handlerOf(Machine& machine, const Function& function, const Value& object,
                  std::optional<Value> added);
// Whether it is the one that was added with that method and object.
bool isHandlerOf(const Handler& handler, const Function& function, const Value& added);

}  // namespace standin::host
