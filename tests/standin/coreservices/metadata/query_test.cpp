#include <functional>

#include "tests/standin/coreservices/metadata/fixture.h"
#include "tests/support/texts.h"

namespace {

using Query = MetadataTest;

TEST_F(Query, IsNullForAnEmptyOrMalformedString) {
  for (const char* text :
       {"", " ", "Paris", "kMDItemFSName ==", "kMDItemFSName == \"x", "(kMDItemFSSize > 1"}) {
    EXPECT_FALSE(makeQuery(text)) << text;
  }
  const auto parent = makeQuery("kMDItemFSSize > 1");
  EXPECT_FALSE(makeSubset(parent, ""));
  EXPECT_FALSE(makeSubset(parent, "kMDItemFSSize >"));
}

TEST_F(Query, SaysThroughTheControlWhyAStringIsRefused) {
  const auto error = standin::checkQuery(u"kMDItemFSName = = \"x\"");
  ASSERT_TRUE(error);
  EXPECT_EQ(error->position, 16u);
  EXPECT_PRED_FORMAT2(testing::IsSubstring, "value", error->reason);
  EXPECT_FALSE(standin::checkQuery(u"kMDItemFSName == \"x\""));
}

TEST_F(Query, GathersWhatMatchesWhenExecutedSynchronously) {
  scratch.file("notes/b.txt");
  scratch.file("a.txt");
  scratch.file("c.jpg");
  const auto query = makeQuery("kMDItemFSName == \"*.txt\"");
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
  EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_TRUE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_EQ(results(query), (Texts{"a.txt", "notes/b.txt"}));
}

TEST_F(Query, ExecutesOnce) {
  scratch.file("a.txt");
  const auto query = makeQuery("kMDItemFSName == \"*.txt\"");
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  scratch.file("b.txt");
  EXPECT_FALSE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_FALSE(MDQueryExecute(query.get(), 0));
  EXPECT_EQ(results(query), Texts{"a.txt"});
}

TEST_F(Query, GathersNothingAfterItWasStopped) {
  scratch.file("a.txt");
  const auto query = makeQuery("kMDItemFSName == \"*.txt\"");
  MDQueryStop(query.get());
  EXPECT_FALSE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
}

TEST_F(Query, KeepsItsResultsWhenItIsStopped) {
  scratch.file("a.txt");
  const auto query = makeQuery("kMDItemFSName == \"*.txt\"");
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  MDQueryStop(query.get());
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
}

TEST_F(Query, TakesAMaximumCountBeforeItIsExecuted) {
  for (const char* name : {"a", "b", "c"}) scratch.file(name);
  const auto query = makeQuery("kMDItemFSSize == 0");
  MDQuerySetMaxCount(query.get(), 2);
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  MDQuerySetMaxCount(query.get(), 1);
  EXPECT_EQ(results(query), (Texts{"a", "b"}));
}

TEST_F(Query, AnswersNullForAnIndexOutOfRange) {
  scratch.file("a");
  const auto query = makeQuery("kMDItemFSSize == 0");
  EXPECT_EQ(MDQueryGetResultAtIndex(query.get(), 0), nullptr);
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  EXPECT_NE(MDQueryGetResultAtIndex(query.get(), 0), nullptr);
  EXPECT_EQ(MDQueryGetResultAtIndex(query.get(), 1), nullptr);
  EXPECT_EQ(MDQueryGetResultAtIndex(query.get(), -1), nullptr);
}

TEST_F(Query, MayBeToldToAnswerGarbageWhereNothingIsDefined) {
  scratch.file("a", "12");
  const auto query = makeQuery("kMDItemFSSize > 0", {"kMDItemFSSize"});
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  standin::setUndefined(standin::Undefined::Garbage);
  const MDItemRef item = resultAt(query, 1);
  ASSERT_TRUE(item);
  EXPECT_EQ(pathOf(item), "/undefined");
  EXPECT_EQ(pathOf(resultAt(query, 0)), scratch.at("a"));
  EXPECT_EQ(textOf(MDQueryGetAttributeValueOfResultAtIndex(query.get(), kMDItemFSSize, -1)), "undefined");
  EXPECT_EQ(textOf(MDQueryGetAttributeValueOfResultAtIndex(query.get(), kMDItemPath, 0)), "undefined");
  EXPECT_NE(MDQueryGetCountOfResultsWithAttributeValue(query.get(), kMDItemPath, kMDItemPath), 0);
  const Owned values(MDQueryCopyValuesOfAttribute(query.get(), kMDItemPath));
  EXPECT_EQ(CFArrayGetCount(values.get()), 1);
  const Owned defined(MDQueryCopyValuesOfAttribute(query.get(), kMDItemFSSize));
  EXPECT_EQ(CFArrayGetCount(defined.get()), 1);
  standin::setUndefined(standin::Undefined::Nothing);
}

TEST_F(Query, AnswersTheSameItemForTheSameIndex) {
  scratch.file("a");
  const auto query = makeQuery("kMDItemFSSize == 0");
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  EXPECT_EQ(MDQueryGetResultAtIndex(query.get(), 0), MDQueryGetResultAtIndex(query.get(), 0));
}

TEST_F(Query, LetsAResultOutliveItThatWasRetained) {
  scratch.file("a");
  Owned<MDItemRef> item;
  {
    const auto query = makeQuery("kMDItemFSSize == 0");
    MDQueryExecute(query.get(), kMDQuerySynchronous);
    CFRetain(resultAt(query, 0));
    item = Owned(resultAt(query, 0));
  }
  const Owned path(MDItemCopyAttribute(item.get(), kMDItemPath));
  EXPECT_EQ(textOf(path.get()), scratch.at("a"));
}

TEST_F(Query, FindsTheIndexOfAnEqualItem) {
  const std::string other = scratch.file("other.jpg");
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) scratch.file(name);
  const auto query = makeQuery("kMDItemFSName == \"*.txt\"");
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  const auto url = makeURL(scratch.at("b.txt"));
  const Owned item(MDItemCreateWithURL(kCFAllocatorDefault, url.get()));
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), item.get()), 1);
  EXPECT_TRUE(CFEqual(item.get(), resultAt(query, 1)));
  EXPECT_EQ(CFHash(item.get()), CFHash(resultAt(query, 1)));
  EXPECT_FALSE(CFEqual(item.get(), resultAt(query, 0)));
  const auto otherURL = makeURL(other);
  const Owned otherItem(MDItemCreateWithURL(kCFAllocatorDefault, otherURL.get()));
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), otherItem.get()), kCFNotFound);
}

