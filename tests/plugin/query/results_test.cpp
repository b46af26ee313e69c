// Results as items, and the items' own properties.
#include <CoreServices/CoreServices.h>
#include <dlfcn.h>
#include <unistd.h>

#include "standin/coreservices/metadata/planned_answers.h"
#include "tests/plugin/cf_values.h"
#include "tests/plugin/fixture.h"

// Whether each attribute of every item is its own key.
static bool attributesAreTheirKeys = false;

// Found by either binary before the platform's own, which does the work.
CFTypeRef MDItemCopyAttribute(MDItemRef item, CFStringRef name) {
  static const auto original =
      reinterpret_cast<decltype(&MDItemCopyAttribute)>(dlsym(RTLD_NEXT, "MDItemCopyAttribute"));
  return attributesAreTheirKeys ? CFRetain(name) : original(item, name);
}

namespace {

class Results : public PluginTest {
 protected:
  // A query that found ten files, f0 to f9; fN has N bytes.
  host::Value found() {
    for (int i = 0; i < 10; ++i)
      tree_.file("f" + std::to_string(i), std::string(static_cast<size_t>(i), 'x'));
    return query("kMDItemFSName == \"f*\"");
  }

  host::Value query(const std::string& text) {
    standin::setIndexedFolders({tree_.path()});
    host::Value query = host::construct("MDQueryZNK", text);
    EXPECT_TRUE(host::call(query, "Execute", 1).boolean());
    return query;
  }

