// Host objects: instances of classes, variants and arrays.
//
// The plug-in may rely on little: an instance's data stands at the offset that the class record tells, an
// array's third word leads to its elements. All else in the block is the host's.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "standin/host/classes.h"
#include "standin/host/handles.h"

namespace standin::host {

class HostObject : public Counted {
 public:
  // The class's constructor function is not called yet.
  HostObject(const Class& cls, Side owner);
  HostObject(const Class& cls, Side owner, std::size_t blockSize);
  std::string describe() const override { return "object " + cls.name; }
  void end() override;

  // A property that has no place in the block.
  virtual Value ownProperty(const Property& property) const;
  // A method of the host's own that was asked for by this very text; null when there is none.
  virtual void* ownMethod(std::string_view) { return nullptr; }

  unsigned char* data() const { return static_cast<unsigned char*>(block()) + cls.dataOffset; }

  const Class& cls;
  std::map<std::string, Value> own;  // properties of the host's own classes, by lower-case name
};

// A boxed number, truth value, colour or string. Objects and arrays are their own variants.
class HostVariant : public Counted {
 public:
  HostVariant(Value content, Side owner, std::optional<int32_t> code = {});
  std::string describe() const override { return "variant " + value.describe(); }

  const Value value;
  const std::optional<int32_t> code;  // told instead of the value's own
};

// Ends the process when the handle is null, freed or a string's.
Counted& objectThingAt(ObjectHandle handle);
ObjectHandle handleOf(const Counted& thing);

// Null when the class is unknown, or hidden by the settings.
const Class* availableClass(std::string_view name);
ObjectHandle newObject(const Class& cls, Side owner);
bool isDate(const Counted& thing);
// The instance that the value is; when it is none CallError, whose text is `use` and what the value is
// instead.
HostObject& instanceIn(const Value& value, std::string_view use);

// A reference of the host's side to the value as a variant: null for nil.
Ref boxed(const Value& value);
// The same for the plug-in, with a reference of its side.
ObjectHandle handOver(const Value& value);
// The code by which variants tell what they hold.
int32_t variantType(const Counted& thing);

}  // namespace standin::host
