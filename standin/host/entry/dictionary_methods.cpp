// The three methods by which the plug-in reaches the entries of dictionaries.
#include <array>
#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/entry/loaded_methods.h"
#include "standin/host/state/exceptions.h"
#include "standin/host/things/dictionaries.h"
#include "standin/host/things/variants.h"

namespace standin::host {
namespace {

HostDictionary& dictionaryFor(ObjectHandle handle, HostDictionary::Method method, size_t set) {
  auto& dictionary = thingAs<HostDictionary>(objectThingAt(handle), "a Dictionary");
  if (!dictionary.hasLoaded(method, set)) {
    die(currentCall(), "the method was not loaded from this dictionary");
  }
  return dictionary;
}

Value borrowed(ObjectHandle handle) {
  if (handle) objectThingAt(handle);
  return Value::object(Ref::share(handle));
}

template <size_t Set>
void setEntry(ObjectHandle handle, ObjectHandle key, ObjectHandle value) {
  const Gate gate("Dictionary set");
  HostDictionary& dictionary = dictionaryFor(handle, HostDictionary::setter, Set);
  const Value keyValue = borrowed(key);
  const Value newValue = borrowed(value);
  if (!gate.fails()) dictionary.set(keyValue, newValue);
}

// The variants come with a reference for the plug-in.
template <size_t Set>
ObjectHandle getEntry(ObjectHandle handle, ObjectHandle key) {
  const Gate gate("Dictionary get");
  const HostDictionary& dictionary = dictionaryFor(handle, HostDictionary::getter, Set);
  const Value keyValue = borrowed(key);
  if (gate.fails()) return nullptr;
  const auto found = dictionary.find(keyValue);
  if (!found) raise({"KeyNotFoundException", "", 0});
  return found ? handOver(*found) : nullptr;
}

template <size_t Set>
ObjectHandle getKey(ObjectHandle handle, int32_t index) {
  const Gate gate("Dictionary key");
  const HostDictionary& dictionary = dictionaryFor(handle, HostDictionary::keyGetter, Set);
  const auto& entries = dictionary.entries();
  if (gate.fails() || !requireIndex(index, static_cast<int64_t>(entries.size()))) return nullptr;
  return handOver(entries[static_cast<size_t>(index)].first);
}

using Methods = std::array<void*, 3>;  // by HostDictionary::Method

template <size_t... Set>
std::array<Methods, sizeof...(Set)> methodTable(std::index_sequence<Set...>) {
  return {Methods{reinterpret_cast<void*>(&setEntry<Set>), reinterpret_cast<void*>(&getEntry<Set>),
                  reinterpret_cast<void*>(&getKey<Set>)}...};
}

constexpr const char* kDeclarations[] = {
    "Value(key As Variant, Assigns _value As Variant)",
    "Value(key As Variant) As Variant",
    "Key(index As Integer) As Variant",
};

}  // namespace

void* dictionaryMethod(HostDictionary& dictionary, std::string_view declaration) {
  static const auto table = methodTable(std::make_index_sequence<HostDictionary::kMethodSets>());
  for (const auto method : {HostDictionary::setter, HostDictionary::getter, HostDictionary::keyGetter}) {
    if (declaration != kDeclarations[method]) continue;
    dictionary.noteLoaded(method);
    return table[dictionary.methodSet()][method];
  }
  return nullptr;
}

}  // namespace standin::host
