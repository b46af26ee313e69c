// The values that a query keeps of its results: those of its value-list and of its sorting attributes.
#include "tests/standin/coreservices/metadata/query_fixture.h"
#include "tests/support/texts.h"

namespace {

std::string shown(CFTypeRef value) {
  if (!value) return "(null)";
  if (CFGetTypeID(value) == CFStringGetTypeID()) return textOf(value);
  int64_t number = 0;
  CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberSInt64Type, &number);
  return std::to_string(number);
}

Owned<CFTypeRef> number(int64_t value) {
  return Owned<CFTypeRef>(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &value));
}

class QueryValues : public QueryTest {
 protected:
  QueryValues() {
    scratch.file("a.txt", "1");
    scratch.file("b.txt", "123");
    scratch.file("c.txt", "1");
    scratch.folder("d.txt");
  }

  std::string valueAt(CFStringRef name, CFIndex index) const {
    return shown(MDQueryGetAttributeValueOfResultAtIndex(query.get(), name, index));
  }
  std::vector<std::string> valuesOf(CFStringRef name) const {
    const Owned values(MDQueryCopyValuesOfAttribute(query.get(), name));
    std::vector<std::string> all;
    if (!values) return {"(no array)"};
    for (CFIndex i = 0; i < CFArrayGetCount(values.get()); ++i) {
      all.push_back(shown(CFArrayGetValueAtIndex(values.get(), i)));
    }
    return all;
  }
  CFIndex countOf(CFStringRef name, const Owned<CFTypeRef>& value) const {
    return MDQueryGetCountOfResultsWithAttributeValue(query.get(), name, value.get());
  }

  Owned<MDQueryRef> query = makeQuery("kMDItemFSName == \"*.txt\"", {"kMDItemFSSize"}, {"kMDItemFSName"});
};

TEST_F(QueryValues, AreThoseOfValueListAndSortingAttributesAlone) {
  gather(query);
  EXPECT_EQ(valueAt(kMDItemFSSize, 1), "3");
  EXPECT_EQ(valueAt(kMDItemFSName, 1), "b.txt");
  EXPECT_EQ(valueAt(kMDItemPath, 1), "(null)");
  EXPECT_EQ(valueAt(CFSTR("no such attribute"), 1), "(null)");
}

TEST_F(QueryValues, AreCountedAsMissingByANullValue) {
  query = makeQuery("kMDItemFSName == \"*.txt\"", {"kMDItemFSSize", "kMDItemAuthors"}, {});
  gather(query);
  EXPECT_EQ(countOf(kMDItemFSSize, {}), 1) << "of the folder";
  EXPECT_EQ(countOf(kMDItemAuthors, {}), 4);
  EXPECT_EQ(countOf(kMDItemFSSize, number(1)), 2);
  query = makeQuery("kMDItemFSName == \"d*\"", {"kMDItemFSSize"}, {});
  gather(query, kMDQueryWantsUpdates);
  EXPECT_EQ(countOf(kMDItemFSSize, {}), 1);
  scratch.file("dd.txt", "12");
  run();
  EXPECT_EQ(countOf(kMDItemFSSize, {}), 1);
  scratch.folder("ddd.txt");
  run();
  EXPECT_EQ(countOf(kMDItemFSSize, {}), 2);
}

TEST_F(QueryValues, TellAResultsRelevanceAsANumberWithAPoint) {
  query = makeQuery("kMDItemFSName == \"*.txt\"", {"kMDQueryResultContentRelevance"},
                    {"kMDQueryResultContentRelevance", "kMDItemFSName"});
  gather(query);
  EXPECT_EQ(textOf(kMDQueryResultContentRelevance), "kMDQueryResultContentRelevance");
  const auto relevance = static_cast<CFNumberRef>(
      MDQueryGetAttributeValueOfResultAtIndex(query.get(), kMDQueryResultContentRelevance, 0));
  ASSERT_TRUE(relevance);
  EXPECT_TRUE(CFNumberIsFloatType(relevance));
  double value = 0;
  CFNumberGetValue(relevance, kCFNumberDoubleType, &value);
  EXPECT_GT(value, 0);
  EXPECT_LE(value, 1);
  EXPECT_EQ(valuesOf(kMDQueryResultContentRelevance).size(), 1u);
  EXPECT_EQ(results(query), (Texts{"a.txt", "b.txt", "c.txt", "d.txt"}));
}

