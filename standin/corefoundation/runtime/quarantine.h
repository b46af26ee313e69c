// Where the memory of freed objects waits before it is given back, so that a late use finds the mark in the
// header and not another object.
#pragma once

#include "standin/corefoundation/runtime/class_table.h"

namespace cf {

// Takes over the memory of `object`: marks it as freed, wipes what follows its header, and gives it back once
// newer ones have pushed it out.
void quarantine(Header* object);

// For an object that carries the mark: the class that it had; otherwise null.
const ClassEntry* freedClass(const Header* object);

}  // namespace cf
