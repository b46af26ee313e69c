#include "standin/system/file_urls.h"

#include <vector>

#include "standin/system/file_names.h"
#include "standin/system/fsref_table.h"
#include "standin/system/objects.h"
#include "standin/system/paths.h"

namespace standin {
namespace {

bool isFileURL(CFURLRef url) {
  const CFURLRef absolute = CFURLCopyAbsoluteURL(url);
  if (!absolute) return false;
  const CFStringRef scheme = CFURLCopyScheme(absolute);
  const bool isFile =
      scheme && CFStringCompare(scheme, CFSTR("file"), kCFCompareCaseInsensitive) == kCFCompareEqualTo;
  if (scheme) CFRelease(scheme);
  CFRelease(absolute);
  return isFile;
}

size_t lengthOf(CFURLRef url) {
  const CFURLRef absolute = CFURLCopyAbsoluteURL(url);
  if (!absolute) return 0;
  const CFIndex length = CFStringGetLength(CFURLGetString(absolute));
  CFRelease(absolute);
  return static_cast<size_t>(length);
}

}  // namespace

std::optional<std::string> pathOfURL(const char* call, CFURLRef url) {
  checkObject(call, url, CFURLGetTypeID(), "URL");
  if (!isFileURL(url)) return {};
  // The text of an URL has at least one character for each byte of the path.
  std::vector<UInt8> buffer(lengthOf(url) + 1);
  if (!CFURLGetFileSystemRepresentation(url, true, buffer.data(), static_cast<CFIndex>(buffer.size()))) {
    return {};
  }
  std::string path = reinterpret_cast<const char*>(buffer.data());
  if (path.empty() || path.front() != '/') return {};
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

}  // namespace standin

using standin::Gate;

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* fsRef) {
  const Gate gate(__func__);
  if (!fsRef) standin::die(__func__, "the FSRef is null");
  const std::string* const path = standin::pathOfFSRef(*fsRef);
  if (!path) standin::die(__func__, "no call of this process has filled this FSRef");
  if (gate.fails() || !standin::isThere(*path)) return nullptr;
  return CFURLCreateFromFileSystemRepresentation(allocator, reinterpret_cast<const UInt8*>(path->data()),
                                                 static_cast<CFIndex>(path->size()),
                                                 standin::isFolder(*path));
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* fsRef) {
  const Gate gate(__func__);
  if (!fsRef) standin::die(__func__, "the FSRef is null");
  const std::optional<std::string> path = standin::pathOfURL(__func__, url);
  if (gate.fails() || !path) return false;
  const std::optional<std::string> found = standin::existingPath(*path);
  return found && standin::makeFSRef(*found, *fsRef);
}
