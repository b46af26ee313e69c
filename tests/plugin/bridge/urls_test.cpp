// File URLs and folder items, both ways.
#include <CoreServices/CoreServices.h>
#include <dlfcn.h>

#include <filesystem>
#include <fstream>

#include "tests/plugin/bridge/fixture.h"

// What the platform tells of the root's parent: nothing, or that it is the root itself.
static bool rootIsItsOwnParent = false;

// What it was asked of files, in order.
static std::vector<FSCatalogInfoBitmap> asked;

// Found by either binary before the platform's own, which does the work.
OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap which, FSCatalogInfo* info, HFSUniStr255* name,
                       FSSpecPtr fsSpec, FSRef* parent) {
  static const auto original =
      reinterpret_cast<decltype(&FSGetCatalogInfo)>(dlsym(RTLD_NEXT, "FSGetCatalogInfo"));
  asked.push_back(which);
  const OSErr error = original(ref, which, info, name, fsSpec, parent);
  if (rootIsItsOwnParent && error == noErr && parent && info->nodeID == fsRtDirID) *parent = *ref;
  return error;
}

namespace {

namespace fs = std::filesystem;

class Files : public BridgeTest {
 protected:
  // The older way's answer for every item is the root, which no other way gives.
  void startWithFSSpecOfRoot() {
    host::Settings settings;
    settings.itemFSSpecs = host::Settings::ItemFSSpecs::rootForAll;
    start(settings);
  }
  Calls callsToURL(const host::Value& item) {
    CFOwner url;
    return conversionCallsOf([&] { url = toURL(item); });
  }

  std::string path(const std::string& name) const { return folder_.at(name); }
  std::string touch(const std::string& name) const { return folder_.file(name, "x"); }

  static CFOwner fileURL(const std::string& path) { return own(makeURL(path).leak()); }
  static CFOwner stringURL(const char* text) {
    return own(CFURLCreateWithString(nullptr, makeString(text).get(), nullptr));
  }
  static std::string pathOf(const CFOwner& url) {
    if (!url) return "(null)";
    UInt8 buffer[4096] = {};
    EXPECT_TRUE(
        CFURLGetFileSystemRepresentation(static_cast<CFURLRef>(url.get()), true, buffer, sizeof buffer));
    return reinterpret_cast<const char*>(buffer);
  }

 private:
  ScratchFolder folder_;
};

TEST_F(Files, AnExistingFilesURLIsAFolderItem) {
  start();
  const std::string file = touch("file.txt");
  EXPECT_EQ(file, host::path(toVariant(fileURL(file).get())));
}

TEST_F(Files, AMissingFileInAnExistingFolderIsAFolderItem) {
  start();
  EXPECT_EQ(path("new.txt"), host::path(toVariant(fileURL(path("new.txt")).get())));
}

TEST_F(Files, AFileInAMissingFolderIsItsURLAsText) {
  start();
  const host::Value variant = toVariant(fileURL(path("missing/new.txt")).get());
  EXPECT_EQ("file://" + path("missing/new.txt"), variant.text());
}

TEST_F(Files, AURLOfAnotherSchemeIsItsText) {
  start();
  for (const char* url :
       {"http://example.com/a%20b?c#d", "https://user@example.com:8080/%C3%A9/", "ftp://example.com/usr",
        "mailto:someone@example.com", "urn:isbn:0451450523", "data:text/plain,usr", "http:///usr"}) {
    EXPECT_EQ(url, toVariant(stringURL(url).get()).text());
  }
}

TEST_F(Files, ARelativeURLIsItsAbsoluteText) {
  start();
  const CFOwner base = stringURL("http://example.com/a/b");
  const CFOwner url = own(CFURLCreateWithString(nullptr, CFSTR("../c"), static_cast<CFURLRef>(base.get())));
  EXPECT_EQ("http://example.com/c", toVariant(url.get()).text());
}

TEST_F(Files, AnAbsoluteURLThatCantBeHadIsNil) {
  start();
  const CFOwner url = stringURL("http://example.com/");
  standin::failCall("CFURLCopyAbsoluteURL", 1);
  EXPECT_TRUE(toVariant(url.get()).isNil());
}

TEST_F(Files, ARelativeFileURLIsTheFolderItemOfItsPlace) {
  start();
  touch("file.txt");
  const CFOwner base = fileURL(path("other.txt"));
  for (const char* name : {"file.txt", "new.txt"}) {
    const CFOwner relative = cfText(name);
    const CFOwner url = own(CFURLCreateWithString(nullptr, static_cast<CFStringRef>(relative.get()),
                                                  static_cast<CFURLRef>(base.get())));
    EXPECT_EQ(path(name), host::path(toVariant(url.get())));
  }
}

TEST_F(Files, AFoldersURLIsAFolderItemWithoutTheSlash) {
  start();
  fs::create_directory(path("folder"));
  for (const char* name : {"folder", "new folder"}) {
    const std::string place = path(name);
    const CFOwner url = own(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(place.data()), static_cast<CFIndex>(place.size()), true));
    EXPECT_EQ(place, host::path(toVariant(url.get())));
  }
}

