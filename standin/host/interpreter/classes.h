// The classes that a program may name: those of the host and the plug-in, and its own.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/host.h"
#include "standin/host/interpreter/callable.h"
#include "standin/host/source/tree.h"

namespace standin::host {

// A class of the program. Its instances are instances of a class of the host (state/classes.h).
struct ProgramClass {
  ClassText* text = nullptr;
  ClassInfo* info = nullptr;
  const ProgramClass* base = nullptr;  // null where the class inherits none, or one of the host
  std::vector<Type> fields;            // the properties that it keeps in its instances, inherited ones first
  std::vector<const Function*> methods;  // those that a class that inherits it may replace, by their numbers
  std::vector<const Function*> events;   // called by the names of their declarations
  const Function* initial = nullptr;     // gives the properties their first values
  const Function* destructor = nullptr;
  Machine* machine = nullptr;  // while the program runs
};

class Classes {
 public:
  // Null where there is none of that name.
  ClassInfo* find(std::string_view name);
  // The name must be free.
  ClassInfo& add(const std::string& name);
  const std::vector<Callable>& arrayMembersOf(const Type& element);

 private:
  std::map<std::string, std::unique_ptr<ClassInfo>> classes_;  // by lower-case names
  std::map<std::string, std::vector<Callable>> arrayMembers_;  // by the elements' types
};

// The members of that name, those of the class before those of the classes that it inherits.
std::vector<const Callable*> membersNamed(const ClassInfo& cls, std::string_view name);
// The global methods of the plug-in.
std::vector<Callable> pluginFunctions();

// A new instance, without a call of a constructor. `program` may be null.
Value bareInstance(const std::string& name, const ProgramClass* program);
// The program's class of an object; null of others.
const ProgramClass* programClassOf(const Value& object);
// The host has the classes from `open` on until `close`.
void openClasses(const std::vector<ProgramClass*>& classes, Machine& machine);
void closeClasses(const std::vector<ProgramClass*>& classes);

// A handler of an event that calls a method of the program, with the object as its first argument, or as what
// the method is called on.
Handler handlerOf(Machine& machine, const Function& function, const Value& object);
Handler handlerOf(Machine& machine, const Function& function, const Value& self, const Value& object);

}  // namespace standin::host
