// How a query gathers: when, in which batches, what it tells, and what its observers may do meanwhile.
#include <stdexcept>
#include <thread>

#include "tests/standin/coreservices/metadata/query_fixture.h"
#include "tests/support/texts.h"

namespace {

class Gathering : public QueryTest {
 protected:
  static constexpr const char* kTexts = "kMDItemFSName == \"*.txt\"";
  static constexpr size_t kNoLimit = 1000000;
  // Batches of so many results, whatever time they take.
  static constexpr MDQueryBatchingParams batchesOf(size_t count) {
    return {count, kNoLimit, count, kNoLimit, count, 0};
  }

  // It finds a.txt to f.txt, which it makes, in batches of two.
  Owned<MDQueryRef> makeQueryOfSixInPairs() const {
    for (const char* name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt", "f.txt"}) scratch.file(name);
    auto query = makeQuery(kTexts);
    setBatches(query, batchesOf(2));
    return query;
  }
  static void gatherFirstBatch(const Owned<MDQueryRef>& query) {
    MDQueryExecute(query.get(), kMDQueryWantsUpdates);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, true);
  }
};

TEST_F(Gathering, AnswersTrueTheFirstTimeAndFalseLater) {
  const auto query = makeQuery(kTexts);
  EXPECT_TRUE(MDQueryExecute(query.get(), 0));
  EXPECT_FALSE(MDQueryExecute(query.get(), 0));
  EXPECT_FALSE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  run();
  EXPECT_FALSE(MDQueryExecute(query.get(), 0));
}

TEST_F(Gathering, HappensOnlyWhileTheRunLoopRuns) {
  makeFiles(3);
  const auto query = makeQuery(kTexts);
  const Listener listener(query.get());
  MDQueryExecute(query.get(), 0);
  EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
  EXPECT_EQ(listener.names(), Texts{});
  run();
  EXPECT_TRUE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 3);
  EXPECT_EQ(listener.names(), (Texts{"Progress", "DidFinish"}));
}

TEST_F(Gathering, HappensInTheDefaultModeAlone) {
  makeFiles(1);
  const auto query = makeQuery(kTexts);
  MDQueryExecute(query.get(), 0);
  EXPECT_EQ(CFRunLoopRunInMode(CFSTR("another mode"), 1, false), kCFRunLoopRunFinished);
  EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  run();
  EXPECT_TRUE(MDQueryIsGatheringComplete(query.get()));
}

TEST_F(Gathering, TellsProgressAfterEachBatchAndOnceThatItFinished) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(4));
  const Listener listener(query.get());
  gather(query);
  run();
  ASSERT_EQ(listener.names(), (Texts{"Progress", "Progress", "Progress", "DidFinish"}));
  EXPECT_EQ(listener.notices[0].count, 4);
  EXPECT_EQ(listener.notices[1].count, 8);
  EXPECT_EQ(listener.notices[2].count, 10);
  EXPECT_EQ(listener.notices[3].count, 10);
  for (const Notice& notice : listener.notices) {
    EXPECT_EQ(notice.object, query.get());
    EXPECT_EQ(notice.added, Texts{});
  }
}

TEST_F(Gathering, TellsNoProgressWhereNothingIsFound) {
  const auto query = makeQuery(kTexts);
  const Listener listener(query.get());
  gather(query);
  EXPECT_EQ(listener.names(), Texts{"DidFinish"});
}

TEST_F(Gathering, IsNotCompleteWhenTheLastBatchIsTold) {
  makeFiles(3);
  const auto query = makeQuery(kTexts);
  Listener listener(query.get());
  std::vector<bool> complete;
  listener.reaction = [&](const Notice&) {
    complete.push_back(MDQueryIsGatheringComplete(query.get()) != 0);
  };
  gather(query);
  EXPECT_EQ(complete, (std::vector<bool>{false, true}));
}

TEST_F(Gathering, TakesTheFirstBatchsLimitsForTheFirstBatchAlone) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  setBatches(query, {1, kNoLimit, 6, kNoLimit, 0, 0});
  const Listener listener(query.get());
  gather(query);
  ASSERT_EQ(listener.count("Progress"), 3u);
  EXPECT_EQ(listener.notices[0].count, 1);
  EXPECT_EQ(listener.notices[1].count, 7);
}

TEST_F(Gathering, EndsABatchWhenItsTimeIsOver) {
  makeFiles(100);
  const auto query = makeQuery(kTexts);
  setBatches(query, {kNoLimit, 0, kNoLimit, kNoLimit, 0, 0});
  const Listener listener(query.get());
  gather(query);
  ASSERT_EQ(listener.names(), (Texts{"Progress", "Progress", "DidFinish"}));
  EXPECT_GT(listener.notices[0].count, 0);
  EXPECT_LT(listener.notices[0].count, 100);
}

