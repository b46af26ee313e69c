#include "shotlight/store_options.h"

#include <cstdio>
#include <cstdlib>

#include "shotlight/text.h"
#include "standin/coreservices/metadata/content_control.h"

namespace shotlight {
namespace {

void complain(const std::string& message) {
  std::fprintf(stderr, "shotlight: %s\n", escapeControls(message).c_str());
}

// Relative ones count as none.
std::string folderInEnvironment(const char* name) {
  const char* const value = std::getenv(name);
  return value && *value == '/' ? value : "";
}

}  // namespace

std::string storeFolder() {
  std::string cache = folderInEnvironment("XDG_CACHE_HOME");
  if (cache.empty()) {
    const std::string home = folderInEnvironment("HOME");
    if (home.empty()) return {};
    cache = home + "/.cache";
  }
  return cache + "/shotlight";
}

void useStore(bool onDisk) {
  standin::setContentOptions({onDisk ? storeFolder() : "", complain});
}

}  // namespace shotlight
