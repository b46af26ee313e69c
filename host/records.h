// The host's records: what the plug-in hands over at start-up and what it shares with the host at run time.
// Every layout here is read or written by the host, so each is pinned by static_assert. Words named `unused`
// or `newer` stay 0; the `newer` ones are missing in the layout of control version 9 (registration.cpp).
#pragma once

#include <stddef.h>
#include <stdint.h>

static_assert(sizeof(void*) == 4, "the host and its plug-ins are 32-bit programs");

// Handles. Null is the nil object, and the empty string. Variants, arrays, dates, dictionaries and folder
// items are objects too.
typedef struct REALobjectRecord* REALobject;
typedef struct REALstringRecord* REALstring;

// The bytes of a string. Filled by REALGetStringData (string_data.h), which says how `data` is given back.
struct REALstringData {
  char* data;
  int32_t length;     // in bytes, without a terminator
  uint32_t encoding;  // a CFStringEncoding
};
static_assert(sizeof(REALstringData) == 12, "3 words");

// As an answer of the host: the encoding is unknown. As a request: the encoding that the string has. (Apple's
// kCFStringEncodingInvalidId is another number.)
enum : uint32_t { kUnknownEncoding = 0xFFFF };

// Element kinds of host arrays.
enum : int32_t { kStringElements = 3, kObjectElements = 4 };

// What a method that is declared "as boolean" returns, 0 or 1. As a bool it would fill only the lowest byte
// of the register, and a host may look at all of it.
typedef uint32_t HostBoolean;

// A pointer to a function of one of several signatures. A table row takes functions of the listed signatures
// and no others, and stays constant data, which it would not with a reinterpret_cast.
template <typename... Signatures>
union FunctionOf;

template <typename Signature>
union FunctionOf<Signature> {
  constexpr FunctionOf(Signature* pointer) : function(pointer) {}
  Signature* function;
};

template <typename Signature, typename... Others>
union FunctionOf<Signature, Others...> {
  constexpr FunctionOf(Signature* pointer) : function(pointer) {}
  template <typename Other>
  constexpr FunctionOf(Other* pointer) : others(pointer) {}
  Signature* function;
  FunctionOf<Others...> others;
};

// clang-format off
using MethodFunction = FunctionOf<
    void(REALobject),
    HostBoolean(REALobject),
    int32_t(REALobject),
    REALstring(REALobject),
    REALobject(REALobject),
    void(REALobject, int32_t),
    HostBoolean(REALobject, int32_t),
    REALobject(REALobject, int32_t),
    void(REALobject, REALobject),
    HostBoolean(REALobject, REALobject),
    int32_t(REALobject, REALobject),
    REALobject(REALobject, REALobject),
    void(REALobject, REALobject, REALobject),
    void(REALobject, REALstring),
    HostBoolean(REALobject, REALstring),
    int32_t(REALobject, REALstring),
    double(REALobject, REALstring),
    REALstring(REALobject, REALstring),
    REALobject(REALobject, REALstring),
    HostBoolean(REALobject, REALstring, uint32_t),
    REALobject(REALobject, REALstring, uint32_t),
    uint32_t(REALobject, REALstring, REALobject),
    void(REALobject, REALstring, REALobject),
    void(REALobject, REALstring, REALobject, REALobject),
    void(REALobject, REALobject, REALstring),
    void(REALobject, REALobject, REALstring, REALobject),
    void(REALobject, REALobject, REALstring, REALobject, REALobject),
    REALstring(),
    REALobject(),
    HostBoolean(REALstring),
    int32_t(REALstring),
    REALstring(REALstring)>;
// clang-format on

enum class HostAccess : uint32_t {
  kNone = 0,              // read-only
  kDirect = 0xFFFFFFFFu,  // the host reads or writes the instance data itself
};

// The getter or setter of a property.
union PropertyAccessor {
  typedef REALstring StringGetter(REALobject, int32_t parameter);
  typedef int64_t Int64Getter(REALobject, int32_t parameter);

  constexpr PropertyAccessor(HostAccess access) : hostAccess(access) {}
  constexpr PropertyAccessor(StringGetter* getter) : stringGetter(getter) {}
  constexpr PropertyAccessor(Int64Getter* getter) : int64Getter(getter) {}
  HostAccess hostAccess;
  StringGetter* stringGetter;
  Int64Getter* int64Getter;
};

struct REALmethodDefinition {
  typedef void Setter(REALobject, REALobject value);

  constexpr REALmethodDefinition(MethodFunction method, const char* text)
      : function(method), declaration(text) {}
  // A computed property: the host reads it with one function and writes it with the other.
  constexpr REALmethodDefinition(MethodFunction get, Setter* set, const char* text)
      : function(get), setter(set), declaration(text) {}

  MethodFunction function;
  Setter* setter = nullptr;
  const char* declaration;
  uint32_t flags = 4;
  uint32_t newer[2] = {};
};
static_assert(sizeof(REALmethodDefinition) == 24, "6 words");
static_assert(offsetof(REALmethodDefinition, declaration) == 8, "");
static_assert(offsetof(REALmethodDefinition, flags) == 12, "");

