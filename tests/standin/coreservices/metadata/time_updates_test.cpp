// How live results follow the time. An hour of the run loops' clock takes no time here.
#include <filesystem>

#include "tests/standin/coreservices/metadata/query_fixture.h"
#include "tests/support/texts.h"

namespace {

namespace fs = std::filesystem;

class TimeUpdates : public QueryTest {
 protected:
  void start(const std::string& text, CFOptionFlags flags = kMDQueryWantsUpdates) {
    query = makeQuery(text);
    gather(query, flags);
    results(query);  // looks at all: what goes is told of those alone
    listener = std::make_unique<Listener>(query.get());
  }
  // So many seconds from when the test started.
  void setDate(const std::string& name, int seconds) const {
    fs::last_write_time(scratch.at(name), began + std::chrono::seconds(seconds));
  }
  Texts told(const std::vector<std::string> Notice::*list) const {
    Texts all;
    for (const Notice& notice : listener->notices) {
      EXPECT_EQ(notice.name, "DidUpdate");
      const Texts paths = scratch.within(notice.*list);
      all.insert(all.end(), paths.begin(), paths.end());
    }
    return all;
  }

  const fs::file_time_type began = fs::file_time_type::clock::now();
  Owned<MDQueryRef> query;
  std::unique_ptr<Listener> listener;
};

TEST_F(TimeUpdates, TellOfAFileThatStopsMatching) {
  scratch.file("new.txt");
  scratch.file("old.txt");
  setDate("old.txt", -30);
  start("kMDItemFSContentChangeDate > $time.now(-60)");
  EXPECT_EQ(results(query), (Texts{"new.txt", "old.txt"}));
  run(20);
  EXPECT_EQ(listener->names(), Texts{});
  run(15);
  EXPECT_EQ(told(&Notice::removed), Texts{"old.txt"});
  run(30);
  EXPECT_EQ(told(&Notice::removed), (Texts{"old.txt", "new.txt"}));
  EXPECT_EQ(told(&Notice::changed), Texts{});
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
  run(4000);
  EXPECT_EQ(listener->notices.size(), 2u);
}

TEST_F(TimeUpdates, TellOfAFileThatComesToMatch) {
  scratch.file("a.txt");
  start("kMDItemFSContentChangeDate <= $time.now(-60) && kMDItemFSName == \"*.txt\"");
  EXPECT_EQ(results(query), Texts{});
  run(50);
  EXPECT_EQ(listener->names(), Texts{});
  run(20);
  EXPECT_EQ(told(&Notice::added), Texts{"a.txt"});
  EXPECT_EQ(results(query), Texts{"a.txt"});
}

TEST_F(TimeUpdates, TellOfAFileThatComesAndGoes) {
  scratch.file("a.txt");
  start("InRange(kMDItemFSContentChangeDate, $time.now(-120), $time.now(-60))");
  run(90);
  EXPECT_EQ(told(&Notice::added), Texts{"a.txt"});
  run(60);
  EXPECT_EQ(told(&Notice::removed), Texts{"a.txt"});
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 0);
}

TEST_F(TimeUpdates, FollowFilesThatCameOrChangedLater) {
  scratch.file("a.txt");
  start("kMDItemFSContentChangeDate > $time.now(-60)");
  run(30);
  scratch.file("b.txt");
  setDate("a.txt", 30);
  setDate("b.txt", 20);
  run(10);
  EXPECT_EQ(told(&Notice::added), Texts{"b.txt"});
  EXPECT_EQ(told(&Notice::changed), Texts{"a.txt"});
  run(25);  // a minute after the first date
  EXPECT_EQ(told(&Notice::removed), Texts{});
  run(20);
  EXPECT_EQ(told(&Notice::removed), Texts{"b.txt"});
  run(20);
  EXPECT_EQ(told(&Notice::removed), (Texts{"b.txt", "a.txt"}));
}

TEST_F(TimeUpdates, ForgetFilesThatAreGone) {
  scratch.file("a.txt");
  start("kMDItemFSContentChangeDate < $time.now(-60)");
  fs::remove(scratch.at("a.txt"));
  run(200);
  EXPECT_EQ(listener->names(), Texts{});
}

// More than an hour ahead no moment is kept.
TEST_F(TimeUpdates, ComeHoursAheadWithoutTellingOthersOfAChange) {
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) scratch.file(name);
  setDate("b.txt", -3600);
  setDate("c.txt", 1000000);
  start("kMDItemFSContentChangeDate > $time.now(-18000)");
  run(14000);
  EXPECT_EQ(listener->names(), Texts{});
  run(1000);
  EXPECT_EQ(told(&Notice::removed), Texts{"b.txt"});
  run(3600);
  EXPECT_EQ(told(&Notice::removed), (Texts{"b.txt", "a.txt"}));
  EXPECT_EQ(told(&Notice::changed), Texts{});
  EXPECT_EQ(results(query), Texts{"c.txt"});
}

TEST_F(TimeUpdates, ComeAtMidnight) {
  scratch.file("today.txt");
  scratch.file("tomorrow.txt");
  setDate("tomorrow.txt", 86400);
  start("kMDItemFSContentChangeDate == $time.today");
  EXPECT_EQ(results(query), Texts{"today.txt"});
  run(86400);
  EXPECT_EQ(told(&Notice::added), Texts{"tomorrow.txt"});
  EXPECT_EQ(told(&Notice::removed), Texts{"today.txt"});
  run(86400);
  EXPECT_EQ(told(&Notice::removed), (Texts{"today.txt", "tomorrow.txt"}));
}

TEST_F(TimeUpdates, WaitWhileTheyAreDisabled) {
  scratch.file("a.txt");
  start("kMDItemFSContentChangeDate > $time.now(-60)");
  MDQueryDisableUpdates(query.get());
  run(100);
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
  MDQueryEnableUpdates(query.get());
  run();
  EXPECT_EQ(told(&Notice::removed), Texts{"a.txt"});
}

TEST_F(TimeUpdates, ComeOneBatchAtATime) {
  for (int i = 0; i < 50; ++i) {
    const std::string name = std::to_string(i) + ".txt";
    scratch.file(name);
    fs::last_write_time(scratch.at(name), began + std::chrono::milliseconds(i));
  }
  start("kMDItemFSContentChangeDate > $time.now(-60)");
  run(100);
  EXPECT_EQ(told(&Notice::removed).size(), 50u);
  EXPECT_LE(listener->notices.size(), 2u);
}

TEST_F(TimeUpdates, AreNotToldWhereTheyAreNotWanted) {
  scratch.file("a.txt");
  for (const CFOptionFlags flags : {0, int{kMDQuerySynchronous}}) {
    start("kMDItemFSContentChangeDate > $time.now(-60)", flags);
    EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 100, false), kCFRunLoopRunFinished);
    EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
  }
}

TEST_F(TimeUpdates, EndWithTheQuery) {
  scratch.file("a.txt");
  start("kMDItemFSContentChangeDate > $time.now(-60)");
  MDQueryStop(query.get());
  EXPECT_EQ(CFRunLoopRunInMode(kCFRunLoopDefaultMode, 100, false), kCFRunLoopRunFinished);
  EXPECT_EQ(MDQueryGetResultCount(query.get()), 1);
}

}  // namespace