TEST_F(Files, TheRootOfAVolumeGoesTheOlderWay) {
  start();
  standin::countCalls();
  EXPECT_EQ("/", host::path(toVariant(fileURL("/").get())));
  EXPECT_EQ(1, standin::callCount("FolderItemFromFSSpec"));
}

// Its node and parent, its name and the parent's existence are asked for in turn.
TEST_F(Files, AFileWhosePlaceCantBeHadGoesTheOlderWay) {
  start();
  const std::string file = touch("file.txt");
  const CFOwner url = fileURL(file);
  for (int n = 1; n <= 3; ++n) {
    standin::countCalls();
    standin::failCall("FSGetCatalogInfo", n);
    EXPECT_EQ(file, host::path(toVariant(url.get()))) << n;
    EXPECT_EQ(1, standin::callCount("FolderItemFromFSSpec")) << n;
  }
}

TEST_F(Files, AFileOfWhichTheHostMakesNoItemIsItsURLAsText) {
  host::Settings settings;
  settings.hidden = {"REALFolderItemFromParentFSRef", "FolderItemFromFSSpec"};
  start(settings);
  const std::string file = touch("file.txt");
  EXPECT_EQ("file://" + file, toVariant(fileURL(file).get()).text());
  EXPECT_EQ("file://" + path("new.txt"), toVariant(fileURL(path("new.txt")).get()).text());
  EXPECT_EQ("file:///", toVariant(fileURL("/").get()).text());
}

TEST_F(Files, TheRootOfAVolumeGoesTheOlderWayWhateverItsParentIsSaidToBe) {
  start();
  const CFOwner root = fileURL("/");
  standin::countCalls();
  rootIsItsOwnParent = true;
  EXPECT_EQ("/", host::path(toVariant(root.get())));
  rootIsItsOwnParent = false;
  EXPECT_EQ(1, standin::callCount("FolderItemFromFSSpec"));
}

// The place of the file, its name, and whether its folder is there.
TEST_F(Files, ToldOfAFileIsItsNodeAloneAndOfItsNameAndFolderNothingMore) {
  start();
  const CFOwner url = fileURL(touch("file.txt"));
  asked.clear();
  toVariant(url.get());
  EXPECT_EQ((std::vector<FSCatalogInfoBitmap>{kFSCatInfoNodeID, kFSCatInfoNone, kFSCatInfoNone}), asked);
}

TEST_F(Files, AnAbsoluteURLIsReleasedBeforeItsTextBecomesAVariant) {
  start();
  const CFOwner url = stringURL("http://example.com/");
  void* variant = nullptr;
  const Calls calls = conversionCallsOf([&] { variant = toVariantAlone(url.get()); });
  EXPECT_EQ("http://example.com/", fromPlugin(variant).text());
  EXPECT_EQ((Calls{"CFURLCopyAbsoluteURL", "CFURLGetString", "CFStringGetLength", "CFStringGetCString",
                   "REALBuildString", "REALSetStringEncoding", "CFRelease CFURL", "StringToVariant",
                   "REALUnlockString"}),
            fromFirst("CFURLCopyAbsoluteURL", calls));
}

TEST_F(Files, AnExistingFilesFolderItemIsItsURL) {
  start();
  const std::string file = touch("file.txt");
  EXPECT_EQ(file, pathOf(toURL(host::folderItem(file))));
  EXPECT_EQ(file, pathOf(toCF(host::folderItem(file))));
}

