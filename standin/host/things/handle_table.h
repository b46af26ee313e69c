// The things that are alive, by their handles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "standin/host/things/handles.h"

namespace standin::host {

// A hash table whose chains run through the things themselves. Every value that the plug-in hands over is a
// thing that comes and soon goes, beside many that stay: coming and going takes no memory here, and touches
// no other thing. Things are borrowed. It needs no constructor and has no destructor, so that it is good
// until the process's very end.
class HandleTable {
 public:
  // Null where no thing has the handle.
  Counted* find(const void* handle) const {
    Counted* thing = size_ > 0 ? slots_[slotOf(handle)] : nullptr;
    while (thing && thing->block() != handle) thing = thing->nextInTable;
    return thing;
  }

  void add(Counted& thing) {
    if (size_ == slotCount()) grow();
    addTo(slots_, thing);
    ++size_;
  }

  void remove(Counted& thing) {
    Counted** link = &slots_[slotOf(thing.block())];
    while (*link != &thing) link = &(*link)->nextInTable;
    *link = thing.nextInTable;
    --size_;
  }

  std::vector<Counted*> all() const {
    std::vector<Counted*> things;
    for (size_t i = 0; size_ > 0 && i < slotCount(); ++i) {
      for (Counted* thing = slots_[i]; thing; thing = thing->nextInTable) things.push_back(thing);
    }
    return things;
  }

 private:
  static constexpr unsigned kFirstBits = 10;

  size_t slotCount() const { return slots_ ? size_t{1} << bits_ : 0; }

  // Addresses differ in their middle bits most: the product's upper bits depend on all of them.
  size_t slotOf(const void* handle) const {
    constexpr uint32_t kGoldenRatio = 0x9E3779B9;
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle)) * kGoldenRatio >> (32 - bits_);
  }

  void addTo(Counted** slots, Counted& thing) {
    Counted*& first = slots[slotOf(thing.block())];
    thing.nextInTable = std::exchange(first, &thing);
  }

  void grow() {
    const std::vector<Counted*> things = all();
    bits_ = slots_ ? bits_ + 1 : kFirstBits;
    delete[] slots_;
    slots_ = new Counted*[size_t{1} << bits_]();
    for (Counted* const thing : things) addTo(slots_, *thing);
  }

  Counted** slots_ = nullptr;
  unsigned bits_ = 0;  // there are 2 to the power of it slots, where there are any
  size_t size_ = 0;
};

}  // namespace standin::host