TEST_F(Gathering, GoesOnInSmallestBatchesWhenAllLimitsAreNought) {
  makeFiles(5);
  const auto query = makeQuery(kTexts);
  setBatches(query, {});
  const Listener listener(query.get());
  gather(query);
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 5);
  EXPECT_EQ(listener.count("Progress"), 5u);
}

TEST_F(Gathering, KeepsTheBatchingParametersThatItWasGiven) {
  const auto query = makeQuery(kTexts);
  const MDQueryBatchingParams usual = MDQueryGetBatchingParameters(query.get());
  EXPECT_GT(usual.first_max_num, 0u);
  EXPECT_GT(usual.update_max_ms, 0u);
  setBatches(query, {1, 2, 3, 4, 5, 6});
  const MDQueryBatchingParams set = MDQueryGetBatchingParameters(query.get());
  EXPECT_EQ((std::vector<size_t>{set.first_max_num, set.first_max_ms, set.progress_max_num,
                                 set.progress_max_ms, set.update_max_num, set.update_max_ms}),
            (std::vector<size_t>{1, 2, 3, 4, 5, 6}));
}

class Ticking {
 public:
  Ticking() {
    CFRunLoopSourceContext context{};
    context.info = this;
    context.perform = [](void* info) { static_cast<Ticking*>(info)->tick(); };
    source_ = Owned(CFRunLoopSourceCreate(kCFAllocatorDefault, 0, &context));
    CFRunLoopAddSource(CFRunLoopGetCurrent(), source_.get(), kCFRunLoopDefaultMode);
    CFRunLoopSourceSignal(source_.get());
  }
  ~Ticking() { CFRunLoopSourceInvalidate(source_.get()); }
  int ticks = 0;

 private:
  void tick() {
    ++ticks;
    CFRunLoopSourceSignal(source_.get());
  }
  Owned<CFRunLoopSourceRef> source_;
};

TEST_F(Gathering, LetsOtherSourcesFireBetweenItsBatches) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(1));
  const Ticking other;
  Listener listener(query.get());
  std::vector<int> ticks;
  listener.reaction = [&](const Notice&) { ticks.push_back(other.ticks); };
  MDQueryExecute(query.get(), 0);
  while (!MDQueryIsGatheringComplete(query.get())) CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, true);
  ASSERT_EQ(ticks.size(), 11u);
  for (size_t i = 1; i < ticks.size(); ++i) EXPECT_GT(ticks[i], ticks[i - 1]);
}

TEST_F(Gathering, LetsOtherSourcesFireWhenItIsSynchronous) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(2));
  const Ticking other;
  const Listener listener(query.get());
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_TRUE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 10);
  EXPECT_GE(other.ticks, 5);
  EXPECT_EQ(listener.count("DidFinish"), 1u);
  EXPECT_EQ(listener.count("Progress"), 5u);
}

TEST_F(Gathering, IsCompleteWhenASynchronousExecutionReturnsAlsoIfTheLoopWasStopped) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(1));
  Listener listener(query.get());
  listener.reaction = [](const Notice&) { CFRunLoopStop(CFRunLoopGetCurrent()); };
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 10);
}

TEST_F(Gathering, LeavesNothingInTheRunLoopOnceItIsOver) {
  const auto query = makeQuery(kTexts);
  gather(query);
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
}

TEST_F(Gathering, EndsWithoutAWordWhenItIsStopped) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(3));
  const Listener listener(query.get());
  MDQueryExecute(query.get(), 0);
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, true);
  MDQueryStop(query.get());
  run();
  EXPECT_EQ(listener.names(), Texts{"Progress"});
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 3);
  EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_FALSE(MDQueryExecute(query.get(), 0));
  EXPECT_EQ(results(query).size(), 3u);
}

TEST_F(Gathering, MayBeStoppedByAnObserver) {
  for (const CFOptionFlags flags : {0, int{kMDQuerySynchronous}}) {
    makeFiles(10);
    const auto query = makeQuery(kTexts);
    setBatches(query, batchesOf(2));
    Listener listener(query.get());
    listener.reaction = [&](const Notice&) { MDQueryStop(query.get()); };
    EXPECT_TRUE(MDQueryExecute(query.get(), flags));
    run();
    EXPECT_EQ(listener.names(), Texts{"Progress"}) << flags;
    EXPECT_EQ(MDQueryGetResultCount(query.get()), 2);
  }
}