  ScratchFolder tree_;
};

typedef Results Items;

MDItemRef itemOf(const host::Value& item) {
  return reinterpret_cast<MDItemRef>(static_cast<intptr_t>(host::get(item, "Handle").integer()));
}

struct LimitCase {
  int32_t limit;
  size_t count;
};
void PrintTo(const LimitCase& row, std::ostream* out) {
  *out << "Results(" << row.limit << ") of 10";
}
class Limit : public Results, public testing::WithParamInterface<LimitCase> {};

TEST_P(Limit, BoundsTheResultsOnlyWhenItIsAbove0AndBelowTheCount) {
  start();
  const host::Value query = found();
  EXPECT_EQ(GetParam().count, host::elements(host::call(query, "Results", GetParam().limit)).size());
}

INSTANTIATE_TEST_SUITE_P(Numbers, Limit,
                         testing::Values(LimitCase{-1, 10}, LimitCase{0, 10}, LimitCase{3, 3},
                                         LimitCase{1, 1}, LimitCase{9, 9}, LimitCase{10, 10},
                                         LimitCase{50, 10}, LimitCase{-7, 10}, LimitCase{INT32_MIN, 10},
                                         LimitCase{INT32_MAX, 10}));

TEST_F(Results, WithoutALimitAreAllResults) {
  start();
  const host::Value query = found();
  EXPECT_EQ(10u, host::elements(host::call(query, "Results")).size());
}

TEST_F(Results, OfAQueryThatFoundNothingAreAnEmptyArrayNotNil) {
  start();
  const host::Value query = this->query("kMDItemFSName == \"none\"");
  const host::Value results = host::call(query, "Results");
  EXPECT_FALSE(results.isNil());
  EXPECT_EQ(0u, host::elements(results).size());
}

TEST_F(Results, AtAnIndexAndInTheArrayAreDifferentObjectsOfTheSameItem) {
  start();
  const host::Value query = found();
  const auto results = host::elements(host::call(query, "Results"));
  for (int32_t i = 0; i < 10; ++i) {
    const host::Value one = host::call(query, "ResultAtIndex", i);
    EXPECT_NE(one.handle(), results[static_cast<size_t>(i)].handle());
    EXPECT_TRUE(CFEqual(itemOf(one), itemOf(results[static_cast<size_t>(i)])));
    EXPECT_EQ(i, host::call(query, "IndexOfResult", one).integer());
    EXPECT_EQ(i, host::call(query, "IndexOfResult", results[static_cast<size_t>(i)]).integer());
  }
}

TEST_F(Results, OfAnotherQueryHaveNoIndex) {
  start();
  const host::Value query = found();
  const host::Value other = this->query("kMDItemFSName == \"f1\"");
  EXPECT_EQ(-1, host::call(other, "IndexOfResult", host::call(query, "ResultAtIndex", 5)).integer());
}

TEST_F(Results, IndexOfANilItemRaisesNilItem) {
  start();
  const host::Value query = found();
  EXPECT_EQ(0, host::call(query, "IndexOfResult", nullptr).integer());
  EXPECT_EQ(Exceptions{kNilItem}, host::takeExceptions());
}

TEST_F(Results, IndexOfAnItemWithoutAReferenceRaisesNilItem) {
  start();
  const host::Value query = found();
  EXPECT_EQ(0, host::call(query, "IndexOfResult", host::newInstance("MDItemZNK")).integer());
  EXPECT_EQ(Exceptions{kNilItem}, host::takeExceptions());
}

TEST_F(Results, IndexOfANilItemInAQueryWithoutAReferenceRaisesNilQuery) {
  start();
  EXPECT_EQ(0, host::call(host::newInstance("MDQueryZNK"), "IndexOfResult", nullptr).integer());
  EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
}

TEST_F(Results, ThatCantBeWrappedKeepTheirPlacesAsNil) {
  start();
  const host::Value query = found();
  standin::failCall("PluginNewInstance", 4);
  const auto results = host::elements(host::call(query, "Results"));
  ASSERT_EQ(10u, results.size());
  for (size_t i = 0; i < 10; ++i) EXPECT_EQ(i == 3, results[i].isNil()) << i;
  EXPECT_EQ(4, host::call(query, "IndexOfResult", results[4]).integer());
}

TEST_F(Results, ThatTheServiceLacksKeepTheirPlacesAsNil) {
  start();
  const host::Value query = found();
  standin::failCall("MDQueryGetResultAtIndex", 2);
  const auto results = host::elements(host::call(query, "Results"));
  ASSERT_EQ(10u, results.size());
  for (size_t i = 0; i < 10; ++i) EXPECT_EQ(i == 1, results[i].isNil()) << i;
}

TEST_F(Results, AtAnIndexAreNilWhenTheyCantBeWrapped) {
  start();
  const host::Value query = found();
  standin::failCall("PluginNewInstance", 1);
  EXPECT_TRUE(host::call(query, "ResultAtIndex", 0).isNil());
}

TEST_F(Results, AreWrappedOneByOneWithTheseCalls) {
  start();
  const host::Value query = found();
  host::call(query, "Results", 1);
  host::Value results;
  EXPECT_EQ((Calls{"RuntimeArrayCreateSingleDimBoundedArray", "MDQueryGetResultCount",
                   // for each result
                   "MDQueryGetResultAtIndex", "PluginNewInstance", "CFRetain",
                   "RuntimeArrayDirectGetInsertProc", "array insert", "REALUnlockObject",  //
                   "MDQueryGetResultAtIndex", "PluginNewInstance", "CFRetain",
                   "RuntimeArrayDirectGetInsertProc", "array insert", "REALUnlockObject"}),
            callsOf([&] { results = host::call(query, "Results", 2); }));
}

TEST_F(Results, WithoutAnInsertProcedureAreAnEmptyArray) {
  host::Settings settings;
  settings.insertProcedures = false;
  start(settings);
  const host::Value query = found();
  EXPECT_EQ(0u, host::elements(host::call(query, "Results")).size());
}

TEST_F(Results, OutliveTheirQuery) {
  start();
  host::Value query = found();
  const host::Value item = host::call(query, "ResultAtIndex", 7);
  query = {};
  EXPECT_EQ("f7", host::get(item, "FSName").text());
  EXPECT_EQ(7, host::get(item, "FSSize").integer());
}

TEST_F(Items, TellTheirNamesPathAndSize) {
  start();
  const host::Value query = found();
  const host::Value item = host::call(query, "ResultAtIndex", 5);
  EXPECT_EQ("f5", host::get(item, "DisplayName").text());
  EXPECT_EQ("f5", host::get(item, "FSName").text());
  EXPECT_EQ(tree_.at("f5"), host::get(item, "Path").text());
  EXPECT_EQ(5, host::get(item, "FSSize").integer());
  EXPECT_EQ(host::Kind::int64, host::get(item, "FSSize").kind());
}

// Of files the two names are the same.
TEST_F(Items, TellTheAttributesOfTheirPropertiesNames) {
  start();
  const host::Value query = found();
  const host::Value item = host::call(query, "ResultAtIndex", 5);
  attributesAreTheirKeys = true;
  const std::vector<std::string> told = {host::get(item, "DisplayName").text(),
                                         host::get(item, "FSName").text(), host::get(item, "Path").text()};
  attributesAreTheirKeys = false;
  EXPECT_EQ((Texts{"kMDItemDisplayName", "kMDItemFSName", "kMDItemPath"}), told);
}

TEST_F(Items, TellSizesOfMoreThan32Bits) {
  start();
  const int64_t size = int64_t{5} << 30;
  ASSERT_EQ(0, truncate(tree_.file("large").c_str(), size)) << "a file of 5 GB with nothing in it";
  const host::Value query = this->query("kMDItemFSName == \"large\"");
  EXPECT_EQ(size, host::get(host::call(query, "ResultAtIndex", 0), "FSSize").integer());
}

TEST_F(Items, HoldOneReferenceToTheirItem) {
  start();
  const host::Value query = found();
  const host::Value first = host::call(query, "ResultAtIndex", 5);
  const CFIndex count = CFGetRetainCount(itemOf(first));
  host::Value second = host::call(query, "ResultAtIndex", 5);
  EXPECT_EQ(count + 1, CFGetRetainCount(itemOf(first)));
  second = {};
  EXPECT_EQ(count, CFGetRetainCount(itemOf(first)));
}

TEST_F(Items, WithoutAReferenceHaveNilStringsAndRaiseNothing) {
  start();
  const host::Value item = host::newInstance("MDItemZNK");
  for (const char* name : {"DisplayName", "FSName", "Path"}) {
    const Calls calls = callsOf([&] { EXPECT_TRUE(host::get(item, name).isNil()) << name; });
    EXPECT_EQ(Calls(), calls);
  }
}

TEST_F(Items, WithoutAReferenceRaiseForTheirSize) {
  start();
  EXPECT_EQ(0, host::get(host::newInstance("MDItemZNK"), "FSSize").integer());
  EXPECT_EQ(Exceptions{kNilItem}, host::takeExceptions());
}

TEST_F(Items, WithoutTheAttributeHaveNilStringsAndSize0) {
  start();
  const host::Value query = found();
  const host::Value item = host::call(query, "ResultAtIndex", 5);
  for (const char* name : {"DisplayName", "FSName", "Path"}) {
    standin::failCall("MDItemCopyAttribute", 1);
    EXPECT_TRUE(host::get(item, name).isNil()) << name;
  }
  standin::failCall("MDItemCopyAttribute", 1);
  EXPECT_EQ(0, host::get(item, "FSSize").integer());
}

TEST_F(Items, WhoseSizeCantBeReadHaveSize0) {
  start();
  const host::Value query = found();
  const host::Value item = host::call(query, "ResultAtIndex", 5);
  standin::failCall("CFNumberGetValue", 1);
  EXPECT_EQ(0, host::get(item, "FSSize").integer());
  // The platform writes the whole part of this one, and says that it failed.
  standin::planAnswer("MDItemCopyAttribute", cfReal(1.5).leak());
  EXPECT_EQ(0, host::get(item, "FSSize").integer());
}

TEST_F(Items, ReadAnAttributeWithTheseCalls) {
  start();
  const host::Value query = found();
  const host::Value item = host::call(query, "ResultAtIndex", 5);
  host::get(item, "Path");
  EXPECT_EQ((Calls{"MDItemCopyAttribute", "CFStringGetLength", "CFStringGetCString", "REALBuildString",
                   "REALSetStringEncoding", "CFRelease"}),
            callsOf([&] { host::get(item, "Path"); }));
  EXPECT_EQ((Calls{"MDItemCopyAttribute", "CFNumberGetValue", "CFRelease"}),
            callsOf([&] { host::get(item, "FSSize"); }));
}

TEST_F(Items, CantBeWrittenButForHandleAndTag) {
  start();
  const host::Value item = host::newInstance("MDItemZNK");
  for (const char* name : {"DisplayName", "FSName", "Path"})
    EXPECT_THROW(host::set(item, name, "x"), host::CallError);
  EXPECT_THROW(host::set(item, "FSSize", int64_t{1}), host::CallError);
}

TEST_F(Items, TheDestructorReleasesTheItemThenUnlocksTheTag) {
  start();
  const host::Value query = found();
  host::Value item = host::call(query, "ResultAtIndex", 5);
  host::set(item, "Tag", 5);
  EXPECT_EQ((Calls{"CFRelease", "resolve REALUnlockObject", "REALUnlockObject"}),
            callsOf([&] { item = {}; }));
}

TEST_F(Items, WithoutAReferenceTheDestructorReleasesNothing) {
  start();
  host::Value item = host::newInstance("MDItemZNK");
  EXPECT_EQ(Calls(), callsOf([&] { item = {}; }));
}

TEST_F(Items, WithoutAnUnlockServiceTheTagIsLetGo) {
  host::Settings settings;
  settings.hidden = {"REALUnlockObject"};
  start(settings);
  host::Value item = host::newInstance("MDItemZNK");
  host::set(item, "Tag", 5);
  EXPECT_EQ(Calls{"resolve REALUnlockObject"}, callsOf([&] { item = {}; }));
  expectLeftBehind({"host variant 5"});
}

}  // namespace
