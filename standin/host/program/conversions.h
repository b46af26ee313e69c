// program/: what host code does: starts and stops the host, calls methods, uses properties, handles events.
// Here the plug-in's functions are called.
// May include all rooms but entry/, and the gate.
//
// Between values of host code and the argument words and fields that the plug-in's functions deal in.
#pragma once

#include <vector>

#include "standin/host/language/declarations.h"
#include "standin/host/machine/machine_call.h"
#include "standin/host/value.h"

namespace standin::host {

// The value must fit, and outlive the call that the words are for. A variant made for the occasion is kept
// alive by `variants`.
void appendWords(Words& words, const Type& type, const Value& value, std::vector<Ref>& variants);

// The value of a type that has a handle.
Value handleValue(const Type& type, Ref reference);

// A value of the type as it lies in memory; a handle there keeps its reference, the value gets one of its
// own.
Value readField(const Type& type, const void* memory, const char* call);
// The value must fit. A handle in the field is a reference of the plug-in's: the new one is made, the old one
// given up.
void writeField(const Type& type, void* memory, const Value& value);

}  // namespace standin::host
