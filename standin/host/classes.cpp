#include "standin/host/classes.h"

#include <algorithm>
#include <utility>

#include "standin/host/own_classes.h"

namespace standin::host {
namespace {

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
const OwnClass ownClasses[] = {
    {"RuntimeException", nullptr, {{"Message", "String"}, {"ErrorNumber", "Integer"}}, makeException},
    {"NilObjectException", "RuntimeException", {}, makeException},
    {"OutOfMemoryException", "RuntimeException", {}, makeException},
    {"OutOfBoundsException", "RuntimeException", {}, makeException},
    {"KeyNotFoundException", "RuntimeException", {}, makeException},
    {"Date",
     nullptr,
     {{"Year", "Integer"},
      {"Month", "Integer"},
      {"Day", "Integer"},
      {"Hour", "Integer"},
      {"Minute", "Integer"},
      {"Second", "Integer"}},
     makeDate},
    {"Dictionary", nullptr, {{"Count", "Integer", true}}, makeDictionary},
    {"MemoryBlock", nullptr, {}, makeMemoryBlock},
    {"FolderItem", nullptr, {}, makeFolderItem},
};

}  // namespace

bool Class::isOrDerivesFrom(const Class& other) const {
  for (const Class* cls = this; cls; cls = cls->base) {
    if (cls == &other) return true;
  }
  return false;
}

const Property* findProperty(const Class& start, std::string_view name) {
  for (const Class* cls = &start; cls; cls = cls->base) {
    for (const Property& property : cls->properties) {
      if (sameName(property.name, name)) return &property;
    }
  }
  return nullptr;
}

ClassTable::ClassTable() {
  for (const OwnClass& own : ownClasses) {
    auto cls = std::make_unique<Class>();
    cls->name = own.name;
    cls->base = own.base ? find(own.base) : nullptr;
    cls->make = own.make;
    for (const auto& [name, type, readOnly] : own.properties) {
      Property property;
      property.name = name;
      property.type = parseType(type);
      property.readOnly = readOnly;
      cls->properties.push_back(std::move(property));
    }
    add(std::move(cls));
  }
}

const Class* ClassTable::find(std::string_view name) const {
  const auto found = classes_.find(lower(name));
  return found == classes_.end() ? nullptr : found->second.get();
}

const Class* ClassTable::find(const ClassReference* reference) const {
  for (const auto& [name, cls] : classes_) {
    if (&cls->reference == reference) return cls.get();
  }
  return nullptr;
}

void ClassTable::add(std::unique_ptr<Class> cls) {
  if (cls->isRegistered()) registered_.push_back(cls.get());
  classes_[lower(cls->name)] = std::move(cls);
}

}  // namespace standin::host
