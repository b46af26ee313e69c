// What the stubs give out: objects of the host and values of Core Foundation that are there once, and never
// change. Whatever is made has its own, so that the log tells what is released first.
#pragma once

#include <cstddef>
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
  const char* className;  // of variants that are objects
  const void* data[2];    // of instances; an item of the platform has its attribute there
};

// Where the host puts an instance's data.
constexpr uint32_t kDataOffset = 8;
static_assert(offsetof(Thing, data) == kDataOffset);

// Each name with its value.
// clang-format off
#define BENCH_THINGS(THING)                                    \
  /* The host's arguments */                                   \
  THING(query, {kOther, "", {&cfQuery}})                       \
  THING(item, {kOther, "", {&cfItem}})                         \
  THING(string, {kOther, "", {}})                              \
  THING(integerVariant, {kVariantInteger, "", {}})             \
  THING(dateVariant, {kVariantDate, "", {}})                   \
  THING(stringVariant, {kVariantString, "", {}})               \
  THING(stringsVariant, {kVariantStrings, "", {}})             \
  THING(dictionaryVariant, {kVariantObject, "Dictionary", {}}) \
  THING(folderItemVariant, {kVariantObject, "FolderItem", {}}) \
  /* What the host makes */                                    \
  THING(newInstance, {kOther, "", {}})                         \
  THING(newArray, {kOther, "", {}})                            \
  THING(newString, {kOther, "", {}})                           \
  THING(newStringVariant, {kOther, "", {}})                    \
  THING(newNumberVariant, {kOther, "", {}})                    \
  THING(newFolderItem, {kOther, "", {}})                       \
  THING(variantsString, {kOther, "", {}})                      \
  THING(elementString, {kOther, "", {}})                       \
  /* The platform's values */                                  \
  THING(cfNull, {kNull, "", {}})                               \
  THING(cfURL, {kURL, "", {}})                                 \
  THING(cfNumber, {kNumber, "", {}})                           \
  THING(cfArray, {kArray, "", {}})                             \
  THING(cfDictionary, {kDictionary, "", {}})                   \
  THING(cfString, {kString, "", {}})                           \
  THING(cfKey, {kString, "", {}})                              \
  THING(cfDate, {kDate, "", {}})                               \
  THING(cfQuery, {kOther, "", {}})                             \
  THING(cfItem, {kOther, "", {}})                              \
  /* What the platform makes */                                \
  THING(newCFString, {kString, "", {}})                        \
  THING(constantCFString, {kString, "", {}})                   \
  THING(newCFNumber, {kNumber, "", {}})                        \
  THING(newCFDate, {kDate, "", {}})                            \
  THING(newCFArray, {kArray, "", {}})                          \
  THING(newCFDictionary, {kDictionary, "", {}})                \
  THING(newCFURL, {kURL, "", {}})                              \
  THING(appendedCFURL, {kURL, "", {}})                         \
  THING(newCFBundle, {kOther, "", {}})
// clang-format on

#define BENCH_DECLARE(name, ...) extern Thing name;
BENCH_THINGS(BENCH_DECLARE)
#undef BENCH_DECLARE

constexpr int kElements = 10;  // of arrays and dictionaries
constexpr int kLength = 20;    // of strings

}  // namespace bench::calls
