// Sources with functions that have another name here, as replaced.cpp has others of theirs.
#define CFDataCreate MakeData
#define CFDataGetLength LengthOfData
#define CFDictionaryCreate MakeDictionary
#define CFStringGetCStringPtr BytesInPlace
#define CFStringGetCharactersPtr CharactersInPlace
#define __CFStringMakeConstantString ConstantString

#include "standin/corefoundation/collections/dictionary.cpp"
#include "standin/corefoundation/strings/constants.cpp"
#include "standin/corefoundation/strings/string.cpp"
#include "standin/corefoundation/values/data.cpp"
