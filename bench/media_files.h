// Photos, songs and documents to measure with.
#pragma once

#include <string>

namespace bench {

// The content of the file of that number, and as the answer its name's extension (MakeContent of tree.h). Of
// ten files five are photos, two songs, and three documents. The photos and songs are copies of those in
// examples/library.
std::string media(int number, std::string& content);

}  // namespace bench
