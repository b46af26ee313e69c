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

// A host function that `find` looks up by its name on first use. Each cell does so for itself, also when two
// have the same name.
template <typename Signature, void* (*find)(const char* name)>
class ServiceCell;

template <typename Result, typename... Arguments, void* (*find)(const char* name)>
class ServiceCell<Result(Arguments...), find> {
 public:
  typedef Result Function(Arguments...);

  constexpr explicit ServiceCell(const char* name) : name_(name) {}
  ServiceCell(const ServiceCell&) = delete;
  ServiceCell& operator=(const ServiceCell&) = delete;

  // Null while the host lacks the function.
  Function* function() {
    if (!function_) function_ = reinterpret_cast<Function*>(find(name_));
    return function_;
  }

  Result operator()(Arguments... arguments) {
    Function* const found = function();
    return found ? found(arguments...) : Result();
  }

 private:
  const char* const name_;
  Function* function_ = nullptr;
};

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
  constexpr explicit ArrayInsert(const char* name) : procedure_(name) {}
  void operator()(REALobject array, int32_t index, Value value) {
    if (!array) return;
    if (const auto insert = procedure_(array)) insert(array, index, value);
  }

 private:
  typedef void Procedure(REALobject array, int32_t index, Value value);
  Entry<Procedure*(REALobject array)> procedure_;
};

template <typename Value>
class ArrayGet {
 public:
  constexpr explicit ArrayGet(const char* name) : procedure_(name) {}
  Value operator()(REALobject array, int32_t index) {
    Value value = Value();
    if (!array) return value;
    if (const auto get = procedure_(array)) get(array, index, &value);
    return value;
  }

 private:
  typedef void Procedure(REALobject array, int32_t index, Value* value);
  Entry<Procedure*(REALobject array)> procedure_;
};

template <typename Value>
class ArraySet {
 public:
  constexpr explicit ArraySet(const char* name) : procedure_(name) {}
  // The arguments are in the order in which the host's procedure takes them: the value before the index.
  void operator()(REALobject array, Value value, int32_t index) {
    if (!array) return;
    if (const auto set = procedure_(array)) set(array, value, index);
  }

 private:
  typedef void Procedure(REALobject array, Value value, int32_t index);
  Entry<Procedure*(REALobject array)> procedure_;
};

// clang-format off

// Runtime and registration
inline Entry<bool()>                                         REALinRuntime{"REALinRuntime"};
inline Entry<void(REALclassDefinition*)>                     REALRegisterClass{"PluginRegisterClass"};
inline Entry<void(const REALmethodDefinition*)>              REALRegisterMethod{"PluginRegisterMethod"};
inline Entry<void*(REALobject null, const char* declaration)>    REALLoadFrameworkMethod{"REALLoadGlobalMethod"};
inline Entry<void*(REALobject object, const char* declaration)>  REALLoadObjectMethod{"REALLoadObjectMethod"};

// Objects
inline Entry<REALobject(const char* className)>              REALnewInstance{"PluginNewInstance"};
inline Entry<void*(const char* className)>                   REALGetClassRef{"pluginObjectType"};
inline Entry<bool(REALobject, void* classRef)>               REALObjectIsA{"RuntimeObjectIsa"};
inline Entry<void(REALobject)>                               REALLockObject{"REALLockObject"};
inline Entry<void(REALobject)>                               REALUnlockObject{"REALUnlockObject"};
inline Entry<void(REALobject exception)>                     REALRaiseException{"RuntimeRaiseException"};
inline Entry<void*(REALobject, uint32_t eventIndex)>         REALGetEventHandler{"GetEventInstance"};  // use REALGetEventInstance

// Strings
inline Entry<void(REALstring)>                               REALLockString{"REALLockString"};
inline Entry<void(REALstring)>                               REALUnlockString{"REALUnlockString"};
inline Entry<REALstring(const char* bytes, int32_t length)>  REALBuildString{"REALBuildString"};
inline Entry<uint32_t(REALstring)>                           REALGetStringEncoding{"REALGetStringEncoding"};
inline Entry<void(REALstring, uint32_t encoding)>            REALSetStringEncoding{"REALSetStringEncoding"};
inline Entry<REALstring(REALstring, uint32_t encoding)>      REALConvertString{"REALConvertString"};
inline Entry<CFStringRef(REALstring, bool)>                  REALCopyStringCFString{"REALGetStringCFString"};
inline Entry<CFStringRef(REALstring, bool)>                  REALGetStringCFString{"REALGetStringCFString"};
inline Entry<bool(REALstring, uint32_t encoding, REALstringData*)>  PluginGetStringData{"PluginGetStringData"};
inline Entry<char*(REALstring)>                              StringGetCString{"StringGetCString"};
inline Entry<void(REALstringData*)>                          REALDisposeStringData{"PluginDisposeStringData"};