TEST_F(Query, CopiesItsStringAndAttributeNames) {
  const auto text = makeString("kMDItemFSName == \"é*\"cd");
  const auto names = makeStrings({"kMDItemFSName", "kMDItemFSSize"});
  const auto sorting = makeStrings({"kMDItemFSSize"});
  const Owned query(MDQueryCreate(kCFAllocatorDefault, text.get(), names.get(), sorting.get()));
  const Owned copy(MDQueryCopyQueryString(query.get()));
  const Owned valueList(MDQueryCopyValueListAttributes(query.get()));
  const Owned sortingCopy(MDQueryCopySortingAttributes(query.get()));
  EXPECT_TRUE(CFEqual(copy.get(), text.get()));
  EXPECT_TRUE(CFEqual(valueList.get(), names.get()));
  EXPECT_TRUE(CFEqual(sortingCopy.get(), sorting.get()));
}

TEST_F(Query, CopiesNullWhereNoAttributesWereGiven) {
  const auto query = makeQuery("kMDItemFSSize == 0");
  EXPECT_EQ(MDQueryCopyValueListAttributes(query.get()), nullptr);
  EXPECT_EQ(MDQueryCopySortingAttributes(query.get()), nullptr);
}

TEST_F(Query, FindsAsASubsetWhatItsParentFindsToo) {
  for (const char* name : {"a.txt", "b.txt", "a.jpg"}) scratch.file(name);
  const auto parent = makeQuery("kMDItemFSName == \"*.txt\"");
  const auto subset = makeSubset(parent, "kMDItemFSName == \"a*\" || kMDItemFSName == \"*.jpg\"");
  MDQueryExecute(subset.get(), kMDQuerySynchronous);
  EXPECT_EQ(results(subset), Texts{"a.txt"});
  const auto inner = makeSubset(subset, "kMDItemFSName == \"*\"");
  MDQueryExecute(inner.get(), kMDQuerySynchronous);
  EXPECT_EQ(results(inner), Texts{"a.txt"});
  const Owned text(MDQueryCopyQueryString(inner.get()));
  EXPECT_EQ(textOf(text.get()), "kMDItemFSName == \"*\"");
}

