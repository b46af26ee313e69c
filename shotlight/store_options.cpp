#include "shotlight/store_options.h"

#include <cstdlib>

#include "shotlight/output.h"
#include "standin/coreservices/metadata/content_control.h"

namespace shotlight {
namespace {

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
