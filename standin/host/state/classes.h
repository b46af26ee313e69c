// The classes that the host knows: its own, and those that the plug-in registered.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/language/declarations.h"

namespace standin::host {

class HostObject;     // see things/; here only named
struct ProgramClass;  // see interpreter/; here only named
enum class Side;

// What "pluginObjectType" gives out: its address stands for the class; there is nothing to read in it.
struct ClassReference {
  char unused;
};

struct Method {
  Declaration declaration;
  std::string text;
  void* function = nullptr;
  void* setter = nullptr;  // of an assignable method
};

struct Property {
  std::string name;
  Type type;
  // Where the value is: a field of the instance data, functions of the plug-in, or (own classes) the host's
  // own.
  enum class Access { field, functions, own } access = Access::own;
  uint32_t parameter = 0;  // the field's position, or what the functions are called with
  void* getter = nullptr;
  void* setter = nullptr;
  bool readOnly = false;
};

struct Event {
  Declaration declaration;
  std::string text;
  uint32_t index = 0;  // what the host wrote into the record
};

struct Constant {
  ConstantDeclaration declaration;
  std::string text;
};

struct Class {
  std::string name;
  const Class* base = nullptr;
  ClassReference reference{};

  // Of the host's own classes and the wrapper classes: makes an instance that is more than a block and
  // properties. Null for all others.
  HostObject* (*make)(const Class& cls, Side owner) = nullptr;
  // Of the wrapper classes alone: what their instances have in the block, and whether they are tagged.
  enum class Wraps { nothing, reference, geometry } wraps = Wraps::nothing;
  bool genuine = false;

  // Of the plug-in's classes alone.
  const uint32_t* record = nullptr;
  uint32_t dataOffset = 0;
  uint32_t dataSize = 0;
  void* constructor = nullptr;
  void* destructor = nullptr;

  // Of the classes of a program alone. They have no members here; where they have a class of the plug-in for
  // a base, their instances have its data.
  const ProgramClass* program = nullptr;
  void (*beforeEnd)(HostObject& object) = nullptr;

  std::vector<Property> properties;
  std::vector<Method> methods;
  std::vector<Method> sharedMethods;
  std::vector<Event> events;
  std::vector<Constant> constants;

  bool isRegistered() const { return record != nullptr; }
  bool isOrDerivesFrom(const Class& other) const;
  // The class itself, or the nearest one that a program's class is made of: that which has the members.
  const Class& withMembers() const;
};

const Property* findProperty(const Class& cls, std::string_view name);
const Event* findEvent(const Class& cls, std::string_view name);  // null where it has none

class ClassTable {
 public:
  const Class* find(std::string_view name) const;
  const Class* find(const ClassReference* reference) const;
  void add(std::unique_ptr<Class> cls);
  // Takes a class of a program out of the table. Objects that are left of it keep it.
  void retire(std::string_view name);
  const std::vector<const Class*>& registered() const { return registered_; }

 private:
  // By name, in an order that is quick to tell.
  struct Before {
    using is_transparent = void;
    bool operator()(std::string_view one, std::string_view other) const;
  };
  std::map<std::string, std::unique_ptr<Class>, Before> classes_;
  std::vector<const Class*> registered_;
  std::vector<std::unique_ptr<Class>> retired_;
};

}  // namespace standin::host
