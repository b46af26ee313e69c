// host/ holds start-up, and all that concerns the host alone: its services, the records that it is given, its
// strings, arrays and exceptions. It includes the platform's headers, and nothing of bridge/, item/ and
// query/, all of which include it.
//
// The host's services. The plug-in links against no host library: it asks the host's resolver for each
// service by name when it is first used. Each object below is one service and is called like a function. A
// service that the host lacks returns the neutral value (0, null, false) and is asked for again at the next
// call.
//
// The plug-in owns the handles that a service returns (see owned.h).
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include "records.h"
#include "startup.h"

// One function of the host, called like a function. `find` looks it up by its name at the first call. Each
// cell looks for itself, also where two have the same name.
//
// A cell always points at a function, so that a call needs no test before it: at first<cell>(), which looks
// for the host's function, and at the host's once that is found. Declare a cell as
// `inline Entry<...> x{"name", first<x>()}`, with its own name in both places: with another cell of the same
// signature it compiles, too, and is wrong.
template <typename Signature, void* (*find)(const char* name)>
class ServiceCell;

template <typename Result, typename... Arguments, void* (*find)(const char* name)>
class ServiceCell<Result(Arguments...), find> {
 public:
  typedef Result Function(Arguments...);

  constexpr ServiceCell(const char* name, Function* firstCall)
      : name_(name), first_(firstCall), function_(firstCall) {}
  ServiceCell(const ServiceCell&) = delete;
  ServiceCell& operator=(const ServiceCell&) = delete;

  Result operator()(Arguments... arguments) { return function_(arguments...); }

  // Null while the host lacks the function.
  Function* function() { return function_ != first_ ? function_ : lookUp(); }

  // What a call does until the host's function is found: it looks for it, and calls it or returns the neutral
  // value.
  Result callFirst(Arguments... arguments) {
    Function* const found = lookUp();
    return found ? found(arguments...) : Result();
  }

  // Looks for the host's function, and keeps it. Null, and the cell stays as it is, while the host lacks it.
  Function* lookUp() {
    const auto found = reinterpret_cast<Function*>(find(name_));
    if (found) function_ = found;
    return found;
  }

 private:
  const char* const name_;
  Function* const first_;
  Function* function_;
};

// first<cell>(): cell.callFirst() as a plain function, whose address a cell can hold. callFirstOf is never
// called; its type tells the result and the arguments.
template <auto& cell, typename Call>
struct FirstCall;

template <auto& cell, typename Result, typename Cell, typename... Arguments>
struct FirstCall<cell, Result (Cell::*)(Arguments...)> {
  [[gnu::cold]] static Result call(Arguments... arguments) { return cell.callFirst(arguments...); }
};

template <typename Cell>
auto callFirstOf(Cell&) -> decltype(&Cell::callFirst);
template <auto& cell>
constexpr auto* first() {
  return &FirstCall<cell, decltype(callFirstOf(cell))>::call;
}

inline void* findEntry(const char* name) {
  return gResolver(name);
}
template <typename Signature>
using Entry = ServiceCell<Signature, findEntry>;

// Each of the three services below returns the array's procedure for one operation on its elements. It is
// fetched anew for every element, since the host may change it. Without a procedure, or for a null array, the
// operation is left out, and reads return 0 or null.
template <typename Value>
class ArrayInsert {
 public:
  typedef void Procedure(REALobject array, int32_t index, Value value);
  constexpr ArrayInsert(const char* name, Procedure* (*firstCall)(REALobject array))
      : procedure_(name, firstCall) {}
  void operator()(REALobject array, int32_t index, Value value) {
    if (!array) return;
    if (const auto insert = procedure_(array)) insert(array, index, value);
  }

  Procedure* callFirst(REALobject array) { return procedure_.callFirst(array); }  // for first<>()

 private:
  Entry<Procedure*(REALobject array)> procedure_;
};

template <typename Value>
class ArrayGet {
 public:
  typedef void Procedure(REALobject array, int32_t index, Value* value);
  constexpr ArrayGet(const char* name, Procedure* (*firstCall)(REALobject array))
      : procedure_(name, firstCall) {}
  Value operator()(REALobject array, int32_t index) {
    Value value = Value();
    if (!array) return value;
    if (const auto get = procedure_(array)) get(array, index, &value);
    return value;
  }

  Procedure* callFirst(REALobject array) { return procedure_.callFirst(array); }  // for first<>()

 private:
  Entry<Procedure*(REALobject array)> procedure_;
};

