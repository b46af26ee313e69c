#include "macho/loader/binder.h"

#include <dlfcn.h>

#include <map>

#include "macho/loader/darwin_functions.h"
#include "macho/loader/export_trie.h"

namespace macho {
namespace {

// What the same function is called on either side. size_t is "unsigned long" (m) there and "unsigned" (j)
// here.
const std::map<std::string, std::string>& aliases() {
  static const std::map<std::string, std::string> table = {
      {"__bzero", "bzero"},
      {"_Znwm", "_Znwj"},
      {"_Znam", "_Znaj"},
      {"_ZnwmRKSt9nothrow_t", "_ZnwjRKSt9nothrow_t"},
      {"_ZnamRKSt9nothrow_t", "_ZnajRKSt9nothrow_t"},
      {"_ZdlPvm", "_ZdlPvj"},
      {"_ZdaPvm", "_ZdaPvj"},
  };
  return table;
}

}  // namespace

void* Binder::address(const Bind& bind) {
  if (bind.library < kLowestOrdinal || bind.library > static_cast<int32_t>(dylib_.libraries.size())) {
    throw FormatError("malformed: it takes " + bind.symbol + " of a library that it doesn't name");
  }
  void* found = nullptr;
  if (bind.library == kSelfOrdinal) {
    const auto own = findExport(dylib_.exports, bind.symbol.c_str());
    if (own && *own < dylib_.memory.size) found = const_cast<uint8_t*>(base_ + *own);
  } else {
    found = find(bind.symbol);
  }
  if (!found && !bind.weak) {
    throw MissingImport("it needs " + bind.symbol + " of " + libraryName(bind.library) +
                        ", which this process has not");
  }
  return found;
}

void* Binder::find(const std::string& symbol) {
  const auto [entry, isNew] = found_.emplace(symbol, nullptr);
  // A name without the underscore of C names stands for itself.
  if (isNew) entry->second = findInProcess(symbol.starts_with('_') ? symbol.substr(1) : symbol);
  return entry->second;
}

void* Binder::findInProcess(const std::string& name) const {
  if (options_.hidden.contains(name)) return nullptr;
  if (options_.lookup) {
    if (void* found = options_.lookup(name)) return found;
  }
  if (void* found = darwinFunction(name)) return found;
  const auto alias = aliases().find(name);
  return dlsym(RTLD_DEFAULT, (alias == aliases().end() ? name : alias->second).c_str());
}

std::string Binder::libraryName(int32_t ordinal) const {
  if (ordinal == kSelfOrdinal) return "itself";
  return ordinal > 0 ? dylib_.libraries[ordinal - 1] : "any library";
}

}  // namespace macho
