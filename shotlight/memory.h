// A machine that has no more memory.
//
// The program ends with a message and kError when operator new, or a stand-in, finds none, wherever that is:
// in the middle of what it does there is little else that can be done without memory.
#pragma once

namespace shotlight {

// What it ends with, for want of memory that is found out otherwise.
[[noreturn]] void endWithoutMemory();

}  // namespace shotlight
