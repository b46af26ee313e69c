// Where the service may answer what it likes, the plug-in passes the question on unchecked, and takes any
// answer. The other tests run in a service that ends the process there; the sweeps with failing calls and
// missing services in one that answers null.
#include <CoreServices/CoreServices.h>

#include <functional>

#include "tests/plugin/fixture.h"

namespace {

using standin::Undefined;

const char kMade[] = "kMDItemFSSize";        // the value list
const char kSortedBy[] = "kMDItemFSName";    // the sorting attribute
const char kNotAskedFor[] = "kMDItemPath";   // neither
const char kUnknown[] = "kMDItemNoSuchKey";  // the same
const char kValueAt[] = "AttributeValueOfResultAtIndex";

struct UndefinedCase {
  const char* what;
  const char* call;  // of the service
  std::function<host::Value(const host::Value& query)> ask;
};
void PrintTo(const UndefinedCase& row, std::ostream* out) {
  *out << row.what;
}

template <typename... Arguments>
std::function<host::Value(const host::Value&)> asking(const char* method, Arguments... arguments) {
  return [=](const host::Value& query) { return host::call(query, method, arguments...); };
}

class UndefinedCorner : public PluginTest, public testing::WithParamInterface<UndefinedCase> {
 protected:
  void SetUp() override {
    for (const char* name : {"f0", "f1", "f2", "f3"}) tree_.file(name);
    standin::setIndexedFolders({tree_.path()});
    start();
    query_ = host::construct("MDQueryZNK", "kMDItemFSName == \"f*\"", host::stringArray({kMade}),
                             host::stringArray({kSortedBy}));
    EXPECT_TRUE(host::call(query_, "Execute", 1).boolean());
  }

  void TearDown() override {
    query_ = {};
    standin::setUndefined(Undefined::End);  // what was answered is given back
    PluginTest::TearDown();
  }

  // What the query answers where the service does that.
  host::Value answer(Undefined undefined) {
    standin::setUndefined(undefined);
    host::Value answer = GetParam().ask(query_);
    EXPECT_EQ(Exceptions(), host::takeExceptions());
    EXPECT_EQ(4, host::call(query_, "ResultCount").integer());
    return answer;
  }

