// Where a query looks.
#include <stdlib.h>

#include "tests/standin/coreservices/metadata/query_fixture.h"
#include "tests/support/texts.h"

namespace {

class QueryScope : public QueryTest {
 protected:
  QueryScope() {
    for (const char* name : {"one/a.txt", "one/inner/b.txt", "two/c.txt"}) scratch.file(name);
  }

  static Owned<CFTypeRef> url(const std::string& path) { return Owned<CFTypeRef>(makeURL(path).leak()); }
  static Owned<CFTypeRef> string(const std::string& text) {
    return Owned<CFTypeRef>(makeString(text).leak());
  }

  template <typename... Elements>
  static void setScope(const Owned<MDQueryRef>& query, Elements... elements) {
    const Owned scope(CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks));
    (CFArrayAppendValue(scope.get(), elements.get()), ...);
    MDQuerySetSearchScope(query.get(), scope.get(), 0);
  }

  std::vector<std::string> found(const Owned<MDQueryRef>& query) const {
    MDQueryExecute(query.get(), kMDQuerySynchronous);
    return results(query);
  }

  Owned<MDQueryRef> query = makeQuery("kMDItemFSName == \"*.txt\"");
};

TEST_F(QueryScope, IsTheIndexedFoldersUnlessOneIsSet) {
  standin::setIndexedFolders({scratch.at("two")});
  EXPECT_EQ(found(query), Texts{"two/c.txt"});
}

TEST_F(QueryScope, IsNowhereWhenItIsEmpty) {
  setScope(query);
  EXPECT_EQ(found(query), Texts{});
  EXPECT_TRUE(MDQueryIsGatheringComplete(query.get()));
}

TEST_F(QueryScope, TakesFoldersAsURLsAndAsStrings) {
  setScope(query, url(scratch.at("two")), string(scratch.at("one/inner")));
  EXPECT_EQ(found(query), (Texts{"two/c.txt", "one/inner/b.txt"}));
}

TEST_F(QueryScope, LooksOnceInFoldersThatLieInOneAnother) {
  setScope(query, url(scratch.at("one/inner")), url(scratch.at("one")), string(scratch.at("one")));
  EXPECT_EQ(found(query), (Texts{"one/a.txt", "one/inner/b.txt"}));
}

TEST_F(QueryScope, NeedNotBeIndexed) {
  standin::setIndexedFolders({scratch.at("two")});
  setScope(query, url(scratch.at("one")));
  EXPECT_EQ(found(query), (Texts{"one/a.txt", "one/inner/b.txt"}));
}

TEST_F(QueryScope, PassesOverWhatIsNoFolder) {
  setScope(query, url(scratch.at("missing")), string("two"), string("~"), string(""),
           string(scratch.at("one/a.txt")), string(scratch.at("two")));
  EXPECT_EQ(found(query), Texts{"two/c.txt"});
  EXPECT_EQ(standin::lastSearch().missingFolders, 5u);
}

TEST_F(QueryScope, MayStandForItselfAlone) {
  scratch.link("link.txt", "two/c.txt");
  const auto everything = makeQuery("kMDItemFSName == \"*\"");
  setScope(everything, url(scratch.at("two/c.txt")), string(scratch.at("link.txt")), url(scratch.at("one")),
           string(scratch.at("missing")), string("two"));
  standin::setLooksAtScopesAlone(true);
  EXPECT_EQ(found(everything), (Texts{"two/c.txt", "link.txt", "one"}));
  EXPECT_EQ(standin::lastSearch().foldersSearched, 0u);
  EXPECT_EQ(standin::lastSearch().missingFolders, 2u);
  setScope(query, url(scratch.at("one")), string(scratch.at("two/c.txt")));
  EXPECT_EQ(found(query), Texts{"two/c.txt"});
  standin::setLooksAtScopesAlone(false);
  const auto walks = makeQuery("kMDItemFSName == \"*.txt\"");
  setScope(walks, url(scratch.at("two")));
  EXPECT_EQ(found(walks), Texts{"two/c.txt"});
}

struct PlaceCase {
  const char* key;
  std::vector<std::string> found;
};
void PrintTo(const PlaceCase& row, std::ostream* out) {
  *out << row.key;
}

class QueryScopePlace : public QueryScope, public testing::WithParamInterface<PlaceCase> {};

