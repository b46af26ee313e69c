// What a test or a host program asks of the graphics stand-in, beside its public functions.
//
// This folder has the types of Core Graphics and Core Text with their owners, and colours; nothing is drawn.
// It includes the gate, Core Foundation's public headers and CFRuntime.h. Of its headers, programs include
// this one alone.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <string_view>
#include <vector>

#include "standin/gate/gate.h"

namespace standin {

// The names of all the types: "CGColorSpace", "CTFont", ...
STANDIN_API std::vector<std::string_view> graphicsTypes();

// A new object of the type of that name, the caller's; a colour is opaque black. Ends the process for a name
// that isn't among them. A test that plans failures gets its object all the same.
STANDIN_API CFTypeRef makeInstance(std::string_view typeName);

}  // namespace standin