template <typename Value>
class ArraySet {
 public:
  typedef void Procedure(REALobject array, Value value, int32_t index);
  constexpr ArraySet(const char* name, Procedure* (*firstCall)(REALobject array))
      : procedure_(name, firstCall) {}
  // The arguments are in the order in which the host's procedure takes them: the value before the index.
  void operator()(REALobject array, Value value, int32_t index) {
    if (!array) return;
    if (const auto set = procedure_(array)) set(array, value, index);
  }

  Procedure* callFirst(REALobject array) { return procedure_.callFirst(array); }  // for first<>()

 private:
  Entry<Procedure*(REALobject array)> procedure_;
};

// clang-format off

// Runtime and registration
inline Entry<bool()>                                         REALinRuntime{"REALinRuntime", first<REALinRuntime>()};
inline Entry<void(REALclassDefinition*)>                     REALRegisterClass{"PluginRegisterClass", first<REALRegisterClass>()};
inline Entry<void(const REALmethodDefinition*)>              REALRegisterMethod{"PluginRegisterMethod", first<REALRegisterMethod>()};
inline Entry<void*(REALobject null, const char* declaration)>    REALLoadFrameworkMethod{"REALLoadGlobalMethod", first<REALLoadFrameworkMethod>()};
inline Entry<void*(REALobject object, const char* declaration)>  REALLoadObjectMethod{"REALLoadObjectMethod", first<REALLoadObjectMethod>()};

// Objects
inline Entry<REALobject(const char* className)>              REALnewInstance{"PluginNewInstance", first<REALnewInstance>()};
inline Entry<void*(const char* className)>                   REALGetClassRef{"pluginObjectType", first<REALGetClassRef>()};
inline Entry<bool(REALobject, void* classRef)>               REALObjectIsA{"RuntimeObjectIsa", first<REALObjectIsA>()};
inline Entry<void(REALobject)>                               REALLockObject{"REALLockObject", first<REALLockObject>()};
inline Entry<void(REALobject)>                               REALUnlockObject{"REALUnlockObject", first<REALUnlockObject>()};
inline Entry<void(REALobject exception)>                     REALRaiseException{"RuntimeRaiseException", first<REALRaiseException>()};
inline Entry<void*(REALobject, uint32_t eventIndex)>         REALGetEventHandler{"GetEventInstance", first<REALGetEventHandler>()};  // use REALGetEventInstance

// Strings
inline Entry<void(REALstring)>                               REALLockString{"REALLockString", first<REALLockString>()};
inline Entry<void(REALstring)>                               REALUnlockString{"REALUnlockString", first<REALUnlockString>()};
inline Entry<REALstring(const char* bytes, int32_t length)>  REALBuildString{"REALBuildString", first<REALBuildString>()};
inline Entry<uint32_t(REALstring)>                           REALGetStringEncoding{"REALGetStringEncoding", first<REALGetStringEncoding>()};
inline Entry<void(REALstring, uint32_t encoding)>            REALSetStringEncoding{"REALSetStringEncoding", first<REALSetStringEncoding>()};
inline Entry<REALstring(REALstring, uint32_t encoding)>      REALConvertString{"REALConvertString", first<REALConvertString>()};
inline Entry<CFStringRef(REALstring, bool)>                  REALCopyStringCFString{"REALGetStringCFString", first<REALCopyStringCFString>()};
inline Entry<CFStringRef(REALstring, bool)>                  REALGetStringCFString{"REALGetStringCFString", first<REALGetStringCFString>()};
inline Entry<bool(REALstring, uint32_t encoding, REALstringData*)>  PluginGetStringData{"PluginGetStringData", first<PluginGetStringData>()};
inline Entry<char*(REALstring)>                              StringGetCString{"StringGetCString", first<StringGetCString>()};
inline Entry<void(REALstringData*)>                          REALDisposeStringData{"PluginDisposeStringData", first<REALDisposeStringData>()};

// Properties by name; the getters return whether the object has such a property
inline Entry<bool(REALobject, const char* name, int32_t*)>     REALGetPropValueInt32{"REALGetPropValueInt", first<REALGetPropValueInt32>()};
inline Entry<bool(REALobject, const char* name, int32_t)>      REALSetPropValueInt32{"REALSetPropValueInt", first<REALSetPropValueInt32>()};
inline Entry<bool(REALobject, const char* name, int64_t*)>     REALGetPropValueInt64{"REALGetPropValueInt64", first<REALGetPropValueInt64>()};
inline Entry<bool(REALobject, const char* name, float*)>       REALGetPropValueSingle{"REALGetPropValueSingle", first<REALGetPropValueSingle>()};
inline Entry<bool(REALobject, const char* name, double*)>      REALGetPropValueDouble{"REALGetPropValueDouble", first<REALGetPropValueDouble>()};
inline Entry<bool(REALobject, const char* name, REALstring*)>  REALGetPropValueString{"REALGetPropValueString", first<REALGetPropValueString>()};
inline Entry<bool(REALobject, const char* name, REALstring)>   REALSetPropValueString{"REALSetPropValueString", first<REALSetPropValueString>()};

