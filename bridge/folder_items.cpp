#include "folder_items.h"

#include <CoreServices/CoreServices.h>
#include <string.h>

#include "host/services.h"
#include "strings.h"

namespace {

Owned<CFURLRef> urlOf(const FSRef& file) {
  return adopt(CFURLCreateFromFSRef(kCFAllocatorDefault, &file));
}

// The text in canonical decomposed form, as the file system keeps names; the text itself, retained, when it
// can't be copied.
Owned<CFStringRef> decomposed(CFStringRef text) {
  auto copy = adopt(CFStringCreateMutableCopy(kCFAllocatorDefault, 0, text));
  if (!copy) return retain(text);
  CFStringNormalize(copy.get(), kCFStringNormalizationFormD);
  return adopt<CFStringRef>(copy.leak());
}

Owned<CFStringRef> textOf(const HFSUniStr255& name) {
  if (name.length == 0) return {};
  return adopt(CFStringCreateWithCharacters(kCFAllocatorDefault, name.unicode, name.length));
}

Owned<CFURLRef> urlInFolder(Owned<CFURLRef> folder, Owned<CFStringRef> name) {
  auto leaf = decomposed(name.get());
  auto url =
      adopt(CFURLCreateCopyAppendingPathComponent(kCFAllocatorDefault, folder.get(), leaf.get(), false));
  folder.reset();
  leaf.reset();
  name.reset();
  return url;
}

Owned<CFURLRef> urlOfSpec(REALobject item) {
  FSSpec spec;
  FSRef file;
  if (!REALFSSpecFromFolderItem(&spec, item) || FSpMakeFSRef(&spec, &file) != noErr) return {};
  return urlOf(file);
}

bool exists(const FSRef& file) {
  return FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr) == noErr;
}

// The file's name and the folder that it is in. False for the root of a volume, which is in none.
bool findParentAndName(const FSRef& file, FSRef* parent, HFSUniStr255* name) {
  FSCatalogInfo info;
  if (FSGetCatalogInfo(&file, kFSCatInfoNodeID, &info, nullptr, nullptr, parent) != noErr) return false;
  if (info.nodeID == fsRtDirID) memset(parent, 0, sizeof *parent);
  return FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr, name, nullptr, nullptr) == noErr && exists(*parent);
}

Owned<REALobject> folderItemOfFile(const FSRef& file) {
  FSRef parent;
  HFSUniStr255 name;
  if (findParentAndName(file, &parent, &name)) return adopt(REALFolderItemFromParentFSRef(&parent, &name));
  FSSpec spec;
  if (FSGetCatalogInfo(&file, kFSCatInfoNone, nullptr, nullptr, &spec, nullptr) != noErr) return {};
  return adopt(REALFolderItemFromFSSpec(&spec));
}

HFSUniStr255 fileName(CFStringRef text) {
  HFSUniStr255 name;
  const CFIndex length = CFStringGetLength(text);
  name.length = static_cast<UInt16>(length < 0 ? 0 : length > 255 ? 255 : length);
  CFStringGetCharacters(text, CFRangeMake(0, name.length), name.unicode);
  return name;
}

// For a file that does not exist yet.
Owned<REALobject> folderItemOfMissingFile(CFURLRef url) {
  const auto folder = adopt(CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url));
  FSRef parent;
  if (!folder || !CFURLGetFSRef(folder.get(), &parent)) return {};
  const auto leaf = adopt(CFURLCopyLastPathComponent(url));
  if (!leaf) return {};
  const auto text = decomposed(leaf.get());
  const HFSUniStr255 name = fileName(text.get());
  return adopt(REALFolderItemFromParentFSRef(&parent, &name));
}

Owned<REALobject> absoluteString(CFURLRef url) {
  auto absolute = adopt(CFURLCopyAbsoluteURL(url));
  if (!absolute) return {};
  auto string = CFString2RBString(CFURLGetString(absolute.get()));
  absolute.reset();
  return variantOf(adopt(string.leak()));
}

}  // namespace

Owned<CFURLRef> CreateCFURLfromFolderItem(REALobject item) {
  if (!item) return {};
  FSRef file;
  if (REALFSRefFromFolderItem(item, &file, nullptr)) {
    auto url = urlOf(file);
    if (url) return url;
  }
  HFSUniStr255 name = {};
  if (REALFSRefFromFolderItem(item, &file, &name)) {  // with a name, `file` is the folder that it is in
    auto folder = urlOf(file);
    auto leaf = folder ? textOf(name) : Owned<CFStringRef>();
    if (leaf) return urlInFolder(adopt(folder.leak()), adopt(leaf.leak()));
  }
  return urlOfSpec(item);
}

Owned<REALobject> CFURL2RBVariant(CFURLRef url) {
  FSRef file;
  auto item = CFURLGetFSRef(url, &file) ? folderItemOfFile(file) : folderItemOfMissingFile(url);
  if (item) return item;
  return absoluteString(url);
}
