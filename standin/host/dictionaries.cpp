// Dictionaries, and the three methods by which the plug-in reaches their entries.
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/encodings.h"
#include "standin/host/host.h"
#include "standin/host/objects.h"
#include "standin/host/own_classes.h"
#include "standin/host/runtime.h"

namespace standin::host {
namespace {

// The addresses of a dictionary's methods are its own, so that a call of another dictionary's is found out.
// There are so many sets of them; dictionaries made one after the other have different ones.
constexpr std::size_t methodSets = 61;
// A size that no other thing has; see Settings::reusesAddresses.
constexpr std::size_t blockSize = 80;

class HostDictionary : public HostObject {
 public:
  HostDictionary(const Class& cls, Side owner);
  Value ownProperty(const Property& property) const override;
  void* ownMethod(std::string_view declaration) override;

  void set(const Value& key, const Value& value);
  std::optional<Value> find(const Value& key) const;
  const std::vector<Entry>& entries() const { return entries_; }

  enum Method { setter, getter, keyGetter };
  bool hasLoaded(Method method, std::size_t set) const {
    return set == set_ && (loaded_ & (1u << method)) != 0;
  }

 private:
  std::vector<Entry> entries_;
  std::map<std::string, std::size_t> places_;  // by what is equal for equal keys
  std::size_t set_;
  unsigned loaded_ = 0;
};

// --- Keys ---

std::string foldedNumber(double number) {
  constexpr double limit = 9223372036854775808.0;  // 2^63
  if (number == std::trunc(number) && number >= -limit && number < limit) {
    return std::to_string(static_cast<int64_t>(number));
  }
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", number);
  return text;
}

std::string foldedText(const Value& key) {
  if (key.isNil()) return "text ";
  const auto utf16 =
      key.encoding() == encodingUnknown ? std::nullopt : convert(key.bytes(), key.encoding(), encodingUtf16);
  if (!utf16) return "bytes " + key.bytes();
  std::u16string text(utf16->size() / sizeof(char16_t), u'\0');
  utf16->copy(reinterpret_cast<char*>(text.data()), utf16->size());
  std::u16string folded(text.size() * 3 + 1, u'\0');  // one unit folds to three at most
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = u_strFoldCase(folded.data(), static_cast<int32_t>(folded.size()), text.data(),
                                       static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT, &error);
  if (U_FAILURE(error)) die("(dictionary key)", u_errorName(error));
  return "text " + std::string(reinterpret_cast<const char*>(folded.data()),
                               static_cast<std::size_t>(length) * sizeof(char16_t));
}

std::string foldedObject(const Value& key) {
  if (!isDate(thingAt(key.handle()))) {
    return "object " + std::to_string(reinterpret_cast<uintptr_t>(key.handle()));
  }
  const DateFields date = fields(key);
  std::string text = "date";
  for (const int32_t field : {date.year, date.month, date.day, date.hour, date.minute, date.second}) {
    text += " " + std::to_string(field);
  }
  return text;
}

std::string folded(const Value& key) {
  switch (key.kind()) {
    case Kind::nil:
      return "nil";
    case Kind::boolean:
      return key.boolean() ? "true" : "false";
    case Kind::color:
      return "color " + std::to_string(key.integer());
    case Kind::single:
    case Kind::number:
      return "number " + foldedNumber(key.number());
    case Kind::string:
      return foldedText(key);
    case Kind::object:
    case Kind::array:
      return foldedObject(key);
    default:
      return "number " + std::to_string(key.integer());
  }
}

// --- The methods ---

HostDictionary& dictionaryFor(ObjectHandle handle, HostDictionary::Method method, std::size_t set,
                              const char* call) {
  Counted& thing = objectThingAt(handle);
  auto* const dictionary = dynamic_cast<HostDictionary*>(&thing);
  if (!dictionary) die(call, "the " + thing.describe() + " was passed where a Dictionary is expected");
  if (!dictionary->hasLoaded(method, set)) die(call, "the method was not loaded from this dictionary");
  return *dictionary;
}

Value borrowed(ObjectHandle handle) {
  if (handle) objectThingAt(handle);
  return Value::object(Ref::share(handle));
}

template <std::size_t Set>
void setEntry(ObjectHandle handle, ObjectHandle key, ObjectHandle value) {
  const Gate gate("Dictionary set");
  HostDictionary& dictionary = dictionaryFor(handle, HostDictionary::setter, Set, "Dictionary set");
  const Value keyValue = borrowed(key);
  const Value newValue = borrowed(value);
  if (!gate.fails()) dictionary.set(keyValue, newValue);
}

// The variants come with a reference for the plug-in.
template <std::size_t Set>
ObjectHandle getEntry(ObjectHandle handle, ObjectHandle key) {
  const Gate gate("Dictionary get");
  const HostDictionary& dictionary = dictionaryFor(handle, HostDictionary::getter, Set, "Dictionary get");
  const Value keyValue = borrowed(key);
  if (gate.fails()) return nullptr;
  const auto found = dictionary.find(keyValue);
  if (!found) raise({"KeyNotFoundException", "", 0});
  return found ? handOver(*found) : nullptr;
}

template <std::size_t Set>
ObjectHandle getKey(ObjectHandle handle, int32_t index) {
  const Gate gate("Dictionary key");
  const HostDictionary& dictionary = dictionaryFor(handle, HostDictionary::keyGetter, Set, "Dictionary key");
  if (gate.fails()) return nullptr;
  const auto& entries = dictionary.entries();
  if (index < 0 || static_cast<std::size_t>(index) >= entries.size()) {
    raise({"OutOfBoundsException", "", 0});
    return nullptr;
  }
  return handOver(entries[static_cast<std::size_t>(index)].first);
}

using Methods = std::array<void*, 3>;  // by HostDictionary::Method

template <std::size_t... Set>
std::array<Methods, sizeof...(Set)> methodTable(std::index_sequence<Set...>) {
  return {Methods{reinterpret_cast<void*>(&setEntry<Set>), reinterpret_cast<void*>(&getEntry<Set>),
                  reinterpret_cast<void*>(&getKey<Set>)}...};
}

constexpr const char* declarations[] = {
    "Value(key As Variant, Assigns _value As Variant)",
    "Value(key As Variant) As Variant",
    "Key(index As Integer) As Variant",
};

// --- The object ---

HostDictionary::HostDictionary(const Class& classOfIt, Side owner) : HostObject(classOfIt, owner, blockSize) {
  static std::size_t made = 0;
  set_ = made++ % methodSets;
}

Value HostDictionary::ownProperty(const Property&) const {
  return static_cast<int32_t>(entries_.size());  // Count; there is no other
}

void* HostDictionary::ownMethod(std::string_view declaration) {
  static const auto table = methodTable(std::make_index_sequence<methodSets>());
  for (const Method method : {setter, getter, keyGetter}) {
    if (declaration != declarations[method]) continue;
    loaded_ |= 1u << method;
    return table[set_][method];
  }
  return nullptr;
}

void HostDictionary::set(const Value& key, const Value& value) {
  const auto [place, isNew] = places_.emplace(folded(key), entries_.size());
  if (isNew) {
    entries_.emplace_back(key, value);
  } else {
    // The old value goes last: its end may reach back here.
    const Value before = std::exchange(entries_[place->second].second, value);
  }
}

std::optional<Value> HostDictionary::find(const Value& key) const {
  const auto found = places_.find(folded(key));
  if (found == places_.end()) return {};
  return entries_[found->second].second;
}

HostDictionary& dictionaryIn(const Value& value) {
  auto* const dictionary = dynamic_cast<HostDictionary*>(&instanceIn(value, "dictionary entries asked of"));
  if (!dictionary) throw CallError("not a Dictionary but " + value.describe());
  return *dictionary;
}

}  // namespace

HostObject* makeDictionary(const Class& cls, Side owner) {
  return new HostDictionary(cls, owner);
}

Value dictionary(const std::vector<Entry>& entries) {
  const Value made = newInstance("Dictionary");
  for (const auto& [key, value] : entries) dictionaryIn(made).set(key, value);
  return made;
}

std::vector<Entry> entries(const Value& dictionary) {
  return dictionaryIn(dictionary).entries();
}

std::optional<Value> lookUp(const Value& dictionary, const Value& key) {
  return dictionaryIn(dictionary).find(key);
}

}  // namespace standin::host