// New variants
inline Entry<REALobject(REALstring)>  REALNewVariantString{"StringToVariant", first<REALNewVariantString>()};
inline Entry<REALobject(int32_t)>     REALNewVariantInteger{"Int32ToVariant", first<REALNewVariantInteger>()};
inline Entry<REALobject(int64_t)>     REALNewVariantInt64{"Int64ToVariant", first<REALNewVariantInt64>()};
inline Entry<REALobject(double)>      REALNewVariantDouble{"DoubleToVariant", first<REALNewVariantDouble>()};
inline Entry<REALobject(bool)>        REALNewVariantBoolean{"BooleanToVariant", first<REALNewVariantBoolean>()};

// Arrays; an upper bound of -1 means empty
inline Entry<REALobject(int32_t elements, int32_t upperBound)>  REALCreateArray{"RuntimeArrayCreateSingleDimBoundedArray", first<REALCreateArray>()};
inline Entry<int32_t(REALobject array)>                         REALGetArrayUBound{"RuntimeUBound", first<REALGetArrayUBound>()};
inline Entry<REALstring(REALobject array, int32_t index)>       REALGetArrayString{"RuntimeDirectReadStringArray", first<REALGetArrayString>()};
inline ArrayInsert<REALstring>  REALInsertArrayValueString{"RuntimeArrayDirectGetInsertProc", first<REALInsertArrayValueString>()};
inline ArrayInsert<REALobject>  REALInsertArrayValueObject{"RuntimeArrayDirectGetInsertProc", first<REALInsertArrayValueObject>()};
inline ArrayGet<int64_t>        REALGetArrayValueInt64{"RuntimeArrayDirectGetGetProc", first<REALGetArrayValueInt64>()};
inline ArrayGet<int32_t>        REALGetArrayValueInt32{"RuntimeArrayDirectGetGetProc", first<REALGetArrayValueInt32>()};
inline ArrayGet<uint8_t>        REALGetArrayValueUInt8{"RuntimeArrayDirectGetGetProc", first<REALGetArrayValueUInt8>()};
inline ArrayGet<float>          REALGetArrayValueSingle{"RuntimeArrayDirectGetGetProc", first<REALGetArrayValueSingle>()};
inline ArrayGet<double>         REALGetArrayValueDouble{"RuntimeArrayDirectGetGetProc", first<REALGetArrayValueDouble>()};
inline ArrayGet<REALstring>     REALGetArrayValueString{"RuntimeArrayDirectGetGetProc", first<REALGetArrayValueString>()};
inline ArrayGet<REALobject>     REALGetArrayValueObject{"RuntimeArrayDirectGetGetProc", first<REALGetArrayValueObject>()};
inline ArraySet<REALobject>     REALSetArrayValueObject{"RuntimeArrayDirectGetSetProc", first<REALSetArrayValueObject>()};

// Memory blocks and folder items
struct FSRef;
struct FSSpec;
inline Entry<void*(REALobject memoryBlock)>    REALMemoryBlockGetPtr{"memoryBlockGetPtr", first<REALMemoryBlockGetPtr>()};
inline Entry<int32_t(REALobject memoryBlock)>  REALMemoryBlockGetSize{"memoryBlockGetSize", first<REALMemoryBlockGetSize>()};
inline Entry<bool(REALobject folderItem, FSRef*, HFSUniStr255*)>    REALFSRefFromFolderItem{"REALFSRefFromFolderItem", first<REALFSRefFromFolderItem>()};
inline Entry<REALobject(const FSRef* parent, const HFSUniStr255*)>  REALFolderItemFromParentFSRef{"REALFolderItemFromParentFSRef", first<REALFolderItemFromParentFSRef>()};
inline Entry<bool(FSSpec*, REALobject folderItem)>                  REALFSSpecFromFolderItem{"REALFSSpecFromFolderItem", first<REALFSSpecFromFolderItem>()};
inline Entry<REALobject(const FSSpec*)>                             REALFolderItemFromFSSpec{"FolderItemFromFSSpec", first<REALFolderItemFromFSSpec>()};

// Functions of the host language, looked up by their declaration, letter for letter as the host spells it
inline void* findFunction(const char* declaration) { return REALLoadFrameworkMethod(nullptr, declaration); }
template <typename Signature>
using HostFunction = ServiceCell<Signature, findFunction>;

inline HostFunction<int32_t(REALstring)>          LenB{"LenB( s as string ) as integer", first<LenB>()};

// clang-format on