TEST_F(Files, AMissingFilesFolderItemIsItsURLWithTheNameDecomposed) {
  start();
  EXPECT_EQ(path("cafe\xCC\x81.txt"), pathOf(toURL(host::folderItem(path("caf\xC3\xA9.txt")))));
}

// One character that only looks like two letters is another name.
TEST_F(Files, AMissingFilesNameKeepsItsLigatures) {
  start();
  EXPECT_EQ(path("\xEF\xAC\x81le.txt"), pathOf(toURL(host::folderItem(path("\xEF\xAC\x81le.txt")))));
  EXPECT_EQ(path("\xEF\xAC\x81le.txt"), host::path(toVariant(fileURL(path("\xEF\xAC\x81le.txt")).get())));
}

TEST_F(Files, AMissingFilesURLIsNotThatOfAFolder) {
  start();
  const CFOwner url = toURL(host::folderItem(path("new.txt")));
  ASSERT_TRUE(url);
  EXPECT_EQ("file://" + path("new.txt"), textOf(CFURLGetString(static_cast<CFURLRef>(url.get()))));
}

TEST_F(Files, NamesOf255UnitsAreKeptAndLongerOnesAreCutTo255) {
  start();
  const std::string longest(255, 'n');
  EXPECT_EQ(path(longest), host::path(toVariant(fileURL(path(longest)).get())));
  EXPECT_EQ(path(longest), host::path(toVariant(fileURL(path(longest + "n")).get())));
}

// Linux has no names of more than 255 bytes, so such a file is a missing one.
TEST_F(Files, AMissingFilesNameIsCutTo255UnitsAfterItIsDecomposed) {
  start();
  std::string composed, decomposed;
  for (int i = 0; i < 128; ++i) composed += "\xC3\xA9";
  for (int i = 0; i < 127; ++i) decomposed += "e\xCC\x81";
  EXPECT_EQ(path(decomposed + "e"), host::path(toVariant(fileURL(path(composed)).get())));
}

// Half a character is no text for this host.
TEST_F(Files, AMissingFilesNameThatIsCutWithinACharacterIsItsURLAsText) {
  start();
  const std::string name = std::string(254, 'n') + "\xF0\x9F\x98\x80";
  EXPECT_EQ("file://" + path(std::string(254, 'n') + "%F0%9F%98%80"),
            toVariant(fileURL(path(name)).get()).text());
}

TEST_F(Files, AFolderItemsNameOf255UnitsIsKeptAndALongerOneHasNoURL) {
  start();
  const std::string longest(255, 'n');
  EXPECT_EQ(path(longest), pathOf(toURL(host::folderItem(path(longest)))));
  EXPECT_EQ("(null)", pathOf(toURL(host::folderItem(path(longest + "n")))));
  touch(longest);
  EXPECT_EQ(path(longest), pathOf(toURL(host::folderItem(path(longest)))));
  EXPECT_EQ(path(longest), host::path(toVariant(fileURL(path(longest)).get())));
}

TEST_F(Files, AnExistingFilesFolderItemKeepsTheFormOfItsName) {
  start();
  for (const char* name : {"caf\xC3\xA9 composed", "cafe\xCC\x81 decomposed"}) {
    const std::string file = touch(name);
    EXPECT_EQ(file, pathOf(toURL(host::folderItem(file))));
  }
}

TEST_F(Files, AMissingFilesFolderItemWithADecomposedNameIsItsURL) {
  start();
  EXPECT_EQ(path("cafe\xCC\x81.md"), pathOf(toURL(host::folderItem(path("cafe\xCC\x81.md")))));
}

TEST_F(Files, TheRootsFolderItemIsItsURL) {
  start();
  EXPECT_EQ("/", pathOf(toURL(host::folderItem("/"))));
}

TEST_F(Files, AMissingFilesNameIsDecomposed) {
  start();
  EXPECT_EQ(path("cafe\xCC\x81.txt"), host::path(toVariant(fileURL(path("caf\xC3\xA9.txt")).get())));
  EXPECT_EQ(path("cafe\xCC\x81.md"), host::path(toVariant(fileURL(path("cafe\xCC\x81.md")).get())));
}

TEST_F(Files, AnExistingFilesNameIsAsItIs) {
  start();
  for (const char* name : {"caf\xC3\xA9 composed", "cafe\xCC\x81 decomposed"}) {
    const std::string file = touch(name);
    EXPECT_EQ(file, host::path(toVariant(fileURL(file).get())));
  }
}

