// The order of results, on systems with and without the functions that change it.
#include <CoreServices/CoreServices.h>

#include "standin/system/control.h"
#include "tests/plugin/item/item_fixture.h"
#include "tests/support/memory_fault.h"

namespace {

class Sorting : public PluginTest {
 protected:
  Sorting() {
    tree_.file("a", "xx");
    tree_.file("b", "x");
    tree_.file("c", "xx");
    standin::setIndexedFolders({tree_.path()});
  }

  // A plug-in that finds the three functions but those that are named. Start-up asks for them in this order.
  void startWithout(const std::vector<std::string>& missing) {
    standin::hideSymbols(missing);
    start();
  }
  void TearDown() override {
    standin::hideSymbols({});
    PluginTest::TearDown();
  }

  static host::Value query() {
    return host::construct("MDQueryZNK", "kMDItemFSName == \"*\"", nullptr,
                           host::stringArray({"kMDItemFSSize", "kMDItemFSName"}));
  }

  static std::string names(const host::Value& query) {
    std::string all;
    for (const host::Value& item : host::elements(host::call(query, "Results"))) {
      all += host::get(item, "FSName").text();
    }
    return all;
  }

  ScratchFolder tree_;
};

const char kGetter[] = "MDQueryGetSortOptionFlagsForAttribute";
const char kSetter[] = "MDQuerySetSortOptionFlagsForAttribute";
const char kOrder[] = "MDQuerySetSortOrder";

TEST_F(Sorting, FlagsAreTheServicesAndReverse) {
  start();
  const host::Value query = this->query();
  EXPECT_EQ(0, host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName").integer());
  EXPECT_TRUE(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName",
                         static_cast<uint32_t>(
                             host::constant("MDQueryZNK", "kMDQueryReverseSortOrderFlag").integer()))
                  .boolean());
  EXPECT_EQ(1, host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName").integer());
  host::call(query, "Execute", 1);
  EXPECT_EQ("bca", names(query));
}

TEST_F(Sorting, FlagsOfAnAttributeThatIsNotSortedByAreRefused) {
  start();
  const host::Value query = this->query();
  EXPECT_FALSE(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemPath", 1u).boolean());
  EXPECT_EQ(0, host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemPath").integer());
}

TEST_F(Sorting, SetSortOrderSortsAnewAndTakesOnlyAttributesNamedAtCreation) {
  start();
  const host::Value query = this->query();
  host::call(query, "Execute", 1);
  EXPECT_EQ("bac", names(query));
  EXPECT_TRUE(host::call(query, "SetSortOrder", host::stringArray({"kMDItemFSName"})).boolean());
  EXPECT_EQ("abc", names(query));
  EXPECT_FALSE(host::call(query, "SetSortOrder", host::stringArray({"kMDItemPath"})).boolean());
  EXPECT_EQ("abc", names(query));
  const auto attributes = host::elements(host::call(query, "SortingAttributes"));
  ASSERT_EQ(1u, attributes.size()) << "those in use";
  EXPECT_EQ("kMDItemFSName", attributes[0].text());
}

TEST_F(Sorting, OnASystemWithoutTheFunctionsIsRefusedWithoutAnExceptionOrACall) {
  startWithout({kGetter, kSetter, kOrder});
  const host::Value query = this->query();
  const host::Value order = host::stringArray({"kMDItemFSName"});
  EXPECT_EQ(
      Calls(), callsOf([&] {
        EXPECT_EQ(0, host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName").integer());
        EXPECT_FALSE(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 1u).boolean());
        EXPECT_FALSE(host::call(query, "SetSortOrder", order).boolean());
      }));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Sorting, OnASystemWithoutTheGetterTheSetterIsNotUsedEither) {
  startWithout({kGetter});
  const host::Value query = this->query();
  EXPECT_EQ(0, host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName").integer());
  EXPECT_EQ(
      Calls(), callsOf([&] {
        EXPECT_FALSE(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 1u).boolean());
      }));
  EXPECT_TRUE(host::call(query, "SetSortOrder", host::stringArray({"kMDItemFSName"})).boolean());
}

TEST_F(Sorting, OnASystemWithTheGetterAloneTheSetterIsCalledWithoutATest) {
  startWithout({kSetter});
  const host::Value query = this->query();
  EXPECT_EQ(0, host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName").integer());
  EXPECT_MEMORY_FAULT(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 1u));
}

TEST_F(Sorting, OnASystemWithoutSetSortOrderAloneTheFlagsWork) {
  startWithout({kOrder});
  const host::Value query = this->query();
  EXPECT_FALSE(host::call(query, "SetSortOrder", host::stringArray({"kMDItemFSName"})).boolean());
  EXPECT_TRUE(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 1u).boolean());
  EXPECT_EQ(1, host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName").integer());
}

TEST_F(Sorting, ByNamesThatCantBeConvertedIsRefusedWithoutACall) {
  start();
  const host::Value query = this->query();
  const Calls calls = callsOf([&] {
    for (const host::Value& name : {host::Value::nullString(), unconvertible()}) {
      EXPECT_EQ(0, host::call(query, "GetSortOptionFlagsForAttribute", name).integer());
      EXPECT_FALSE(host::call(query, "SetSortOptionFlagsForAttribute", name, 1u).boolean());
    }
    EXPECT_FALSE(host::call(query, "SetSortOrder", nullptr).boolean());
  });
  EXPECT_EQ(Calls(), startingWith("MDQuery", calls));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Sorting, PassesAllBitsOfTheFlags) {
  start();
  const host::Value query = this->query();
  EXPECT_TRUE(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 0xFFFFFFFFu).boolean());
  EXPECT_EQ(-1, host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName").integer());
}

TEST_F(Sorting, IsDoneWithTheseCalls) {
  start();
  const host::Value query = this->query();
  const host::Value order = host::stringArray({"kMDItemFSName"});
  host::call(query, "SetSortOrder", order);  // finds the services
  EXPECT_EQ((Calls{"REALGetStringCFString", kGetter, "CFRelease"}),
            callsOf([&] { host::call(query, "GetSortOptionFlagsForAttribute", "kMDItemFSName"); }));
  EXPECT_EQ((Calls{"REALGetStringCFString", kSetter, "CFRelease"}),
            callsOf([&] { host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", 1u); }));
  EXPECT_EQ(
      (Calls{"RuntimeUBound", "CFArrayCreateMutable", "RuntimeDirectReadStringArray", "REALGetStringCFString",
             "CFArrayAppendValue", "CFRelease", "REALUnlockString", kOrder, "CFRelease"}),
      callsOf([&] { host::call(query, "SetSortOrder", order); }));
}

}  // namespace
