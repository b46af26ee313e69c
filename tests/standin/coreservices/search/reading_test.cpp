// Searches for what must be read in files, by several programs at once, in files that take long, fail or go
// on forever. Each runs in a copy of this process, which has read nothing.
#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "standin/coreservices/content/content_reader.h"
#include "standin/coreservices/disk/unseen.h"
#include "standin/coreservices/language/parser.h"
#include "standin/coreservices/metadata/control.h"
#include "standin/coreservices/search/search.h"
#include "tests/standin/coreservices/content/reader_programs.h"
#include "tests/standin/coreservices/store/samples.h"
#include "tests/support/forked.h"
#include "tests/support/owned.h"
#include "tests/support/scratch_folder.h"

namespace standin::metadata {
namespace {

using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

class SearchThatReads : public testing::Test {
 protected:
  // In a copy of this process, in which these programs read.
  void inCopy(const std::function<void()>& work) {
    EXPECT_TRUE(succeedsForked([&] {
      ContentReader::Options& options = contentReaderOptions();
      options.text.pool = textProgram(scratch, 4);
      options.tags.pool = tagsProgram(scratch, 4);
      options.complain = [this](const std::string& message) { complaints.push_back(message); };
      std::this_thread::sleep_for(50ms);  // the files are no longer new
      work();
      contentReader().writeStore();
    }));
  }

  struct Running {
    Running(const ScratchFolder& scratch, std::u16string_view query, size_t maximum = SIZE_MAX,
            Search::Found found = {})
        : search({std::get<ExpressionRef>(parseQuery(query)),
                  {scratch.at("tree")},
                  {},
                  maximum,
                  {FileAttribute::Title}},
                 results, std::move(found)),
          scratch(scratch) {}
    void finish() {
      while (search.step()) {
      }
    }
    Strings paths() const {
      Strings paths;
      for (ResultStore::File file = 0; file < results.fileLimit(); ++file)
        paths.push_back(results.path(file));
      return scratch.within(paths);
    }
    ResultStore results;
    Search search;
    const ScratchFolder& scratch;
  };
  Strings find(std::u16string_view query, size_t maximum = SIZE_MAX) {
    Running running(scratch, query, maximum);
    running.finish();
    return running.paths();
  }

  void file(const std::string& name, const std::string& content) { scratch.file("tree/" + name, content); }
  // Half of them hold the word; each takes a time of its own to be read.
  void makeSlowFiles(int count) {
    std::mt19937 random(5);
    for (int i = 0; i < count; ++i) {
      const char* const word = random() % 2 ? "harbour" : "forest";
      file("box " + std::to_string(random() % 5) + "/" + std::to_string(i) + ".html",
           "slow " + std::to_string(random() % 12) + ' ' + word);
    }
  }
  // By what is in them, without a reader.
  Strings walkOrder(const std::string& word) {
    Strings paths;
    for (const std::string& path : find(u"kMDItemFSName == \"*.html\"")) {
      std::ifstream stream(scratch.at(path));
      const std::string content{std::istreambuf_iterator<char>(stream), {}};
      if (content.find(word) != std::string::npos) paths.push_back(path);
    }
    return paths;
  }

