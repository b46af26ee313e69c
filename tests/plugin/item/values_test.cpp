// The values of attributes in a query's results.
#include <CoreServices/CoreServices.h>

#include "standin/coreservices/metadata/planned_answers.h"
#include "tests/plugin/cf_values.h"
#include "tests/plugin/item/item_fixture.h"

namespace {

const char kValueAt[] = "MDQueryGetAttributeValueOfResultAtIndex";
const char kValues[] = "MDQueryCopyValuesOfAttribute";
const char kCount[] = "MDQueryGetCountOfResultsWithAttributeValue";

class Values : public PluginTest {
 protected:
  // A query that found f0 to f3, of 0, 1, 0 and 1 bytes, with the size as a value list, sorted by name.
  host::Value found() {
    for (int i = 0; i < 4; ++i)
      tree_.file("f" + std::to_string(i), std::string(static_cast<size_t>(i % 2), 'x'));
    standin::setIndexedFolders({tree_.path()});
    const host::Value query =
        host::construct("MDQueryZNK", "kMDItemFSName == \"f*\"", host::stringArray({"kMDItemFSSize"}),
                        host::stringArray({"kMDItemFSName"}));
    EXPECT_TRUE(host::call(query, "Execute", 1).boolean());
    return query;
  }

  static int64_t count(const host::Value& query, const host::Value& name, const host::Value& value) {
    return host::call(query, "CountOfResultsWithAttributeValue", name, value).integer();
  }

