// What sets and bags are made of: a table of distinct values, each with the number of times that it was
// given. It is filled once and changes no more.
#pragma once

#include "standin/corefoundation/collection.h"

namespace cf {

struct Member {
  const void* value;
  CFHashCode hash;
  uint32_t times;  // 0: a free place
};

// The structure of both classes; zero-filled, it holds nothing.
struct Members : Header {
  const ValueRules* rules;
  Member* table;
  uint32_t places;    // 0 or a power of two
  uint32_t distinct;  // values that differ
  uint32_t total;     // values with their repetitions
};

// Of equal values the first one is taken and the others are counted. False when there is no memory; what was
// taken is given up when the object is released.
bool fill(Members& members, const void* const* values, CFIndex count, const ValueRules& rules,
          const char* call);

// How many times `value` is in it.
uint32_t timesOf(const Members& members, const void* value, const char* call);

// Ends the process for arguments that can't be a list of values.
void checkValues(const void* const* values, CFIndex count, const char* call);

// The functions of the classes' records.
void finalizeMembers(CFTypeRef cf);
Boolean equalMembers(CFTypeRef a, CFTypeRef b);
CFHashCode hashMembers(CFTypeRef cf);

}  // namespace cf
