#include "dictionary_methods.h"

REALobject LastDictionary = nullptr;
void (*LastDictionarySetter)(REALobject, REALobject, REALobject) = nullptr;
REALobject (*LastDictionaryGetter)(REALobject, REALobject) = nullptr;
REALobject (*LastDictionaryKeyGetter)(REALobject, int32_t) = nullptr;

namespace {

template <typename Method>
void load(Method*& method, const char* declaration) {
  method = reinterpret_cast<Method*>(REALLoadObjectMethod(LastDictionary, declaration));
}

}  // namespace

void loadDictionaryMethods(REALobject dictionary) {
  if (dictionary == LastDictionary) return;
  LastDictionary = dictionary;
  load(LastDictionarySetter, "Value(key As Variant, Assigns _value As Variant)");
  load(LastDictionaryGetter, "Value(key As Variant) As Variant");
  load(LastDictionaryKeyGetter, "Key(index As Integer) As Variant");
}
