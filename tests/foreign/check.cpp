// core-foundation-check LIBRARY: whether the tests can run over that library: it can be loaded here, has all
// that the stand-in exports, and is none of the stand-ins. Says on standard error what is wrong; the status
// is then 2.
#include <dlfcn.h>

#include <cstdio>
#include <string>

namespace {

constexpr const char* kNames[] = {
#include "foreign_names.inc"
};

// The loader's messages may start with it.
std::string withoutPath(std::string message, const std::string& path) {
  if (message.starts_with(path + ": ")) message.erase(0, path.size() + 2);
  return message;
}

int check(const char* program, const char* path) {
  void* const library = dlopen(path, RTLD_LAZY | RTLD_LOCAL);
  if (!library) {
    std::fprintf(stderr, "%s: %s: can't be loaded as a shared library for i386: %s\n", program, path,
                 withoutPath(dlerror(), path).c_str());
    return 2;
  }
  if (dlsym(library, "_ZN7standin6ledgerEv")) {
    std::fprintf(stderr, "%s: %s: is one of the stand-ins here; name another Core Foundation\n", program,
                 path);
    return 2;
  }
  int missing = 0;
  for (const char* name : kNames) {
    if (dlsym(library, name)) continue;
    if (missing++ == 0) std::fprintf(stderr, "%s: %s: lacks what the tests need:\n", program, path);
    std::fprintf(stderr, "  %s\n", name);
  }
  return missing == 0 ? 0 : 2;
}

}  // namespace

int main(int count, char** words) {
  if (count == 2) return check(words[0], words[1]);
  std::fprintf(stderr, "usage: %s LIBRARY\n", words[0]);
  return 2;
}
