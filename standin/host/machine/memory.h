// machine/: what the plug-in sees of the host as plain memory and plain calls.
// Nothing here knows of strings, objects or settings.
// May include nothing of the project but the gate.
//
// The memory that the host's handles point at. A freed block is filled with a pattern and kept for a while,
// so that its address is not given out again and a later use of it can be recognised.
#pragma once

#include <cstddef>
#include <string>

namespace standin::host {

// Zeroed; guarded at its end. With `reuseAddress` it stands where the last freed block of its size stood, if
// one is kept. Never null: the process ends when the machine has no more memory.
void* newBlock(size_t size, bool reuseAddress);
// Frees the block. Ends the process when it was written past its end.
void retireBlock(void* block, size_t size, const std::string& what);
// What the freed block was ("string", "object MDQueryZNK"); null when none stands at the address.
const std::string* retiredBlock(const void* address);
// Ends the process when one of the freed blocks that are kept was written to.
void checkRetiredBlocks();

// An address that stops the process when it is read or written.
void* unreadableAddress();

}  // namespace standin::host