TEST_F(Files, AFileInAMissingFolderIsNotAskedForItsName) {
  start();
  const CFOwner url = fileURL(path("missing/new.txt"));
  const Calls calls = callsOf([&] { toVariant(url.get()); });
  EXPECT_EQ(1, std::count(calls.begin(), calls.end(), "CFURLCreateCopyDeletingLastPathComponent"));
  EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "CFURLCopyLastPathComponent"));
}

TEST_F(Files, AFolderItemInAMissingFolderIsNull) {
  start();
  EXPECT_EQ("(null)", pathOf(toURL(host::folderItem(path("missing/new.txt")))));
}

TEST_F(Files, AFolderItemThatOnlyTheOlderWayKnowsIsWhatThatSays) {
  host::Settings settings;
  settings.itemReferences = settings.parentReferences = false;
  settings.itemFSSpecs = host::Settings::ItemFSSpecs::rootForAll;
  start(settings);
  EXPECT_EQ("/", pathOf(toURL(host::folderItem(path("any")))));
}

TEST_F(Files, AFolderItemInAMissingFolderIsWhatTheOlderWaySays) {
  startWithFSSpecOfRoot();
  EXPECT_EQ("/", pathOf(toURL(host::folderItem(path("missing/new.txt")))));
}

TEST_F(Files, AFolderItemOfWhichTheHostTellsNothingIsNull) {
  host::Settings settings;
  settings.hidden = {"REALFSRefFromFolderItem", "REALFSSpecFromFolderItem"};
  start(settings);
  EXPECT_EQ("(null)", pathOf(toURL(host::folderItem(touch("file.txt")))));
}

TEST_F(Files, AFolderItemIsWhatTheOlderWaySaysWithoutTheNewerOne) {
  host::Settings settings;
  settings.hidden = {"REALFSRefFromFolderItem"};
  settings.itemFSSpecs = host::Settings::ItemFSSpecs::rootForAll;
  start(settings);
  EXPECT_EQ("/", pathOf(toURL(host::folderItem(touch("file.txt")))));
}

// The last way but one has found the parent: then there is no other.
TEST_F(Files, ANameThatCantBeAppendedIsNullAndTheOlderWayIsNotTried) {
  startWithFSSpecOfRoot();
  const host::Value item = host::folderItem(path("new.txt"));
  standin::failCall("CFURLCreateCopyAppendingPathComponent", 1);
  EXPECT_EQ("(null)", pathOf(toURL(item)));
}

TEST_F(Files, ANameThatIsNoTextGoesOnToTheOlderWay) {
  startWithFSSpecOfRoot();
  const host::Value item = host::folderItem(path("new.txt"));
  standin::failCall("CFStringCreateWithCharacters", 1);
  EXPECT_EQ("/", pathOf(toURL(item)));
}

TEST_F(Files, ANameThatCantBeCopiedIsUsedAsItIs) {
  start();
  const host::Value item = host::folderItem(path("caf\xC3\xA9"));
  standin::failCall("CFStringCreateMutableCopy", 1);
  EXPECT_EQ(path("caf\xC3\xA9"), pathOf(toURL(item)));
  const CFOwner url = fileURL(path("caf\xC3\xA9"));
  standin::failCall("CFStringCreateMutableCopy", 1);
  EXPECT_EQ(path("caf\xC3\xA9"), host::path(toVariant(url.get())));
}

TEST_F(Files, AParentWithAnEmptyNameGoesOnToTheOlderWay) {
  startWithFSSpecOfRoot();
  host::settings().leafNames = false;
  EXPECT_EQ("/", pathOf(toURL(host::folderItem(path("new.txt")))));
}

// A host that finds the folder of an item and writes no name.
std::vector<uint8_t> nameBuffer;
bool findFolderWithoutName(void* item, FSRef* ref, HFSUniStr255* name) {
  if (!name) return false;
  const auto bytes = reinterpret_cast<const uint8_t*>(name);
  nameBuffer.assign(bytes, bytes + sizeof *name);
  HFSUniStr255 own;
  typedef bool Find(void* item, FSRef* ref, HFSUniStr255* name);
  return name->length == 0 &&  // a name of any other length would be read
         reinterpret_cast<Find*>(host::resolve("REALFSRefFromFolderItem"))(item, ref, &own);
}
void* resolveWithoutName(const char* name) {
  if (std::string_view(name) == "REALFSRefFromFolderItem") {
    return reinterpret_cast<void*>(findFolderWithoutName);
  }
  return host::resolve(name);
}

