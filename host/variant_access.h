// Reads values from host variants. The result is 0 or null for a null variant, and on hosts that offer no way
// to read it.
#pragma once

#include "services.h"

// Reads through a host function, or where the host lacks it through a property of the variant.
template <typename Value, void* (*find)(const char* name)>
class VariantAccessor {
 public:
  typedef Entry<bool(REALobject, const char* name, Value*)> PropertyService;

  constexpr VariantAccessor(const char* function, Value (*firstCall)(REALobject variant),
                            const char* property, PropertyService& readProperty)
      : read_(function, firstCall), property_(property), readProperty_(readProperty) {}

  Value operator()(REALobject variant) { return variant ? read_(variant) : Value(); }

  Value callFirst(REALobject variant) {
    if (const auto read = read_.lookUp()) return read(variant);
    Value value = Value();
    readProperty_(variant, property_, &value);
    return value;
  }

 private:
  ServiceCell<Value(REALobject), find> read_;
  const char* const property_;
  PropertyService& readProperty_;
};

template <typename Value>
using VariantByEntry = VariantAccessor<Value, findEntry>;
template <typename Value>
using VariantByFunction = VariantAccessor<Value, findFunction>;

// clang-format off
inline VariantByFunction<int32_t>  GetVariantType{"VarType(value As Variant) As Int32", first<GetVariantType>(), "Type", REALGetPropValueInt32};
inline VariantByEntry<REALstring>  GetVariantString{"VariantToString", first<GetVariantString>(), "StringValue", REALGetPropValueString};
inline VariantByEntry<int32_t>     GetVariantInt32{"VariantToInt32", first<GetVariantInt32>(), "Int32Value", REALGetPropValueInt32};
inline VariantByEntry<int64_t>     GetVariantInt64{"VariantToInt64", first<GetVariantInt64>(), "LongValue", REALGetPropValueInt64};
inline VariantByEntry<float>       GetVariantSingle{"VariantToSingle", first<GetVariantSingle>(), "SingleValue", REALGetPropValueSingle};
inline VariantByEntry<double>      GetVariantDouble{"VariantToDouble", first<GetVariantDouble>(), "DoubleValue", REALGetPropValueDouble};
// clang-format on