TEST_F(Gathering, EndsWhenTheQueryIsReleased) {
  makeFiles(10);
  const Listener listener(nullptr);
  {
    const auto query = makeQuery(kTexts);
    setBatches(query, batchesOf(2));
    MDQueryExecute(query.get(), 0);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, true);
  }
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
  EXPECT_EQ(listener.names(), Texts{"Progress"});
}

TEST_F(Gathering, EndsWhenAnObserverReleasesTheQuery) {
  for (const CFOptionFlags flags : {0, int{kMDQuerySynchronous}, int{kMDQueryWantsUpdates}}) {
    makeFiles(10);
    auto query = makeQuery(kTexts);
    setBatches(query, batchesOf(2));
    Listener listener(nullptr);
    listener.reaction = [&](const Notice&) { query = Owned<MDQueryRef>(); };
    EXPECT_TRUE(MDQueryExecute(query.get(), flags));
    EXPECT_EQ(flags == kMDQuerySynchronous, !query);
    run();
    EXPECT_EQ(listener.names(), Texts{"Progress"}) << flags;
    EXPECT_FALSE(query);
    EXPECT_EQ(alive(), "");
  }
}

TEST_F(Gathering, ShowsTheQueryToTheNextObserverWhenOneReleasesIt) {
  makeFiles(1);
  auto query = makeQuery(kTexts);
  Listener first(query.get());
  const Listener second(query.get());
  first.reaction = [&](const Notice&) { query = Owned<MDQueryRef>(); };
  MDQueryExecute(query.get(), 0);
  run();
  ASSERT_EQ(second.notices.size(), 1u);
  EXPECT_EQ(second.notices[0].count, 1);
}

TEST_F(Gathering, MayEndWithAnObserverThatReleasesTheQuery) {
  makeFiles(1);
  auto query = makeQuery(kTexts);
  Listener listener(query.get());
  listener.reaction = [&](const Notice& notice) {
    if (notice.name == "DidFinish") query = Owned<MDQueryRef>();
  };
  MDQueryExecute(query.get(), kMDQueryWantsUpdates);
  run();
  EXPECT_EQ(listener.names(), (Texts{"Progress", "DidFinish"}));
  EXPECT_FALSE(query);
}

TEST_F(Gathering, GoesOnWhileAnObserverRunsAnotherQuery) {
  makeFiles(10);
  scratch.file("picture.jpg");
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(3));
  Listener listener(query.get());
  std::vector<CFIndex> found;
  listener.reaction = [&](const Notice&) {
    const auto other = makeQuery("kMDItemFSName == \"*.jpg\"");
    EXPECT_TRUE(MDQueryExecute(other.get(), kMDQuerySynchronous));
    found.push_back(MDQueryGetResultCount(other.get()));
  };
  gather(query);
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 10);
  EXPECT_EQ(listener.count("DidFinish"), 1u);
  EXPECT_EQ(found, std::vector<CFIndex>(listener.notices.size(), 1));
}

TEST_F(Gathering, GoesOnWhenAnObserverThrows) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(3));
  Listener listener(query.get());
  listener.reaction = [](const Notice& notice) {
    if (notice.name == "Progress") throw std::runtime_error("from an observer");
  };
  MDQueryExecute(query.get(), 0);
  EXPECT_THROW(run(), std::runtime_error);
  listener.reaction = nullptr;
  run();
  EXPECT_TRUE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 10);
}

TEST_F(Gathering, OfSeveralQueriesGoesOnSideBySide) {
  makeFiles(6);
  const auto first = makeQuery(kTexts);
  const auto second = makeQuery("kMDItemFSSize == 0");
  for (const auto* query : {&first, &second}) setBatches(*query, batchesOf(2));
  const Listener listener(nullptr);
  MDQueryExecute(first.get(), 0);
  MDQueryExecute(second.get(), 0);
  run();
  ASSERT_EQ(listener.count("DidFinish"), 2u);
  EXPECT_NE(listener.notices[0].object, listener.notices[1].object);
  EXPECT_EQ(results(first), results(second));
}

TEST_F(Gathering, BelongsToTheThreadThatExecutedTheQuery) {
  makeFiles(3);
  const auto query = makeQuery(kTexts);
  MDQueryExecute(query.get(), 0);
  std::thread::id told;
  Listener listener(query.get());
  listener.reaction = [&](const Notice&) { told = std::this_thread::get_id(); };
  std::thread([&] {
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false), kCFRunLoopRunFinished);
  }).join();
  EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  run();
  EXPECT_TRUE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_EQ(told, std::this_thread::get_id());
}

