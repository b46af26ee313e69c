// The methods of a host dictionary. They belong to that one dictionary. Those of the last dictionary are
// kept, so that they are not loaded again for each of its entries.
#pragma once

#include "host/services.h"

extern REALobject LastDictionary;  // borrowed; forgotten at the end of the conversion that uses it
extern void (*LastDictionarySetter)(REALobject dictionary, REALobject key, REALobject value);
extern REALobject (*LastDictionaryGetter)(REALobject dictionary, REALobject key);
extern REALobject (*LastDictionaryKeyGetter)(REALobject dictionary, int32_t index);

// Sets the three above to the dictionary's methods; a method that the host lacks is null. Must be called
// before each use: a conversion in between may have loaded another dictionary's.
void loadDictionaryMethods(REALobject dictionary);

// Forgets the last dictionary at the end of a scope: another one at the same address must load its own
// methods.
struct DictionaryScope {
  DictionaryScope() = default;
  DictionaryScope(const DictionaryScope&) = delete;
  DictionaryScope& operator=(const DictionaryScope&) = delete;
  ~DictionaryScope() { LastDictionary = nullptr; }
};