TEST_P(QueryScopePlace, IsWhereItsKeySays) {
  const char* const before = ::getenv("HOME");
  const std::string home = before ? before : "";
  ::setenv("HOME", scratch.at("one").c_str(), 1);
  standin::setIndexedFolders({scratch.at("two")});
  setScope(query, string(GetParam().key));
  EXPECT_EQ(found(query), GetParam().found);
  ::setenv("HOME", home.c_str(), 1);
}

INSTANTIATE_TEST_SUITE_P(Keys, QueryScopePlace,
                         testing::Values(PlaceCase{"kMDQueryScopeHome", {"one/a.txt", "one/inner/b.txt"}},
                                         PlaceCase{"kMDQueryScopeComputer", {"two/c.txt"}},
                                         PlaceCase{"kMDQueryScopeComputerIndexed", {"two/c.txt"}},
                                         PlaceCase{"kMDQueryScopeAllIndexed", {"two/c.txt"}},
                                         PlaceCase{"kMDQueryScopeNetwork", {}},
                                         PlaceCase{"kMDQueryScopeNetworkIndexed", {}}),
                         [](const auto& info) { return std::string(info.param.key); });

TEST_F(QueryScope, HasKeysThatAreTheirOwnNames) {
  EXPECT_EQ(textOf(kMDQueryScopeHome), "kMDQueryScopeHome");
  EXPECT_EQ(textOf(kMDQueryScopeNetworkIndexed), "kMDQueryScopeNetworkIndexed");
}

TEST_F(QueryScope, MayBeSetAnewUntilTheQueryIsExecuted) {
  setScope(query, url(scratch.at("one")));
  setScope(query, url(scratch.at("two")));
  EXPECT_EQ(found(query), Texts{"two/c.txt"});
}

TEST_F(QueryScope, CannotBeSetAfterwards) {
  setScope(query, url(scratch.at("two")));
  MDQueryExecute(query.get(), 0);
  setScope(query, url(scratch.at("one")));
  run();
  EXPECT_EQ(results(query), Texts{"two/c.txt"});
}

TEST_F(QueryScope, IsFollowedWhenUpdatesAreWanted) {
  setScope(query, url(scratch.at("two")));
  gather(query, kMDQueryWantsUpdates);
  scratch.file("one/new.txt");
  scratch.file("two/new.txt");
  run();
  EXPECT_EQ(results(query), (Texts{"two/c.txt", "two/new.txt"}));
}

TEST_F(QueryScope, OfASubsetIsItsParents) {
  setScope(query, url(scratch.at("one")));
  const auto subset = makeSubset(query, "kMDItemFSName == \"*\"");
  EXPECT_EQ(found(subset), (Texts{"one/a.txt", "one/inner/b.txt"}));
}

TEST_F(QueryScope, OfASubsetIsWhatLiesInItsOwnAndInItsParents) {
  setScope(query, url(scratch.at("one")));
  const auto subset = makeSubset(query, "kMDItemFSName == \"*\"");
  setScope(subset, url(scratch.at("two")), url(scratch.at("one/inner")));
  const auto inner = makeSubset(subset, "kMDItemFSName == \"*\"");
  setScope(inner, url(scratch.path()));
  EXPECT_EQ(found(subset), Texts{"one/inner/b.txt"});
  EXPECT_EQ(found(inner), Texts{"one/inner/b.txt"});
}

// Without a scope, the parent looks where everything is indexed, and so does its subset at the most.
TEST_F(QueryScope, OfASubsetReachesNothingThatItsParentWithoutAScopeDoesNot) {
  standin::setIndexedFolders({scratch.at("one"), scratch.at("one/inner")});
  const auto subset = makeSubset(query, "kMDItemFSName == \"*\"");
  EXPECT_EQ(found(subset), (Texts{"one/a.txt", "one/inner/b.txt"}));
  const auto elsewhere = makeSubset(query, "kMDItemFSName == \"*\"");
  setScope(elsewhere, url(scratch.at("two")), url(scratch.at("one/inner")));
  EXPECT_EQ(found(elsewhere), Texts{"one/inner/b.txt"});
}

using QueryScopeDeathTest = QueryScope;

TEST_F(QueryScopeDeathTest, EndsTheProcessForWhatIsNoScope) {
  EXPECT_DEATH(MDQuerySetSearchScope(query.get(), nullptr, 0), "MDQuerySetSearchScope: the scope is null");
  EXPECT_DEATH(setScope(query, Owned<CFTypeRef>(CFRetain(kCFBooleanTrue))),
               "MDQuerySetSearchScope: this is no string");
}

}  // namespace
