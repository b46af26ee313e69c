// An item stands for a file by its path, and reads from the file system when it is asked. Two items of the
// same path are equal. What the path alone tells (the names, the path, whether it is hidden) stays known when
// the file is gone, so that an item can still say what it was; everything else is absent then.
#include "standin/coreservices/metadata/item.h"

#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <vector>

#include "standin/corefoundation/CFRuntime.h"
#include "standin/coreservices/attributes/schema.h"
#include "standin/coreservices/disk/paths.h"
#include "standin/coreservices/files/file_attributes.h"
#include "standin/coreservices/metadata/cf_values.h"
#include "standin/coreservices/metadata/checks.h"
#include "standin/coreservices/metadata/control.h"
#include "standin/coreservices/metadata/planned_answers.h"
#include "standin/system/file_names.h"
#include "standin/system/file_urls.h"
#include "standin/system/paths.h"

struct __MDItem {
  CFRuntimeBase base;
  std::string path;
};

namespace {

using standin::Gate;
using standin::parentPath;
using standin::realPath;
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
  const std::string name = path.substr(path.rfind('/') + 1);
  const bool resolvesWhole = name.empty() || name == "." || name == "..";
  const std::optional<std::string> real = realPath(resolvesWhole ? path : parentPath(path));
  if (!real || resolvesWhole) return real;
  return pathIn(*real, name);
}

// Fills `values` with those of the attribute, and answers whether there are any. The text of a file is there
// to be searched, and never told.
bool readValues(FileRecord& record, FileAttribute attribute, std::vector<Value>& values) {
  values.clear();
  if (attribute == FileAttribute::None || attribute == FileAttribute::TextContent) return false;
  record.values(attribute, values);
  return !values.empty();
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

std::string standin::pathOfItem(const void* item) {
  checkItem(__func__, item);
  return itemOf(item)->path;
}

CFTypeID MDItemGetTypeID(void) {
  const Gate gate(__func__);
  return itemType();
}

MDItemRef MDItemCreateWithURL(CFAllocatorRef allocator, CFURLRef url) {
  const Gate gate(__func__);
  const std::optional<std::string> path = standin::pathOfURL(__func__, url);
  if (gate.fails() || !path) return nullptr;
  std::optional<std::string> found = foundPath(standin::existingPath(*path).value_or(*path));
  if (!found || !FileByPath(*found).record().exists()) return nullptr;
  return createItem(allocator, std::move(*found));
}

CFTypeRef MDItemCopyAttribute(MDItemRef item, CFStringRef name) {
  const Gate gate(__func__);
  checkItem(__func__, item);
  checkString(__func__, name);
  if (const CFTypeRef planned = takePlannedAnswer(__func__)) return planned;
  if (gate.fails()) return nullptr;
  FileByPath file(item->path);
  std::vector<Value> values;
  const FileAttribute attribute = attributeNamed(name);
  return readValues(file.record(), attribute, values) ? createObject(attribute, values) : nullptr;
}

CFDictionaryRef MDItemCopyAttributes(MDItemRef item, CFArrayRef names) {
  const Gate gate(__func__);
  checkItem(__func__, item);
  checkType(__func__, names, CFArrayGetTypeID(), "array");
  checkStrings(__func__, names);
  if (const CFTypeRef planned = takePlannedAnswer(__func__)) return static_cast<CFDictionaryRef>(planned);
  if (gate.fails()) return nullptr;
  const CFMutableDictionaryRef attributes = CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
  if (!attributes) return nullptr;
  FileByPath file(item->path);
  std::vector<Value> values;
  for (CFIndex i = 0; i < CFArrayGetCount(names); ++i) {
    const auto name = static_cast<CFStringRef>(CFArrayGetValueAtIndex(names, i));
    const FileAttribute attribute = attributeNamed(name);
    if (!readValues(file.record(), attribute, values)) continue;
    setAndRelease(attributes, name, createObject(attribute, values));
  }
  return attributes;
}

// The path is left out: it says where the item is, not what it is like.
CFArrayRef MDItemCopyAttributeNames(MDItemRef item) {
  const Gate gate(__func__);
  checkItem(__func__, item);
  if (const CFTypeRef planned = takePlannedAnswer(__func__)) return static_cast<CFArrayRef>(planned);
  if (gate.fails()) return nullptr;
  const CFMutableArrayRef names = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  if (!names) return nullptr;
  FileByPath file(item->path);
  std::vector<Value> values;
  for (const AttributeInfo& info : schema()) {
    if (info.attribute == FileAttribute::Path) continue;
    if (!readValues(file.record(), info.attribute, values)) continue;
    appendAndRelease(names, createString(info.key));
  }
  return names;
}
