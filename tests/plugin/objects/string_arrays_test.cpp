// Arrays of strings, both ways.
#include <cmath>

#include "bridge/strings.h"
#include "tests/plugin/objects/fixture.h"

namespace {

class StringArrays : public ObjectsTest {};

std::string utf8(CFStringRef text) {
  char buffer[1000] = {};
  EXPECT_TRUE(CFStringGetCString(text, buffer, sizeof buffer, kCFStringEncodingUTF8));
  return buffer;
}

std::vector<std::string> textsOf(CFArrayRef array) {
  std::vector<std::string> texts;
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
    texts.push_back(utf8(static_cast<CFStringRef>(CFArrayGetValueAtIndex(array, i))));
  }
  return texts;
}

Owned<CFArrayRef> cfArray(std::vector<const void*> values, const CFArrayCallBacks* callBacks) {
  return adopt(CFArrayCreate(nullptr, values.data(), static_cast<CFIndex>(values.size()), callBacks));
}

struct HostCase {
  double version;
  bool storage;
};
void PrintTo(const HostCase& row, std::ostream* out) {
  *out << "host " << row.version << (row.storage ? ", storage" : ", no storage");
}

class NewStringArray : public ObjectsTest, public testing::WithParamInterface<HostCase> {
 protected:
  void SetUp() override {
    host::Settings settings =
        GetParam().version < 2012.0 ? host::oldHost(GetParam().version) : host::Settings();
    settings.version = GetParam().version;
    settings.directArrayStorage = GetParam().storage;
    start(settings);
  }
};

TEST_P(NewStringArray, HasEveryStringInOrder) {
  const auto array = host::stringArray({"one", "caf\xC3\xA9", "three"});
  const auto result = NewCFStringArray(objectHandle(array));
  ASSERT_TRUE(result);
  EXPECT_EQ((std::vector<std::string>{"one", "caf\xC3\xA9", "three"}), textsOf(result.get()));
}

TEST_P(NewStringArray, HasTheEmptyStringForANullOne) {
  const auto array = host::stringArrayOf({host::Value("a"), host::Value(), host::Value("b")});
  const auto result = NewCFStringArray(objectHandle(array));
  ASSERT_TRUE(result);
  EXPECT_EQ((std::vector<std::string>{"a", "", "b"}), textsOf(result.get()));
}

TEST_P(NewStringArray, OfAnEmptyArrayIsEmpty) {
  const auto array = host::stringArray({});
  const auto result = NewCFStringArray(objectHandle(array));
  ASSERT_TRUE(result);
  EXPECT_EQ(0, CFArrayGetCount(result.get()));
}

TEST_P(NewStringArray, OfNullIsNull) {
  EXPECT_FALSE(NewCFStringArray(nullptr));
}

TEST_P(NewStringArray, IsNullWithoutMemory) {
  const auto array = host::stringArray({"a"});
  standin::failCall("CFArrayCreateMutable", 1);
  EXPECT_FALSE(NewCFStringArray(objectHandle(array)));
  EXPECT_EQ(1, standin::failuresFired());
}

// Elements are taken from the array's storage on hosts up to 2013.9 that show it, and asked for on all
// others.
TEST_P(NewStringArray, TakesElementsFromStorageOnlyWhereItMay) {
  const auto array = host::stringArray({"a", "b"});
  standin::countCalls();
  NewCFStringArray(objectHandle(array));
  const bool direct = GetParam().storage && GetParam().version <= 2013.9;
  EXPECT_EQ(direct ? 0 : 2, standin::callCount("RuntimeDirectReadStringArray"));
}

INSTANTIATE_TEST_SUITE_P(Hosts, NewStringArray,
                         testing::Values(HostCase{2009.05, true}, HostCase{2011.04, true},
                                         HostCase{2011.04, false}, HostCase{2012.0, true},
                                         HostCase{2013.9, true}, HostCase{2013.9, false},
                                         HostCase{2014.1, false}, HostCase{std::nan(""), true}));

TEST_F(StringArrays, AStorageElementIsLockedReadAndUnlocked) {
  host::Settings settings;
  settings.version = 2013.9;
  start(settings);
  const auto array = host::stringArray({"a"});
  const auto calls = callsOf([&] { NewCFStringArray(objectHandle(array)).reset(); });
  EXPECT_EQ(
      (std::vector<std::string>{"resolve RuntimeUBound", "RuntimeUBound", "CFArrayCreateMutable",
                                "resolve REALLockString", "REALLockString", "resolve REALGetStringCFString",
                                "REALGetStringCFString", "CFArrayAppendValue",
                                "CFRelease",  // the element's text
                                "resolve REALUnlockString", "REALUnlockString", "CFRelease"}),  // the array
      calls);
}

TEST_F(StringArrays, WithoutTheUpperBoundOneElementIsRead) {
  host::Settings settings;
  settings.hidden = {"RuntimeUBound"};
  start(settings);
  const auto array = host::stringArray({"a", "b"});
  EXPECT_EQ(std::vector<std::string>{"a"}, textsOf(NewCFStringArray(objectHandle(array)).get()));
}

TEST_F(StringArrays, AddingSkipsNullElementsWithoutLeavingHoles) {
  start();
  const auto array = host::stringArray({});
  const auto strings = cfArray({CFSTR("a"), nullptr, CFSTR("b"), nullptr, CFSTR("c")}, nullptr);
  AddStringArray(objectHandle(array), strings.get());
  EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), host::texts(array));
}

TEST_F(StringArrays, AddingKeepsAPlaceForTheEmptyString) {
  start();
  const auto array = host::stringArray({});
  AddStringArray(objectHandle(array),
                 cfArray({CFSTR("a"), CFSTR(""), CFSTR("c")}, &kCFTypeArrayCallBacks).get());
  EXPECT_EQ((std::vector<std::string>{"a", "", "c"}), host::texts(array));
}

TEST_F(StringArrays, AddingAsksForTheInsertProcedureForEveryElement) {
  start();
  const auto array = host::stringArray({});
  const auto strings = cfArray({CFSTR("a"), CFSTR("b"), CFSTR("c")}, &kCFTypeArrayCallBacks);
  standin::countCalls();
  AddStringArray(objectHandle(array), strings.get());
  EXPECT_EQ(3, standin::callCount("RuntimeArrayDirectGetInsertProc"));
}

TEST_F(StringArrays, AddingWithoutAnInsertProcedureAddsNothing) {
  host::Settings settings;
  settings.insertProcedures = false;
  start(settings);
  const auto array = host::stringArray({});
  AddStringArray(objectHandle(array), cfArray({CFSTR("a")}, &kCFTypeArrayCallBacks).get());
  EXPECT_EQ(std::vector<std::string>(), host::texts(array));
}

TEST_F(StringArrays, AddingToANullArrayDoesNothing) {
  start();
  standin::countCalls();
  AddStringArray(nullptr, cfArray({CFSTR("a")}, &kCFTypeArrayCallBacks).get());
  EXPECT_EQ(0, standin::callCount("RuntimeArrayDirectGetInsertProc"));
}

}  // namespace
