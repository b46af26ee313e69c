// How a query keeps its results up to date once they are gathered.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "tests/standin/coreservices/metadata/query_fixture.h"
#include "tests/support/texts.h"

namespace {

namespace fs = std::filesystem;

class Updates : public QueryTest {
 protected:
  static constexpr const char* kTexts = "kMDItemFSName == \"*.txt\"";

  void start(const char* text = kTexts, std::initializer_list<const char*> sorting = {}) {
    query = makeQuery(text, {}, sorting);
    listen();
  }
  void listen() {
    listener = std::make_unique<Listener>(query.get());
    gather(query, kMDQueryWantsUpdates);
    listener->notices.clear();
  }
  // Runs the loop and answers what was told, which must be one update.
  Notice update() {
    run();
    const std::vector<Notice> told = std::exchange(listener->notices, {});
    EXPECT_EQ(told.size(), 1u);
    if (told.size() != 1) return {};
    EXPECT_EQ(told[0].name, "DidUpdate");
    EXPECT_EQ(told[0].object, query.get());
    EXPECT_TRUE(told[0].hasDictionary);
    return told[0];
  }
  void expectNoUpdate() {
    run();
    EXPECT_EQ(listener->names(), Texts{});
  }
  void lookAtAll() const { results(query); }
  std::vector<std::string> within(const std::vector<std::string>& paths) const {
    return scratch.within(paths);
  }
  void expectSameAsNewQuery(const char* text = kTexts) const {
    const auto fresh = makeQuery(text);
    MDQueryExecute(fresh.get(), kMDQuerySynchronous);
    EXPECT_EQ(sorted(results(query)), sorted(results(fresh)));
  }

  Owned<MDQueryRef> query;
  std::unique_ptr<Listener> listener;
};

TEST_F(Updates, TellOfAFileThatWasCreated) {
  start();
  scratch.file("new.txt");
  scratch.file("new.jpg");
  const Notice told = update();
  EXPECT_EQ(within(told.added), Texts{"new.txt"});
  EXPECT_EQ(told.changed, Texts{});
  EXPECT_EQ(told.removed, Texts{});
  EXPECT_EQ(told.count, 1);
  EXPECT_EQ(results(query), Texts{"new.txt"});
}

TEST_F(Updates, TellOfAFileThatWasDeleted) {
  scratch.file("a.txt");
  scratch.file("b.txt");
  start();
  lookAtAll();
  fs::remove(scratch.at("a.txt"));
  const Notice told = update();
  EXPECT_EQ(within(told.removed), Texts{"a.txt"});
  EXPECT_EQ(told.added, Texts{});
  EXPECT_EQ(told.count, 1);
  EXPECT_EQ(results(query), Texts{"b.txt"});
}

TEST_F(Updates, TellOfAFileThatChanged) {
  scratch.file("a.txt");
  start();
  lookAtAll();
  scratch.file("a.txt", "content");
  EXPECT_EQ(within(update().changed), Texts{"a.txt"});
  ASSERT_EQ(::chmod(scratch.at("a.txt").c_str(), 0400), 0);
  const Notice told = update();
  EXPECT_EQ(within(told.changed), Texts{"a.txt"});
  EXPECT_EQ(told.added, Texts{});
  EXPECT_EQ(told.removed, Texts{});
}

TEST_F(Updates, TellOfChangedAndRemovedResultsThatWereLookedAtAlone) {
  for (const char* name : {"a.txt", "b.txt", "c.txt", "d.txt"}) scratch.file(name);
  start();
  resultAt(query, 0);
  resultAt(query, 2);
  scratch.file("a.txt", "content");
  scratch.file("b.txt", "content");
  fs::remove(scratch.at("c.txt"));
  fs::remove(scratch.at("d.txt"));
  const Notice told = update();
  EXPECT_EQ(within(told.changed), Texts{"a.txt"});
  EXPECT_EQ(within(told.removed), Texts{"c.txt"});
  EXPECT_EQ(told.count, 2);
}

TEST_F(Updates, TellOfARemovedResultByTheItemThatWasHandedOut) {
  scratch.file("a.txt");
  start();
  const MDItemRef item = resultAt(query, 0);
  CFRetain(item);
  const Owned held(item);
  struct Seen {
    const void* removed = nullptr;
  } seen;
  const auto look = [](CFNotificationCenterRef, void* observer, CFStringRef, const void*,
                       CFDictionaryRef info) {
    const auto removed = static_cast<CFArrayRef>(CFDictionaryGetValue(info, kMDQueryUpdateRemovedItems));
    static_cast<Seen*>(observer)->removed = CFArrayGetValueAtIndex(removed, 0);
  };
  CFNotificationCenterAddObserver(CFNotificationCenterGetLocalCenter(), &seen, look, nullptr, query.get(),
                                  CFNotificationSuspensionBehaviorDeliverImmediately);
  fs::remove(scratch.at("a.txt"));
  update();
  CFNotificationCenterRemoveEveryObserver(CFNotificationCenterGetLocalCenter(), &seen);
  EXPECT_EQ(seen.removed, item);
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), item), kCFNotFound);
}