struct REALproperty {
  // A word of the instance data, read and written by the host itself.
  static constexpr REALproperty field(const char* name, const char* type, uint32_t position) {
    return REALproperty(name, type, HostAccess::kDirect, HostAccess::kDirect, position);
  }
  static constexpr REALproperty readOnly(const char* name, const char* type, PropertyAccessor getter) {
    return REALproperty(name, type, getter, HostAccess::kNone, 0);
  }

  const char* group = nullptr;
  const char* name;
  const char* type;
  uint32_t flags = 6;
  PropertyAccessor getter;
  PropertyAccessor setter;
  uint32_t parameter;  // of a field: its position in the instance data, in bytes
  uint32_t unused[3] = {};
  uint32_t newer[2] = {};

 private:
  constexpr REALproperty(const char* propertyName, const char* typeName, PropertyAccessor get,
                         PropertyAccessor set, uint32_t word)
      : name(propertyName), type(typeName), getter(get), setter(set), parameter(word) {}
};
static_assert(sizeof(REALproperty) == 48, "12 words");
static_assert(offsetof(REALproperty, flags) == 12, "");
static_assert(offsetof(REALproperty, getter) == 16, "");
static_assert(offsetof(REALproperty, parameter) == 24, "");

struct REALevent {
  const char* declaration;
  uint32_t systemUse = 0;  // written at registration; see REALGetEventInstance in registration.h
  uint32_t newer[2] = {};
};
static_assert(sizeof(REALevent) == 16, "4 words");

struct REALconstant {
  const char* declaration;  // name, "=", value
  uint32_t unused[2] = {};
  uint32_t newer[2] = {};
};
static_assert(sizeof(REALconstant) == 20, "5 words");

struct REALclassDefinition {
  constexpr REALclassDefinition(const char* className, uint32_t instanceDataSize, void (*destroy)(REALobject))
      : name(className), dataSize(instanceDataSize), destructor(destroy) {}

  template <size_t count>
  constexpr REALclassDefinition with(const REALproperty (&rows)[count]) const {
    REALclassDefinition result = *this;
    result.properties = rows;
    result.propertyCount = count;
    return result;
  }
  template <size_t count>
  constexpr REALclassDefinition with(const REALmethodDefinition (&rows)[count]) const {
    REALclassDefinition result = *this;
    result.methods = rows;
    result.methodCount = count;
    return result;
  }
  template <size_t count>
  constexpr REALclassDefinition withShared(const REALmethodDefinition (&rows)[count]) const {
    REALclassDefinition result = *this;
    result.sharedMethods = rows;
    result.sharedMethodCount = count;
    return result;
  }
  template <size_t count>
  constexpr REALclassDefinition with(REALevent (&rows)[count]) const {
    REALclassDefinition result = *this;
    result.events = rows;
    result.eventCount = count;
    return result;
  }
  template <size_t count>
  constexpr REALclassDefinition with(const REALconstant (&rows)[count]) const {
    REALclassDefinition result = *this;
    result.constants = rows;
    result.constantCount = count;
    return result;
  }

  int32_t version = 12;
  const char* name;
  const char* superclassName = nullptr;
  uint32_t dataSize;        // of the instance data, in bytes
  uint32_t dataOffset = 0;  // from an object to its instance data, in bytes; set by the host at registration
  void (*constructor)(REALobject) = nullptr;
  void (*destructor)(REALobject);
  const REALproperty* properties = nullptr;
  int32_t propertyCount = 0;
  const REALmethodDefinition* methods = nullptr;
  int32_t methodCount = 0;
  REALevent* events = nullptr;
  int32_t eventCount = 0;
  const void* eventInstances = nullptr;
  int32_t eventInstanceCount = 0;
  const void* interfaces = nullptr;
  uint32_t unused[2] = {};
  const REALconstant* constants = nullptr;
  int32_t constantCount = 0;
  uint32_t flags = 4;
  const REALproperty* sharedProperties = nullptr;
  int32_t sharedPropertyCount = 0;
  const REALmethodDefinition* sharedMethods = nullptr;
  int32_t sharedMethodCount = 0;
  uint32_t newer[4] = {};
};
static_assert(sizeof(REALclassDefinition) == 29 * 4, "29 words");
static_assert(offsetof(REALclassDefinition, dataOffset) == 4 * 4, "");
static_assert(offsetof(REALclassDefinition, properties) == 7 * 4, "");
static_assert(offsetof(REALclassDefinition, constants) == 18 * 4, "");
static_assert(offsetof(REALclassDefinition, flags) == 20 * 4, "");
static_assert(offsetof(REALclassDefinition, newer) == 25 * 4, "");

// The instance data of an object of the class.
template <typename Data>
Data* instanceData(REALobject object, const REALclassDefinition& definition) {
  return reinterpret_cast<Data*>(reinterpret_cast<char*>(object) + definition.dataOffset);
}

// The storage of an array's elements, or null when the host doesn't expose it.
template <typename Element>
Element* elementStorage(REALobject array) {
  return reinterpret_cast<Element* const*>(array)[2];
}
