// Folder items: a path each. References to files are the platform's business; its own functions make and read
// them.
#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CarbonCore/Files.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "standin/gate/gate.h"
#include "standin/host/encodings.h"
#include "standin/host/entry_points.h"
#include "standin/host/host.h"
#include "standin/host/objects.h"
#include "standin/host/own_classes.h"
#include "standin/host/runtime.h"

namespace standin::host {
namespace {

constexpr std::size_t longestName = 255;  // units of a name buffer

class HostFolderItem : public HostObject {
 public:
  using HostObject::HostObject;
  void* ownMethod(std::string_view declaration) override;
  std::string path;  // absolute, without a slash at its end; empty of a fresh instance
};

HostFolderItem& folderItemAt(ObjectHandle handle, const char* call) {
  Counted& thing = objectThingAt(handle);
  auto* const item = dynamic_cast<HostFolderItem*>(&thing);
  if (!item) die(call, "the " + thing.describe() + " was passed where a FolderItem is expected");
  return *item;
}

std::string withoutEndSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

ObjectHandle newFolderItem(const std::string& path) {
  const ObjectHandle handle = newObject(*runtime().classes.find("FolderItem"), Side::plugin);
  folderItemAt(handle, "(folder item)").path = withoutEndSlash(path);
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
  std::vector<char> path(64 * 1024);  // far beyond the longest path of one system call
  if (!url || !CFURLGetFileSystemRepresentation(url.get(), true, reinterpret_cast<UInt8*>(path.data()),
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
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos || path.size() == 1) return {};
  return Split{slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

// The name stays composed or decomposed as it is. False when it is no text, or too long for the buffer.
bool putName(const std::string& leaf, HFSUniStr255& name) {
  const auto utf16 = convert(leaf, encodingUtf8, encodingUtf16);
  if (!utf16 || utf16->size() / sizeof(UniChar) > longestName) return false;
  name.length = static_cast<UInt16>(utf16->size() / sizeof(UniChar));
  std::memcpy(name.unicode, utf16->data(), utf16->size());
  return true;
}

std::optional<std::string> textOf(const HFSUniStr255& name) {
  return convert({reinterpret_cast<const char*>(name.unicode), name.length * sizeof(UniChar)}, encodingUtf16,
                 encodingUtf8);
}

// The root of the only volume, which is called "/".
constexpr FSSpec rootFSSpec{-100, fsRtParID, {1, '/'}};

// --- The method by which a folder item is known ---

// The item's entries are counted from 1, in the order of their names.
ObjectHandle trueItem(ObjectHandle handle, int32_t index) {
  const Gate gate("TrueItem");
  const HostFolderItem& item = folderItemAt(handle, "TrueItem");
  if (gate.fails()) return nullptr;
  std::vector<std::string> paths;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(item.path, error), end; !error && entry != end;
       entry.increment(error)) {
    paths.push_back(entry->path());
  }
  if (index < 1 || static_cast<std::size_t>(index) > paths.size()) {
    raise({"OutOfBoundsException", "", 0});
    return nullptr;
  }
  std::sort(paths.begin(), paths.end());
  return newFolderItem(paths[static_cast<std::size_t>(index) - 1]);
}

void* HostFolderItem::ownMethod(std::string_view declaration) {
  if (declaration != "TrueItem(Index as integer) as Folderitem") return nullptr;
  return reinterpret_cast<void*>(&trueItem);
}

}  // namespace

HostObject* makeFolderItem(const Class& cls, Side owner) {
  return new HostFolderItem(cls, owner);
}

Value folderItem(const std::string& path) {
  if (path.empty() || path.front() != '/') throw CallError("no absolute path: " + path);
  const Value made = newInstance("FolderItem");
  static_cast<HostFolderItem&>(instanceIn(made, "a path for")).path = withoutEndSlash(path);
  return made;
}

std::string path(const Value& folderItem) {
  const auto* const item = dynamic_cast<const HostFolderItem*>(&instanceIn(folderItem, "a path asked of"));
  if (!item) throw CallError("not a FolderItem but " + folderItem.describe());
  return item->path;
}

namespace entry {

bool REALFSRefFromFolderItem(ObjectHandle handle, FSRef* ref, HFSUniStr255* name) {
  const Gate gate("REALFSRefFromFolderItem");
  const HostFolderItem& item = folderItemAt(handle, "REALFSRefFromFolderItem");
  if (!ref) die("REALFSRefFromFolderItem", "a null place for the reference");
  if (gate.fails()) return false;
  if (!name) return settings().itemReferences && referenceOf(item.path, *ref);
  const auto parts = split(item.path);
  if (!settings().parentReferences || !parts) return false;
  return putName(settings().leafNames ? parts->leaf : "", *name) && referenceOf(parts->parent, *ref);
}

ObjectHandle REALFolderItemFromParentFSRef(const FSRef* parent, const HFSUniStr255* name) {
  const Gate gate("REALFolderItemFromParentFSRef");
  if (!parent) die("REALFolderItemFromParentFSRef", "a null reference");
  if (!name) die("REALFolderItemFromParentFSRef", "a null name");
  if (name->length > longestName) die("REALFolderItemFromParentFSRef", "a name of more than 255 units");
  const auto parentPath = pathOf(*parent);
  const auto leaf = textOf(*name);
  const bool usable = parentPath && leaf && !leaf->empty() && leaf->find('/') == std::string::npos;
  if (gate.fails() || !usable) return nullptr;
  return newFolderItem((*parentPath == "/" ? "" : *parentPath) + "/" + *leaf);
}

bool REALFSSpecFromFolderItem(FSSpec* fsSpec, ObjectHandle handle) {
  const Gate gate("REALFSSpecFromFolderItem");
  if (!fsSpec) die("REALFSSpecFromFolderItem", "a null place for the FSSpec");
  const HostFolderItem& item = folderItemAt(handle, "REALFSSpecFromFolderItem");
  const auto answers = settings().itemFSSpecs;
  const bool had = answers == Settings::ItemFSSpecs::rootForAll ||
                   (answers == Settings::ItemFSSpecs::ofRoot && item.path == "/");
  if (gate.fails() || !had) return false;
  *fsSpec = rootFSSpec;
  return true;
}

ObjectHandle FolderItemFromFSSpec(const FSSpec* fsSpec) {
  const Gate gate("FolderItemFromFSSpec");
  if (!fsSpec) die("FolderItemFromFSSpec", "a null FSSpec");
  FSRef ref;
  if (gate.fails() || FSpMakeFSRef(fsSpec, &ref) != noErr) return nullptr;
  const auto path = pathOf(ref);
  return path ? newFolderItem(*path) : nullptr;
}

}  // namespace entry
}  // namespace standin::host