TEST_F(Updates, TellOfARenamedFileAsOneThatWentAndOneThatCame) {
  scratch.file("a.txt");
  start();
  lookAtAll();
  fs::rename(scratch.at("a.txt"), scratch.at("b.txt"));
  const Notice told = update();
  EXPECT_EQ(within(told.removed), Texts{"a.txt"});
  EXPECT_EQ(within(told.added), Texts{"b.txt"});
  fs::rename(scratch.at("b.txt"), scratch.at("b.jpg"));
  EXPECT_EQ(within(update().removed), Texts{"b.txt"});
  EXPECT_EQ(results(query), Texts{});
}

TEST_F(Updates, TellOfFilesMovedInAndOut) {
  const ScratchFolder outside;
  outside.file("in.txt");
  scratch.file("out.txt");
  start();
  lookAtAll();
  fs::rename(outside.at("in.txt"), scratch.at("in.txt"));
  fs::rename(scratch.at("out.txt"), outside.at("out.txt"));
  const Notice told = update();
  EXPECT_EQ(within(told.added), Texts{"in.txt"});
  EXPECT_EQ(within(told.removed), Texts{"out.txt"});
}

TEST_F(Updates, CountAnAttributeThatNoLongerMatchesAsRemovedAndOneThatNowDoesAsAdded) {
  scratch.file("small");
  scratch.file("large", "more than ten bytes");
  start("kMDItemFSSize > 10");
  lookAtAll();
  fs::resize_file(scratch.at("large"), 1);
  fs::resize_file(scratch.at("small"), 100);
  const Notice told = update();
  EXPECT_EQ(within(told.added), Texts{"small"});
  EXPECT_EQ(within(told.removed), Texts{"large"});
  EXPECT_EQ(told.changed, Texts{});
}

TEST_F(Updates, TellOfWholeTrees) {
  start();
  const ScratchFolder outside;
  for (const char* name : {"tree/a.txt", "tree/deep/b.txt", "tree/deep/deeper/c.txt", "tree/deep/d.jpg"}) {
    outside.file(name);
  }
  fs::rename(outside.at("tree"), scratch.at("tree"));
  EXPECT_EQ(sorted(within(update().added)),
            sorted({"tree/a.txt", "tree/deep/b.txt", "tree/deep/deeper/c.txt"}));
  fs::rename(scratch.at("tree/deep"), scratch.at("moved"));
  Notice told = update();
  EXPECT_EQ(sorted(within(told.removed)), sorted({"tree/deep/b.txt", "tree/deep/deeper/c.txt"}));
  EXPECT_EQ(sorted(within(told.added)), sorted({"moved/b.txt", "moved/deeper/c.txt"}));
  fs::remove_all(scratch.at("moved"));
  EXPECT_EQ(sorted(within(update().removed)), sorted({"moved/b.txt", "moved/deeper/c.txt"}));
  scratch.file("brand/new/tree/e.txt");
  EXPECT_EQ(within(update().added), Texts{"brand/new/tree/e.txt"});
  fs::rename(scratch.at("brand"), outside.at("brand"));
  EXPECT_EQ(within(update().removed), Texts{"brand/new/tree/e.txt"});
  EXPECT_EQ(results(query), Texts{"tree/a.txt"});
}

