// The elements of host arrays: read directly from the array's storage where a host up to 2013.9 exposes it,
// otherwise fetched from the host one by one.
#pragma once

#include "owned.h"
#include "services.h"

// The array's storage. Null where the elements must be fetched.
template <typename Element>
Element* directElements(REALobject array) {
  return rbversion <= 2013.9 ? elementStorage<Element>(array) : nullptr;
}

// `get` is the service that fetches an element: an ArrayGet, or an Entry that is called the same way.
template <typename Get>
auto elementAt(REALobject array, int32_t index, Get& get) {
  using Element = decltype(get(array, index));
  const Element* const elements = directElements<Element>(array);
  return elements ? elements[index] : get(array, index);
}

// An element that is a handle. The host has locked one that it returns; one read from the storage is locked
// here.
template <typename Get>
auto ownedElementAt(REALobject array, int32_t index, Get& get) {
  using Handle = decltype(get(array, index));
  const Handle* const elements = directElements<Handle>(array);
  return elements ? retain(elements[index]) : adopt(get(array, index));
}
