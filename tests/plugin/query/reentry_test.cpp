// Events that come while a method of the same query, or of another, is at work: Stop tells what has come in
// and was not told, and a synchronous Execute runs the run loop.
#include <CoreServices/CoreServices.h>

#include "standin/system/clock.h"
#include "tests/plugin/fixture.h"

namespace {

void runLoop() {
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 1, false);
}

class Reentry : public PluginTest, public testing::WithParamInterface<double> {
 protected:
  static constexpr int64_t kFiles = 20;
  static constexpr int64_t kBatch = 5;

  void SetUp() override {
    standin::holdClock();
    for (int64_t i = 0; i < kFiles; ++i) tree_.file(std::to_string(i) + ".txt");
    standin::setIndexedFolders({tree_.path()});
    start(settingsOf(GetParam()));
    query_ = makeQuery("");
  }

  void TearDown() override {
    query_ = {};
    PluginTest::TearDown();
    standin::releaseClock();
  }

  // Of all files, in batches of five. Its events are heard with this before their names.
  host::Value makeQuery(const std::string& prefix) {
    const host::Value query = host::construct("MDQueryZNK", "kMDItemFSName == \"*.txt\"");
    const host::Value batching = host::get(query, "BatchingParameters");
    for (const char* field : {"firstMaxNum", "progressMaxNum"}) host::set(batching, field, int32_t{kBatch});
    for (const char* field : {"firstMaxMS", "progressMaxMS"}) host::set(batching, field, 1000000);
    host::set(query, "BatchingParameters", batching);
    for (const char* event : {"Progress", "Finish", "Update"}) {
      host::setEventHandler(query, event, [this, name = prefix + event](const auto&) { hear(name); });
    }
    return query;
  }

  void hear(const std::string& event) {
    heard_.push_back((isStopping_ ? "inside of Stop: " : "") + event);
    if (isStopping_ && reaction_) reaction_();
  }

  // Gathers one batch, and has the rest come in without being told.
  void gatherUntold() {
    host::setEventHandler(query_, "Progress", [this](const auto&) {
      host::call(query_, "DisableUpdates");
      hear("Progress");
    });
    EXPECT_TRUE(host::call(query_, "Execute", 4).boolean());
    runLoop();
    EXPECT_EQ(Texts{"Progress"}, heard_);
    EXPECT_EQ(kBatch, count());
    heard_.clear();
  }

  void stop() {
    isStopping_ = true;
    host::call(query_, "Stop");
    isStopping_ = false;
  }

  int64_t count() { return host::call(query_, "ResultCount").integer(); }

  ScratchFolder tree_;
  host::Value query_;
  std::function<void()> reaction_;  // of events inside of Stop
  bool isStopping_ = false;
  Calls heard_;
};

TEST_P(Reentry, StopTellsWhatHasComeInAndTheQueryDoesNotFinish) {
  gatherUntold();
  reaction_ = [this] { EXPECT_EQ(kFiles, count()); };
  stop();
  EXPECT_EQ(Texts{"inside of Stop: Progress"}, heard_);
  runLoop();
  EXPECT_EQ(Texts{"inside of Stop: Progress"}, heard_);
  EXPECT_EQ(kFiles, count());
  EXPECT_FALSE(host::call(query_, "IsGatheringComplete").boolean());
  EXPECT_FALSE(host::call(query_, "Execute", 1).boolean());
}

TEST_P(Reentry, AHandlerInsideOfStopMayStopAgain) {
  gatherUntold();
  reaction_ = [this] {
    host::call(query_, "Stop");
    host::call(query_, "EnableUpdates");
    runLoop();
  };
  stop();
  EXPECT_EQ(Texts{"inside of Stop: Progress"}, heard_);
}

TEST_P(Reentry, AHandlerInsideOfStopMayReadTheResults) {
  gatherUntold();
  reaction_ = [this] {
    const auto results = host::elements(host::call(query_, "Results"));
    ASSERT_EQ(size_t{kFiles}, results.size());
    EXPECT_EQ(19, host::call(query_, "IndexOfResult", results[19]).integer());
  };
  stop();
}

TEST_P(Reentry, AHandlerInsideOfStopMayDestroyTheQuery) {
  gatherUntold();
  reaction_ = [this] { query_ = {}; };
  stop();
  EXPECT_EQ(Texts{"inside of Stop: Progress"}, heard_);
  EXPECT_TRUE(query_.isNil());
}

TEST_P(Reentry, AHandlerInsideOfStopMayRaise) {
  gatherUntold();
  reaction_ = [] { host::call(host::newInstance("MDQueryZNK"), "Stop"); };
  stop();
  EXPECT_EQ(Exceptions{kNilQuery}, host::takeExceptions());
  EXPECT_EQ(kFiles, count());
}

TEST_P(Reentry, AProgressHandlerThatStopsIsCalledAgainBeforeStopReturns) {
  int depth = 0;
  std::vector<int> depths;
  host::setEventHandler(query_, "Progress", [&](const auto&) {
    depths.push_back(++depth);
    if (depth == 1) {
      host::call(query_, "DisableUpdates");
      runLoop();
    }
    host::call(query_, "Stop");
    --depth;
  });
  host::call(query_, "Execute", 0);
  runLoop();
  EXPECT_EQ((std::vector<int>{1, 2}), depths);
  EXPECT_EQ(Texts(), heard_) << "no finish";
  EXPECT_EQ(kFiles, count());
}

TEST_P(Reentry, ASynchronousExecuteLetsOtherQueriesTell) {
  tree_.file("other.txt");
  const host::Value other = makeQuery("other ");
  host::call(other, "Execute", 4);
  EXPECT_TRUE(host::call(query_, "Execute", 1).boolean());
  EXPECT_EQ(Texts{"Finish"}, lastOf(heard_, 1));
  EXPECT_LT(0, std::count(heard_.begin(), heard_.end(), "other Progress"));
  runLoop();
  EXPECT_EQ(kFiles + 1, host::call(other, "ResultCount").integer());
}

TEST_P(Reentry, NoResultsJoinTheOthersWhileUpdatesAreDisabled) {
  gatherUntold();
  EXPECT_EQ(size_t{kBatch}, host::elements(host::call(query_, "Results")).size());
  host::call(query_, "EnableUpdates");
  EXPECT_EQ(kBatch, count());
  host::setEventHandler(query_, "Progress", [this](const auto&) { hear("Progress"); });
  runLoop();
  EXPECT_EQ((Texts{"Progress", "Finish"}), heard_);
  EXPECT_EQ(kFiles, count());
}

INSTANTIATE_TEST_SUITE_P(Hosts, Reentry, testing::Values(2011.04, 2013.9, 2014.1));

}  // namespace