// Properties by name; the getters return whether the object has such a property
inline Entry<bool(REALobject, const char* name, int32_t*)>     REALGetPropValueInt32{"REALGetPropValueInt"};
inline Entry<bool(REALobject, const char* name, int32_t)>      REALSetPropValueInt32{"REALSetPropValueInt"};
inline Entry<bool(REALobject, const char* name, int64_t*)>     REALGetPropValueInt64{"REALGetPropValueInt64"};
inline Entry<bool(REALobject, const char* name, float*)>       REALGetPropValueSingle{"REALGetPropValueSingle"};
inline Entry<bool(REALobject, const char* name, double*)>      REALGetPropValueDouble{"REALGetPropValueDouble"};
inline Entry<bool(REALobject, const char* name, REALstring*)>  REALGetPropValueString{"REALGetPropValueString"};
inline Entry<bool(REALobject, const char* name, REALstring)>   REALSetPropValueString{"REALSetPropValueString"};

// New variants
inline Entry<REALobject(REALstring)>  REALNewVariantString{"StringToVariant"};
inline Entry<REALobject(int32_t)>     REALNewVariantInteger{"Int32ToVariant"};
inline Entry<REALobject(int64_t)>     REALNewVariantInt64{"Int64ToVariant"};
inline Entry<REALobject(double)>      REALNewVariantDouble{"DoubleToVariant"};
inline Entry<REALobject(bool)>        REALNewVariantBoolean{"BooleanToVariant"};

// Arrays; an upper bound of -1 means empty
inline Entry<REALobject(int32_t elements, int32_t upperBound)>  REALCreateArray{"RuntimeArrayCreateSingleDimBoundedArray"};
inline Entry<int32_t(REALobject array)>                         REALGetArrayUBound{"RuntimeUBound"};
inline Entry<REALstring(REALobject array, int32_t index)>       REALGetArrayString{"RuntimeDirectReadStringArray"};
inline ArrayInsert<REALstring>  REALInsertArrayValueString{"RuntimeArrayDirectGetInsertProc"};
inline ArrayInsert<REALobject>  REALInsertArrayValueObject{"RuntimeArrayDirectGetInsertProc"};
inline ArrayGet<int64_t>        REALGetArrayValueInt64{"RuntimeArrayDirectGetGetProc"};
inline ArrayGet<int32_t>        REALGetArrayValueInt32{"RuntimeArrayDirectGetGetProc"};
inline ArrayGet<uint8_t>        REALGetArrayValueUInt8{"RuntimeArrayDirectGetGetProc"};
inline ArrayGet<float>          REALGetArrayValueSingle{"RuntimeArrayDirectGetGetProc"};
inline ArrayGet<double>         REALGetArrayValueDouble{"RuntimeArrayDirectGetGetProc"};
inline ArrayGet<REALstring>     REALGetArrayValueString{"RuntimeArrayDirectGetGetProc"};
inline ArrayGet<REALobject>     REALGetArrayValueObject{"RuntimeArrayDirectGetGetProc"};
inline ArraySet<REALobject>     REALSetArrayValueObject{"RuntimeArrayDirectGetSetProc"};

// Memory blocks and folder items
struct FSRef;
struct FSSpec;
inline Entry<void*(REALobject memoryBlock)>    REALMemoryBlockGetPtr{"memoryBlockGetPtr"};
inline Entry<int32_t(REALobject memoryBlock)>  REALMemoryBlockGetSize{"memoryBlockGetSize"};
inline Entry<bool(REALobject folderItem, FSRef*, HFSUniStr255*)>    REALFSRefFromFolderItem{"REALFSRefFromFolderItem"};
inline Entry<REALobject(const FSRef* parent, const HFSUniStr255*)>  REALFolderItemFromParentFSRef{"REALFolderItemFromParentFSRef"};
inline Entry<bool(FSSpec*, REALobject folderItem)>                  REALFSSpecFromFolderItem{"REALFSSpecFromFolderItem"};
inline Entry<REALobject(const FSSpec*)>                             REALFolderItemFromFSSpec{"FolderItemFromFSSpec"};

// Functions of the host language, looked up by their declaration, letter for letter as the host spells it
inline void* findFunction(const char* declaration) { return REALLoadFrameworkMethod(nullptr, declaration); }
template <typename Signature>
using HostFunction = ServiceCell<Signature, findFunction>;

inline HostFunction<int32_t(REALstring)>          LenB{"LenB( s as string ) as integer"};

// clang-format on
