// The methods of a host dictionary. They are the dictionary's own, so those of the last one used are kept: a
// dictionary is filled or read entry by entry.
#pragma once

#include "host/services.h"

extern REALobject LastDictionary;  // not owned: forgotten at the end of the conversion that uses it
extern void (*LastDictionarySetter)(REALobject dictionary, REALobject key, REALobject value);
extern REALobject (*LastDictionaryGetter)(REALobject dictionary, REALobject key);
extern REALobject (*LastDictionaryKeyGetter)(REALobject dictionary, int32_t index);

// Makes the three above the dictionary's; a method that the host lacks is null. To be called before each use:
// a conversion in between may have been at another dictionary.
void useDictionary(REALobject dictionary);

// Forgets the last dictionary at the end of a scope, so that another at the same address loads its own
// methods.
struct DictionaryScope {
  DictionaryScope() = default;
  DictionaryScope(const DictionaryScope&) = delete;
  DictionaryScope& operator=(const DictionaryScope&) = delete;
  ~DictionaryScope() { LastDictionary = nullptr; }
};