TEST_F(Updates, TellOfFoldersThatAreResultsThemselves) {
  start("kMDItemFSName == \"box*\"");
  scratch.folder("box/boxes");
  EXPECT_EQ(sorted(within(update().added)), sorted({"box", "box/boxes"}));
  fs::remove(scratch.at("box/boxes"));
  const Notice told = update();
  EXPECT_EQ(within(told.removed), Texts{"box/boxes"});
  EXPECT_EQ(within(told.changed), Texts{"box"});  // its dates
}

TEST_F(Updates, NeverTellOfTheFolderThatIsSearched) {
  start("kMDItemFSName == \"*\"");
  ASSERT_EQ(::chmod(scratch.path().c_str(), 0711), 0);
  expectNoUpdate();
}

TEST_F(Updates, DoNotTakeWhatALinkLeadsToForTheFolderThatWasThere) {
  scratch.file("folder/a.txt");
  start();
  lookAtAll();
  fs::rename(scratch.at("folder"), scratch.at("elsewhere"));
  scratch.link("folder", "elsewhere");
  const Notice told = update();
  EXPECT_EQ(within(told.removed), Texts{"folder/a.txt"});
  EXPECT_EQ(results(query), Texts{"elsewhere/a.txt"});
}

TEST_F(Updates, AreNotWantedWithoutTheirFlagNorTogetherWithTheSynchronousOne) {
  for (const CFOptionFlags flags : {0, int{kMDQuerySynchronous} | int{kMDQueryWantsUpdates}}) {
    query = makeQuery(kTexts);
    listener = std::make_unique<Listener>(query.get());
    gather(query, flags);
    listener->notices.clear();
    scratch.file("new.txt");
    expectNoUpdate();
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
    EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
    fs::remove(scratch.at("new.txt"));
  }
}

TEST_F(Updates, AreNeitherDeliveredNorLostWhileTheRunLoopDoesNotRun) {
  scratch.file("a.txt");
  start();
  lookAtAll();
  scratch.file("b.txt");
  fs::remove(scratch.at("a.txt"));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
  EXPECT_EQ(listener->names(), Texts{});
  const Notice told = update();
  EXPECT_EQ(within(told.added), Texts{"b.txt"});
  EXPECT_EQ(within(told.removed), Texts{"a.txt"});
}

TEST_F(Updates, IncludeWhatHappenedBetweenExecutingAndGathering) {
  query = makeQuery(kTexts);
  listener = std::make_unique<Listener>(query.get());
  MDQueryExecute(query.get(), kMDQueryWantsUpdates);
  scratch.file("a.txt");
  run();
  EXPECT_EQ(results(query), Texts{"a.txt"});
}

TEST_F(Updates, IncludeWhatHappensBehindTheSearchThatIsGathering) {
  for (const char* name : {"a/1.txt", "b/2.txt", "c/3.txt"}) scratch.file(name);
  query = makeQuery(kTexts);
  setBatches(query, {1, 1000000, 1, 1000000, 100, 0});
  listener = std::make_unique<Listener>(query.get());
  listener->reaction = [&](const Notice& notice) {
    if (notice.count != 2) return;
    listener->reaction = nullptr;
    scratch.file("a/new.txt");
    scratch.file("c/new.txt");
    fs::remove(scratch.at("a/1.txt"));
    fs::rename(scratch.at("b"), scratch.at("z"));
  };
  gather(query, kMDQueryWantsUpdates);
  run();
  EXPECT_EQ(sorted(results(query)), sorted({"a/new.txt", "c/3.txt", "c/new.txt", "z/2.txt"}));
  EXPECT_EQ(listener->count("DidFinish"), 1u);
}