  ScratchFolder tree_;
  host::Value query_;
};

TEST_P(UndefinedCorner, IsReachedByThePlugIn) {
  EXPECT_DEATH(answer(Undefined::End), std::string("standin: ") + GetParam().call + ": .* is undefined");
}

class UndefinedResult : public UndefinedCorner {};

TEST_P(UndefinedResult, IsNilOrAnItem) {
  EXPECT_TRUE(answer(Undefined::Nothing).isNil());
  const host::Value item = answer(Undefined::Garbage);
  ASSERT_FALSE(item.isNil());
  EXPECT_EQ(-1, host::call(query_, "IndexOfResult", item).integer());
  EXPECT_EQ("undefined", host::get(item, "FSName").text());
  EXPECT_EQ(0, host::get(item, "FSSize").integer());
}

class UndefinedValue : public UndefinedCorner {};

TEST_P(UndefinedValue, IsNilOrAnything) {
  EXPECT_TRUE(answer(Undefined::Nothing).isNil());
  EXPECT_EQ("undefined", answer(Undefined::Garbage).text());
}

class UndefinedValues : public UndefinedCorner {};

TEST_P(UndefinedValues, AreAnEmptyArrayOrAny) {
  const host::Value none = answer(Undefined::Nothing);
  EXPECT_FALSE(none.isNil());
  EXPECT_EQ(0u, host::elements(none).size());
  const auto some = host::elements(answer(Undefined::Garbage));
  ASSERT_EQ(1u, some.size());
  EXPECT_EQ("undefined", some[0].text());
}

class UndefinedCount : public UndefinedCorner {};

TEST_P(UndefinedCount, Is0OrAny) {
  EXPECT_EQ(0, answer(Undefined::Nothing).integer());
  EXPECT_LT(0, answer(Undefined::Garbage).integer());
}

class UndefinedEffect : public UndefinedCorner {};

TEST_P(UndefinedEffect, LeavesTheResultsUsable) {
  for (const Undefined undefined : {Undefined::Nothing, Undefined::Garbage}) {
    answer(undefined);
    EXPECT_EQ(4u, host::elements(host::call(query_, "Results")).size());
    EXPECT_EQ("f3", host::get(host::call(query_, "ResultAtIndex", 3), "FSName").text());
  }
}

const char kResultAtIndex[] = "MDQueryGetResultAtIndex";
const UndefinedCase kResults[] = {
    {"ResultAtIndex(-1)", kResultAtIndex, asking("ResultAtIndex", -1)},
    {"ResultAtIndex(4) of 4", kResultAtIndex, asking("ResultAtIndex", 4)},
    {"ResultAtIndex of the largest number", kResultAtIndex, asking("ResultAtIndex", INT32_MAX)},
    {"ResultAtIndex of the smallest number", kResultAtIndex, asking("ResultAtIndex", INT32_MIN)},
};
const char kValueOfResult[] = "MDQueryGetAttributeValueOfResultAtIndex";
const UndefinedCase kValues[] = {
    {"a value at 4 of 4", kValueOfResult, asking(kValueAt, kMade, 4u)},
    {"a value at 2^31 - 1", kValueOfResult, asking(kValueAt, kMade, 0x7FFFFFFFu)},
    {"a value at 2^31", kValueOfResult, asking(kValueAt, kSortedBy, 0x80000000u)},
    {"a value at 2^32 - 1", kValueOfResult, asking(kValueAt, kSortedBy, 0xFFFFFFFFu)},
    {"a value of another attribute", kValueOfResult, asking(kValueAt, kNotAskedFor, 3u)},
    {"a value of an unknown attribute", kValueOfResult, asking(kValueAt, kUnknown, 3u)},
};
const char kCopyValues[] = "MDQueryCopyValuesOfAttribute";
const UndefinedCase kValueLists[] = {
    {"values of the sorting attribute", kCopyValues, asking("ValuesOfAttribute", kSortedBy)},
    {"values of another attribute", kCopyValues, asking("ValuesOfAttribute", kNotAskedFor)},
    {"values of an unknown attribute", kCopyValues, asking("ValuesOfAttribute", kUnknown)},
};
const char kCountWithValue[] = "MDQueryGetCountOfResultsWithAttributeValue";
const char kCount[] = "CountOfResultsWithAttributeValue";
const UndefinedCase kCounts[] = {
    {"a count by the sorting attribute", kCountWithValue, asking(kCount, kSortedBy, "f1")},
    {"a count by another attribute", kCountWithValue, asking(kCount, kNotAskedFor, 1)},
    {"a count by an unknown attribute", kCountWithValue, asking(kCount, kUnknown, 1)},
};
const char kMaximum[] = "MDQuerySetMaxCount";
const UndefinedCase kEffects[] = {
    {"SetMaxCount(1) after Execute", kMaximum, asking("SetMaxCount", 1)},
    {"SetMaxCount(-1) after Execute", kMaximum, asking("SetMaxCount", -1)},
};

INSTANTIATE_TEST_SUITE_P(Corners, UndefinedResult, testing::ValuesIn(kResults));
INSTANTIATE_TEST_SUITE_P(Corners, UndefinedValue, testing::ValuesIn(kValues));
INSTANTIATE_TEST_SUITE_P(Corners, UndefinedValues, testing::ValuesIn(kValueLists));
INSTANTIATE_TEST_SUITE_P(Corners, UndefinedCount, testing::ValuesIn(kCounts));
INSTANTIATE_TEST_SUITE_P(Corners, UndefinedEffect, testing::ValuesIn(kEffects));
INSTANTIATE_TEST_SUITE_P(Results, UndefinedCorner, testing::ValuesIn(kResults));
INSTANTIATE_TEST_SUITE_P(OneValue, UndefinedCorner, testing::ValuesIn(kValues));
INSTANTIATE_TEST_SUITE_P(Values, UndefinedCorner, testing::ValuesIn(kValueLists));
INSTANTIATE_TEST_SUITE_P(Counts, UndefinedCorner, testing::ValuesIn(kCounts));
INSTANTIATE_TEST_SUITE_P(Effects, UndefinedCorner, testing::ValuesIn(kEffects));

}  // namespace
