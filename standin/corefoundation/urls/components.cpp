// The components of a URL's path: the last one, one more, one less.
#include <optional>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/strings/decode.h"
#include "standin/corefoundation/strings/encode.h"
#include "standin/corefoundation/urls/escape.h"
#include "standin/corefoundation/urls/url.h"

namespace cf {
namespace {

// Behind the slash that ends a directory's path, nothing follows: the last name stands before it.
std::string_view lastName(std::string_view path) {
  if (path == "/") return path;
  if (path.ends_with('/')) path.remove_suffix(1);
  const size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

// Read as a string: in a name of a path that it came from, a colon ends a scheme from now on.
CFURLRef withPath(CFURLRef url, const URLParts& parts, std::string_view path, const char* call) {
  std::string text(parts.scheme);
  text.append(parts.authority).append(path);
  text.append(parts.parameters).append(parts.query).append(parts.fragment);
  return makeURL(text, url->base, URLOrigin::String, call);
}

// The "." that "../" follows goes, but not that of the shortest paths: "/." and "x/." keep it, as on the Mac.
std::string oneUp(std::string_view path) {
  constexpr std::string_view kDot = "/./../";
  constexpr size_t kLongestThatKeepsIt = 7;
  std::string upper(path);
  if (!upper.empty() && !upper.ends_with('/')) upper += '/';
  upper += "../";
  if (upper == kDot.substr(1)) return "../";
  if (upper.ends_with(kDot) && upper.size() > kLongestThatKeepsIt) upper.erase(upper.size() - kDot.size(), 2);
  return upper;
}

std::string deletingLast(std::string_view path) {
  const std::string_view name = lastName(path);
  if (name.empty() || name == "/" || name == "." || name == "..") return oneUp(path);
  const std::string_view shorter = path.substr(0, static_cast<size_t>(name.data() - path.data()));
  return shorter.empty() ? "./" : std::string(shorter);
}

std::string appending(std::string_view path, std::string_view name, bool isDirectory) {
  std::string longer(path);
  if (!path.ends_with('/') && !name.starts_with('/')) longer += '/';
  longer.append(escapePath(name));
  if (isDirectory && !longer.ends_with('/')) longer += '/';
  return longer;
}

}  // namespace
}  // namespace cf

using standin::Gate;

// Empty where there is no path; null when its bytes aren't UTF-8.
CFStringRef CFURLCopyLastPathComponent(CFURLRef url) {
  const Gate gate(__func__);
  cf::checked(url, __func__);
  if (gate.fails()) return nullptr;
  const cf::URLParts parts = cf::partsOf(url);
  const std::string name = cf::unescape(parts.hasPath() ? cf::lastName(parts.path) : std::string_view());
  return cf::stringOfUTF8(name);
}

// Null where there is no path.
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url,
                                               CFStringRef pathComponent, Boolean isDirectory) {
  const Gate gate(__func__);
  cf::checked(url, __func__);
  cf::checked(pathComponent, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  const cf::URLParts parts = cf::partsOf(url);
  const std::optional<std::string> name = cf::utf8Of(cf::textOf(pathComponent));
  if (!parts.hasPath() || !name) return nullptr;
  return cf::withPath(url, parts, cf::appending(parts.path, *name, isDirectory), __func__);
}

// Null where there is no path. Where there is no name to delete, the path goes one up.
CFURLRef CFURLCreateCopyDeletingLastPathComponent(CFAllocatorRef allocator, CFURLRef url) {
  const Gate gate(__func__);
  cf::checked(url, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  const cf::URLParts parts = cf::partsOf(url);
  if (!parts.hasPath()) return nullptr;
  return cf::withPath(url, parts, cf::deletingLast(parts.path), __func__);
}
