// What is alive of another Core Foundation's objects, counted in the gate's ledger by the kinds that the
// stand-in counts.
//
// An object is counted when a function that makes objects returns it and its memory was taken during that
// call, and until that memory is given back, whoever released it last: an array that drops its elements does
// that inside the library. So what such a function returns of what was there (an immutable string as its own
// copy, a small number that the library keeps) counts as one object, or as none. Like the gate, it is used
// from one thread at a time.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>

namespace foreign {

// The type of an object as the ledger and detailed logs name it: "CFString".
const char* kindOf(CFTypeRef object);
// The name of a type that was registered; it must live as long as the process.
void nameKind(CFTypeID type, const char* name);

// For the time of a call that makes an object: notes the blocks of memory that are taken.
class Creation {
 public:
  Creation();
  ~Creation();
  Creation(const Creation&) = delete;
  Creation& operator=(const Creation&) = delete;

  // Counts the object if it is a new one. Null is none.
  void count(CFTypeRef object) const;

 private:
  const size_t first_;  // of the blocks that are noted
};

}  // namespace foreign
