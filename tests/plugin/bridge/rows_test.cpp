// The table by which Core Foundation values become host values, row by row: with the row's class, without it,
// and with a class whose instances do not say that they are wrappers of CF values.
#include <algorithm>
#include <cstring>

#include "tests/plugin/bridge/rows.h"

namespace {

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

bool isTypeTest(const std::string& call) {
  return call.ends_with("TypeID");
}

// The calls by which a value is found to be that row's. From row 22 on there is a second list.
Calls typeTestsUpTo(const Row& last) {
  Calls tests;
  for (const Row& row : rows()) {
    if (row.number == 1 || row.number == 22) tests.push_back("CFGetTypeID");
    if (row.type) tests.push_back(std::string(row.type) + "GetTypeID");
    if (row.number == last.number) break;
  }
  return tests;
}

class Rows : public BridgeTest, public testing::WithParamInterface<Row> {
 protected:
  void SetUp() override {
    startWith(listening);
    asked.clear();
  }

  static const char* className() { return GetParam().className; }
  static bool isAnyOther() { return strcmp(className(), kAny) == 0; }

  static Calls typeTests() { return typeTestsUpTo(GetParam()); }
  Calls callsOfConversion() {
    const CFOwner value = GetParam().make();
    void* result = nullptr;
    const Calls calls = conversionCallsOf([&] { result = toVariantAlone(value.get()); });
    fromPlugin(result);
    return calls;
  }
  void expectTypeTestsThen(const Calls& others) {
    Calls expected = typeTests();
    expected.insert(expected.end(), others.begin(), others.end());
    EXPECT_EQ(expected, callsOfConversion());
  }

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
  EXPECT_EQ(Texts{className()}, asked);
}

TEST_P(NativeRows, AreTestedForAfterAllRowsBefore) {
  Calls calls = callsOfConversion();
  calls.erase(std::find_if_not(calls.begin(), calls.end(), isTypeTest), calls.end());
  EXPECT_EQ(typeTests(), calls);
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

// The earlier row's test is the first of the two.
TEST_P(ShadowedRows, AreReachedWhenTheEarlierRowsTestFails) {
  host::addWrapperClass(className(), true);
  const CFOwner value = GetParam().make();
  standin::failCall((std::string(GetParam().type) + "GetTypeID").c_str(), 1);
  EXPECT_EQ(value.get(), host::wrapped(toVariant(value.get())));
  EXPECT_EQ(Texts{className()}, asked);
}

INSTANTIATE_TEST_SUITE_P(Table, ShadowedRows, testing::ValuesIn(rowsOf(Treatment::shadowed)));

// Plain wrappers

class PlainRows : public Rows {};

TEST_P(PlainRows, BecomeWrappersOfTheirClass) {
  host::addWrapperClass(className(), true);
  expectWrapper(className());
  EXPECT_EQ(Texts{className()}, asked);
}

TEST_P(PlainRows, AreNilWithoutTheirClassEvenWhenCFObjectIsThere) {
  host::addWrapperClass(kAny, true);
  expectNil();
  EXPECT_EQ(Texts{className()}, asked);
}

TEST_P(PlainRows, AreNilWithoutAnyClass) {
  expectNil();
  EXPECT_EQ(Texts{className()}, asked);
}

TEST_P(PlainRows, GetTheTagWhenTheirClassDoesNotGiveIt) {
  host::addWrapperClass(className(), false);
  expectWrapper(className());
}

// PostScript converters have none.
TEST_P(PlainRows, AreTestedForAfterAllRowsBeforeAndRetainedByTheirTypesOwnFunction) {
  host::addWrapperClass(className(), true);
  const std::string type = GetParam().type;
  expectTypeTestsThen({"PluginNewInstance", type == "CGPSConverter" ? "CFRetain" : type + "Retain"});
}

INSTANTIATE_TEST_SUITE_P(Table, PlainRows, testing::ValuesIn(rowsOf(Treatment::plain)));

// Checked wrappers

class CheckedRows : public Rows {};

TEST_P(CheckedRows, BecomeWrappersOfTheirClass) {
  host::addWrapperClass(className(), true);
  expectWrapper(className());
  EXPECT_EQ(Texts{className()}, asked);
}

TEST_P(CheckedRows, BecomeCFObjectsWithoutTheirClass) {
  host::addWrapperClass(kAny, true);
  expectWrapper(kAny);
  EXPECT_EQ(isAnyOther() ? Names{kAny} : Names({className(), kAny}), asked);
}

// For the last row that is the same name twice.
TEST_P(CheckedRows, AreNilWithoutAnyClassAfterAskingForTwo) {
  expectNil();
  EXPECT_EQ((Texts{className(), kAny}), asked);
}

TEST_P(CheckedRows, AreNilWhenTheirClassDoesNotGiveTheTagEvenWhenCFObjectIsThere) {
  if (!isAnyOther()) host::addWrapperClass(kAny, true);
  host::addWrapperClass(className(), false);
  expectNil();
  EXPECT_EQ(Texts{className()}, asked);
  expectInstanceLeftBehind();
}

TEST_P(CheckedRows, AreNilWithoutTheirClassWhenCFObjectDoesNotGiveTheTag) {
  host::addWrapperClass(kAny, false);
  expectNil();
  expectInstanceLeftBehind();
}

TEST_P(CheckedRows, AreTestedForAfterAllRowsBeforeAndRetained) {
  host::addWrapperClass(className(), true);
  expectTypeTestsThen({"PluginNewInstance", "CFRetain"});
}

INSTANTIATE_TEST_SUITE_P(Table, CheckedRows, testing::ValuesIn(rowsOf(Treatment::checked)));

class OldSystem : public BridgeTest {};

TEST_F(OldSystem, WithoutRunDelegatesAValueOfAnUnknownTypeIsStillACFObject) {
  if (!isMachO()) GTEST_SKIP() << "only the loader of the dylib can take a function away";
  start({}, {"CTRunDelegateGetTypeID"});
  host::addWrapperClass(kAny, true);
  const void* const value = CFNotificationCenterGetLocalCenter();
  EXPECT_EQ(value, host::wrapped(toVariant(value)));
}

}  // namespace
