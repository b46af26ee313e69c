// The catalogue of files: what an FSRef's file is called, where it lies, and the older way of naming it. The
// whole tree of files is one volume here.
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "standin/coreservices/services.h"
#include "standin/gate/gate.h"
#include "standin/system/file_names.h"
#include "standin/system/fsref_table.h"
#include "standin/system/paths.h"
#include "standin/system/utf8.h"

namespace {

constexpr FSVolumeRefNum kVolume = -100;
constexpr FSVolumeRefNum kDefaultVolume = 0;
constexpr const char* kVolumeName = "/";
constexpr CFIndex kLongestName = 255;     // units of an HFSUniStr255
constexpr CFIndex kLongestSpecName = 63;  // bytes of an FSSpec's name
constexpr FSCatalogInfoBitmap kKnownInfo =
    kFSCatInfoNodeFlags | kFSCatInfoVolume | kFSCatInfoParentDirID | kFSCatInfoNodeID;

struct ReleaseCF {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};
using OwnedString = std::unique_ptr<const std::remove_pointer_t<CFStringRef>, ReleaseCF>;

// Null for bytes that are no text in this encoding.
OwnedString makeString(const void* bytes, size_t length, CFStringEncoding encoding) {
  return OwnedString(CFStringCreateWithBytes(kCFAllocatorDefault, static_cast<const UInt8*>(bytes),
                                             static_cast<CFIndex>(length), encoding, false));
}

// The name of the volume for its root. Null where it wouldn't lead back to the file: for a name that is no
// UTF-8, and for one with a byte order mark, which a string leaves out.
OwnedString nameOf(const std::string& path) {
  const std::string name = path == "/" ? kVolumeName : path.substr(path.rfind('/') + 1);
  OwnedString text = makeString(name.data(), name.size(), kCFStringEncodingUTF8);
  return text && standin::utf8Of(text.get()) == name ? std::move(text) : nullptr;
}

bool putName(CFStringRef text, HFSUniStr255& name) {
  if (!text || CFStringGetLength(text) > kLongestName) return false;
  name.length = static_cast<UInt16>(CFStringGetLength(text));
  CFStringGetCharacters(text, CFRangeMake(0, name.length), name.unicode);
  return true;
}

bool putSpecName(CFStringRef text, StrFileName& name) {
  if (!text) return false;
  const CFIndex length = CFStringGetLength(text);
  CFIndex used = 0;
  const CFIndex converted = CFStringGetBytes(text, CFRangeMake(0, length), kCFStringEncodingMacRoman, 0,
                                             false, name + 1, kLongestSpecName, &used);
  name[0] = static_cast<unsigned char>(used);
  return converted == length;
}

// What the catalogue knows of one file.
struct Entry {
  const std::string& path;
  UInt32 node;
  FSRef parent;       // all zero for the root, which has none
  UInt32 parentNode;  // fsRtParID for the root
  bool isFolder;
};

std::optional<Entry> entryOf(const std::string& path, const FSRef& ref) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0) return {};
  Entry entry{path, standin::nodeOfFSRef(ref), {}, fsRtParID, S_ISDIR(info.st_mode)};
  if (path == "/") return entry;
  if (!standin::makeFSRef(standin::parentPath(path), entry.parent)) return {};
  entry.parentNode = standin::nodeOfFSRef(entry.parent);
  return entry;
}

void putInfo(const Entry& entry, FSCatalogInfoBitmap which, FSCatalogInfo& info) {
  if (which & kFSCatInfoNodeFlags) info.nodeFlags = entry.isFolder ? kFSNodeIsDirectoryMask : 0;
  if (which & kFSCatInfoVolume) info.volume = kVolume;
  if (which & kFSCatInfoParentDirID) info.parentDirID = entry.parentNode;
  if (which & kFSCatInfoNodeID) info.nodeID = entry.node;
}

bool isZero(const FSRef& ref) {
  return std::ranges::all_of(ref.hidden, [](UInt8 byte) { return byte == 0; });
}

// Empty for an FSSpec that names nothing; then `error` says why.
std::string pathOfSpec(const FSSpec& fileSpec, OSErr& error) {
  error = bdNamErr;
  if (fileSpec.name[0] == 0 || fileSpec.name[0] > kLongestSpecName) return {};
  const OwnedString text = makeString(fileSpec.name + 1, fileSpec.name[0], kCFStringEncodingMacRoman);
  char name[4 * kLongestSpecName + 1];
  if (!text || !CFStringGetCString(text.get(), name, sizeof name, kCFStringEncodingUTF8)) return {};
  if (fileSpec.parID == fsRtParID) {
    error = fnfErr;
    return std::strcmp(name, kVolumeName) == 0 ? "/" : "";
  }
  if (std::strchr(name, '/')) return {};
  error = dirNFErr;
  const std::string* const folder = standin::pathOfNode(static_cast<uint32_t>(fileSpec.parID));
  return folder ? (*folder == "/" ? "" : *folder) + '/' + name : "";
}

}  // namespace

// What isn't asked for is null. Nothing is stored unless all that is asked for can be had. A file whose name
// is no text, or too long for the buffer, has no name here.
OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpecPtr fsSpec, FSRef* parentRef) {
  const standin::Gate gate(__func__);
  if (!ref || (whichInfo != kFSCatInfoNone && !catalogInfo)) return paramErr;
  if (whichInfo & ~kKnownInfo) {
    standin::die(__func__, "information is asked for that this catalogue doesn't have");
  }
  if (isZero(*ref)) return fnfErr;
  const std::string* const path = standin::pathOfFSRef(*ref);
  if (!path) standin::die(__func__, "no call of this process has filled this FSRef");
  if (gate.fails()) return fnfErr;
  const std::optional<Entry> entry = entryOf(*path, *ref);
  if (!entry) return fnfErr;
  HFSUniStr255 name;
  FSSpec fileSpec{kVolume, static_cast<SInt32>(entry->parentNode), {}};
  if (outName && !putName(nameOf(*path).get(), name)) return bdNamErr;
  if (fsSpec && !putSpecName(nameOf(*path).get(), fileSpec.name)) return bdNamErr;
  if (catalogInfo) putInfo(*entry, whichInfo, *catalogInfo);
  if (outName) {
    outName->length = name.length;
    std::copy_n(name.unicode, name.length, outName->unicode);
  }
  if (fsSpec) *fsSpec = fileSpec;
  if (parentRef) *parentRef = entry->parent;
  return noErr;
}

OSErr FSpMakeFSRef(const FSSpec* source, FSRef* newRef) {
  const standin::Gate gate(__func__);
  if (!source || !newRef) return paramErr;
  if (gate.fails()) return fnfErr;
  if (source->vRefNum != kVolume && source->vRefNum != kDefaultVolume) return nsvErr;
  OSErr error = noErr;
  const std::string path = pathOfSpec(*source, error);
  if (path.empty()) return error;
  const std::optional<std::string> found = standin::existingPath(path);
  return found && standin::makeFSRef(*found, *newRef) ? noErr : fnfErr;
}
