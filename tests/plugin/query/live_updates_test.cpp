// Queries that don't wait: events while the run loop runs, and results that follow the files.
#include <CoreServices/CoreServices.h>

#include <filesystem>

#include "standin/system/clock.h"
#include "tests/plugin/cf_values.h"
#include "tests/plugin/fixture.h"

namespace {

// The clock is the test's: running the loop for a second takes no time, and what the test does to files is
// known at once.
void runLoop() {
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false);
}

class LiveUpdates : public PluginTest, public testing::WithParamInterface<double> {
 protected:
  void SetUp() override {
    standin::holdClock();
    standin::setIndexedFolders({tree_.path()});
    start(settingsOf(GetParam()));
  }

  void TearDown() override {
    query_ = {};
    PluginTest::TearDown();
    standin::releaseClock();
  }

  // A query for all files whose names end in .txt, and what it tells.
  void makeQuery() {
    query_ = host::construct("MDQueryZNK", "kMDItemFSName == \"*.txt\"");
    host::setEventHandler(query_, "Progress", [this](const auto& lists) { hear("Progress", lists); });
    host::setEventHandler(query_, "Finish", [this](const auto&) { heard_.push_back("Finish"); });
    host::setEventHandler(query_, "Update", [this](const auto& lists) { hear("Update", lists); });
  }

  // Executes it without waiting, and gathers.
  void follow() {
    makeQuery();
    EXPECT_TRUE(
        host::call(query_, "Execute", host::constant("MDQueryZNK", "kMDQueryWantsUpdates")).boolean());
    runLoop();
    heard_.clear();
  }

  void hear(const std::string& event, const std::vector<host::Value>& lists) {
    heard_.push_back(event);
    const char* const signs[] = {"+", "~", "-"};
    for (size_t i = 0; i < lists.size(); ++i) {
      for (const host::Value& item : host::elements(lists[i])) {
        told_.push_back(signs[i] + host::get(item, "FSName").text());
      }
    }
  }

  int64_t count() { return host::call(query_, "ResultCount").integer(); }
  // The platform tells of changes and removals only for results that were looked at.
  void lookAtAll() { host::call(query_, "Results"); }

  ScratchFolder tree_;
  host::Value query_;
  Calls heard_;  // the events
  Calls told_;   // the items of the events' lists
};

TEST_P(LiveUpdates, AndGatheringHappenOnlyWhileTheRunLoopRuns) {
  tree_.file("a.txt");
  makeQuery();
  EXPECT_TRUE(host::call(query_, "Execute", 4).boolean());
  EXPECT_EQ(Texts(), heard_);
  EXPECT_EQ(0, count());
  EXPECT_FALSE(host::call(query_, "IsGatheringComplete").boolean());
  runLoop();
  EXPECT_TRUE(host::call(query_, "IsGatheringComplete").boolean());
  EXPECT_EQ(1, count());
  EXPECT_EQ(Texts{"Finish"}, lastOf(heard_, 1));
  EXPECT_EQ(1, std::count(heard_.begin(), heard_.end(), "Finish"));
  heard_.clear();
  tree_.file("b.txt");
  EXPECT_EQ(1, count());
  runLoop();
  EXPECT_EQ(2, count());
  EXPECT_EQ(Texts{"Update"}, heard_);
}

TEST_P(LiveUpdates, TellOfFilesThatComeChangeAndGo) {
  follow();
  tree_.file("a.txt");
  tree_.file("b.other");
  runLoop();
  EXPECT_EQ(Texts{"+a.txt"}, told_);
  lookAtAll();
  told_.clear();
  tree_.file("a.txt", std::string(100, 'x'));
  runLoop();
  EXPECT_EQ(Texts{"~a.txt"}, told_);
  told_.clear();
  std::filesystem::rename(tree_.at("b.other"), tree_.at("b.txt"));
  std::filesystem::rename(tree_.at("a.txt"), tree_.at("a.other"));
  runLoop();
  EXPECT_EQ((Texts{"+b.txt", "-a.txt"}), sorted(told_));
  EXPECT_EQ(1, count());
}

TEST_P(LiveUpdates, AreNotToldWithoutTheFlag) {
  makeQuery();
  host::call(query_, "Execute", 0);
  runLoop();
  heard_.clear();
  tree_.file("a.txt");
  runLoop();
  EXPECT_EQ(Texts(), heard_);
  EXPECT_EQ(0, count());
}

TEST_P(LiveUpdates, AreHeldBackWhileTheyAreDisabled) {
  follow();
  host::call(query_, "DisableUpdates");
  host::call(query_, "DisableUpdates");
  tree_.file("a.txt");
  runLoop();
  host::call(query_, "EnableUpdates");
  runLoop();
  EXPECT_EQ(0, count());
  EXPECT_EQ(Texts(), heard_);
  host::call(query_, "EnableUpdates");
  runLoop();
  EXPECT_EQ(1, count());
  EXPECT_EQ(Texts{"+a.txt"}, told_);
}

TEST_P(LiveUpdates, FollowTheTime) {
  tree_.file("a.txt");
  query_ = host::construct("MDQueryZNK", "kMDItemFSContentChangeDate > $time.now(-60)");
  host::setEventHandler(query_, "Update", [this](const auto& lists) { hear("Update", lists); });
  host::call(query_, "Execute", 4);
  runLoop();
  lookAtAll();
  EXPECT_EQ(1, count());
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 30, false);
  EXPECT_EQ(Texts(), told_);
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 60, false);
  EXPECT_EQ(Texts{"-a.txt"}, told_);
  EXPECT_EQ(0, count());
}

