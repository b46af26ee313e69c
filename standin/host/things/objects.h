// Instances of classes.
//
// The plug-in may rely on little: an instance's data stands at the offset that the class record tells, an
// array's third word leads to its elements. All else in the block is the host's.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "standin/host/state/classes.h"
#include "standin/host/things/handles.h"

namespace standin::host {

constexpr size_t kObjectHeadSize = 48;  // of a block without a plug-in's data
// Writes into the head of a block what instances and variants have there.
void markAsObject(const Counted& thing);

class HostObject : public Counted {
 public:
  using OfKind = HostObject;
  static constexpr ThingKind kThing = ThingKind::object;

  // The class's constructor function is not called yet.
  HostObject(const Class& cls, Side owner);
  HostObject(const Class& cls, Side owner, size_t blockSize);
  std::string describe() const override { return blockName().text(); }
  BlockName blockName() const override { return {"object", cls.name.c_str()}; }
  void beforeEnd() override;
  void empty() override;
  void end() override;

  // A property that has no place in the block.
  virtual Value ownProperty(const Property& property) const;

  unsigned char* data() const { return static_cast<unsigned char*>(block()) + cls.dataOffset; }

  const Class& cls;
  std::map<std::string, Value> own;  // properties of the host's own classes, by lower-case name
  std::vector<Value> fields;         // properties of a program's classes, by number
};

// Ends the process when the handle is null, freed or a string's.
Counted& objectThingAt(ObjectHandle handle);
ObjectHandle handleOf(const Counted& thing);

// Calls the class's constructor function. The reference is the owner's.
ObjectHandle newObject(const Class& cls, Side owner);
// The instance that the value is; when it is none CallError, whose text is `use` and what the value is
// instead.
HostObject& instanceIn(const Value& value, std::string_view use);
// The text is of two parts, put together when it is needed: "GetAttribute", "called on".
HostObject& instanceIn(const Value& value, std::string_view name, std::string_view use);
// Throws CallError: "not a Date but 5", where `wanted` is "a Date".
[[noreturn]] void throwMismatch(const Value& value, const char* wanted);
// As instanceIn(), for an instance of a class that has a C++ class of its own; any other is a mismatch.
template <class Instance>
Instance& instanceAs(const Value& value, std::string_view use, const char* wanted) {
  auto* const instance = dynamic_cast<Instance*>(&instanceIn(value, use));
  if (!instance) throwMismatch(value, wanted);
  return *instance;
}

}  // namespace standin::host