TEST_F(Query, TakesUnbalancedUpdateCallsWithoutHarm) {
  const auto query = makeQuery("kMDItemFSSize == 0");
  MDQueryEnableUpdates(query.get());
  MDQueryDisableUpdates(query.get());
  MDQueryDisableUpdates(query.get());
  MDQueryEnableUpdates(query.get());
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
}

TEST_F(Query, CountsTheFoldersOfTheLastSearch) {
  scratch.file("a/b/file");
  standin::setIndexedFolders({scratch.path(), scratch.at("missing")});
  const auto query = makeQuery("kMDItemFSSize == 0");
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  EXPECT_EQ(standin::lastSearch().foldersSearched, 3u);
  EXPECT_EQ(standin::lastSearch().missingFolders, 1u);
  EXPECT_EQ(standin::lastSearch().unreadableFolders, 0u);
}

class SortedQuery : public MetadataTest {
 protected:
  static Owned<MDQueryRef> makeSorted(Names attributes) {
    return makeQuery("kMDItemFSName == \"*\"", {}, attributes);
  }
};

TEST_F(SortedQuery, ComparesTextByTheLanguageWithNumbersByValue) {
  for (const char* name : {"file 10", "File 9", "Zebra", "\xC3\xA9tude", "apple"}) scratch.file(name);
  const auto query = makeSorted({"kMDItemFSName"});
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  EXPECT_EQ(results(query), (Texts{"apple", "\xC3\xA9tude", "File 9", "file 10", "Zebra"}));
}

TEST_F(SortedQuery, PutsMissingValuesFirstAndKeepsTheOrderOfEquals) {
  scratch.file("c", "12");
  scratch.file("a", "12");
  scratch.file("b", "1");
  scratch.folder("z");
  const auto query = makeSorted({"kMDItemFSSize"});
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  EXPECT_EQ(results(query), (Texts{"z", "b", "a", "c"}));
}

TEST_F(SortedQuery, TakesTheFirstAttributeForThePrimaryKey) {
  scratch.file("c", "1");
  scratch.file("a", "12");
  scratch.file("b", "12");
  const auto query = makeSorted({"kMDItemFSSize", "kMDItemFSName"});
  EXPECT_TRUE(MDQuerySetSortOptionFlagsForAttribute(query.get(), kMDItemFSName, 1));
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  EXPECT_EQ(results(query), (Texts{"c", "b", "a"}));
}

