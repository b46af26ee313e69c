// Between values of host code and the words, fields and results that the plug-in's functions deal in.
#pragma once

#include <optional>
#include <vector>

#include "standin/host/declarations.h"
#include "standin/host/machine_call.h"
#include "standin/host/value.h"

namespace standin::host {

class Counted;

// How far the value is from the type: 0 when it is of that very type, nothing when it does not fit.
std::optional<int> distance(const Value& value, const Type& type);

// The value must fit. A variant made for the occasion is kept alive by `kept`.
void appendWords(Words& words, const Type& type, const Value& value, std::vector<Ref>& kept);

// A value of the type as it lies in memory; a handle there keeps its reference, the value gets one of its
// own.
Value readField(const Type& type, const void* memory, const char* call);
// The value must fit. A handle in the field is a reference of the plug-in's: the new one is made, the old one
// given up.
void writeField(const Type& type, void* memory, const Value& value);

// Calls the plug-in. A handle that it returns comes with a reference; one of the wrong kind or class ends the
// process with the name of the method.
Value callPlugin(void* function, const Words& words, const Type& result, const char* method);
bool pluginCallUnderway();

Value valueOf(const Literal& literal, const Type& type);
// What a variable of the type is before anything is stored in it.
Value emptyValue(const Type& type);

}  // namespace standin::host
