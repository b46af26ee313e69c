// The memory that the host's handles point at.
//
// A freed block is filled with a pattern and kept aside for a while, so that its address is not given out
// again and a later use of it is known for what it is. (Settings::reusesAddresses makes it otherwise.)
#pragma once

#include <cstddef>
#include <string>

namespace standin::host {

// Zeroed; guarded at its end.
void* newBlock(std::size_t size);
// Ends the process when the block was written past its end.
void retireBlock(void* block, std::size_t size, const std::string& what);
// What the retired block was ("string", "object MDQueryZNK"); null when the address is none that is kept
// aside.
const std::string* retiredBlock(const void* address);
// Ends the process when one of the blocks kept aside was written to.
void checkRetiredBlocks();

// An address that stops the process when it is read or written.
void* unreadableAddress();

}  // namespace standin::host