TEST_F(Updates, ComeAfterTheQueryHasFinished) {
  scratch.file("a.txt");
  query = makeQuery(kTexts);
  listener = std::make_unique<Listener>(query.get());
  MDQueryExecute(query.get(), kMDQueryWantsUpdates);
  scratch.file("b.txt");
  run();
  ASSERT_EQ(listener->count("DidFinish"), 1u);
  const Texts names = listener->names();
  EXPECT_LT(std::ranges::find(names, "DidFinish"), std::ranges::find(names, "DidUpdate"));
}

TEST_F(Updates, WaitWhileTheyAreDisabledAsOftenAsTheyWere) {
  start();
  MDQueryDisableUpdates(query.get());
  MDQueryDisableUpdates(query.get());
  scratch.file("a.txt");
  expectNoUpdate();
  MDQueryEnableUpdates(query.get());
  scratch.file("b.txt");
  expectNoUpdate();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
  MDQueryEnableUpdates(query.get());
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
  EXPECT_EQ(within(update().added), (Texts{"a.txt", "b.txt"}));
}

TEST_F(Updates, GoOnAfterAnEnablingThatNothingWasDisabledFor) {
  start();
  MDQueryEnableUpdates(query.get());
  MDQueryDisableUpdates(query.get());
  scratch.file("a.txt");
  expectNoUpdate();
  MDQueryEnableUpdates(query.get());
  EXPECT_EQ(within(update().added), Texts{"a.txt"});
}

TEST_F(Updates, EndWhenTheQueryIsStopped) {
  scratch.file("a.txt");
  start();
  MDQueryStop(query.get());
  fs::remove(scratch.at("a.txt"));
  expectNoUpdate();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
  EXPECT_TRUE(MDQueryIsGatheringComplete(query.get()));
}

TEST_F(Updates, EndWhenAnObserverStopsOrReleasesTheQuery) {
  for (const bool releases : {false, true}) {
    start();
    setBatches(query, {0, 0, 0, 0, 1, 0});
    listener = std::make_unique<Listener>(nullptr);
    listener->reaction = [&](const Notice&) {
      if (releases) {
        query = Owned<MDQueryRef>();
      } else {
        MDQueryStop(query.get());
      }
    };
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) scratch.file(name);
    run();
    EXPECT_EQ(listener->notices.size(), 1u);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
    for (const char* name : {"a.txt", "b.txt", "c.txt"}) fs::remove(scratch.at(name));
  }
}

TEST_F(Updates, GoOnWhileAnObserverRunsAnotherQueryAndTheLoop) {
  start();
  setBatches(query, {0, 0, 0, 0, 2, 0});
  listener->reaction = [&](const Notice&) {
    const auto other = makeQuery(kTexts);
    MDQueryExecute(other.get(), kMDQuerySynchronous);
    EXPECT_EQ(MDQueryGetResultCount(other.get()), 6);
    run(0.1);
  };
  makeFiles(6);
  run();
  EXPECT_EQ(listener->notices.size(), 3u);
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 6);
}

TEST_F(Updates, ComeInBatchesOfTheirMaximumCount) {
  start();
  setBatches(query, {0, 0, 0, 0, 4, 1000});
  makeFiles(10);
  run(5);
  ASSERT_EQ(listener->names(), (Texts{"DidUpdate", "DidUpdate", "DidUpdate"}));
  EXPECT_EQ(listener->notices[0].added.size(), 4u);
  EXPECT_EQ(listener->notices[1].added.size(), 4u);
  EXPECT_EQ(listener->notices[2].added.size(), 2u);
}

TEST_F(Updates, ComeTogetherAfterTheTimeOfABatch) {
  start();
  setBatches(query, {0, 0, 0, 0, 100, 2000});
  scratch.file("a.txt");
  run(1.5);
  EXPECT_EQ(listener->names(), Texts{});
  scratch.file("b.txt");
  run(0.4);
  EXPECT_EQ(listener->names(), Texts{});
  run(0.2);
  ASSERT_EQ(listener->notices.size(), 1u);
  EXPECT_EQ(within(listener->notices[0].added), (Texts{"a.txt", "b.txt"}));
}

