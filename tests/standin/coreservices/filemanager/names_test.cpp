// Names that the Mac's file systems and Linux's treat differently.
#include "tests/standin/coreservices/filemanager/fixture.h"

namespace {

using Names = FileManagerTest;

constexpr const char* kComposed = "Caf\u00e9";
constexpr const char* kDecomposed = "Cafe\u0301";

TEST_F(Names, AFileIsFoundUnderTheOtherUnicodeForm) {
  scratch.folder(kComposed);
  add(std::string(kComposed) + "/" + kDecomposed);
  const std::string real = path(std::string(kComposed) + "/" + kDecomposed);
  for (const char* folder : {kComposed, kDecomposed}) {
    for (const char* file : {kComposed, kDecomposed}) {
      EXPECT_EQ(pathOf(mustRef(path(std::string(folder) + "/" + file))), real) << folder << '/' << file;
    }
  }
}

TEST_F(Names, OfTwoFilesThatDifferInTheirFormOnlyEachIsFoundUnderItsOwn) {
  add(kComposed);
  add(kDecomposed);
  EXPECT_EQ(pathOf(mustRef(path(kComposed))), path(kComposed));
  EXPECT_EQ(pathOf(mustRef(path(kDecomposed))), path(kDecomposed));
}

TEST_F(Names, TheCatalogueTellsTheFormThatIsOnTheDisk) {
  add(kComposed);
  const FSRef ref = mustRef(path(kDecomposed));
  HFSUniStr255 name;
  ASSERT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr), noErr);
  EXPECT_EQ(name.length, 4);
}

TEST_F(Names, ADecomposedNameTooLongForLinuxIsFoundComposed) {
  std::string composed, decomposed;
  for (int i = 0; i < 100; ++i) {
    composed += "\u00e9";     // 2 bytes
    decomposed += "e\u0301";  // 3 bytes
  }
  add(composed);
  EXPECT_EQ(pathOf(mustRef(path(decomposed))), path(composed));
}

TEST_F(Names, The255thUnitIsTheLast) {
  const std::string longest(255, 'n');
  add(longest);
  const FSRef ref = mustRef(path(longest));
  HFSUniStr255 name;
  ASSERT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr), noErr);
  EXPECT_EQ(name.length, 255);
  FSRef untouched{};
  EXPECT_FALSE(refOf(path(longest + "n"), untouched));
  EXPECT_EQ(untouched.hidden[0], 0);
}

TEST_F(Names, ANameThatIsNoTextIsFoundButHasNoNameInTheCatalogue) {
  for (const char* const bad : {"bad\xFF", "\xA9", "bad\xA9", "\xEF\xBB\xBFmarked"}) {
    add(bad);
    const FSRef ref = mustRef(path(bad));
    HFSUniStr255 name;
    FSSpec fileSpec;
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, &name, nullptr, nullptr), bdNamErr) << bad;
    EXPECT_EQ(FSGetCatalogInfo(&ref, kFSCatInfoNone, nullptr, nullptr, &fileSpec, nullptr), bdNamErr) << bad;
  }
  FSRef none;
  EXPECT_FALSE(refOf(path("missing\xFF"), none));
}

TEST_F(Names, ANameThatIsNoTextFindsNoFileThatIsNamedAsItReads) {
  add("\uFFFD");
  add("marked");
  FSRef none;
  EXPECT_FALSE(refOf(path("\xA9"), none));
  EXPECT_FALSE(refOf(path("\xEF\xBB\xBFmarked"), none));
}

TEST_F(Names, AllPathsOfOneFileGiveTheSameReference) {
  scratch.folder("folder");
  add("folder/file");
  scratch.link("link", "folder");
  const FSRef file = mustRef(path("folder/file"));
  EXPECT_TRUE(same(file, mustRef(path("link/file"))));
  EXPECT_TRUE(same(file, mustRef(path("folder/../folder/./file"))));
  EXPECT_TRUE(same(mustRef("/"), mustRef("/tmp/..")));
  EXPECT_TRUE(same(mustRef(folder()), mustRef(path("folder/.."))));
}

TEST_F(Names, ALinkIsAFileOfItsOwnEvenWhenItLeadsNowhere) {
  scratch.link("link", "nowhere");
  EXPECT_EQ(pathOf(mustRef(path("link"))), path("link"));
}

TEST_F(Names, MissingFilesAndForeignURLsHaveNoReference) {
  FSRef ref{};
  EXPECT_FALSE(refOf(path("missing"), ref));
  EXPECT_FALSE(refOf(path("missing/file"), ref));
  const auto text = makeString("http://localhost" + folder());
  EXPECT_FALSE(CFURLGetFSRef(Owned(CFURLCreateWithString(nullptr, text.get(), nullptr)).get(), &ref));
}

}  // namespace
