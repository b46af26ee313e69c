// The elements of host arrays: read where they lie, on hosts up to 2013.9 when the array shows its storage,
// and otherwise asked for one by one.
#pragma once

#include "owned.h"
#include "services.h"

// Null where the elements have to be asked for.
template <typename Element>
Element* directElements(REALobject array) {
  return rbversion <= 2013.9 ? elementStorage<Element>(array) : nullptr;
}

// `get` is the service that is asked: an ArrayGet, or an entry of the same use.
template <typename Get>
auto elementAt(REALobject array, int32_t index, Get& get) {
  using Element = decltype(get(array, index));
  const Element* const elements = directElements<Element>(array);
  return elements ? elements[index] : get(array, index);
}

// An element that is a reference of its own: one read directly is locked, one that the host gives comes so.
template <typename Get>
auto handleAt(REALobject array, int32_t index, Get& get) {
  using Handle = decltype(get(array, index));
  const Handle* const elements = directElements<Handle>(array);
  return elements ? retain(elements[index]) : adopt(get(array, index));
}