// What happened to a path by itself and what became of the folders above it are told one after the other, and
// may be looked at together.
TEST_F(Updates, TellOnceOfAFileThatGoesWithItsFolderAfterItChanged) {
  for (const std::initializer_list<const char*>& sorting :
       {std::initializer_list<const char*>{}, {"kMDItemFSSize"}}) {
    scratch.file("folder/a.txt");
    scratch.file("stays.txt");
    start(kTexts, sorting);
    setBatches(query, {0, 0, 0, 0, 100, 2000});
    lookAtAll();
    scratch.file("folder/a.txt", "changed");
    run(0.1);
    fs::rename(scratch.at("folder"), scratch.at("moved"));
    run(0.1);
    run(10);
    expectSameAsNewQuery();
    std::vector<std::string> removed;
    for (const Notice& told : listener->notices) {
      removed.insert(removed.end(), told.removed.begin(), told.removed.end());
    }
    EXPECT_EQ(within(removed), Texts{"folder/a.txt"});
    for (const char* name : {"new-1.txt", "new-2.txt", "new-3.txt"}) scratch.file(name);
    run(10);
    expectSameAsNewQuery();
    for (const char* name : {"new-1.txt", "new-2.txt", "new-3.txt"}) fs::remove(scratch.at(name));
    fs::remove_all(scratch.at("moved"));
  }
}

TEST_F(Updates, TellOnceOfAFileThatIsDeletedWithItsFoldersOneByOne) {
  scratch.file("outer/inner/a.txt");
  start();
  setBatches(query, {0, 0, 0, 0, 100, 2000});
  lookAtAll();
  for (const char* name : {"outer/inner/a.txt", "outer/inner", "outer"}) {
    fs::remove(scratch.at(name));
    run(0.1);
  }
  run(10);
  ASSERT_EQ(listener->notices.size(), 1u);
  EXPECT_EQ(within(listener->notices[0].removed), Texts{"outer/inner/a.txt"});
  for (const char* name : {"new-1.txt", "new-2.txt"}) scratch.file(name);
  run(10);
  EXPECT_EQ(sorted(results(query)), sorted({"new-1.txt", "new-2.txt"}));
}

TEST_F(Updates, CountAFileOnceThatChangedBeforeEventsWereLost) {
  for (const std::initializer_list<const char*>& sorting :
       {std::initializer_list<const char*>{}, {"kMDItemFSSize"}}) {
    scratch.file("a.txt");
    start(kTexts, sorting);
    setBatches(query, {0, 0, 0, 0, 100, 2000});
    lookAtAll();
    scratch.file("a.txt", "changed");
    scratch.file("new.txt");
    run(0.1);
    standin::forceRescan();
    run(10);
    EXPECT_EQ(MDQueryGetResultCount(query.get()), 2);
    expectSameAsNewQuery();
    fs::remove(scratch.at("new.txt"));
  }
}

TEST_F(Updates, ThatTellNothingNewAreNotTold) {
  start();
  scratch.file("picture.jpg");
  scratch.file("gone.txt");
  fs::remove(scratch.at("gone.txt"));
  expectNoUpdate();
}

TEST_F(Updates, PutResultsWhereTheyBelong) {
  scratch.file("a.txt", "12345");
  scratch.file("b.txt", "123");
  scratch.file("c.txt", "1");
  start(kTexts, {"kMDItemFSSize"});
  EXPECT_EQ(results(query), (Texts{"c.txt", "b.txt", "a.txt"}));
  const void* const itemA = resultAt(query, 2);
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), itemA), 2);
  scratch.file("d.txt", "12");
  fs::resize_file(scratch.at("a.txt"), 2);
  fs::resize_file(scratch.at("c.txt"), 100);
  update();
  EXPECT_EQ(results(query), (Texts{"a.txt", "d.txt", "b.txt", "c.txt"}));
  EXPECT_EQ(resultAt(query, 0), itemA);
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), itemA), 0);
  EXPECT_TRUE(MDQuerySetSortOptionFlagsForAttribute(query.get(), kMDItemFSSize, 1));
  EXPECT_EQ(results(query).front(), "c.txt");
}