TEST_F(Gathering, MayBelongToAThreadBesideTheMainOne) {
  makeFiles(3);
  const auto query = makeQuery(kTexts);
  std::thread::id told;
  Listener listener(query.get());
  listener.reaction = [&](const Notice&) { told = std::this_thread::get_id(); };
  std::thread::id executing;
  std::thread([&] {
    executing = std::this_thread::get_id();
    EXPECT_TRUE(MDQueryExecute(query.get(), 0));
    run();
  }).join();
  EXPECT_EQ(listener.names(), (Texts{"Progress", "DidFinish"}));
  EXPECT_EQ(told, executing);
  EXPECT_EQ(results(query).size(), 3u);
}

TEST_F(Gathering, StaysWhereItWasWhenItsThreadEnds) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(4));
  const Listener listener(query.get());
  std::thread([&] {
    MDQueryExecute(query.get(), kMDQueryWantsUpdates);
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, true);
  }).join();
  run();
  EXPECT_EQ(listener.names(), Texts{"Progress"});
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 4);
  MDQueryStop(query.get());
}

TEST_F(Gathering, ChangesNoResultsWhileUpdatesAreDisabled) {
  for (const std::initializer_list<const char*>& sorting :
       {std::initializer_list<const char*>{}, {"kMDItemFSName"}}) {
    makeFiles(20);
    const auto query = makeQuery(kTexts, {}, sorting);
    setBatches(query, batchesOf(5));
    Listener listener(query.get());
    listener.reaction = [&](const Notice&) { MDQueryDisableUpdates(query.get()); };
    MDQueryExecute(query.get(), 0);
    run();
    listener.reaction = nullptr;
    const std::vector<std::string> before = results(query);
    EXPECT_EQ(before.size(), 5u);
    EXPECT_EQ(listener.names(), Texts{"Progress"});
    EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
    if (sorting.size() > 0) MDQuerySetSortOptionFlagsForAttribute(query.get(), kMDItemFSName, 0);
    EXPECT_EQ(results(query), before);
    MDQueryEnableUpdates(query.get());
    EXPECT_EQ(results(query), before);
    run();
    ASSERT_EQ(listener.names(), (Texts{"Progress", "Progress", "DidFinish"}));
    EXPECT_EQ(listener.notices[1].count, 20);
    EXPECT_EQ(MDQueryGetResultCount(query.get()), 20);
  }
}

TEST_F(Gathering, KnowsNoIndexOfAResultThatIsHeldBack) {
  scratch.file("a.txt");
  const auto query = makeQuery(kTexts);
  const auto url = makeURL(scratch.at("a.txt"));
  const Owned item(MDItemCreateWithURL(kCFAllocatorDefault, url.get()));
  MDQueryDisableUpdates(query.get());
  MDQueryExecute(query.get(), 0);
  run();
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), item.get()), kCFNotFound);
  MDQueryEnableUpdates(query.get());
  run();
  EXPECT_EQ(MDQueryGetIndexOfResult(query.get(), item.get()), 0);
}

TEST_F(Gathering, FinishesThoughUpdatesAreDisabledWhenNothingIsHeldBack) {
  const auto nothing = makeQuery(kTexts);
  MDQueryDisableUpdates(nothing.get());
  gather(nothing);
  makeFiles(3);
  const auto query = makeQuery(kTexts);
  Listener listener(query.get());
  listener.reaction = [&](const Notice&) { MDQueryDisableUpdates(query.get()); };
  gather(query);
  EXPECT_EQ(listener.names(), (Texts{"Progress", "DidFinish"}));
}

TEST_F(Gathering, SynchronouslyEndsWithResultsHeldBackWhileUpdatesAreDisabled) {
  makeFiles(3);
  const auto query = makeQuery(kTexts);
  const Listener listener(query.get());
  MDQueryDisableUpdates(query.get());
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
  EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  MDQueryEnableUpdates(query.get());
  run();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 3);
  EXPECT_EQ(listener.names(), (Texts{"Progress", "DidFinish"}));
}

TEST_F(Gathering, TellsInsideOfStopWhatHasComeInAndWasNotTold) {
  makeFiles(20);
  const auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(5));
  Listener listener(query.get());
  bool stops = false;
  std::vector<bool> insideOfStop;
  listener.reaction = [&](const Notice&) {
    insideOfStop.push_back(stops);
    if (stops) MDQueryStop(query.get());
    MDQueryDisableUpdates(query.get());
  };
  MDQueryExecute(query.get(), 0);
  run();
  EXPECT_EQ(insideOfStop, std::vector<bool>{false});
  stops = true;
  MDQueryStop(query.get());
  EXPECT_EQ(insideOfStop, (std::vector<bool>{false, true}));
  ASSERT_EQ(listener.names(), (Texts{"Progress", "Progress"}));
  EXPECT_EQ(listener.notices.back().count, 20);
  run();
  EXPECT_EQ(listener.names(), (Texts{"Progress", "Progress"})) << "no finish";
  EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 20);
}

