// Methods of the host's own classes that the plug-in loads by their declarations.
#pragma once

#include <string_view>

namespace standin::host {

class HostDictionary;

// Null when the class has no method of this very declaration.
void* dictionaryMethod(HostDictionary& dictionary, std::string_view declaration);
void* folderItemMethod(std::string_view declaration);

}  // namespace standin::host
