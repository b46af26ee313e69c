#include "standin/system/file_urls.h"

#include <sys/stat.h>

#include <vector>

#include "standin/system/file_names.h"
#include "standin/system/fsref_table.h"
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

// A link that leads nowhere is there.
bool isThere(const std::string& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0;
}

}  // namespace

std::optional<std::string> pathOfURL(const char* call, CFURLRef url) {
  if (!url) die(call, "the URL is null");
  if (CFGetTypeID(url) != CFURLGetTypeID()) die(call, "this is no URL");
  if (!isFileURL(url)) return {};
  std::vector<UInt8> buffer(64 * 1024);  // far beyond the longest path of one system call
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
  Gate gate{"CFURLCreateFromFSRef"};
  if (!fsRef) standin::die("CFURLCreateFromFSRef", "the FSRef is null");
  const std::string* const path = standin::pathOfFSRef(*fsRef);
  if (!path) standin::die("CFURLCreateFromFSRef", "no call of this process has filled this FSRef");
  if (gate.fails() || !standin::isThere(*path)) return nullptr;
  return CFURLCreateFromFileSystemRepresentation(allocator, reinterpret_cast<const UInt8*>(path->data()),
                                                 static_cast<CFIndex>(path->size()),
                                                 standin::isFolder(*path));
}

Boolean CFURLGetFSRef(CFURLRef url, FSRef* fsRef) {
  Gate gate{"CFURLGetFSRef"};
  if (!fsRef) standin::die("CFURLGetFSRef", "the FSRef is null");
  const std::optional<std::string> path = standin::pathOfURL("CFURLGetFSRef", url);
  if (gate.fails() || !path) return false;
  const std::optional<std::string> found = standin::existingPath(*path);
  return found && standin::makeFSRef(*found, *fsRef);
}
