// File URLs and folder items, both ways.
#include <filesystem>
#include <fstream>

#include "tests/bridge/fixture.h"

namespace {

namespace fs = std::filesystem;

class Files : public BridgeTest {
 protected:
  void SetUp() override {
    std::string name = (fs::temp_directory_path() / "bridge-test-XXXXXX").string();
    ASSERT_TRUE(mkdtemp(name.data()));
    folder_ = fs::canonical(name).string();
  }
  void TearDown() override {
    BridgeTest::TearDown();
    fs::remove_all(folder_);
  }

  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  std::string touch(const std::string& name) const {
    std::ofstream(path(name)) << "x";
    return path(name);
  }

  static CFOwner fileURL(const std::string& path) {
    return own(CFURLCreateFromFileSystemRepresentation(nullptr, reinterpret_cast<const UInt8*>(path.data()),
                                                       static_cast<CFIndex>(path.size()), false));
  }
  static CFOwner stringURL(const char* text) {
    return own(CFURLCreateWithString(nullptr, static_cast<CFStringRef>(::text(text).get()), nullptr));
  }
  static std::string pathOf(const CFOwner& url) {
    if (!url) return "(null)";
    UInt8 buffer[4096] = {};
    EXPECT_TRUE(
        CFURLGetFileSystemRepresentation(static_cast<CFURLRef>(url.get()), true, buffer, sizeof buffer));
    return reinterpret_cast<const char*>(buffer);
  }

 private:
  std::string folder_;
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
  EXPECT_EQ("http://example.com/a%20b?c#d",
            toVariant(stringURL("http://example.com/a%20b?c#d").get()).text());
  EXPECT_EQ("mailto:someone@example.com", toVariant(stringURL("mailto:someone@example.com").get()).text());
}

TEST_F(Files, TheRootOfAVolumeGoesTheOlderWay) {
  start();
  const int before = standin::callCount("FolderItemFromFSSpec");
  EXPECT_EQ("/", host::path(toVariant(fileURL("/").get())));
  EXPECT_EQ(1, standin::callCount("FolderItemFromFSSpec") - before);
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

TEST_F(Files, NamesOf255UnitsAreKeptAndLongerOnesAreCutTo255) {
  start();
  const std::string longest(255, 'n');
  EXPECT_EQ(path(longest), host::path(toVariant(fileURL(path(longest)).get())));
  EXPECT_EQ(path(longest), host::path(toVariant(fileURL(path(longest + "n")).get())));
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

TEST_F(Files, AParentWithAnEmptyNameGoesOnToTheOlderWay) {
  host::Settings settings;
  settings.leafNames = false;
  start(settings);
  EXPECT_EQ("(null)", pathOf(toURL(host::folderItem(path("new.txt")))));
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
