#include "standin/host/things/dictionaries.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <cmath>
#include <cstdio>
#include <utility>

#include "standin/gate/gate.h"
#include "standin/host/language/encodings.h"
#include "standin/host/things/dates.h"

namespace standin::host {
namespace {

// A size that no other thing has; see Settings::reusesAddresses.
constexpr size_t kBlockSize = 80;

// --- Keys: texts that are equal for equal keys ---

std::string foldedNumber(double number) {
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  if (number == std::trunc(number) && number >= -kLimit && number < kLimit) {
    return std::to_string(static_cast<int64_t>(number));
  }
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", number);
  return text;
}

std::string foldedText(const Value& key) {
  if (key.isNil()) return "text ";
  const auto utf16 = key.encoding() == kEncodingUnknown
                         ? std::nullopt
                         : convert(key.bytes(), key.encoding(), kEncodingUtf16);
  if (!utf16) return "bytes " + key.bytes();
  std::u16string text(utf16->size() / sizeof(char16_t), u'\0');
  utf16->copy(reinterpret_cast<char*>(text.data()), utf16->size());
  std::u16string folded(text.size() * 3 + 1, u'\0');  // one unit folds to three at most
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = u_strFoldCase(folded.data(), static_cast<int32_t>(folded.size()), text.data(),
                                       static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT, &error);
  if (U_FAILURE(error)) die("(dictionary key)", u_errorName(error));
  return "text " + std::string(reinterpret_cast<const char*>(folded.data()),
                               static_cast<size_t>(length) * sizeof(char16_t));
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

HostDictionary& dictionaryIn(const Value& value) {
  return instanceAs<HostDictionary>(value, "dictionary entries asked of", "a Dictionary");
}

}  // namespace

HostDictionary::HostDictionary(const Class& classOfIt, Side owner)
    : HostObject(classOfIt, owner, kBlockSize) {
  static size_t made = 0;
  set_ = made++ % kMethodSets;
}

Value HostDictionary::ownProperty(const Property&) const {
  return static_cast<int32_t>(entries_.size());  // Count; there is no other
}

void HostDictionary::set(const Value& key, const Value& value) {
  const auto [place, isNew] = places_.emplace(folded(key), entries_.size());
  if (isNew) {
    entries_.emplace_back(key, value);
  } else {
    // The old value is released last: what ends with it may use this dictionary.
    const Value before = std::exchange(entries_[place->second].second, value);
  }
}

std::optional<Value> HostDictionary::find(const Value& key) const {
  const auto found = places_.find(folded(key));
  if (found == places_.end()) return {};
  return entries_[found->second].second;
}

// What is released last may use this dictionary.
bool HostDictionary::remove(const Value& key) {
  const auto found = places_.find(folded(key));
  if (found == places_.end()) return false;
  const size_t index = found->second;
  const Entry gone = entries_[index];
  places_.erase(found);
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
  for (auto& [name, place] : places_) place -= place > index;
  return true;
}

void HostDictionary::clear() {
  places_.clear();
  const std::vector<Entry> gone = std::exchange(entries_, {});
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
