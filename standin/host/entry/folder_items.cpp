// The entry points of folder items. The platform's own functions make and read its references to files.
#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CarbonCore/Files.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/entry/entry_points.h"
#include "standin/host/entry/loaded_methods.h"
#include "standin/host/host.h"
#include "standin/host/language/encodings.h"
#include "standin/host/state/exceptions.h"
#include "standin/host/state/runtime.h"
#include "standin/host/things/folder_items.h"

namespace standin::host {
namespace {

constexpr size_t kLongestName = 255;  // units of a name buffer

HostFolderItem& folderItemAt(ObjectHandle handle) {
  return thingAs<HostFolderItem>(objectThingAt(handle), "a FolderItem");
}

ObjectHandle newFolderItem(const std::string& path) {
  const ObjectHandle handle = newObject(knownClass("FolderItem"), Side::plugin);
  folderItemAt(handle).path = withoutEndSlash(path);
  return handle;
}

// --- Paths and the platform's references ---

struct ReleaseCF {
  void operator()(CFTypeRef value) const { CFRelease(value); }
};
using OwnedURL = std::unique_ptr<const std::remove_pointer_t<CFURLRef>, ReleaseCF>;

bool referenceOf(const std::string& path, FSRef& ref) {
  if (path.empty()) return false;
  const OwnedURL url(CFURLCreateFromFileSystemRepresentation(kCFAllocatorDefault,
                                                             reinterpret_cast<const UInt8*>(path.data()),
                                                             static_cast<CFIndex>(path.size()), false));
  return url && CFURLGetFSRef(url.get(), &ref);
}

std::optional<std::string> pathOf(const FSRef& ref) {
  const OwnedURL url(CFURLCreateFromFSRef(kCFAllocatorDefault, &ref));
  if (!url) return {};
  // The text of an URL has at least one character for each byte of the path.
  std::vector<char> path(static_cast<size_t>(CFStringGetLength(CFURLGetString(url.get()))) + 1);
  if (!CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(path.data()),
                                        static_cast<CFIndex>(path.size()))) {
    return {};
  }
  return withoutEndSlash(path.data());
}

struct Split {
  std::string parent;
  std::string leaf;
};

// Nothing for the root, which has no parent.
std::optional<Split> split(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos || path.size() == 1) return {};
  return Split{slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

// The name stays composed or decomposed as it is. False when it is no text, or too long for the buffer.
bool putName(const std::string& leaf, HFSUniStr255& name) {
  const auto utf16 = convert(leaf, kEncodingUtf8, kEncodingUtf16);
  if (!utf16 || utf16->size() / sizeof(UniChar) > kLongestName) return false;
  name.length = static_cast<UInt16>(utf16->size() / sizeof(UniChar));
  std::memcpy(name.unicode, utf16->data(), utf16->size());
  return true;
}

std::optional<std::string> textOf(const HFSUniStr255& name) {
  return convert({reinterpret_cast<const char*>(name.unicode), name.length * sizeof(UniChar)}, kEncodingUtf16,
                 kEncodingUtf8);
}

// The root of the only volume, which is called "/".
constexpr FSSpec kRootFSSpec{-100, fsRtParID, {1, '/'}};

// The item's entries are counted from 1, in the order of their names.
ObjectHandle TrueItem(ObjectHandle handle, int32_t index) {
  const Gate gate(__func__);
  const HostFolderItem& item = folderItemAt(handle);
  if (gate.fails()) return nullptr;
  std::vector<std::string> paths;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(item.path, error), end; !error && entry != end;
       entry.increment(error)) {
    paths.push_back(entry->path());
  }
  if (!requireIndex(int64_t{index} - 1, static_cast<int64_t>(paths.size()))) return nullptr;
  std::sort(paths.begin(), paths.end());
  return newFolderItem(paths[static_cast<size_t>(index) - 1]);
}

}  // namespace

void* folderItemMethod(std::string_view declaration) {
  if (declaration != "TrueItem(Index as integer) as Folderitem") return nullptr;
  return reinterpret_cast<void*>(&TrueItem);
}

namespace entry {

bool REALFSRefFromFolderItem(ObjectHandle handle, FSRef* ref, HFSUniStr255* name) {
  const Gate gate(__func__);
  const HostFolderItem& item = folderItemAt(handle);
  if (!ref) die(__func__, "a null place for the reference");
  if (gate.fails()) return false;
  if (!name) return settings().itemReferences && referenceOf(item.path, *ref);
  const auto parts = split(item.path);
  if (!settings().parentReferences || !parts) return false;
  return putName(settings().leafNames ? parts->leaf : "", *name) && referenceOf(parts->parent, *ref);
}

ObjectHandle REALFolderItemFromParentFSRef(const FSRef* parent, const HFSUniStr255* name) {
  const Gate gate(__func__);
  if (!parent) die(__func__, "a null reference");
  if (!name) die(__func__, "a null name");
  if (name->length > kLongestName) die(__func__, "a name of more than 255 units");
  const auto parentPath = pathOf(*parent);
  const auto leaf = textOf(*name);
  const bool usable = parentPath && leaf && !leaf->empty() && leaf->find('/') == std::string::npos;
  if (gate.fails() || !usable) return nullptr;
  return newFolderItem((*parentPath == "/" ? "" : *parentPath) + "/" + *leaf);
}

bool REALFSSpecFromFolderItem(FSSpec* fsSpec, ObjectHandle handle) {
  const Gate gate(__func__);
  if (!fsSpec) die(__func__, "a null place for the FSSpec");
  const HostFolderItem& item = folderItemAt(handle);
  const auto answers = settings().itemFSSpecs;
  const bool had = answers == Settings::ItemFSSpecs::rootForAll ||
                   (answers == Settings::ItemFSSpecs::ofRoot && item.path == "/");
  if (gate.fails() || !had) return false;
  *fsSpec = kRootFSSpec;
  return true;
}

ObjectHandle FolderItemFromFSSpec(const FSSpec* fsSpec) {
  const Gate gate(__func__);
  if (!fsSpec) die(__func__, "a null FSSpec");
  FSRef ref;
  if (gate.fails() || FSpMakeFSRef(fsSpec, &ref) != noErr) return nullptr;
  const auto path = pathOf(ref);
  return path ? newFolderItem(*path) : nullptr;
}

}  // namespace entry
}  // namespace standin::host
