// Finds what an image imports among the symbols of this process.
#pragma once

#include <string>
#include <unordered_map>

#include "macho/loader/file.h"
#include "macho/loader/fixups.h"
#include "macho/loader/loader.h"

namespace macho {

// A strong import that this process has not.
struct MissingImport : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// By its name in a file; null when the process has it not.
void* findInProcess(const std::string& symbol, const LoadOptions& options);

class Binder {
 public:
  // Both must outlive the binder. `base` is where the image lies, for what it imports of itself.
  Binder(const DylibFile& dylib, const uint8_t* base, const LoadOptions& options)
      : dylib_(dylib), base_(base), options_(options) {}

  // Null only for an absent weak import; throws MissingImport for an absent strong one.
  void* address(const Bind& bind);

 private:
  void* find(const std::string& symbol);
  void* findOwn(const std::string& symbol);
  void* lookUpOwn(const std::string& symbol);
  std::string libraryName(int32_t ordinal) const;

  const DylibFile& dylib_;
  const uint8_t* base_;
  const LoadOptions& options_;
  // Each name is looked for once: a few bytes can ask for it as often as the file has bytes.
  std::unordered_map<std::string, void*> found_, foundOwn_;
};

}  // namespace macho
