// machine/: what the plug-in sees of the host as plain memory and plain calls.
// Nothing here knows of strings, objects or settings.
// May include nothing of the project but the gate.
//
// The memory that the host's handles point at. A freed block is filled with a pattern and kept for a while,
// so that its address is not given out again and a later use of it can be recognised.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace standin::host {

// What a block is, for messages: "object MDQueryZNK". In two texts, which must live as long as the process:
// they are put together only when something is wrong.
struct BlockName {
  const char* kind;
  const char* name = "";

  std::string text() const { return *name ? std::string(kind) + ' ' + name : kind; }
};

// Zeroed; guarded at its end. With `reuseAddress` it stands where the last freed block of its size stood, if
// one is kept. Never null: the process ends when the machine has no more memory.
void* newBlock(size_t size, bool reuseAddress);
// Frees the block. Ends the process when it was written past its end.
void retireBlock(void* block, size_t size, BlockName name);
// What the freed block was; nothing when none stands at the address. Takes its time: for messages.
std::optional<BlockName> retiredBlock(const void* address);
// Ends the process when one of the freed blocks that are kept was written to.
void checkRetiredBlocks();

// An address that stops the process when it is read or written.
void* unreadableAddress();

}  // namespace standin::host
