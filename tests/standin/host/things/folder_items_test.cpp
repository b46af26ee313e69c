#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CarbonCore/Files.h>

#include "tests/standin/host/fake_plugin.h"
#include "tests/support/scratch_folder.h"

namespace fake {
namespace {

bool reference(const host::Value& item, FSRef& ref, HFSUniStr255* name) {
  return entry<bool(Object, FSRef*, HFSUniStr255*)>("REALFSRefFromFolderItem")(item.handle(), &ref, name);
}

bool fsSpecOf(const host::Value& item, FSSpec& fsSpec) {
  return entry<bool(FSSpec*, Object)>("REALFSSpecFromFolderItem")(&fsSpec, item.handle());
}

std::string pathOf(const FSRef& ref) {
  const CFURLRef url = CFURLCreateFromFSRef(nullptr, &ref);
  UInt8 path[4096] = {};
  CFURLGetFileSystemRepresentation(url, true, path, sizeof path);
  CFRelease(url);
  std::string text = reinterpret_cast<const char*>(path);
  if (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

std::u16string textOf(const HFSUniStr255& name) {
  return {reinterpret_cast<const char16_t*>(name.unicode), name.length};
}

HFSUniStr255 nameOf(const std::u16string& text) {
  HFSUniStr255 name{};
  name.length = static_cast<UInt16>(text.size());
  std::copy(text.begin(),
            text.begin() + std::min<std::ptrdiff_t>(255, static_cast<std::ptrdiff_t>(text.size())),
            name.unicode);
  return name;
}

// The item as host code gets it.
host::Value taken(Object item) {
  const auto array = host::objectArray({});
  insertObject(array.handle(), 0, item);
  unlockObject(item);
  return host::elements(array)[0];
}

class FolderItems : public HostTest {
 protected:
  FolderItems() {
    GTEST_FLAG_SET(death_test_style, "fast");
    scratch.file("file", "x");
  }

  host::Value item(const std::string& name) const { return host::folderItem(scratch.at(name)); }
  FSRef folderReference() const {
    FSRef ref;
    EXPECT_TRUE(reference(host::folderItem(scratch.path()), ref, nullptr));
    return ref;
  }
  Object make(const std::u16string& name) const {
    const FSRef parent = folderReference();
    const HFSUniStr255 leaf = nameOf(name);
    return entry<Object(const FSRef*, const HFSUniStr255*)>("REALFolderItemFromParentFSRef")(&parent, &leaf);
  }

  const ScratchFolder scratch;
};

TEST_F(FolderItems, GiveTheReferenceOfWhatIsThere) {
  FSRef ref;
  ASSERT_TRUE(reference(item("file"), ref, nullptr));
  EXPECT_EQ(pathOf(ref), scratch.at("file"));
  EXPECT_FALSE(reference(item("none"), ref, nullptr));
  EXPECT_FALSE(reference(host::newInstance("FolderItem"), ref, nullptr));
}

TEST_F(FolderItems, GiveTheReferenceOfTheirParentAndTheirName) {
  for (const char* const name : {"file", "none"}) {
    FSRef ref;
    HFSUniStr255 leaf{};
    ASSERT_TRUE(reference(item(name), ref, &leaf)) << name;
    EXPECT_EQ(pathOf(ref), scratch.path()) << name;
    EXPECT_EQ(textOf(leaf), std::u16string(name, name + 4));
  }
  FSRef ref;
  HFSUniStr255 leaf{};
  EXPECT_FALSE(reference(item("none/none"), ref, &leaf));
  EXPECT_FALSE(reference(host::folderItem("/"), ref, &leaf));
  ASSERT_TRUE(reference(host::folderItem("/none/"), ref, &leaf));
  EXPECT_EQ(pathOf(ref), "/");
  EXPECT_EQ(textOf(leaf), u"none");
}

TEST_F(FolderItems, KeepTheirNamesComposedOrDecomposed) {
  FSRef ref;
  HFSUniStr255 leaf{};
  ASSERT_TRUE(reference(item("\xC3\xA9"), ref, &leaf));
  EXPECT_EQ(textOf(leaf), u"\u00E9");
  ASSERT_TRUE(reference(item("e\xCC\x81"), ref, &leaf));
  EXPECT_EQ(textOf(leaf), u"e\u0301");
}

TEST_F(FolderItems, HaveNamesOf255UnitsAtMost) {
  FSRef ref;
  HFSUniStr255 leaf{};
  EXPECT_TRUE(reference(item(std::string(255, 'a')), ref, &leaf));
  EXPECT_EQ(leaf.length, 255);
  EXPECT_FALSE(reference(item(std::string(256, 'a')), ref, &leaf));
}

TEST_F(FolderItems, AreMadeOfAParentAndAName) {
  EXPECT_EQ(host::path(taken(make(u"file"))), scratch.at("file"));
  EXPECT_EQ(host::path(taken(make(u"\u00E9"))), scratch.at("\xC3\xA9"));
  EXPECT_EQ(make(u""), nullptr);
  EXPECT_EQ(make(u"a/b"), nullptr);
  EXPECT_DEATH(make(std::u16string(256, u'a')),
               "REALFolderItemFromParentFSRef: a name of more than 255 units");
}

TEST_F(FolderItems, OfTheRootAloneHaveAnFSSpec) {
  FSSpec fsSpec;
  EXPECT_FALSE(fsSpecOf(item("file"), fsSpec));
  ASSERT_TRUE(fsSpecOf(host::folderItem("/"), fsSpec));
  const auto made = entry<Object(const FSSpec*)>("FolderItemFromFSSpec");
  EXPECT_EQ(SInt32{fsSpec.parID}, fsRtParID);  // a copy: the field is at an odd position
  EXPECT_EQ(host::path(taken(made(&fsSpec))), "/");
  const FSSpec child{-100, fsRtDirID, {3, 't', 'm', 'p'}};
  EXPECT_EQ(host::path(taken(made(&child))), "/tmp");
  const FSSpec empty{};
  EXPECT_EQ(made(&empty), nullptr);
}

TEST_F(FolderItems, AnswerAsTheSettingsSay) {
  FSRef ref;
  HFSUniStr255 leaf{};
  FSSpec fsSpec;
  host::settings().itemFSSpecs = host::Settings::ItemFSSpecs::rootForAll;
  EXPECT_TRUE(fsSpecOf(item("file"), fsSpec));
  host::settings().itemFSSpecs = host::Settings::ItemFSSpecs::none;
  EXPECT_FALSE(fsSpecOf(host::folderItem("/"), fsSpec));
  host::settings().itemReferences = false;
  EXPECT_FALSE(reference(item("file"), ref, nullptr));
  EXPECT_TRUE(reference(item("file"), ref, &leaf));
  host::settings().leafNames = false;
  EXPECT_TRUE(reference(item("file"), ref, &leaf));
  EXPECT_EQ(leaf.length, 0);
  host::settings().parentReferences = false;
  EXPECT_FALSE(reference(item("file"), ref, &leaf));
}

TEST_F(FolderItems, AreKnownByTheirMethod) {
  const auto load = entry<void*(Object, const char*)>("REALLoadObjectMethod");
  const char* const text = "TrueItem(Index as integer) as Folderitem";
  const auto folder = host::folderItem(scratch.path());
  EXPECT_EQ(load(host::dictionary().handle(), text), nullptr);
  EXPECT_EQ(load(folder.handle(), "TrueItem(index As Integer) As FolderItem"), nullptr);
  const auto trueItem = reinterpret_cast<Object (*)(Object, int32_t)>(load(folder.handle(), text));
  ASSERT_NE(trueItem, nullptr);
  EXPECT_EQ(host::path(taken(trueItem(folder.handle(), 1))), scratch.at("file"));
  EXPECT_EQ(trueItem(folder.handle(), 2), nullptr);
  EXPECT_EQ(host::takeExceptions().size(), 1u);
}

TEST_F(FolderItems, APlannedFailureGivesTheNeutralValue) {
  FSRef ref;
  FSSpec fsSpec;
  standin::failCall("REALFSRefFromFolderItem", 1);
  EXPECT_FALSE(reference(item("file"), ref, nullptr));
  standin::failCall("REALFSSpecFromFolderItem", 1);
  EXPECT_FALSE(fsSpecOf(host::folderItem("/"), fsSpec));
  standin::failCall("REALFolderItemFromParentFSRef", 1);
  EXPECT_EQ(make(u"file"), nullptr);
  ASSERT_TRUE(fsSpecOf(host::folderItem("/"), fsSpec));
  standin::failCall("FolderItemFromFSSpec", 1);
  EXPECT_EQ(entry<Object(const FSSpec*)>("FolderItemFromFSSpec")(&fsSpec), nullptr);
  standin::clearFailures();
}

TEST_F(FolderItems, AnythingElseEndsTheProcess) {
  FSRef ref;
  FSSpec fsSpec;
  const auto date = host::newInstance("Date");
  EXPECT_DEATH(reference(date, ref, nullptr),
               "REALFSRefFromFolderItem: the object Date was passed where a FolderItem is expected");
  EXPECT_DEATH(fsSpecOf(date, fsSpec),
               "REALFSSpecFromFolderItem: the object Date was passed where a FolderItem");
  const Object gone = newInstance("FolderItem");
  unlockObject(gone);
  const auto ask = entry<bool(Object, FSRef*, HFSUniStr255*)>("REALFSRefFromFolderItem");
  EXPECT_DEATH(ask(gone, &ref, nullptr), "REALFSRefFromFolderItem: use of a freed handle");
  EXPECT_DEATH(ask(host::folderItem("/").handle(), nullptr, nullptr), "a null place for the reference");
  EXPECT_THROW(host::folderItem("here"), host::CallError);
  EXPECT_THROW(host::path(date), host::CallError);
}

}  // namespace
}  // namespace fake
