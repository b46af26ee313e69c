// Results that only follow what happens are those of a query that is made afresh, whatever happened, and what
// the notifications tell adds up to them.
#include <filesystem>
#include <set>

#include "tests/standin/coreservices/disk/random_operations.h"
#include "tests/standin/coreservices/metadata/query_fixture.h"
#include "tests/support/sanitizers.h"
#include "tests/support/texts.h"
#include "tests/support/tier.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kText = "kMDItemFSSize > 0 || kMDItemFSNodeCount >= 0";

class UpdatesModel : public QueryTest, public testing::WithParamInterface<unsigned> {
 protected:
  UpdatesModel() {
    scratch.folder("in");
    scratch.folder("out");
    standin::setIndexedFolders({scratch.at("in")});
  }

  ~UpdatesModel() override { standin::setWalkLimits({}); }

  void followRandomOperations(int count);

  void follow(const Notice& notice) {
    for (const std::string& path : notice.removed) EXPECT_EQ(told.erase(path), 1u) << path;
    for (const std::string& path : notice.changed) EXPECT_EQ(told.count(path), 1u) << path;
    for (const std::string& path : notice.added) EXPECT_TRUE(told.insert(path).second) << path;
  }

  void compare(const Owned<MDQueryRef>& query) const {
    const auto fresh = makeQuery(kText);
    MDQueryExecute(fresh.get(), kMDQuerySynchronous);
    const std::vector<std::string> expected = results(fresh);
    EXPECT_EQ(sorted(results(query)), sorted(expected));
    EXPECT_EQ(sorted(scratch.within({told.begin(), told.end()})), sorted(expected));
  }

  void expectSorted(const Owned<MDQueryRef>& query) const {
    std::vector<intmax_t> sizes;
    for (const std::string& name : results(query)) {
      const std::string path = scratch.at(name);
      sizes.push_back(fs::is_directory(path) ? -1 : static_cast<intmax_t>(fs::file_size(path)));
    }
    EXPECT_TRUE(std::is_sorted(sizes.begin(), sizes.end())) << testing::PrintToString(sizes);
  }

  std::set<std::string> told;
};

void UpdatesModel::followRandomOperations(int count) {
  RandomOperations operations(scratch, GetParam());
  for (int i = 0; i < 30; ++i) operations.doOne();
  const auto query = makeQuery(kText, {}, {"kMDItemFSSize"});
  setBatches(query, {0, 0, 0, 0, 1 + GetParam() % 4 * 5, GetParam() % 3 * 250});
  Listener listener(query.get());
  gather(query, kMDQueryWantsUpdates);
  for (CFIndex i = 0; i < MDQueryGetResultCount(query.get()); ++i) told.insert(pathOf(resultAt(query, i)));
  listener.reaction = [this](const Notice& notice) { follow(notice); };
  for (int i = 0; i < count && !HasFailure(); ++i) {
    SCOPED_TRACE(i);
    operations.doOne();
    if (operations.upTo(100) == 0) standin::forceRescan();
    if (operations.upTo(2) == 0) run(0.05);  // some changes are told while others of the same batch come
    if (operations.upTo(20) != 0) continue;
    run(10);
    compare(query);
    expectSorted(query);
  }
}

TEST_P(UpdatesModel, HasTheResultsOfANewQueryAfterAThousandRandomOperations) {
  followRandomOperations(1000);
}

TEST_P(UpdatesModel, HasThemAlsoWhereSomethingIsLeftOut) {
  standin::WalkLimits limits;
  if (GetParam() % 2 == 0) limits.excluded = {"b", "c/d", "e/**/f", scratch.at("in/d/?"), "a/"};
  if (GetParam() % 3 != 0) limits.depth = 1 + GetParam() % 3;
  limits.oneFileSystem = true;
  standin::setWalkLimits(limits);
  standin::setIndexedFolders({scratch.at("in/b"), scratch.at("in"), scratch.at("in/a/c/e")});
  followRandomOperations(400);
}

INSTANTIATE_TEST_SUITE_P(Seeds, UpdatesModel,
                         testing::Range(1u, isLongTier()              ? 61u
                                            : underAddressSanitizer() ? 4u
                                                                      : 7u));

}  // namespace
