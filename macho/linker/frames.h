// Makes the records of __eh_frame shorter.
#pragma once

#include <vector>

#include "macho/linker/object.h"
#include "macho/linker/symbols.h"

namespace macho {

// A compiler describes in each function's record how its first instructions build the frame (push %ebp; mov
// %esp, %ebp; pushes; sub from %esp), which is the same for nearly all. Here the common records describe a
// frame that is complete, and the functions' records say only which other registers are saved.
//
// Exceptions pass through calls alone, and none of those instructions is one, which is looked at: so nothing
// unwinds from where the new records are wrong. (From where a function ends, the compiler's are no better:
// they don't tell that the frame is gone.) Debuggers have records of their own in the debug information.
//
// A function that begins otherwise has its record start from its caller's frame, as before. Common records of
// another kind, and the functions' that refer to them, stay as they are.
void shortenFrames(std::vector<Object>& objects, const Symbols& symbols);

}  // namespace macho