TEST_F(SortedQuery, IsSortedAgainWhenItsOrderOrFlagsChange) {
  scratch.file("a", "123");
  scratch.file("b", "1");
  scratch.file("c", "12");
  const auto query = makeSorted({"kMDItemFSName", "kMDItemFSSize"});
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  const void* const itemA = MDQueryGetResultAtIndex(query.get(), 0);
  EXPECT_TRUE(MDQuerySetSortOrder(query.get(), makeStrings({"kMDItemFSSize"}).get()));
  EXPECT_EQ(results(query), (Texts{"b", "c", "a"}));
  EXPECT_EQ(MDQueryGetResultAtIndex(query.get(), 2), itemA);
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), itemA), 2);
  EXPECT_TRUE(MDQuerySetSortOptionFlagsForAttribute(query.get(), kMDItemFSSize, 1));
  EXPECT_EQ(MDQueryGetSortOptionFlagsForAttribute(query.get(), kMDItemFSSize), 1u);
  EXPECT_EQ(MDQueryGetSortOptionFlagsForAttribute(query.get(), kMDItemFSName), 0u);
  EXPECT_EQ(results(query), (Texts{"a", "c", "b"}));
}

TEST_F(SortedQuery, CopiesTheAttributesThatItIsSortedBy) {
  const auto query = makeSorted({"kMDItemFSName", "kMDItemFSSize"});
  const auto sortingAttributes = [&query] {
    return Owned<CFArrayRef>(MDQueryCopySortingAttributes(query.get()));
  };
  const auto size = makeStrings({"kMDItemFSSize"});
  EXPECT_TRUE(MDQuerySetSortOrder(query.get(), size.get()));
  EXPECT_TRUE(CFEqual(sortingAttributes().get(), size.get()));
  EXPECT_FALSE(MDQuerySetSortOrder(query.get(), makeStrings({"kMDItemPath"}).get()));
  EXPECT_TRUE(CFEqual(sortingAttributes().get(), size.get()));
  const auto both = makeStrings({"kMDItemFSSize", "kMDItemFSName"});
  EXPECT_TRUE(MDQuerySetSortOrder(query.get(), both.get()));
  EXPECT_TRUE(CFEqual(sortingAttributes().get(), both.get()));
}

TEST_F(SortedQuery, TakesOnlyAttributesNamedAtItsCreation) {
  const auto query = makeSorted({"kMDItemFSName"});
  EXPECT_FALSE(MDQuerySetSortOrder(query.get(), makeStrings({"kMDItemFSName", "kMDItemFSSize"}).get()));
  EXPECT_FALSE(MDQuerySetSortOrder(query.get(), nullptr));
  EXPECT_FALSE(MDQuerySetSortOptionFlagsForAttribute(query.get(), kMDItemFSSize, 1));
  EXPECT_EQ(MDQueryGetSortOptionFlagsForAttribute(query.get(), kMDItemFSSize), 0u);
}

struct Heard {
  std::vector<std::string> names;
  const void* object = nullptr;
  CFIndex count = -1;
};

void hear(CFNotificationCenterRef, void* observer, CFStringRef name, const void* object, CFDictionaryRef) {
  auto* const heard = static_cast<Heard*>(observer);
  const auto query = static_cast<MDQueryRef>(const_cast<void*>(object));
  heard->names.push_back(textOf(name));
  heard->object = object;
  heard->count = MDQueryGetResultCount(query);
}

TEST_F(Query, SaysThatItFinishedWhenItsResultsAreThere) {
  scratch.file("a");
  const auto query = makeQuery("kMDItemFSSize == 0");
  Heard heard;
  const CFNotificationCenterRef center = CFNotificationCenterGetLocalCenter();
  CFNotificationCenterAddObserver(center, &heard, hear, nullptr, query.get(),
                                  CFNotificationSuspensionBehaviorDeliverImmediately);
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  EXPECT_EQ(heard.names, (Texts{"kMDQueryProgressNotification", "kMDQueryDidFinishNotification"}));
  EXPECT_EQ(heard.object, query.get());
  EXPECT_EQ(heard.count, 1);
  CFNotificationCenterRemoveEveryObserver(center, &heard);
}

void release(CFNotificationCenterRef, void* observer, CFStringRef, const void*, CFDictionaryRef) {
  *static_cast<Owned<MDQueryRef>*>(observer) = Owned<MDQueryRef>();
}

