// source/: the text of a program of the host language, as far as it can be understood without knowing what
// its names stand for. May include language/.
//
// What is wrong with such a text, and where.
#pragma once

#include <stdexcept>
#include <string>

namespace standin::host {

// Both from 1. A character outside of ASCII is one column.
struct Place {
  int line = 0;
  int column = 0;
};

// What is wrong, what was expected, and, where names are meant, which there are; without the place.
class SourceError : public std::runtime_error {
 public:
  SourceError(Place where, const std::string& what) : std::runtime_error(what), place(where) {}
  const Place place;
};

}  // namespace standin::host