// Leaves something else than zeros where the next functions have their variables.
[[gnu::noinline]] void soilStack() {
  volatile uint8_t bytes[16384];
  for (volatile uint8_t& byte : bytes) byte = 0xA5;
}

TEST_F(Files, ANameThatTheHostLeavesUnwrittenIsEmptyAndGoesOnToTheOlderWay) {
  host::Settings settings;
  settings.itemFSSpecs = host::Settings::ItemFSSpecs::rootForAll;
  startWith(resolveWithoutName, settings);
  const host::Value item = host::folderItem(path("new.txt"));
  nameBuffer.clear();
  soilStack();
  const CFOwner url = toURL(item);
  EXPECT_EQ(std::vector<uint8_t>(sizeof(HFSUniStr255), 0), nameBuffer);
  EXPECT_EQ("/", pathOf(url));
}

TEST_F(Files, AnExistingFilesItemWhoseURLCantBeMadeIsItsFoldersURLAndItsName) {
  start();
  const host::Value item = host::folderItem(touch("caf\xC3\xA9"));
  standin::failCall("CFURLCreateFromFSRef", 1);
  EXPECT_EQ(path("cafe\xCC\x81"), pathOf(toURL(item)));
}

TEST_F(Files, AParentWhoseURLCantBeMadeGoesOnToTheOlderWay) {
  startWithFSSpecOfRoot();
  const host::Value item = host::folderItem(path("new.txt"));
  standin::failCall("CFURLCreateFromFSRef", 1);
  EXPECT_EQ("/", pathOf(toURL(item)));
}

TEST_F(Files, AnFSSpecOfNoFileIsNullAndNoURLIsMade) {
  startWithFSSpecOfRoot();
  host::settings().itemReferences = host::settings().parentReferences = false;
  const host::Value item = host::folderItem(path("new.txt"));
  standin::failCall("FSpMakeFSRef", 1);
  EXPECT_EQ((Calls{"REALFSRefFromFolderItem", "REALFSRefFromFolderItem", "REALFSSpecFromFolderItem",
                   "FSpMakeFSRef"}),
            callsToURL(item));
}

// The last two are the name as it is decomposed, and as it came.
TEST_F(Files, TheParentsURLIsReleasedBeforeTheName) {
  start();
  EXPECT_EQ((Calls{"REALFSRefFromFolderItem", "REALFSRefFromFolderItem", "CFURLCreateFromFSRef",
                   "CFStringCreateWithCharacters", "CFStringCreateMutableCopy", "CFStringNormalize",
                   "CFURLCreateCopyAppendingPathComponent", "CFRelease CFURL", "CFRelease CFString",
                   "CFRelease CFString"}),
            callsToURL(host::folderItem(path("new.txt"))));
}

TEST_F(Files, TheParentsURLIsReleasedBeforeTheOlderWay) {
  startWithFSSpecOfRoot();
  host::settings().leafNames = false;
  EXPECT_EQ((Calls{"REALFSRefFromFolderItem", "REALFSRefFromFolderItem", "CFURLCreateFromFSRef",
                   "CFRelease CFURL", "REALFSSpecFromFolderItem", "FSpMakeFSRef", "CFURLCreateFromFSRef"}),
            callsToURL(host::folderItem(path("new.txt"))));
}

TEST_F(Files, ANilFolderItemIsNull) {
  start();
  EXPECT_EQ("(null)", pathOf(toURL(host::Value())));
}

TEST_F(Files, EveryFailureOnTheWayGivesBackWhatWasMade) {
  start();
  const std::string file = touch("file.txt");
  for (const std::string& name : {file, path("new.txt"), path("missing/new.txt"), std::string("/")}) {
    SCOPED_TRACE(name);
    bool fired = true;
    for (int n = 1; fired && n < 100; ++n) {
      const CFOwner url = fileURL(name);
      const host::Value item = host::folderItem(name);
      standin::failCall(n);
      toURL(item);
      toVariant(url.get());
      fired = standin::failuresFired() > 0;
      standin::clearFailures();
    }
    EXPECT_FALSE(fired);
  }
}

}  // namespace
