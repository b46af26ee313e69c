// Making URLs of strings, and reading what they were made of.
#include "standin/corefoundation/urls/url.h"

#include <optional>

#include "standin/corefoundation/runtime/allocator.h"
#include "standin/corefoundation/runtime/classes.h"
#include "standin/corefoundation/strings/encode.h"
#include "standin/corefoundation/urls/resolve.h"

std::string_view __CFURL::text() const {
  const cf::Text text = cf::textOf(string);
  return {text.narrow, text.length};
}

namespace cf {
namespace {

void finalizeURL(CFTypeRef cf) {
  const CFURLRef url = static_cast<CFURLRef>(cf);
  if (url->string) release(url->string, "CFRelease");
  if (url->base) release(url->base, "CFRelease");
}

Boolean equalURLs(CFTypeRef x, CFTypeRef y) {
  const CFURLRef a = static_cast<CFURLRef>(x);
  const CFURLRef b = static_cast<CFURLRef>(y);
  if (a->text() != b->text() || (a->base == nullptr) != (b->base == nullptr)) return false;
  return a->base == nullptr || equal(a->base, b->base, "CFEqual");
}

CFHashCode hashURL(CFTypeRef cf) {
  const std::string_view text = static_cast<CFURLRef>(cf)->text();
  return hashBytes(text.data(), text.size());
}

// Takes over the string.
CFURLRef adopt(CFStringRef string, CFURLRef base, URLOrigin origin, const char* call, bool wasDirectory) {
  if (string == nullptr) return nullptr;
  __CFURL* const url = makeObject<__CFURL>();
  if (url == nullptr) {
    release(string, call);
    return nullptr;
  }
  url->string = string;
  if (base) url->base = static_cast<CFURLRef>(retain(base, call));
  url->origin = origin;
  url->wasDirectory = wasDirectory;
  return url;
}

std::string_view schemeOf(CFURLRef url) {
  const std::string_view own = partsOf(url).scheme;
  return own.empty() && url->base ? schemeOf(url->base) : own;
}

}  // namespace

const CFRuntimeClass kURLClass = {
    .className = "CFURL", .finalize = finalizeURL, .equal = equalURLs, .hash = hashURL};

CFURLRef makeURL(std::string_view text, CFURLRef base, URLOrigin origin, const char* call,
                 bool wasDirectory) {
  return adopt(makeNarrowString(text), base, origin, call, wasDirectory);
}

URLParts partsOf(CFURLRef url) {
  return parse(url->text(), url->origin == URLOrigin::RelativePath);
}

std::string absoluteText(CFURLRef url) {
  if (url->base == nullptr) return std::string(url->text());
  const std::string base = absoluteText(url->base);
  return resolve(parse(base, false), partsOf(url));
}

}  // namespace cf

using standin::Gate;

CFTypeID CFURLGetTypeID() {
  const Gate gate(__func__);
  return gate.fails() ? 0 : cf::kURLType;
}

// Null for a string with a character that must be escaped, and for an empty one without a base.
CFURLRef CFURLCreateWithString(CFAllocatorRef allocator, CFStringRef URLString, CFURLRef baseURL) {
  const Gate gate(__func__);
  cf::checked(URLString, __func__);
  if (baseURL) cf::checked(baseURL, __func__);
  if (gate.fails() || !cf::canAllocate(allocator, __func__)) return nullptr;
  const cf::Text text = cf::textOf(URLString);
  if (text.length == 0 && baseURL == nullptr) return nullptr;
  if (text.wide && !cf::isASCII(text.wide, text.length)) return nullptr;
  const std::optional<std::string> bytes = cf::utf8Of(text);
  if (!bytes || !cf::isLegalURL(*bytes)) return nullptr;
  const bool isAbsolute = !cf::parse(*bytes, false).scheme.empty();
  return cf::makeURL(cf::withEscapes(*bytes), isAbsolute ? nullptr : baseURL, cf::URLOrigin::String,
                     __func__);
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef relativeURL) {
  const Gate gate(__func__);
  cf::checked(relativeURL, __func__);
  if (gate.fails()) return nullptr;
  if (relativeURL->base == nullptr) return static_cast<CFURLRef>(cf::retain(relativeURL, __func__));
  return cf::makeURL(cf::absoluteText(relativeURL), nullptr, cf::URLOrigin::String, __func__);
}

CFStringRef CFURLGetString(CFURLRef anURL) {
  const Gate gate(__func__);
  cf::checked(anURL, __func__);
  return gate.fails() ? nullptr : anURL->string;
}

CFURLRef CFURLGetBaseURL(CFURLRef anURL) {
  const Gate gate(__func__);
  cf::checked(anURL, __func__);
  return gate.fails() ? nullptr : anURL->base;
}

// A relative URL has the scheme of its base.
CFStringRef CFURLCopyScheme(CFURLRef anURL) {
  const Gate gate(__func__);
  cf::checked(anURL, __func__);
  if (gate.fails()) return nullptr;
  std::string_view scheme = cf::schemeOf(anURL);
  if (scheme.size() < 2) return nullptr;
  scheme.remove_suffix(1);
  return cf::makeNarrowString(scheme);
}
