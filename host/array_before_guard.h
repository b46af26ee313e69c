// The beginning of every method that returns an array of an instance's data.
#pragma once

#include "services.h"

template <typename Reference>
struct ArrayBeforeGuard {
  REALobject array;     // to be adopted when there is a reference, and otherwise left behind; may be null
  Reference reference;  // borrowed from the instance; null when it has none
};

// Makes an empty array, then has the guard (queryOrRaise, itemOrRaise) ask the instance for its reference.
//
// Hosts see the array made first, and nothing gives it back when the guard raises: the array stays behind,
// locked. A method adopts it once it has the reference.
template <typename Reference>
ArrayBeforeGuard<Reference> newArrayBeforeGuard(int32_t elementKind, Reference (*guard)(REALobject self),
                                                REALobject self) {
  const REALobject array = REALCreateArray(elementKind, -1);
  return {array, guard(self)};
}
