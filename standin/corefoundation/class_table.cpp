// The table of classes. It is constant data until a class is registered, so that objects may be made and
// compared while the initialisers of other libraries run.
#include "standin/corefoundation/classes.h"
#include "standin/corefoundation/object.h"

namespace cf {
namespace {

struct Row {
  CFTypeID id;
  const CFRuntimeClass* cls;
};

constexpr Row rows[] = {
    {kAllocatorType, &allocatorClass},
    {kStringType, &stringClass},
    {kNullType, &nullClass},
    {kDictionaryType, &dictionaryClass},
    {kArrayType, &arrayClass},
    {kDataType, &dataClass},
    {kBooleanType, &booleanClass},
    {kNumberType, &numberClass},
    {kURLType, &urlClass},
    {kDateType, &dateClass},
    {kSetType, &setClass},
    {kBagType, &bagClass},
    {kUUIDType, &uuidClass},
    {kTimeZoneType, &timeZoneClass},
    {kCharacterSetType, &characterSetClass},
    {kErrorType, &errorClass},
};

constexpr std::array<ClassEntry, kTypeLimit> startingTable() {
  std::array<ClassEntry, kTypeLimit> table{};
  for (const Row& row : rows) table[row.id] = {row.cls, nullptr, row.id, 0};
  return table;
}

}  // namespace

constinit std::array<ClassEntry, kTypeLimit> classTable = startingTable();

}  // namespace cf
