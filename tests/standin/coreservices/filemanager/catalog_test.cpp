#include <filesystem>

#include "tests/standin/coreservices/filemanager/fixture.h"

namespace {

// The catalogue's structures are packed: a field is read (+) before it is compared by reference.
class Catalog : public FileManagerTest {
 protected:
  static UInt32 nodeOf(const FSRef& ref) {
    FSCatalogInfo info{};
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr), noErr);
    return info.nodeID;
  }
  static FSSpec specOf(const FSRef& ref) {
    FSSpec fileSpec{};
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &fileSpec, nullptr), noErr);
    return fileSpec;
  }
  static std::string nameIn(const FSSpec& fileSpec) {
    return {reinterpret_cast<const char*>(fileSpec.name) + 1, fileSpec.name[0]};
  }
};

constexpr FSRef kZero{};

TEST_F(Catalog, KnowsAFilesNameAndParent) {
  add("tides.csv");
  const FSRef ref = mustRef(path("tides.csv"));
  HFSUniStr255 name;
  FSRef parent;
  ASSERT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, nullptr, &parent), noErr);
  EXPECT_EQ(textOf(name), "tides.csv");
  EXPECT_TRUE(same(parent, mustRef(folder())));
  EXPECT_EQ(pathOf(parent), folder());
}

TEST_F(Catalog, GivesEachFileANodeOfItsOwnThatStays) {
  add("a");
  add("b");
  const FSRef a = mustRef(path("a")), b = mustRef(path("b"));
  EXPECT_NE(nodeOf(a), nodeOf(b));
  EXPECT_EQ(nodeOf(a), nodeOf(mustRef(path("a"))));
  EXPECT_GE(nodeOf(a), 16U);
  FSCatalogInfo info{};
  ASSERT_EQ(FSGetCatalogInfo(&a, kFSCatInfoParentDirID | kFSCatInfoVolume | kFSCatInfoNodeFlags, &info,
                             nullptr, nullptr, nullptr),
            noErr);
  EXPECT_EQ(+info.parentDirID, nodeOf(mustRef(folder())));
  EXPECT_EQ(info.volume, -100);
  EXPECT_EQ(info.nodeFlags, 0);
  EXPECT_EQ(+info.nodeID, 0U);  // not asked for
  const FSRef parent = mustRef(folder());
  ASSERT_EQ(FSGetCatalogInfo(&parent, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr), noErr);
  EXPECT_EQ(info.nodeFlags, kFSNodeIsDirectoryMask);
}

TEST_F(Catalog, TheRootHasNodeTwoAndNoParent) {
  const FSRef root = mustRef("/");
  FSCatalogInfo info{};
  FSRef parent = root;
  ASSERT_EQ(FSGetCatalogInfo(&root, kFSCatInfoNodeID, &info, nullptr, nullptr, &parent), noErr);
  EXPECT_EQ(+info.nodeID, UInt32{fsRtDirID});
  EXPECT_TRUE(same(parent, kZero));
  EXPECT_EQ(FSGetCatalogInfo(&parent, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), fnfErr);
}

TEST_F(Catalog, TheRootIsNamedByAnFSSpecAndFoundByIt) {
  const FSRef root = mustRef("/");
  const FSSpec fileSpec = specOf(root);
  EXPECT_EQ(fileSpec.vRefNum, -100);
  EXPECT_EQ(+fileSpec.parID, fsRtParID);
  EXPECT_EQ(nameIn(fileSpec), "/");
  FSRef found;
  ASSERT_EQ(FSpMakeFSRef(&fileSpec, &found), noErr);
  EXPECT_TRUE(same(found, root));
}

TEST_F(Catalog, AnyFileIsNamedByAnFSSpecAndFoundByIt) {
  add("Café.txt");
  const FSRef ref = mustRef(path("Café.txt"));
  const FSSpec fileSpec = specOf(ref);
  EXPECT_EQ(nameIn(fileSpec), "Caf\x8E.txt");
  FSRef found;
  ASSERT_EQ(FSpMakeFSRef(&fileSpec, &found), noErr);
  EXPECT_TRUE(same(found, ref));
}

TEST_F(Catalog, ANameThatAnFSSpecCantHoldIsAnError) {
  const std::string names[] = {"東京.txt", std::string(64, 'n')};
  for (const std::string& name : names) {
    add(name);
    const FSRef ref = mustRef(path(name));
    FSSpec fileSpec{};
    fileSpec.parID = 7;
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &fileSpec, nullptr), bdNamErr) << name;
    EXPECT_EQ(+fileSpec.parID, 7) << name;
  }
}

TEST_F(Catalog, FSSpecsOfNothingAreErrors) {
  FSRef found;
  FSSpec fileSpec = specOf(mustRef("/"));
  fileSpec.vRefNum = -101;
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), nsvErr);
  fileSpec = specOf(mustRef("/"));
  fileSpec.name[1] = 'x';
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), fnfErr);
  fileSpec.parID = 0x7FFFFFFF;
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), dirNFErr);
  fileSpec.parID = 3;
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), dirNFErr);
  fileSpec.parID = fsRtDirID;
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), fnfErr);
  fileSpec.name[0] = 0;
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), bdNamErr);
  fileSpec.name[0] = 64;
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), bdNamErr);
  EXPECT_EQ(FSpMakeFSRef(nullptr, &found), paramErr);
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, nullptr), paramErr);
}

TEST_F(Catalog, AFileThatIsGoneIsNotFound) {
  add("short-lived");
  const FSRef ref = mustRef(path("short-lived"));
  const FSSpec fileSpec = specOf(ref);
  std::filesystem::remove(path("short-lived"));
  HFSUniStr255 name;
  EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr), fnfErr);
  FSRef found;
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), fnfErr);
}

TEST_F(Catalog, WithoutAReferenceOrAPlaceForTheInformationIsAnError) {
  const FSRef root = mustRef("/");
  EXPECT_EQ(FSGetCatalogInfo(nullptr, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), paramErr);
  EXPECT_EQ(FSGetCatalogInfo(&root, kFSCatInfoNodeID, nullptr, nullptr, nullptr, nullptr), paramErr);
}

TEST_F(Catalog, ACallThatIsChosenToFailStoresNothing) {
  const FSRef root = mustRef("/");
  const FSSpec fileSpec = specOf(root);
  FSCatalogInfo info{};
  standin::failCall("FSGetCatalogInfo", 1);
  EXPECT_EQ(FSGetCatalogInfo(&root, kFSCatInfoNodeID, &info, nullptr, nullptr, nullptr), fnfErr);
  EXPECT_EQ(+info.nodeID, 0U);
  FSRef found = kZero;
  standin::failCall("FSpMakeFSRef", 1);
  EXPECT_EQ(FSpMakeFSRef(&fileSpec, &found), fnfErr);
  EXPECT_TRUE(same(found, kZero));
}

using CatalogDeathTest = Catalog;

TEST_F(CatalogDeathTest, BytesThatNobodyFilledAndInformationThatIsNotKeptEndTheProcess) {
  FSRef junk;
  std::memset(&junk, 7, sizeof junk);
  EXPECT_DEATH(FSGetCatalogInfo(&junk, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr),
               "FSGetCatalogInfo: no call of this process has filled this FSRef");
  const FSRef root = mustRef("/");
  FSCatalogInfo info;
  EXPECT_DEATH(FSGetCatalogInfo(&root, kFSCatInfoGettableInfo, &info, nullptr, nullptr, nullptr),
               "FSGetCatalogInfo: information is asked for");
}

}  // namespace
