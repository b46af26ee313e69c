// What is alive of another Core Foundation's objects, counted in the gate's ledger by the kinds that the
// stand-in counts.
//
// An object is counted when a function that makes objects returns it and its memory was taken during that
// call, and until that memory is given back, whoever released it last: an array that drops its elements does
// that inside the library. So what such a function returns of what was there (an immutable string as its own
// copy, a small number that the library keeps) counts as one object, or as none. What the library makes for
// itself doesn't count, nor what is made while objects end. Like the gate, it is used from one thread at a
// time.
#pragma once

#include <CoreFoundation/CFBase.h>

#include <cstddef>

#include "standin/gate/gate.h"

namespace foreign {

// The type of an object as the ledger and detailed logs name it: "CFString".
const char* kindOf(CFTypeRef object);
// The name of a type that was registered; it must live as long as the process.
void nameKind(CFTypeID type, const char* name);

// How many gates were open when the library behind was last called, of the calls that are under way: a call
// that comes with no other gate opened in between is the library's own, or a finalizer's. kNoCall without
// one, and while a function runs that was handed to the library. While libraries are initialised it is 0:
// what comes from outside is the library's own, too.
extern int depthBehind;
inline constexpr int kNoCall = -1;

// For the time of a call of the library behind, with the gate open.
class Behind {
 public:
  Behind() : before_(depthBehind) { depthBehind = standin::gateState.depth; }
  ~Behind() { depthBehind = before_; }
  Behind(const Behind&) = delete;
  Behind& operator=(const Behind&) = delete;

 private:
  const int before_;
};

// For the time of a call that makes an object: notes the blocks of memory that are taken.
class Creation {
 public:
  Creation();
  ~Creation();
  Creation(const Creation&) = delete;
  Creation& operator=(const Creation&) = delete;

  // Counts the object if it is a new one that somebody else than the library asked for. Null is none.
  void count(CFTypeRef object) const;

 private:
  const bool counts_;
  const size_t first_;  // of the blocks that are noted
};

}  // namespace foreign
