// Which definition each name stands for, over all objects, and what is imported.
#pragma once

#include <compare>
#include <map>
#include <string>
#include <vector>

#include "macho/linker/imports.h"
#include "macho/linker/object.h"

namespace macho {

// A spot in a section of an object.
struct Location {
  uint32_t object, section;
  int32_t offset;
  auto operator<=>(const Location&) const = default;
};

struct Import {
  std::string name;
  size_t library;  // in the import list
  bool weak;       // every reference to it is weak
};

class Symbols {
 public:
  // Decides between definitions and checks that each name is defined once or imported, and each listed import
  // used. Throws LinkError with all that is wrong.
  Symbols(const std::vector<Object>& objects, const ImportList& list);

  const std::vector<Import>& imports() const { return imports_; }  // sorted by name

  // Null when no object defines the name for others to see.
  const Location* definition(const std::string& name) const;
  const InputSymbol* definingSymbol(const std::string& name) const;

  // What a place stands for: somewhere in an object, or an import (an index into imports()).
  struct Target {
    enum Kind { kLocation, kImport } kind;
    Location location;
    uint32_t import;
    int32_t addend;  // to an import
    auto operator<=>(const Target&) const = default;
  };
  Target resolve(uint32_t object, const Place& place) const;

 private:
  struct Definition {
    Location location;
    const InputSymbol* symbol;
  };

  void define(const std::vector<Object>& objects);
  void import(const std::vector<Object>& objects, const ImportList& list);
  void checkAllUsed(const ImportList& list, std::string& faults) const;

  const std::vector<Object>& objects_;
  std::map<std::string, Definition> definitions_;
  std::vector<Import> imports_;
  std::map<std::string, uint32_t> importIndex_;
};

}  // namespace macho