 private:
  ScratchFolder tree_;
};

TEST_F(Values, OfAResultAreThoseOfValueListAndSortingAttributes) {
  start();
  const host::Value query = found();
  EXPECT_EQ(1, host::call(query, "AttributeValueOfResultAtIndex", "kMDItemFSSize", 3u).integer());
  EXPECT_EQ("f3", host::call(query, "AttributeValueOfResultAtIndex", "kMDItemFSName", 3u).text());
}

TEST_F(Values, OfAResultBelongToTheQueryAndAreNotReleased) {
  start();
  const host::Value query = found();
  CFOwner value = cfWitness();
  CFRetain(value.get());
  standin::planAnswer(kValueAt, value.get());
  const CFIndex before = CFGetRetainCount(value.get());
  host::call(query, "AttributeValueOfResultAtIndex", "kMDItemFSSize", 0u);
  EXPECT_EQ(before, CFGetRetainCount(value.get()));
  standin::clearAnswers();
  EXPECT_EQ(1, CFGetRetainCount(value.get()));
}

TEST_F(Values, OfAResultAreReadWithTheseCalls) {
  start();
  const host::Value query = found();
  const auto act = [&] { host::call(query, "AttributeValueOfResultAtIndex", "kMDItemFSSize", 1u); };
  act();
  EXPECT_EQ((Calls{"REALGetStringCFString", kValueAt, "CFGetTypeID", "CFURLGetTypeID", "CFBooleanGetTypeID",
                   "CFNumberGetTypeID", "CFNumberIsFloatType", "CFNumberGetByteSize", "CFNumberGetValue",
                   "Int32ToVariant", "CFRelease"}),
            callsOf(act));
}

TEST_F(Values, OfAnUnconvertibleNameAreNotAskedFor) {
  start();
  const host::Value query = found();
  const Calls calls = callsOf([&] {
    for (const host::Value& name : {host::Value::nullString(), unconvertible()}) {
      EXPECT_TRUE(host::call(query, "AttributeValueOfResultAtIndex", name, 0u).isNil());
      const host::Value values = host::call(query, "ValuesOfAttribute", name);
      EXPECT_FALSE(values.isNil());
      EXPECT_EQ(0u, host::elements(values).size());
      EXPECT_EQ(0, count(query, name, 1));
    }
  });
  EXPECT_EQ(Calls(), startingWith("MDQuery", calls));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Values, OfAValueListAttributeAreEachThereOnce) {
  start();
  const host::Value query = found();
  std::vector<int64_t> sizes;
  for (const host::Value& value : host::elements(host::call(query, "ValuesOfAttribute", "kMDItemFSSize"))) {
    sizes.push_back(value.integer());
  }
  EXPECT_EQ((std::vector<int64_t>{0, 1}), sorted(sizes));
}

TEST_F(Values, ThatAreNullLeaveNoHoleAndThoseThatBecomeNilKeepTheirPlace) {
  host::Settings settings;
  settings.unknownClasses = {"CFObjectZNK"};
  start(settings);
  const host::Value query = found();
  const CFOwner one = cfText("1"), strange = cfWitness(), two = cfText("2");
  standin::planAnswer(
      kValues, cfUnretainedArray({one.get(), nullptr, strange.get(), kCFNull, nullptr, two.get()}).leak());
  const auto values = host::elements(host::call(query, "ValuesOfAttribute", "kMDItemFSSize"));
  ASSERT_EQ(4u, values.size());
  EXPECT_EQ("1", values[0].text());
  EXPECT_TRUE(values[1].isNil());
  EXPECT_TRUE(values[2].isNil());
  EXPECT_EQ("2", values[3].text());
}

TEST_F(Values, AreListedWithTheseCalls) {
  start();
  const host::Value query = found();
  const CFOwner yes = own(CFRetain(kCFBooleanTrue));
  const auto act = [&] {
    standin::planAnswer(kValues, cfUnretainedArray({yes.get(), nullptr, kCFNull}).leak());
    standin::startLog();
    host::call(query, "ValuesOfAttribute", "kMDItemFSSize");
  };
  act();
  const Calls calls = callsOf(act);
  EXPECT_EQ(
      (Calls{"RuntimeArrayCreateSingleDimBoundedArray", "REALGetStringCFString", kValues, "CFArrayGetCount",
             // true
             "CFArrayGetValueAtIndex", "CFGetTypeID", "CFURLGetTypeID", "CFBooleanGetTypeID",
             "CFBooleanGetValue", "BooleanToVariant", "RuntimeArrayDirectGetInsertProc", "array insert",
             "REALUnlockObject",
             // null
             "CFArrayGetValueAtIndex",
             // kCFNull
             "CFArrayGetValueAtIndex", "RuntimeArrayDirectGetInsertProc", "array insert",
             // the values and the name
             "CFRelease", "CFRelease"}),
      calls);
}

TEST_F(Values, CopyIsReleasedBeforeTheName) {
  host::Settings settings;
  settings.unknownClasses = {"CFObjectZNK"};
  start(settings);
  const host::Value query = found();
  CFOwner witness = cfWitness();
  const CFTypeRef values[] = {witness.get()};
  const CFArrayRef held =
      CFArrayCreate(kCFAllocatorDefault, const_cast<const void**>(values), 1, &kCFTypeArrayCallBacks);
  witness = {};
  standin::planAnswer(kValues, held);
  const Calls calls = callsOf([&] { host::call(query, "ValuesOfAttribute", "kMDItemFSSize"); });
  EXPECT_EQ((Calls{"CFRelease", "value finalized", "CFRelease"}), lastOf(calls, 3));
}

TEST_F(Values, AreCounted) {
  start();
  const host::Value query = found();
  EXPECT_EQ(2, count(query, "kMDItemFSSize", 0));
  EXPECT_EQ(2, count(query, "kMDItemFSSize", int64_t{1}));
  EXPECT_EQ(0, count(query, "kMDItemFSSize", 7));
  EXPECT_EQ(host::Kind::uint32,
            host::call(query, "CountOfResultsWithAttributeValue", "kMDItemFSSize", 0).kind());
}

TEST_F(Values, ThatCantBeConvertedCount0) {
  start();
  const host::Value query = found();
  const Calls calls = callsOf([&] {
    EXPECT_EQ(0, count(query, "kMDItemFSSize", nullptr));
    EXPECT_EQ(0, count(query, "kMDItemFSSize", host::newInstance("MDItemZNK")));
  });
  EXPECT_EQ(0, std::count(calls.begin(), calls.end(), kCount));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Values, AreCountedAfterBothConversionsAndTheNameIsReleasedFirst) {
  start();
  const host::Value query = found();
  count(query, "kMDItemFSSize", true);
  const Calls calls = callsOf([&] { count(query, "kMDItemFSSize", true); });
  EXPECT_EQ(Calls{"REALGetStringCFString"}, firstOf(calls, 1));
  EXPECT_EQ((Calls{kCount, "CFRelease", "CFRelease"}), lastOf(calls, 3));
  EXPECT_EQ((Calls{"CFRelease CFString", "CFRelease CFBoolean"}),
            lastOf(detailedCallsOf([&] { count(query, "kMDItemFSSize", true); }), 2));
  // With only one of the two there is one to release, and no call between.
  for (const auto& [name, value] :
       {std::pair<host::Value, host::Value>{host::Value::nullString(), true}, {"kMDItemFSSize", nullptr}}) {
    const Calls half = callsOf([&, &name = name, &value = value] { count(query, name, value); });
    EXPECT_EQ(1, std::count(half.begin(), half.end(), "CFRelease"));
    EXPECT_EQ(Calls{"CFRelease"}, lastOf(half, 1));
    EXPECT_EQ(0, std::count(half.begin(), half.end(), kCount));
  }
}

}  // namespace