TEST_F(Query, MayBeReleasedByOneObserverBeforeAnotherIsCalled) {
  scratch.file("a");
  auto query = makeQuery("kMDItemFSSize == 0");
  Heard heard;
  const CFNotificationCenterRef center = CFNotificationCenterGetLocalCenter();
  CFNotificationCenterAddObserver(center, &query, release, nullptr, nullptr,
                                  CFNotificationSuspensionBehaviorDeliverImmediately);
  CFNotificationCenterAddObserver(center, &heard, hear, nullptr, nullptr,
                                  CFNotificationSuspensionBehaviorDeliverImmediately);
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_FALSE(query);
  EXPECT_EQ(heard.count, 1);
  CFNotificationCenterRemoveEveryObserver(center, &query);
  CFNotificationCenterRemoveEveryObserver(center, &heard);
}

TEST_F(Query, AnswersNullFalseOrNoughtWhenACallIsMadeToFail) {
  scratch.file("a");
  const auto text = makeString("kMDItemFSSize == 0");
  const auto query = makeQuery("kMDItemFSSize == 0");
  const auto failing = [](const char* call) { standin::failCall(call, 1); };
  failing("MDQueryCreate");
  EXPECT_EQ(MDQueryCreate(kCFAllocatorDefault, text.get(), nullptr, nullptr), nullptr);
  failing("MDQueryCreateSubset");
  EXPECT_EQ(MDQueryCreateSubset(kCFAllocatorDefault, query.get(), text.get(), nullptr, nullptr), nullptr);
  failing("MDQueryExecute");
  EXPECT_FALSE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  failing("MDQueryIsGatheringComplete");
  EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  failing("MDQueryGetResultCount");
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
  failing("MDQueryGetResultAtIndex");
  EXPECT_EQ(MDQueryGetResultAtIndex(query.get(), 0), nullptr);
  failing("MDQueryGetIndexOfResult");
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), resultAt(query, 0)), kCFNotFound);
  failing("MDQueryCopyQueryString");
  EXPECT_EQ(MDQueryCopyQueryString(query.get()), nullptr);
  EXPECT_EQ(standin::failuresFired(), 1);
}

using QueryDeathTest = Query;

TEST_F(QueryDeathTest, MayBeToldToEndTheProcessWhereNothingIsDefined) {
  const auto query = makeQuery("kMDItemFSSize > 0");
  MDQueryExecute(query.get(), kMDQuerySynchronous);
  const auto ending = [&](const std::function<void()>& call) {
    standin::setUndefined(standin::Undefined::End);
    call();
  };
  EXPECT_DEATH(ending([&] { resultAt(query, 0); }),
               "MDQueryGetResultAtIndex: what is at index 0 of 0 results is undefined");
  EXPECT_DEATH(ending([&] { MDQuerySetMaxCount(query.get(), 1); }),
               "MDQuerySetMaxCount: a maximum count after MDQueryExecute is undefined");
  EXPECT_DEATH(ending([&] { MDQueryCopyValuesOfAttribute(query.get(), kMDItemPath); }),
               "MDQueryCopyValuesOfAttribute: the value of an attribute that the query wasn't made with is "
               "undefined");
}

TEST_F(QueryDeathTest, EndsTheProcessForANullOrAWrongQuery) {
  const auto text = makeString("no query");
  EXPECT_DEATH(MDQueryExecute(nullptr, 1), "MDQueryExecute: the query is null");
  const auto wrong = reinterpret_cast<MDQueryRef>(const_cast<__CFString*>(text.get()));
  EXPECT_DEATH(MDQueryGetResultCount(wrong), "MDQueryGetResultCount: this is no query");
  EXPECT_DEATH(MDQueryCreate(nullptr, nullptr, nullptr, nullptr), "MDQueryCreate: the string is null");
  const auto query = makeQuery("kMDItemFSSize == 0");
  EXPECT_DEATH(MDQueryGetIndexOfResult(query.get(), nullptr), "MDQueryGetIndexOfResult: the item is null");
}

}  // namespace
