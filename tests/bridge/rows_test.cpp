// The table by which Core Foundation values become host values, row by row: with the row's class, without it,
// and with a class whose instances do not say that they are wrappers of CF values.
#include <cstring>

#include "tests/bridge/rows.h"

namespace {

using testing::ElementsAre;

const uint32_t kTag = 0x52424346;
const char* const kAny = "CFObjectZNK";

typedef std::vector<std::string> Names;

// The classes of which the plug-in asked for instances, in order.
Names asked;

void* newInstance(const char* className) {
  asked.push_back(className);
  return reinterpret_cast<void* (*)(const char*)>(host::resolve("PluginNewInstance"))(className);
}
void* listening(const char* name) {
  return strcmp(name, "PluginNewInstance") == 0 ? reinterpret_cast<void*>(newInstance) : host::resolve(name);
}

class Rows : public BridgeTest, public testing::WithParamInterface<Row> {
 protected:
  void SetUp() override {
    start({}, {}, listening);
    asked.clear();
  }

  static const char* className() { return GetParam().className; }
  static bool isAnyOther() { return strcmp(className(), kAny) == 0; }

  // Converts the row's value. The result holds so many references to it, and gives them back at its end.
  template <typename Check>
  void expectReferences(CFIndex references, Check check) {
    const CFOwner value = GetParam().make();
    ASSERT_NE(nullptr, value);
    const CFIndex before = CFGetRetainCount(value.get());
    {
      const host::Value variant = toVariant(value.get());
      EXPECT_EQ(before + references, CFGetRetainCount(value.get()));
      check(variant, value.get());
    }
    EXPECT_EQ(before, CFGetRetainCount(value.get()));
  }
  void expectNil() {
    expectReferences(0, [](const host::Value& variant, const void*) { EXPECT_TRUE(variant.isNil()); });
  }
  void expectWrapper(const char* ofClass) {
    expectReferences(1, [ofClass](const host::Value& variant, const void* value) {
      ASSERT_FALSE(variant.isNil());
      EXPECT_TRUE(host::isA(variant, ofClass));
      EXPECT_EQ(value, host::wrapped(variant));
      EXPECT_EQ(kTag, host::wrapperTag(variant));
    });
  }
  void expectNative() {
    expectReferences(0, [](const host::Value& variant, const void*) {
      EXPECT_EQ(GetParam().outcome, variant.describe());
    });
    for (const std::string& name : asked) EXPECT_FALSE(name.ends_with("ZNK")) << name;
  }
  // The instance that was asked for last: neither filled nor given back.
  void expectInstanceLeftBehind() { expectLeftBehind({"host object " + asked.back()}); }
};

// The host's own values need no class of the family.

class NativeRows : public Rows {};

TEST_P(NativeRows, BecomeValuesOfTheHost) {
  expectNative();
}

TEST_P(NativeRows, DoSoWhateverCFObjectIs) {
  host::addWrapperClass(kAny, true);
  expectNative();
}

TEST_P(NativeRows, AreNilWithoutTheHostsClassWhereTheyNeedOne) {
  if (!className()) return expectNative();
  host::settings().unknownClasses = {className()};
  expectNil();
  EXPECT_THAT(asked, ElementsAre(className()));
}

INSTANTIATE_TEST_SUITE_P(Table, NativeRows, testing::ValuesIn(rowsOf(Treatment::native)));

// Rows whose type an earlier row has: nothing about their class changes what becomes of the value.

class ShadowedRows : public Rows {};

TEST_P(ShadowedRows, AreNeverReachedWhenTheirClassIsThere) {
  host::addWrapperClass(className(), true);
  expectNative();
}

TEST_P(ShadowedRows, AreNeverReachedWhenTheirClassIsNotGenuine) {
  host::addWrapperClass(className(), false);
  expectNative();
}

TEST_P(ShadowedRows, AreNeverReachedWhenOnlyCFObjectIsThere) {
  host::addWrapperClass(kAny, true);
  expectNative();
}

TEST_P(ShadowedRows, AreNeverReachedWhenNoClassOfTheFamilyIsThere) {
  expectNative();
}

INSTANTIATE_TEST_SUITE_P(Table, ShadowedRows, testing::ValuesIn(rowsOf(Treatment::shadowed)));

// Plain wrappers

class PlainRows : public Rows {};

TEST_P(PlainRows, BecomeWrappersOfTheirClass) {
  host::addWrapperClass(className(), true);
  expectWrapper(className());
  EXPECT_THAT(asked, ElementsAre(className()));
}

TEST_P(PlainRows, AreNilWithoutTheirClassEvenWhenCFObjectIsThere) {
  host::addWrapperClass(kAny, true);
  expectNil();
  EXPECT_THAT(asked, ElementsAre(className()));
}

TEST_P(PlainRows, AreNilWithoutAnyClass) {
  expectNil();
  EXPECT_THAT(asked, ElementsAre(className()));
}

TEST_P(PlainRows, GetTheTagWhenTheirClassDoesNotGiveIt) {
  host::addWrapperClass(className(), false);
  expectWrapper(className());
}

INSTANTIATE_TEST_SUITE_P(Table, PlainRows, testing::ValuesIn(rowsOf(Treatment::plain)));

// Checked wrappers

class CheckedRows : public Rows {};

TEST_P(CheckedRows, BecomeWrappersOfTheirClass) {
  host::addWrapperClass(className(), true);
  expectWrapper(className());
  EXPECT_THAT(asked, ElementsAre(className()));
}

TEST_P(CheckedRows, BecomeCFObjectsWithoutTheirClass) {
  host::addWrapperClass(kAny, true);
  expectWrapper(kAny);
  EXPECT_EQ(isAnyOther() ? Names{kAny} : Names({className(), kAny}), asked);
}

// For the last row that is the same name twice.
TEST_P(CheckedRows, AreNilWithoutAnyClassAfterAskingForTwo) {
  expectNil();
  EXPECT_THAT(asked, ElementsAre(className(), kAny));
}

TEST_P(CheckedRows, AreNilWhenTheirClassDoesNotGiveTheTagEvenWhenCFObjectIsThere) {
  if (!isAnyOther()) host::addWrapperClass(kAny, true);
  host::addWrapperClass(className(), false);
  expectNil();
  EXPECT_THAT(asked, ElementsAre(className()));
  expectInstanceLeftBehind();
}

TEST_P(CheckedRows, AreNilWithoutTheirClassWhenCFObjectDoesNotGiveTheTag) {
  host::addWrapperClass(kAny, false);
  expectNil();
  expectInstanceLeftBehind();
}

INSTANTIATE_TEST_SUITE_P(Table, CheckedRows, testing::ValuesIn(rowsOf(Treatment::checked)));

TEST(Table, HasOneRowForEachNumberFrom1To48) {
  for (size_t i = 0; i < rows().size(); ++i) EXPECT_EQ(static_cast<int>(i) + 1, rows()[i].number);
  EXPECT_EQ(48u, rows().size());
}

// Shadowed is what has the type of an earlier row.
TEST(Table, ShadowsTheRowsOfTypesThatItHasHadBefore) {
  std::set<CFTypeID> had;
  for (const Row& row : rows()) {
    const bool isNew = had.insert(CFGetTypeID(row.make().get())).second;
    EXPECT_EQ(row.treatment == Treatment::shadowed, !isNew) << testing::PrintToString(row);
  }
}

class OldSystem : public BridgeTest {};

TEST_F(OldSystem, WithoutRunDelegatesAValueOfAnUnknownTypeIsStillACFObject) {
  if (!isMachO()) GTEST_SKIP() << "only the loader of the dylib can take a function away";
  start({}, {"CTRunDelegateGetTypeID"});
  host::addWrapperClass(kAny, true);
  const void* const value = CFNotificationCenterGetLocalCenter();
  EXPECT_EQ(value, host::wrapped(toVariant(value)));
}

}  // namespace
