// What the stubs give out: objects of the host and values of Core Foundation that are there once, and never
// change.
#pragma once

#include <cstdint>

namespace bench::calls {

// A value's type, or the code of a variant's.
enum Type : uint32_t {
  kVariantInteger = 2,
  kVariantDate = 7,
  kVariantString = 8,
  kVariantObject = 9,
  kVariantStrings = 4104,
  kURL = 10001,
  kBoolean,
  kNumber,
  kArray,
  kNull,
  kDictionary,
  kString,
  kData,
  kDate,
  kOther,
};

struct Thing {
  Type type;
  const char* name;  // by which the log calls it
  void* data[2];     // of instances; others leave it
};

// Where the host puts an instance's data.
constexpr uint32_t kDataOffset = 8;
static_assert(offsetof(Thing, data) == kDataOffset);

// Of the host
extern Thing query, item, newInstance;
extern Thing array, string, variant;
extern Thing integerVariant, dateVariant, stringVariant, stringsVariant, dictionaryVariant, folderItemVariant;

// Of the platform
extern Thing cfURL, cfNumber, cfArray, cfDictionary, cfString, cfDate, cfOther, cfQuery, cfItem;

constexpr int kElements = 10;  // of arrays and dictionaries
constexpr int kLength = 20;    // of strings

}  // namespace bench::calls
