// Dictionaries: entries in the order in which their keys came.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "standin/host/host.h"
#include "standin/host/things/objects.h"

namespace standin::host {

class HostDictionary : public HostObject {
 public:
  HostDictionary(const Class& cls, Side owner);
  Value ownProperty(const Property& property) const override;

  void set(const Value& key, const Value& value);
  std::optional<Value> find(const Value& key) const;
  bool remove(const Value& key);  // false where it has no such key
  void clear();
  void empty() override { clear(); }
  const std::vector<Entry>& entries() const { return entries_; }

  // The methods that the plug-in loads. Each dictionary has one of several sets of them; dictionaries made
  // one after the other have different ones, so that a call of another dictionary's is found out.
  enum Method { setter, getter, keyGetter };
  static constexpr size_t kMethodSets = 61;
  size_t methodSet() const { return set_; }
  void noteLoaded(Method method) { loaded_ |= 1u << method; }
  bool hasLoaded(Method method, size_t set) const { return set == set_ && (loaded_ & (1u << method)) != 0; }

 private:
  std::vector<Entry> entries_;
  std::map<std::string, size_t> places_;  // by what is equal for equal keys
  size_t set_;
  unsigned loaded_ = 0;
};

}  // namespace standin::host
