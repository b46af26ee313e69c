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

void* findInProcess(const std::string& symbol, const LoadOptions& options) {
  // A name without the underscore of C names stands for itself.
  const std::string name = symbol.starts_with('_') ? symbol.substr(1) : symbol;
  if (options.hidden.contains(name)) return nullptr;
  if (options.lookup) {
    if (void* found = options.lookup(name)) return found;
  }
  if (void* found = darwinFunction(name)) return found;
  const auto alias = aliases().find(name);
  return dlsym(RTLD_DEFAULT, (alias == aliases().end() ? name : alias->second).c_str());
}

void* Binder::address(const Bind& bind) {
  if (bind.library < kLowestOrdinal || bind.library > static_cast<int32_t>(dylib_.libraries.size())) {
    throw FormatError("malformed: it takes " + bind.symbol + " of a library that it doesn't name");
  }
  void* const found = bind.library == kSelfOrdinal ? findOwn(bind.symbol) : find(bind.symbol);
  if (!found && !bind.weak) {
    throw MissingImport("it needs " + bind.symbol + " of " + libraryName(bind.library) +
                        ", which this process has not");
  }
  return found;
}

void* Binder::findOwn(const std::string& symbol) {
  const auto [entry, isNew] = foundOwn_.emplace(symbol, nullptr);
  if (isNew) entry->second = lookUpOwn(symbol);
  return entry->second;
}

void* Binder::lookUpOwn(const std::string& symbol) {
  const auto own = findExport(dylib_.exports, symbol);
  if (!own) return nullptr;
  if (!own->reexported.empty()) return find(own->reexported);
  return own->address < dylib_.memory.size ? const_cast<uint8_t*>(base_ + own->address) : nullptr;
}

void* Binder::find(const std::string& symbol) {
  const auto [entry, isNew] = found_.emplace(symbol, nullptr);
  if (isNew) entry->second = findInProcess(symbol, options_);
  return entry->second;
}

std::string Binder::libraryName(int32_t ordinal) const {
  if (ordinal == kSelfOrdinal) return "itself";
  return ordinal > 0 ? dylib_.libraries[ordinal - 1] : "any library";
}

}  // namespace macho
