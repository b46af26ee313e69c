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
  return makeURL(text, nullptr, false, call);
}

// `path` is the bytes of the name. A relative path without a base is one below the current directory.
CFURLRef makeFileURL(std::string path, bool isDirectory, CFURLRef base, const char* call) {
  if (path.empty()) return nullptr;
  if (isDirectory) {
    if (!path.ends_with('/')) path += '/';
  } else {
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  }
  if (path.starts_with('/')) return makeURL("file://" + escapePath(path), nullptr, false, call);
  if (base) return makeURL(escapePath(path), base, true, call);
  const CFURLRef here = makeCurrentDirectory(call);
  if (here == nullptr) return nullptr;
  const CFURLRef url = makeURL(escapePath(path), here, true, call);
  release(here, call);
  return url;
}

CFURLRef makeFileURL(CFStringRef path, CFURLPathStyle style, bool isDirectory, CFURLRef base,
                     const char* call) {
  if (style != kCFURLPOSIXPathStyle) return nullptr;
  std::optional<std::string> bytes = fileNameOf(textOf(path));
  return bytes ? makeFileURL(std::move(*bytes), isDirectory, base, call) : nullptr;
}

// The bytes of a URL's path, without the slash that ends a directory's; nothing when it has no path.
std::optional<std::string> pathBytes(const URLParts& parts) {
  if (!parts.hasPath()) return std::nullopt;
  std::string_view path = parts.path;
  if (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return unescape(path);
}

bool namesDirectory(CFURLRef url) {
  const URLParts parts = partsOf(url);
  if (parts.isOpaque) return false;
  if (parts.path.empty()) return parts.authority.empty() && url->base && namesDirectory(url->base);
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
  const std::optional<std::string> path = cf::pathBytes(cf::partsOf(anURL));
  if (!path) return nullptr;
  return cf::stringOfUTF8(*path);
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer,
                                         CFIndex maxBufLen) {
  const Gate gate(__func__);
  cf::checked(url, __func__);
  if (buffer == nullptr) cf::misuse(__func__, "null buffer");
  if (gate.fails()) return false;
  const std::string absolute = resolveAgainstBase ? cf::absoluteText(url) : std::string();
  const cf::URLParts parts = resolveAgainstBase && url->base ? cf::parse(absolute, false) : cf::partsOf(url);
  const std::optional<std::string> path = cf::pathBytes(parts);
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
