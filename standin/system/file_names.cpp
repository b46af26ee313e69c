#include "standin/system/file_names.h"

#include <CoreFoundation/CoreFoundation.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "standin/system/paths.h"
#include "standin/system/utf8.h"

namespace standin {
namespace {

struct ReleaseCF {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};
using OwnedString = std::unique_ptr<const __CFString, ReleaseCF>;
using OwnedMutableString = std::unique_ptr<__CFString, ReleaseCF>;

// Nothing for a name that is no text. Core Foundation reads some bytes that are none as U+FFFD, and leaves a
// byte order mark out.
std::optional<std::string> normalized(const std::string& name, CFStringNormalizationForm form) {
  const OwnedString text(
      CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(name.data()),
                              static_cast<CFIndex>(name.size()), kCFStringEncodingUTF8, false));
  if (!text || utf8Of(text.get()) != name) return {};
  const OwnedMutableString changed(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text.get()));
  if (!changed) return {};
  CFStringNormalize(changed.get(), form);
  return utf8Of(changed.get());
}

// The path of the entry that `folder` (without a slash at its end) has under one of the forms of `name`.
std::optional<std::string> entryIn(const std::string& folder, const std::string& name) {
  if (std::string path = folder + '/' + name; isThere(path)) return path;
  for (const CFStringNormalizationForm form : {kCFStringNormalizationFormC, kCFStringNormalizationFormD}) {
    const std::optional<std::string> other = normalized(name, form);
    if (!other || *other == name) continue;
    if (std::string path = folder + '/' + *other; isThere(path)) return path;
  }
  return {};
}

}  // namespace

bool isThere(const std::string& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) == 0) return true;
  return errno == ENAMETOOLONG && OpenFile(openLongPath(path, O_PATH | O_NOFOLLOW));
}

std::optional<std::string> existingPath(const std::string& path) {
  if (path.empty() || path.front() != '/') return {};
  if (isThere(path)) return path;
  std::string found;
  for (size_t start = 1; start < path.size();) {
    const size_t end = std::min(path.find('/', start), path.size());
    const std::optional<std::string> entry = entryIn(found, path.substr(start, end - start));
    if (!entry) return {};
    found = *entry;
    start = end + 1;
  }
  return found;
}

std::string canonicalPath(const std::string& path) {
  std::string plain = path;
  while (plain.size() > 1 && plain.back() == '/') plain.pop_back();
  const std::string name = plain.substr(plain.rfind('/') + 1);
  if (name.empty() || name == "." || name == "..") return realPath(plain).value_or(plain);
  const std::optional<std::string> folder = realPath(parentPath(plain));
  if (!folder) return plain;
  return (*folder == "/" ? "" : *folder) + '/' + name;
}

}  // namespace standin