TEST_P(LiveUpdates, EndWhenTheQueryIsStopped) {
  follow();
  host::call(query_, "Stop");
  tree_.file("a.txt");
  runLoop();
  EXPECT_EQ(Texts(), heard_);
  EXPECT_EQ(0, count());
}

TEST_P(LiveUpdates, GatheringThatIsStoppedDoesNotFinish) {
  tree_.file("a.txt");
  makeQuery();
  host::call(query_, "Execute", 4);
  host::call(query_, "Stop");
  runLoop();
  EXPECT_EQ(0, std::count(heard_.begin(), heard_.end(), "Finish"));
}

TEST_P(LiveUpdates, EndWhenTheObjectIsDestroyedBeforeGatheringHasEnded) {
  tree_.file("a.txt");
  makeQuery();
  host::call(query_, "Execute", 4);
  // The service's query goes on, held by someone else.
  const CFOwner held = own(
      CFRetain(reinterpret_cast<CFTypeRef>(static_cast<intptr_t>(host::get(query_, "Handle").integer()))));
  query_ = {};
  runLoop();
  EXPECT_TRUE(MDQueryIsGatheringComplete(static_cast<MDQueryRef>(const_cast<void*>(held.get()))));
  EXPECT_EQ(Texts(), heard_);
}

TEST_P(LiveUpdates, SurviveAHandlerThatDestroysTheQuery) {
  for (const char* event : {"Finish", "Update"}) {
    makeQuery();
    host::setEventHandler(query_, event, [this, event](const auto&) {
      heard_.push_back(event);
      query_ = {};
    });
    host::call(query_, "Execute", 4);
    runLoop();
    tree_.file(event + std::string(".txt"));
    runLoop();
    runLoop();
    EXPECT_EQ(1, std::count(heard_.begin(), heard_.end(), event));
    EXPECT_TRUE(query_.isNil());
    heard_.clear();
  }
}

TEST_P(LiveUpdates, SurviveAHandlerThatRunsAnotherQuery) {
  tree_.file("a.txt");
  makeQuery();
  host::Value other;
  int finished = 0;
  host::setEventHandler(query_, "Finish", [&](const auto&) {
    other = host::construct("MDQueryZNK", "kMDItemFSName == \"*\"");
    host::setEventHandler(other, "Finish", [&](const auto&) { ++finished; });
    host::call(other, "Execute", 4);
    runLoop();
  });
  host::call(query_, "Execute", 4);
  runLoop();
  runLoop();
  EXPECT_EQ(1, finished);
  EXPECT_EQ(1, host::call(other, "ResultCount").integer());
}

TEST_P(LiveUpdates, SurviveAHandlerThatRaises) {
  follow();
  host::setEventHandler(query_, "Update", [this](const auto&) {
    heard_.push_back("Update");
    host::call(host::newInstance("MDQueryZNK"), "Stop");
  });
  for (const char* name : {"a.txt", "b.txt"}) {
    tree_.file(name);
    runLoop();
    EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
  }
  EXPECT_EQ((Texts{"Update", "Update"}), heard_);
}

TEST_P(LiveUpdates, AndProgressComeInBatchesOfTheQuerysSize) {
  for (int i = 0; i < 20; ++i) tree_.file(std::to_string(i) + ".txt");
  const auto progresses = [this](int32_t size) {
    makeQuery();
    const host::Value batching = host::get(query_, "BatchingParameters");
    for (const char* field : {"firstMaxNum", "progressMaxNum"}) host::set(batching, field, size);
    host::set(query_, "BatchingParameters", batching);
    heard_.clear();
    host::call(query_, "Execute", 0);
    runLoop();
    EXPECT_EQ(Texts{"Finish"}, lastOf(heard_, 1));
    EXPECT_EQ(20, count());
    return std::count(heard_.begin(), heard_.end(), "Progress");
  };
  const auto ofTwo = progresses(2);
  EXPECT_GE(ofTwo, 9);
  EXPECT_LT(progresses(1000), ofTwo);
}

TEST_P(LiveUpdates, TenThousandOfThemLeaveNothingBehind) {
  follow();
  int64_t added = 0, removed = 0;
  host::setEventHandler(query_, "Update", [&](const std::vector<host::Value>& lists) {
    added += static_cast<int64_t>(host::elements(lists[0]).size());
    removed += static_cast<int64_t>(host::elements(lists[2]).size());
  });
  const int kFiles = 500;
  for (int round = 0; round < 10; ++round) {
    for (int i = 0; i < kFiles; ++i) tree_.file(std::to_string(i) + ".txt");
    runLoop();
    ASSERT_EQ(kFiles, count());
    lookAtAll();
    for (int i = 0; i < kFiles; ++i) std::filesystem::remove(tree_.at(std::to_string(i) + ".txt"));
    runLoop();
    ASSERT_EQ(0, count());
  }
  EXPECT_EQ(5000, added);
  EXPECT_EQ(5000, removed);
}

INSTANTIATE_TEST_SUITE_P(Hosts, LiveUpdates, testing::Values(2011.04, 2013.9, 2014.1));

}  // namespace
