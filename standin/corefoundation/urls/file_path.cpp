// URLs of files: from paths and back. Only the POSIX style of paths is known; the others name volumes, of
// which this system has none.
#include <unistd.h>

#include <climits>
#include <cstring>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/strings/decode.h"
#include "standin/corefoundation/urls/escape.h"
#include "standin/corefoundation/urls/file_name.h"
#include "standin/corefoundation/urls/url.h"

namespace cf {
namespace {

void checkStyle(CFURLPathStyle style, const char* call) {
  if (style < kCFURLPOSIXPathStyle || style > kCFURLWindowsPathStyle) {
    misuse(call, "path style " + std::to_string(style) + " doesn't exist");
  }
}

CFURLRef makeCurrentDirectory(const char* call) {
  char path[PATH_MAX];
  if (getcwd(path, sizeof path) == nullptr || path[0] != '/') return nullptr;
  std::string text = "file://" + escapePath(path);
  if (!text.ends_with('/')) text += '/';
  return makeURL(text, nullptr, URLOrigin::AbsolutePath, call);
}

// `path` is the bytes of the name. A relative path without a base is one below the current directory.
CFURLRef makeFileURL(std::string path, bool isDirectory, CFURLRef base, const char* call) {
  if (path.empty()) return nullptr;
  const bool wasDirectory = path.ends_with('/');
  if (isDirectory) {
    if (!path.ends_with('/')) path += '/';
  } else {
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  }
  const std::string escaped = escapePath(path);
  if (path.starts_with('/'))
    return makeURL("file://" + escaped, nullptr, URLOrigin::AbsolutePath, call, wasDirectory);
  if (base) return makeURL(escaped, base, URLOrigin::RelativePath, call, wasDirectory);
  const CFURLRef here = makeCurrentDirectory(call);
  if (here == nullptr) return nullptr;
  const CFURLRef url = makeURL(escaped, here, URLOrigin::RelativePath, call, wasDirectory);
  release(here, call);
  return url;
}

CFURLRef makeFileURL(CFStringRef path, CFURLPathStyle style, bool isDirectory, CFURLRef base,
                     const char* call) {
  if (style != kCFURLPOSIXPathStyle) return nullptr;
  std::optional<std::string> bytes = fileNameOf(textOf(path));
  return bytes ? makeFileURL(std::move(*bytes), isDirectory, base, call) : nullptr;
}

void dropLastSlash(std::string& path) {
  if (path.size() > 1 && path.ends_with('/')) path.pop_back();
}

// The bytes of a URL's path, without the slash that ends a directory's; nothing when it has no path. A path
// with escapes loses a slash when they have been taken out, too, unless the URL was made from the very path.
std::optional<std::string> pathBytes(const URLParts& parts, URLOrigin origin) {
  if (!parts.hasPath()) return std::nullopt;
  std::string path = unescape(parts.path);
  const bool hadEscapes = path.size() < parts.path.size();
  if (hadEscapes && origin != URLOrigin::AbsolutePath) dropLastSlash(path);
  if (parts.path.ends_with('/')) dropLastSlash(path);
  return path;
}

bool namesDirectory(CFURLRef url) {
  const URLParts parts = partsOf(url);
  if (url->wasDirectory) return true;
  if (parts.isOpaque) return false;
  if (parts.path.empty()) return !parts.hasHost() && url->base && namesDirectory(url->base);
  const std::string_view last = parts.path.substr(parts.path.rfind('/') + 1);
  return last.empty() || last == "." || last == "..";
}

}  // namespace
}  // namespace cf

using standin::Gate;

CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef allocator, CFStringRef filePath,
                                       CFURLPathStyle pathStyle, Boolean isDirectory) {
  const Gate gate(__func__);
  cf::checked(filePath, __func__);
  cf::checkStyle(pathStyle, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeFileURL(filePath, pathStyle, isDirectory, nullptr, __func__);
}

CFURLRef CFURLCreateWithFileSystemPathRelativeToBase(CFAllocatorRef allocator, CFStringRef filePath,
                                                     CFURLPathStyle pathStyle, Boolean isDirectory,
                                                     CFURLRef baseURL) {
  const Gate gate(__func__);
  cf::checked(filePath, __func__);
  cf::checkStyle(pathStyle, __func__);
  if (baseURL) cf::checked(baseURL, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  return cf::makeFileURL(filePath, pathStyle, isDirectory, baseURL, __func__);
}

// The bytes are taken as they are, undecomposed: the file systems below compare names byte by byte.
CFURLRef CFURLCreateFromFileSystemRepresentation(CFAllocatorRef allocator, const UInt8* buffer,
                                                 CFIndex bufLen, Boolean isDirectory) {
  const Gate gate(__func__);
  cf::checkBuffer(buffer, bufLen, "bytes", __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__) || bufLen == 0) return nullptr;
  std::string path(reinterpret_cast<const char*>(buffer), static_cast<size_t>(bufLen));
  return cf::makeFileURL(std::move(path), isDirectory, nullptr, __func__);
}

// Not resolved against the base. Null where there is no path, and when its bytes aren't UTF-8.
CFStringRef CFURLCopyFileSystemPath(CFURLRef anURL, CFURLPathStyle pathStyle) {
  const Gate gate(__func__);
  cf::checked(anURL, __func__);
  cf::checkStyle(pathStyle, __func__);
  if (gate.fails() || pathStyle != kCFURLPOSIXPathStyle) return nullptr;
  const std::optional<std::string> path = cf::pathBytes(cf::partsOf(anURL), anURL->origin);
  if (!path) return nullptr;
  return cf::stringOfUTF8(*path);
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer,
                                         CFIndex maxBufLen) {
  const Gate gate(__func__);
  cf::checked(url, __func__);
  if (buffer == nullptr) cf::misuse(__func__, "null buffer");
  if (gate.fails()) return false;
  const bool isResolved = resolveAgainstBase && url->base;
  const std::string absolute = isResolved ? cf::absoluteText(url) : std::string();
  const std::optional<std::string> path =
      isResolved ? cf::pathBytes(cf::parse(absolute, false), cf::URLOrigin::String)
                 : cf::pathBytes(cf::partsOf(url), url->origin);
  if (!path || path->find('\0') != std::string::npos) return false;
  if (maxBufLen < 0 || path->size() >= static_cast<size_t>(maxBufLen)) return false;
  std::memcpy(buffer, path->c_str(), path->size() + 1);
  return true;
}

Boolean CFURLHasDirectoryPath(CFURLRef anURL) {
  const Gate gate(__func__);
  cf::checked(anURL, __func__);
  return !gate.fails() && cf::namesDirectory(anURL);
}