TEST_F(Updates, KeepToTheMaximumCount) {
  scratch.file("a.txt");
  query = makeQuery(kTexts);
  MDQuerySetMaxCount(query.get(), 2);
  listen();
  makeFiles(5);
  update();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 2);
  fs::remove(scratch.at("a.txt"));
  update();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
  scratch.file("z.txt");
  update();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 2);
}

TEST_F(Updates, MayTakeAMaximumCountThatComesTooLate) {
  makeFiles(3);
  start();
  standin::setUndefined(standin::Undefined::Garbage);
  MDQuerySetMaxCount(query.get(), 2);
  standin::setUndefined(standin::Undefined::Nothing);
  scratch.file("z.txt");
  expectNoUpdate();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 3);
}

TEST_F(Updates, KeepARenamedFileThoughTheMaximumCountIsReached) {
  scratch.file("a.txt");
  scratch.file("b.txt");
  query = makeQuery(kTexts);
  MDQuerySetMaxCount(query.get(), 2);
  listen();
  fs::rename(scratch.at("a.txt"), scratch.at("c.txt"));
  update();
  EXPECT_EQ(sorted(results(query)), sorted({"b.txt", "c.txt"}));
}

TEST_F(Updates, RenewTheValuesThatWereAskedFor) {
  scratch.file("a.txt", "1");
  scratch.file("b.txt", "1");
  query = makeQuery(kTexts, {"kMDItemFSSize"}, {});
  listen();
  const auto countOf = [&](int64_t size) {
    const Owned number(CFNumberCreate(kCFAllocatorDefault, kCFNumberSInt64Type, &size));
    return MDQueryGetCountOfResultsWithAttributeValue(query.get(), kMDItemFSSize, number.get());
  };
  EXPECT_EQ(countOf(1), 2);
  fs::resize_file(scratch.at("a.txt"), 7);
  update();
  EXPECT_EQ(countOf(1), 1);
  EXPECT_EQ(countOf(7), 1);
  fs::remove(scratch.at("b.txt"));
  update();
  EXPECT_EQ(countOf(1), 0);
  const Owned values(MDQueryCopyValuesOfAttribute(query.get(), kMDItemFSSize));
  EXPECT_EQ(CFArrayGetCount(values.get()), 1);
}

TEST_F(Updates, AreMadeUpForAfterEventsWereLost) {
  for (const char* name : {"stays.txt", "goes.txt", "folder/goes.txt", "was.jpg"}) scratch.file(name);
  start();
  lookAtAll();
  fs::remove(scratch.at("goes.txt"));
  fs::remove_all(scratch.at("folder"));
  scratch.file("comes.txt");
  scratch.file("new/comes.txt");
  standin::forceRescan();
  run();
  EXPECT_EQ(sorted(results(query)), sorted({"stays.txt", "comes.txt", "new/comes.txt"}));
  listener->notices.clear();
  scratch.file("new/later.txt");
  EXPECT_EQ(within(update().added), Texts{"new/later.txt"});
}

TEST_F(Updates, FollowAFolderOfTheScopeThatIsMissingAtFirst) {
  standin::setIndexedFolders({scratch.path() + "/later"});
  start();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
  scratch.file("later/a.txt");
  update();
  EXPECT_EQ(results(query), Texts{"later/a.txt"});
  fs::remove_all(scratch.at("later"));
  EXPECT_EQ(within(update().removed), Texts{"later/a.txt"});
}

TEST_F(Updates, TakeASearchedFolderThatLiesInAnotherForTheResultThatItIs) {
  scratch.folder("box");
  standin::setIndexedFolders({scratch.path(), scratch.at("box")});
  start("kMDItemFSName == \"*\"");
  EXPECT_EQ(results(query), Texts{"box"});
  scratch.file("box/new");
  EXPECT_EQ(within(update().added), Texts{"box/new"});
  EXPECT_EQ(sorted(results(query)), sorted({"box", "box/new"}));
}

