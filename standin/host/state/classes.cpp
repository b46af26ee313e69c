#include "standin/host/state/classes.h"

#include <utility>

namespace standin::host {

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

const Class& Class::withMembers() const {
  const Class* cls = this;
  while (cls->program && cls->base) cls = cls->base;
  return *cls;
}

const Event* findEvent(const Class& cls, std::string_view name) {
  for (const Event& event : cls.withMembers().events) {
    if (sameName(event.declaration.name, name)) return &event;
  }
  return nullptr;
}

bool ClassTable::Before::operator()(std::string_view one, std::string_view other) const {
  if (one.size() != other.size()) return one.size() < other.size();
  return compareLetters(one.data(), other.data(), one.size()) < 0;
}

const Class* ClassTable::find(std::string_view name) const {
  const auto found = classes_.find(name);
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
  const std::string name = cls->name;
  classes_.insert_or_assign(name, std::move(cls));
}

void ClassTable::retire(std::string_view name) {
  const auto found = classes_.find(name);
  found->second->program = nullptr;
  found->second->beforeEnd = nullptr;
  retired_.push_back(std::move(found->second));
  classes_.erase(found);
}

}  // namespace standin::host
