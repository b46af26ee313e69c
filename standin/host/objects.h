// Host objects: instances of classes, variants and arrays.
//
// The plug-in may rely on little: an instance's data stands at the offset that the class record tells, an
// array's third word leads to its elements. All else in the block is the host's.
#pragma once

#include <map>
#include <string>

#include "standin/host/classes.h"
#include "standin/host/handles.h"

namespace standin::host {

class HostObject : public Counted {
 public:
  // The class's constructor function is not called yet.
  HostObject(const Class& cls, Side owner);
  std::string describe() const override { return "object " + cls.name; }
  void end() override;

  unsigned char* data() const { return static_cast<unsigned char*>(block()) + cls.dataOffset; }

  const Class& cls;
  std::map<std::string, Value> own;  // properties of the host's own classes, by lower-case name
};

// A boxed number, truth value, colour or string. Objects and arrays are their own variants.
class HostVariant : public Counted {
 public:
  HostVariant(Value content, Side owner);
  std::string describe() const override { return "variant " + value.describe(); }

  const Value value;
};

// Ends the process when the handle is null, freed or a string's.
Counted& objectThingAt(ObjectHandle handle);
ObjectHandle handleOf(const Counted& thing);

// Null when the class is unknown, or hidden by the settings.
const Class* availableClass(std::string_view name);
ObjectHandle newObject(const Class& cls, Side owner);

// A reference of the host's side to the value as a variant: null for nil.
Ref boxed(const Value& value);
// The code by which variants tell what they hold.
int32_t variantType(const Counted& thing);

}  // namespace standin::host
