#pragma once

#include <stdexcept>
#include <string>

namespace macho {

// What stops a link: "FILE: what; what to do", one line for each thing wrong.
struct LinkError : std::runtime_error {
  using std::runtime_error::runtime_error;
  LinkError(const std::string& file, const std::string& what) : std::runtime_error(file + ": " + what) {}
};

}  // namespace macho