TEST_F(Gathering, MayBeStoppedFromAHandlerAndTellInsideOfThat) {
  makeFiles(20);
  auto query = makeQuery(kTexts);
  setBatches(query, batchesOf(5));
  Listener listener(query.get());
  int depth = 0;
  int deepest = 0;
  listener.reaction = [&](const Notice& notice) {
    deepest = std::max(deepest, ++depth);
    if (notice.count == 5) {
      MDQueryDisableUpdates(query.get());
      run();
      MDQueryStop(query.get());
    } else {
      query = Owned<MDQueryRef>();
    }
    --depth;
  };
  MDQueryExecute(query.get(), kMDQueryWantsUpdates);
  run();
  EXPECT_EQ(deepest, 2);
  EXPECT_EQ(listener.names(), (Texts{"Progress", "Progress"}));
  EXPECT_FALSE(query);
  EXPECT_EQ(alive(), "");
}

TEST_F(Gathering, LetsOtherQueriesTellWhileItIsSynchronous) {
  makeFiles(10);
  const auto other = makeQuery(kTexts);
  const auto query = makeQuery(kTexts);
  for (const auto* each : {&other, &query}) setBatches(*each, batchesOf(2));
  const Listener listener(other.get());
  MDQueryExecute(other.get(), kMDQueryWantsUpdates);
  EXPECT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
  EXPECT_GE(listener.count("Progress"), 4u);
  MDQueryStop(other.get());
}

TEST_F(Gathering, TellsOfResultsThatWereLookedAtAndChangeOrGoMeanwhile) {
  const auto query = makeQueryOfSixInPairs();
  Listener listener(query.get());
  gatherFirstBatch(query);
  resultAt(query, 0);
  scratch.file("a.txt", "longer");
  scratch.file("b.txt", "longer");
  run(0);
  ASSERT_GE(listener.notices.size(), 2u);
  EXPECT_EQ(listener.notices[1].name, "Progress");
  EXPECT_EQ(scratch.within(listener.notices[1].changed), Texts{"a.txt"});
  EXPECT_EQ(listener.notices[1].added, Texts{});
  EXPECT_EQ(listener.notices[1].removed, Texts{});
}

TEST_F(Gathering, ForgetsResultsThatGoMeanwhile) {
  const auto query = makeQueryOfSixInPairs();
  Listener listener(query.get());
  gatherFirstBatch(query);
  resultAt(query, 1);
  std::remove(scratch.at("a.txt").c_str());
  std::remove(scratch.at("b.txt").c_str());
  runUntil([&] { return listener.count("DidFinish") == 1; });
  run();
  EXPECT_EQ(results(query), (Texts{"c.txt", "d.txt", "e.txt", "f.txt"}));
  std::vector<std::string> removed;
  for (const Notice& notice : listener.notices) {
    removed.insert(removed.end(), notice.removed.begin(), notice.removed.end());
    EXPECT_EQ(notice.added, Texts{});
  }
  EXPECT_EQ(scratch.within(removed), Texts{"b.txt"});
}

TEST_F(Gathering, KeepsResultsInTheirOrderFromBatchToBatch) {
  for (const char* name : {"file 10", "file 9", "file 1", "a", "z"}) scratch.file(std::string(name) + ".txt");
  const auto query = makeQuery(kTexts, {}, {"kMDItemFSName"});
  setBatches(query, batchesOf(2));
  Listener listener(query.get());
  listener.reaction = [&](const Notice& notice) {
    const auto found = results(query);
    EXPECT_EQ(found.size(), static_cast<size_t>(notice.count));
    if (found.size() == 4) {
      EXPECT_EQ(found, (Texts{"a.txt", "file 1.txt", "file 9.txt", "file 10.txt"}));
    }
  };
  gather(query);
  EXPECT_EQ(results(query), (Texts{"a.txt", "file 1.txt", "file 9.txt", "file 10.txt", "z.txt"}));
  EXPECT_EQ(listener.count("Progress"), 3u);
}

TEST_F(Gathering, StopsAtTheMaximumCountThatWasSetBefore) {
  makeFiles(10);
  const auto query = makeQuery(kTexts);
  MDQuerySetMaxCount(query.get(), 4);
  gather(query);
  MDQuerySetMaxCount(query.get(), 7);
  run();
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 4);
}

}  // namespace