  ScratchFolder scratch;
  Strings complaints;
};

constexpr char16_t kHarbour[] = u"kMDItemTextContent == \"harbour\"";

TEST_F(SearchThatReads, FindsInTheOrderOfTheWalk) {
  makeSlowFiles(80);
  inCopy([&] {
    const Strings expected = walkOrder("harbour");
    EXPECT_GT(expected.size(), 20u);
    EXPECT_EQ(find(kHarbour), expected);
    EXPECT_EQ(contentReader().filesRead(), 160u);  // for their titles and for their texts
    EXPECT_EQ(find(kHarbour), expected);
    EXPECT_EQ(contentReader().filesRead(), 160u);
  });
}

// What is decided without reading waits for what comes before it.
TEST_F(SearchThatReads, KeepsTheOrderAmongWhatNeedsNoReading) {
  makeSlowFiles(60);
  for (int i = 0; i < 60; i += 3) file("box 1/" + std::to_string(i) + " note.txt", "");
  inCopy([&] {
    Strings expected;
    const Strings matching = walkOrder("harbour");
    for (const std::string& path : find(u"kMDItemFSName == \"*\"")) {
      if (path.ends_with(".txt") || std::ranges::count(matching, path)) expected.push_back(path);
    }
    EXPECT_EQ(find(u"kMDItemTextContent == \"harbour\" || kMDItemFSName == \"*.txt\""), expected);
  });
}

TEST_F(SearchThatReads, TellsResultsBeforeTheLastFileIsReadAndNeedNotBeFinished) {
  for (int i = 10; i < 30; ++i) file(std::to_string(i) + ".html", "harbour");
  file("99.html", "hang");
  inCopy([&] {
    const auto start = std::chrono::steady_clock::now();
    {
      Running running(scratch, kHarbour);
      while (running.search.found() < 20) ASSERT_TRUE(running.search.step());
      EXPECT_TRUE(running.search.report().walked);
      EXPECT_EQ(running.search.report().entries, 21u);
      EXPECT_EQ(running.search.report().waiting, 1u);
      EXPECT_TRUE(running.search.step());
    }
    EXPECT_EQ(find(u"kMDItemTextContent == \"harbour\" && kMDItemFSName != \"99*\"").size(), 20u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
  });
}

TEST_F(SearchThatReads, HasWhatIsDecidedWhenItEndsBeforeItsTime) {
  file("0.html", "hang");
  for (const char* name : {"1.txt", "2.html", "3.txt", "4.txt"}) file(name, "");
  inCopy([&] {
    for (const size_t maximum : {SIZE_MAX, size_t{2}}) {
      Running running(scratch, u"kMDItemTextContent == \"harbour\" || kMDItemFSName == \"*.txt\"", maximum);
      while (!running.search.report().walked) ASSERT_TRUE(running.search.step());
      EXPECT_EQ(running.search.found(), 0u);
      running.search.addDecided();
      Strings expected = {"tree/1.txt", "tree/3.txt", "tree/4.txt"};
      expected.resize(std::min(maximum, expected.size()));
      EXPECT_EQ(running.paths(), expected);
      EXPECT_EQ(running.search.found(), expected.size());
    }
  });
}

TEST_F(SearchThatReads, FindsAsManyAsWanted) {
  makeSlowFiles(60);
  inCopy([&] {
    Strings expected = walkOrder("harbour");
    expected.resize(7);
    EXPECT_EQ(find(kHarbour, 7), expected);
    EXPECT_EQ(find(kHarbour, 7), expected);
    EXPECT_EQ(find(kHarbour, 1), Strings{expected[0]});
    EXPECT_EQ(find(kHarbour, 0), Strings{});
  });
}

TEST_F(SearchThatReads, MayBeReleasedAtAnyStep) {
  makeSlowFiles(40);
  inCopy([&] {
    const Strings expected = walkOrder("harbour");
    for (int steps = 0; steps < 60; steps += 7) {
      Running running(scratch, kHarbour);
      for (int i = 0; i < steps; ++i) running.search.step();
    }
    EXPECT_EQ(find(kHarbour), expected);
  });
}

TEST_F(SearchThatReads, MayRunBesideAnother) {
  makeSlowFiles(60);
  inCopy([&] {
    Running one(scratch, kHarbour), other(scratch, u"kMDItemTextContent == \"forest\"");
    auto third = std::make_unique<Running>(scratch, kHarbour);
    for (int step = 0;; ++step) {
      const bool more = one.search.step();
      if (!other.search.step() && !more) break;
      if (step < 30) third->search.step();
      if (step == 30) third.reset();
    }
    EXPECT_EQ(one.paths(), walkOrder("harbour"));
    EXPECT_EQ(other.paths(), walkOrder("forest"));
  });
}

TEST_F(SearchThatReads, LosesOnlyTheFilesThatReadersFailAt) {
  const Strings contents = {"harbour",        "end", "harbour", "hang", "refuse",
                            "slow 5 harbour", "nul", "harbour"};
  for (size_t i = 0; i < contents.size(); ++i) file(std::to_string(i) + ".html", contents[i]);
  inCopy([&] {
    contentReaderOptions().text.pool.timeToAnswer = 1s;
    EXPECT_EQ(find(kHarbour), (Strings{"tree/0.html", "tree/2.html", "tree/5.html", "tree/7.html"}));
    EXPECT_EQ(unseen().files.take().count, 3u);
    EXPECT_EQ(find(kHarbour).size(), 4u);
    EXPECT_EQ(unseen().files.take().count, 0u);
    EXPECT_EQ(complaints, Strings{});
  });
}

TEST_F(SearchThatReads, ReadsNoFileThatItsNameOrSizeExcludes) {
  for (int i = 10; i < 30; ++i) file(std::to_string(i) + ".html", "harbour");
  inCopy([&] {
    EXPECT_EQ(find(u"kMDItemTextContent == \"harbour\" && kMDItemFSSize > 100"), Strings{});
    EXPECT_EQ(find(u"!(kMDItemTextContent == \"harbour\" || kMDItemFSName == \"*.html\")"), Strings{});
    EXPECT_EQ(contentReader().filesRead(), 0u);
    EXPECT_EQ(find(u"kMDItemTextContent == \"harbour\" && kMDItemFSName == \"1*\"").size(), 10u);
    EXPECT_EQ(contentReader().filesRead(), 20u);  // for their titles, too
  });
}

TEST_F(SearchThatReads, ForgetsFilesThatAreGoneWhenTheirTurnComes) {
  file("1.html", "slow 300 forest");
  file("2.html", "harbour");
  inCopy([&] {
    Running running(scratch, u"kMDItemTextContent != \"forest\" && kMDItemFSName == \"*.html\"");
    while (!running.search.report().walked) running.search.step();
    std::filesystem::remove(scratch.at("tree/2.html"));
    running.finish();
    EXPECT_EQ(running.paths(), Strings{});
  });
}

TEST_F(SearchThatReads, EndsThoughAFileChangesWheneverItIsRead) {
  file("1.html", "grow harbour");
  file("2.html", "harbour");
  inCopy([&] { EXPECT_EQ(find(kHarbour), (Strings{"tree/1.html", "tree/2.html"})); });
}

// Texts of up to 15 characters lie within the object that has them.
TEST_F(SearchThatReads, TellsResultsWithShortPaths) {
  std::string folder = "/tmp/XXXXXX";
  ASSERT_TRUE(::mkdtemp(folder.data()));
  Strings paths;
  for (const char* const name : {"a", "b", "c"}) {
    paths.push_back(folder + '/' + name);
    std::ofstream(paths.back()) << "<html>harbour";
  }
  inCopy([&] {
    ResultStore results;
    Strings told;
    Search search({std::get<ExpressionRef>(parseQuery(kHarbour)), {folder}, {}, SIZE_MAX, {}}, results,
                  [&](ResultStore::File, FileRecord& record) { told.emplace_back(record.path()); });
    while (search.step()) {
    }
    EXPECT_EQ(told, paths);
  });
  std::filesystem::remove_all(folder);
}

// A result waits for others before it, and what was known of it is lost meanwhile: it is told with it all the
// same.
TEST_F(SearchThatReads, TellsEveryResultWithItsAttributes) {
  for (int i = 0; i < 10; ++i) file(std::to_string(i) + ".jpg", "title " + std::to_string(i));
  const std::string store = scratch.at("store");
  inCopy([&] {
    contentReaderOptions().store.folder = store;
    EXPECT_EQ(find(u"kMDItemFSName == \"*.jpg\"").size(), 10u);
  });
  file("0.jpg", "slow 300");
  inCopy([&] {
    contentReaderOptions().store.folder = store;
    Strings titles;
    Running running(scratch, u"kMDItemFSName == \"*.jpg\"", SIZE_MAX,
                    [&](ResultStore::File, FileRecord& record) {
                      const std::optional<Value> title = record.value(FileAttribute::Title);
                      titles.emplace_back(title ? std::get<std::string_view>(*title) : "none");
                    });
    while (!running.search.report().walked) running.search.step();
    EXPECT_EQ(running.search.report().waiting, 1u);
    Sql(contentDatabaseIn(store)).run("DELETE FROM entry; DELETE FROM apart");
    running.finish();
    ASSERT_EQ(titles.size(), 10u);
    EXPECT_EQ(titles[0], "slow 300");
    for (int i = 1; i < 10; ++i) EXPECT_EQ(titles[static_cast<size_t>(i)], "title " + std::to_string(i));
  });
}

// The query above it, from here on.
TEST_F(SearchThatReads, IsStoppedWithTheResultsThatWaitForAFileBeforeThem) {
  file("0.jpg", "hang");
  for (const char* name : {"1.txt", "2.jpg", "3.txt", "4.txt"}) file(name, "");
  tagsProgram(scratch);
  EXPECT_TRUE(succeedsForked([&] {
    ::setenv("PATH", (scratch.at("programs") + ':' + std::getenv("PATH")).c_str(), 1);
    setIndexedFolders({scratch.at("tree")});
    const auto text = makeString("kMDItemTitle == \"none\" || kMDItemFSName == \"*.txt\"");
    const Owned<MDQueryRef> query(MDQueryCreate(kCFAllocatorDefault, text.get(), nullptr, nullptr));
    CFIndex told = 0;
    CFNotificationCenterAddObserver(
        CFNotificationCenterGetLocalCenter(), &told,
        [](CFNotificationCenterRef, void* count, CFStringRef name, const void*, CFDictionaryRef) {
          EXPECT_EQ(textOf(name), "kMDQueryProgressNotification");
          ++*static_cast<CFIndex*>(count);
        },
        nullptr, query.get(), CFNotificationSuspensionBehaviorDeliverImmediately);
    ASSERT_TRUE(MDQueryExecute(query.get(), 0));
    while (!currentSearch().walked) CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.1, true);
    EXPECT_EQ(told, 0);
    MDQueryStop(query.get());
    EXPECT_EQ(told, 1);
    EXPECT_EQ(MDQueryGetResultCount(query.get()), 3);
    EXPECT_FALSE(MDQueryIsGatheringComplete(query.get()));
  }));
}

TEST_F(SearchThatReads, SortsAndListsWhatIsReadSlowly) {
  std::mt19937 random(9);
  for (int i = 0; i < 30; ++i) {
    file(std::to_string(10 + i) + ".jpg",
         "slow " + std::to_string(10 + random() % 20) + " title " + std::to_string(40 - i));
  }
  tagsProgram(scratch);
  EXPECT_TRUE(succeedsForked([&] {
    ::setenv("PATH", (scratch.at("programs") + ':' + std::getenv("PATH")).c_str(), 1);
    setIndexedFolders({scratch.at("tree")});
    const auto key = makeStrings({"kMDItemTitle"});
    const Owned<MDQueryRef> query(MDQueryCreate(
        kCFAllocatorDefault, makeString("kMDItemFSName == \"*.jpg\"").get(), key.get(), key.get()));
    ASSERT_TRUE(MDQueryExecute(query.get(), kMDQuerySynchronous));
    ASSERT_EQ(MDQueryGetResultCount(query.get()), 30);
    std::string last;
    for (CFIndex i = 0; i < 30; ++i) {
      const auto title = static_cast<CFStringRef>(
          MDQueryGetAttributeValueOfResultAtIndex(query.get(), CFSTR("kMDItemTitle"), i));
      ASSERT_TRUE(title) << i;
      EXPECT_LT(last, textOf(title));
      last = textOf(title);
    }
    const Owned<CFArrayRef> values(MDQueryCopyValuesOfAttribute(query.get(), CFSTR("kMDItemTitle")));
    EXPECT_EQ(CFArrayGetCount(values.get()), 30);
  }));
}

}  // namespace
}  // namespace standin::metadata
