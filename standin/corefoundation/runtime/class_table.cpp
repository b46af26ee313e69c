// The table is constant data until a class is registered, so that objects may be made and compared while the
// initialisers of other libraries run.
#include "standin/corefoundation/runtime/class_table.h"

#include "standin/corefoundation/runtime/classes.h"

namespace cf {
namespace {

struct Row {
  CFTypeID id;
  const CFRuntimeClass* cls;
};

constexpr Row kRows[] = {
    {kAllocatorType, &kAllocatorClass},
    {kStringType, &kStringClass},
    {kNullType, &kNullClass},
    {kDictionaryType, &kDictionaryClass},
    {kArrayType, &kArrayClass},
    {kDataType, &kDataClass},
    {kBooleanType, &kBooleanClass},
    {kNumberType, &kNumberClass},
    {kURLType, &kURLClass},
    {kDateType, &kDateClass},
    {kSetType, &kSetClass},
    {kBagType, &kBagClass},
    {kUUIDType, &kUUIDClass},
    {kTimeZoneType, &kTimeZoneClass},
    {kCharacterSetType, &kCharacterSetClass},
    {kErrorType, &kErrorClass},
};

constexpr std::array<ClassEntry, kTypeLimit> startingTable() {
  std::array<ClassEntry, kTypeLimit> table{};
  for (const Row& row : kRows) table[row.id] = {row.cls, nullptr, row.id, 0};
  return table;
}

}  // namespace

constinit std::array<ClassEntry, kTypeLimit> classTable = startingTable();

}  // namespace cf
