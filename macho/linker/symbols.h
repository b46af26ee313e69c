// Which definition each name stands for, over all objects, and what is imported.
#pragma once

#include <compare>
#include <map>
#include <optional>
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
  // Decides between definitions. Throws LinkError when a name has two. The objects must outlive this.
  explicit Symbols(const std::vector<Object>& objects);

  // Gives each name that the objects' remaining parts use, and none defines, its library. Throws LinkError
  // with all names that are not listed, and all that are listed without being used.
  void import(const ImportList& list);

  const std::vector<Import>& imports() const { return imports_; }  // sorted by name

  // Null when no object defines the name for others to see.
  const Location* definition(const std::string& name) const;
  const InputSymbol* definingSymbol(const std::string& name) const;

  // Where a place is; nothing for what no object defines.
  std::optional<Location> locate(uint32_t object, const Place& place) const;

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
  struct Reference {
    const Object* object;
    bool weak;
  };
  std::map<std::string, Reference> undefinedReferences() const;
  void checkAllUsed(const ImportList& list, std::string& faults) const;

  const std::vector<Object>& objects_;
  std::map<std::string, Definition> definitions_;
  std::vector<Import> imports_;
  std::map<std::string, uint32_t> importIndex_;
};

}  // namespace macho
