// Where the memory of objects comes from, and where that of freed ones waits before it is given back, so that
// a late use finds the mark in the header and not another object.
#pragma once

#include <cstddef>

#include "standin/corefoundation/runtime/class_table.h"

namespace cf {

// Memory for an object of so many bytes, its header included; null when there is none.
void* takeObjectMemory(size_t size);

// Takes over the memory of `object`: marks it as freed, wipes what follows its header, and gives it back once
// newer ones have pushed it out.
void quarantine(Header* object);

// For an object that carries the mark: the class that it had; otherwise null.
const ClassEntry* freedClass(const Header* object);

}  // namespace cf
