// An item stands for a file by its path, and reads from the file system when it is asked. Two items of the
// same path are equal. What the path alone tells (the names, the path, whether it is hidden) stays known when
// the file is gone, so that an item can still say what it was; everything else is absent then.
#include "item.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>

#include "checks.h"
#include "file_attributes.h"
#include "standin/corefoundation/CFRuntime.h"
#include "standin/system/file_urls.h"
#include "text.h"

struct __MDItem {
  CFRuntimeBase base;
  std::string path;
};

namespace {

using standin::Gate;
using namespace standin::metadata;

MDItemRef itemOf(CFTypeRef cf) {
  return const_cast<MDItemRef>(static_cast<const __MDItem*>(cf));
}

void finalizeItem(CFTypeRef cf) {
  std::destroy_at(&itemOf(cf)->path);
}

Boolean equalItems(CFTypeRef left, CFTypeRef right) {
  return itemOf(left)->path == itemOf(right)->path;
}

CFHashCode hashItem(CFTypeRef cf) {
  return std::hash<std::string>{}(itemOf(cf)->path);
}

const CFRuntimeClass kItemClass = {0,        "MDItem", nullptr, nullptr, finalizeItem, equalItems,
                                   hashItem, nullptr,  nullptr, nullptr, nullptr};

CFTypeID itemType() {
  static const CFTypeID type = _CFRuntimeRegisterClass(&kItemClass);
  return type;
}

// The path that a search would find the file by: real folders, and a symbolic link as itself.
std::optional<std::string> foundPath(const std::string& path) {
  const size_t slash = path.rfind('/');
  const std::string name = path.substr(slash + 1);
  const bool resolvesWhole = name.empty() || name == "." || name == "..";
  const std::string folder = resolvesWhole ? path : path.substr(0, std::max<size_t>(slash, 1));
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(folder.c_str(), nullptr), &std::free);
  if (!real && errno == ENAMETOOLONG) return path;
  if (!real) return {};
  std::string found = real.get();
  if (resolvesWhole) return found;
  if (found.back() != '/') found += '/';
  return found + name;
}

CFTypeRef createString(std::string_view bytes) {
  if (isAscii(bytes)) {
    return CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes.data()),
                                   static_cast<CFIndex>(bytes.size()), kCFStringEncodingASCII, false);
  }
  const std::u16string units = utf16(readableText(bytes));
  return CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units.data()),
                                      static_cast<CFIndex>(units.size()));
}

CFTypeRef createObject(const Value& value) {
  return std::visit(
      [](auto v) -> CFTypeRef {
        using T = decltype(v);
        if constexpr (std::is_same_v<T, bool>) {
          return CFRetain(v ? kCFBooleanTrue : kCFBooleanFalse);
        } else if constexpr (std::is_same_v<T, int64_t>) {
          return CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &v);
        } else if constexpr (std::is_same_v<T, double>) {
          return CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat64Type, &v);
        } else if constexpr (std::is_same_v<T, Date>) {
          return CFDateCreate(kCFAllocatorDefault, v.seconds);
        } else {
          return createString(v);
        }
      },
      value);
}

// Empty for a string that can't be the name of an attribute of the file system.
std::string asciiText(CFStringRef string) {
  char text[64] = "";
  return CFStringGetCString(string, text, sizeof text, kCFStringEncodingASCII) ? text : "";
}

}  // namespace

MDItemRef standin::metadata::createItem(CFAllocatorRef allocator, std::string path) {
  const CFIndex extraBytes = sizeof(__MDItem) - sizeof(CFRuntimeBase);
  const MDItemRef item = itemOf(_CFRuntimeCreateInstance(allocator, itemType(), extraBytes, nullptr));
  if (item) new (&item->path) std::string(std::move(path));
  return item;
}

const std::string& standin::metadata::pathOfItem(MDItemRef item) {
  return item->path;
}

void standin::metadata::checkItem(const char* call, CFTypeRef item) {
  checkType(call, item, itemType(), "item");
}

CFTypeID MDItemGetTypeID(void) {
  Gate gate{"MDItemGetTypeID"};
  return itemType();
}

MDItemRef MDItemCreateWithURL(CFAllocatorRef allocator, CFURLRef url) {
  Gate gate{"MDItemCreateWithURL"};
  const std::optional<std::string> path = standin::pathOfURL("MDItemCreateWithURL", url);
  if (gate.fails() || !path) return nullptr;
  std::optional<std::string> found = foundPath(*path);
  if (!found || !FileByPath(*found).record().exists()) return nullptr;
  return createItem(allocator, std::move(*found));
}

CFTypeRef MDItemCopyAttribute(MDItemRef item, CFStringRef name) {
  constexpr const char* kCall = "MDItemCopyAttribute";
  Gate gate{kCall};
  checkItem(kCall, item);
  checkString(kCall, name);
  if (gate.fails()) return nullptr;
  FileByPath file(item->path);
  const std::optional<Value> value = file.record().value(fileAttributeNamed(asciiText(name)));
  return value ? createObject(*value) : nullptr;
}
