#include "standin/gate/collation.h"

#include <dlfcn.h>
#include <unicode/uversion.h>

#include <string>

#include "standin/gate/memory.h"

namespace standin {

namespace {

constexpr char kLibrary[] = "libicui18n.so." U_ICU_VERSION_SHORT;

class CollationLibrary {
 public:
  template <class Function>
  void find(Function*& function, const std::string& name) const {
    function = reinterpret_cast<Function*>(dlsym(library_, (name + "_" U_ICU_VERSION_SHORT).c_str()));
    if (!function) die("collation", dlerror());
  }

 private:
  static void* load() {
    // It is installed with the one that everything here is linked to: what it may lack is memory. It is never
    // closed, as collators may live as long as the process.
    void* const library = takeMemory([] { return dlopen(kLibrary, RTLD_LAZY); });
    if (!library) die("collation", dlerror());
    return library;
  }
  void* const library_ = load();
};

Collation load() {
  const CollationLibrary library;
  Collation found{};
  library.find(found.open, "ucol_open");
  library.find(found.close, "ucol_close");
  library.find(found.setAttribute, "ucol_setAttribute");
  library.find(found.setStrength, "ucol_setStrength");
  library.find(found.compare, "ucol_strcoll");
  library.find(found.sortKey, "ucol_getSortKey");
  return found;
}

}  // namespace

const Collation& collation() {
  static const Collation loaded = load();
  return loaded;
}

}  // namespace standin