// The text of a file is searched, and told in no way.
TEST_F(QueryValues, NeverTellTheTextOfAFile) {
  query = makeQuery("kMDItemTextContent == 123", {"kMDItemTextContent"}, {"kMDItemTextContent"});
  gather(query);
  ASSERT_EQ(MDQueryGetResultCount(query.get()), 1);
  EXPECT_EQ(valueAt(kMDItemTextContent, 0), "(null)");
  EXPECT_EQ(valuesOf(kMDItemTextContent), Texts{});
}

TEST_F(QueryValues, AreNullWhereTheFileHasNoneAndOutOfRange) {
  EXPECT_EQ(valueAt(kMDItemFSSize, 0), "(null)");
  gather(query);
  EXPECT_EQ(valueAt(kMDItemFSSize, 3), "(null)");
  EXPECT_EQ(valueAt(kMDItemFSName, 3), "d.txt");
  EXPECT_EQ(valueAt(kMDItemFSName, 4), "(null)");
  EXPECT_EQ(valueAt(kMDItemFSName, -1), "(null)");
}

TEST_F(QueryValues, BelongToTheQuery) {
  gather(query);
  const void* const value = MDQueryGetAttributeValueOfResultAtIndex(query.get(), kMDItemFSName, 1);
  EXPECT_EQ(CFGetRetainCount(value), 1);
  EXPECT_EQ(MDQueryGetAttributeValueOfResultAtIndex(query.get(), kMDItemFSName, 1), value);
}

TEST_F(QueryValues, AreListedEachOnce) {
  EXPECT_EQ(valuesOf(kMDItemFSSize), Texts{});
  gather(query);
  EXPECT_EQ(sorted(valuesOf(kMDItemFSSize)), sorted({"1", "3"}));
}

TEST_F(QueryValues, AreListedOfValueListAttributesAlone) {
  gather(query);
  EXPECT_EQ(MDQueryCopyValuesOfAttribute(query.get(), kMDItemFSName), nullptr);
  EXPECT_EQ(MDQueryCopyValuesOfAttribute(query.get(), kMDItemPath), nullptr);
  EXPECT_EQ(countOf(kMDItemFSName, Owned<CFTypeRef>(makeString("a.txt").leak())), 0);
}

TEST_F(QueryValues, AreCounted) {
  EXPECT_EQ(countOf(kMDItemFSSize, number(1)), 0);
  gather(query);
  EXPECT_EQ(countOf(kMDItemFSSize, number(1)), 2);
  EXPECT_EQ(countOf(kMDItemFSSize, number(3)), 1);
  EXPECT_EQ(countOf(kMDItemFSSize, number(2)), 0);
  EXPECT_EQ(countOf(kMDItemFSSize, Owned<CFTypeRef>(makeString("1").leak())), 0);
}

TEST_F(QueryValues, IncludeThoseOfBatchesThatCameAfterTheFirstQuestion) {
  setBatches(query, {1, 1000000, 1, 1000000, 0, 0});
  std::vector<CFIndex> counts;
  Listener listener(query.get());
  listener.reaction = [&](const Notice&) { counts.push_back(countOf(kMDItemFSSize, number(1))); };
  gather(query);
  EXPECT_EQ(counts, (std::vector<CFIndex>{1, 1, 2, 2, 2}));
}

TEST_F(QueryValues, AnswerNullOrNoughtWhenACallIsMadeToFail) {
  gather(query);
  standin::failCall("MDQueryGetAttributeValueOfResultAtIndex", 1);
  EXPECT_EQ(valueAt(kMDItemFSSize, 1), "(null)");
  standin::failCall("MDQueryCopyValuesOfAttribute", 1);
  EXPECT_EQ(MDQueryCopyValuesOfAttribute(query.get(), kMDItemFSSize), nullptr);
  standin::failCall("MDQueryGetCountOfResultsWithAttributeValue", 1);
  EXPECT_EQ(countOf(kMDItemFSSize, number(1)), 0);
}

using QueryValuesDeathTest = QueryValues;

TEST_F(QueryValuesDeathTest, EndTheProcessForANullName) {
  EXPECT_DEATH(MDQueryGetAttributeValueOfResultAtIndex(query.get(), nullptr, 0), "the string is null");
  EXPECT_DEATH(MDQueryCopyValuesOfAttribute(query.get(), nullptr), "the string is null");
  EXPECT_DEATH(MDQueryGetCountOfResultsWithAttributeValue(query.get(), nullptr, nullptr),
               "the string is null");
}

}  // namespace
