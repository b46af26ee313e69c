#include "standin/host/things/own_classes.h"

#include <memory>
#include <utility>
#include <vector>

#include "standin/host/things/dates.h"
#include "standin/host/things/dictionaries.h"
#include "standin/host/things/folder_items.h"
#include "standin/host/things/memory_blocks.h"
#include "standin/host/things/objects.h"

namespace standin::host {
namespace {

// Of an exception that nobody has numbered yet. Not 0, which is what plug-ins set.
constexpr int32_t kFreshErrorNumber = -1;

class HostException : public HostObject {
 public:
  HostException(const Class& cls, Side owner) : HostObject(cls, owner) {
    own["errornumber"] = kFreshErrorNumber;
  }
};

template <class Instance>
HostObject* make(const Class& cls, Side owner) {
  return new Instance(cls, owner);
}

struct OwnProperty {
  const char* name;
  const char* type;
  bool readOnly = false;
};

struct OwnClass {
  const char* name;
  const char* base;
  std::vector<OwnProperty> properties;
  HostObject* (*make)(const Class& cls, Side owner) = nullptr;
};

// A base class stands before the classes made of it.
const OwnClass kOwnClasses[] = {
    {"RuntimeException", nullptr, {{"Message", "String"}, {"ErrorNumber", "Integer"}}, make<HostException>},
    {"NilObjectException", "RuntimeException", {}, make<HostException>},
    {"OutOfMemoryException", "RuntimeException", {}, make<HostException>},
    {"OutOfBoundsException", "RuntimeException", {}, make<HostException>},
    {"KeyNotFoundException", "RuntimeException", {}, make<HostException>},
    {"TypeMismatchException", "RuntimeException", {}, make<HostException>},
    {"IllegalCastException", "RuntimeException", {}, make<HostException>},
    {"StackOverflowException", "RuntimeException", {}, make<HostException>},
    {"Date",
     nullptr,
     {{"Year", "Integer"},
      {"Month", "Integer"},
      {"Day", "Integer"},
      {"Hour", "Integer"},
      {"Minute", "Integer"},
      {"Second", "Integer"}},
     make<HostDate>},
    {"Dictionary", nullptr, {{"Count", "Integer", true}}, make<HostDictionary>},
    {"MemoryBlock", nullptr, {}, make<HostMemoryBlock>},
    {"FolderItem", nullptr, {}, make<HostFolderItem>},
};

}  // namespace

void addOwnClasses(ClassTable& classes) {
  for (const OwnClass& own : kOwnClasses) {
    auto cls = std::make_unique<Class>();
    cls->name = own.name;
    cls->base = own.base ? classes.find(own.base) : nullptr;
    cls->make = own.make;
    for (const auto& [name, type, readOnly] : own.properties) {
      Property property;
      property.name = name;
      property.type = parseType(type);
      property.readOnly = readOnly;
      cls->properties.push_back(std::move(property));
    }
    classes.add(std::move(cls));
  }
}

}  // namespace standin::host