TEST_F(Updates, LeaveOutExcludedFolders) {
  scratch.folder("out");
  standin::setIndexedFolders({scratch.path()}, {scratch.at("out")});
  start();
  scratch.file("out/a.txt");
  expectNoUpdate();
  standin::forceRescan();
  run();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
}

TEST_F(Updates, ReachEachQueryThatWantsThem) {
  start();
  const auto other = makeQuery("kMDItemFSName == \"*\"");
  const Listener otherListener(other.get());
  gather(other, kMDQueryWantsUpdates);
  scratch.file("a.txt");
  scratch.file("b.jpg");
  run();
  EXPECT_EQ(listener->count("DidUpdate"), 1u);
  EXPECT_EQ(otherListener.count("DidUpdate"), 1u);
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
  EXPECT_EQ(MDQueryGetResultCount(other.get()), 2);
}

TEST_F(Updates, ComeOnTheThreadThatExecutedTheQuery) {
  std::thread([&] {
    start();
    scratch.file("a.txt");
    std::thread([] {
      EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
    }).join();
    EXPECT_EQ(listener->names(), Texts{});
    const auto here = std::this_thread::get_id();
    listener->reaction = [here](const Notice&) { EXPECT_EQ(std::this_thread::get_id(), here); };
    update();
    MDQueryStop(query.get());
  }).join();
}

TEST_F(Updates, ThatCannotBeFollowedAreReportedAndTheQueryGathersAllTheSame) {
  scratch.file("a.txt");
  query = makeQuery(kTexts);
  rlimit usual;
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
  const rlimit none{0, usual.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  const bool executed = MDQueryExecute(query.get(), kMDQueryWantsUpdates);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
  EXPECT_TRUE(executed);
  EXPECT_NE(standin::liveUpdateProblem(), "");
  run();
  EXPECT_EQ(results(query), Texts{"a.txt"});
  MDQueryDisableUpdates(query.get());
  MDQueryEnableUpdates(query.get());
  standin::forceRescan();
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
  start();
  EXPECT_EQ(standin::liveUpdateProblem(), "");
}

// The files come, change, move and go under another program's hand, while the loop runs by the system's
// clock.
TEST_F(Updates, FollowAnotherThreadsTenThousandChangesWithoutLoss) {
  standin::releaseClock();
  start();
  listener.reset();
  const std::string root = scratch.path();
  std::atomic<bool> done = false;
  std::thread writer([&root, &done] {
    for (int i = 0; i < 4000; ++i) {
      const std::string folder = root + "/folder-" + std::to_string(i % 20);
      const std::string path = folder + "/" + std::to_string(i) + ".txt";
      ::mkdir(folder.c_str(), 0700);
      ::close(::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
      if (::truncate(path.c_str(), i) != 0) break;
      if (i % 2) ::rename(path.c_str(), (path + "-renamed.txt").c_str());
      if (i % 6 == 0) ::unlink(path.c_str());
    }
    done = true;
  });
  runUntil([&] { return done.load(); });
  writer.join();
  constexpr CFIndex kLeft = 4000 - 667;
  runUntil([&] { return MDQueryGetResultCount(query.get()) == kLeft; });
  expectSameAsNewQuery();
  query = Owned<MDQueryRef>();
  EXPECT_EQ(alive(), "");
}

TEST_F(Updates, OfManyThousandsComeAndGoAndLeaveNothingBehind) {
  start();
  listener.reset();
  for (int round = 0; round < 5 && !HasFailure(); ++round) {
    makeFiles(1000, "round-" + std::to_string(round) + "/file-");
    runUntil([&] { return MDQueryGetResultCount(query.get()) == 1000; });
    fs::remove_all(scratch.at("round-" + std::to_string(round)));
    runUntil([&] { return MDQueryGetResultCount(query.get()) == 0; });
  }
  query = Owned<MDQueryRef>();
  EXPECT_EQ(alive(), "");
}

}  // namespace
