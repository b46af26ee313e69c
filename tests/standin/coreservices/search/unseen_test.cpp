// What searches say that they could not see: only what could have changed their answer, and the same whatever
// the store knows, in whichever order readers answer.
#include "standin/coreservices/disk/unseen.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "standin/coreservices/content/content_reader.h"
#include "standin/coreservices/language/parser.h"
#include "standin/coreservices/search/live_changes.h"
#include "standin/coreservices/search/search.h"
#include "tests/standin/coreservices/content/reader_programs.h"
#include "tests/support/forked.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_folder.h"

namespace standin::metadata {
namespace {

using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

constexpr char kNotSearched[] = "; what is in it is not searched";

class Unseeing : public testing::Test {
 protected:
  // In a copy of this process, with the tests' own readers, which may have kept something of an earlier one.
  void inCopy(const std::function<void()>& work, const std::string& store = "") {
    EXPECT_TRUE(succeedsForked([&] {
      ContentReader::Options& options = contentReaderOptions();
      options.store.folder = store;
      options.text.pool = textPool;
      options.tags.pool = tagsPool;
      options.complain = [](const std::string&) {};
      std::this_thread::sleep_for(50ms);  // the files are no longer new
      work();
      contentReader().writeStore();
    }));
  }
  Strings find(std::u16string_view query, std::vector<FileAttribute> alsoRead = {}) {
    ResultStore results;
    Search search({std::get<ExpressionRef>(parseQuery(query)), {scratch.at("tree")}, {}, SIZE_MAX, alsoRead},
                  results);
    while (search.step()) {
    }
    Strings paths;
    for (ResultStore::File file = 0; file < results.fileLimit(); ++file) paths.push_back(results.path(file));
    return scratch.within(paths);
  }
  // The files that a search for the query names as unseen.
  Strings unseenBy(std::u16string_view query, std::vector<FileAttribute> alsoRead = {}) {
    find(query, std::move(alsoRead));
    return named(unseen().files);
  }
  Strings named(UnseenPlaces& places) const {
    Strings paths;
    for (const auto& [path, why] : places.take().first) paths.push_back(path);
    return scratch.within(paths);
  }
  std::string file(const std::string& name, const std::string& content) {
    return scratch.file("tree/" + name, content);
  }
  void lock(const std::string& name) { ASSERT_EQ(::chmod(scratch.at("tree/" + name).c_str(), 0), 0); }

  ScratchFolder scratch;
  const ReaderPool::Options textPool = textProgram(scratch, 3), tagsPool = tagsProgram(scratch, 3);
};

TEST_F(Unseeing, CountsWhatCouldHaveChangedTheAnswer) {
  file("a.html", "refuse");
  file("b.html", "harbour");
  inCopy([&] { EXPECT_EQ(unseenBy(u"kMDItemTextContent == harbour"), Strings{"tree/a.html"}); });
  inCopy([&] {
    EXPECT_EQ(unseenBy(u"kMDItemTextContent == harbour && kMDItemFSName == \"b*\""), Strings{});
    EXPECT_EQ(unseenBy(u"kMDItemTextContent == harbour || kMDItemFSName == \"a*\""), Strings{});
    EXPECT_EQ(unseenBy(u"kMDItemFSName == \"*\""), Strings{});
    EXPECT_EQ(unseenBy(u"kMDItemFSName == \"*\"", {FileAttribute::FSSize}), Strings{});
    EXPECT_EQ(unseenBy(u"kMDItemFSName == \"*\"", {FileAttribute::Title}), Strings{"tree/a.html"});
  });
}

// Of two readers, what one tells may make the other's failure matter or not.
TEST_F(Unseeing, DependsNeitherOnTheStoreNorOnTheOrder) {
  file("0.html", "refuse text forest");
  file("1.html", "refuse text");
  file("2.html", "refuse tags harbour");
  file("3.html", "refuse tags");
  file("4.html", "harbour forest");
  const auto files = [](const std::string& numbers) {
    Strings names;
    for (const char number : numbers) names.push_back(std::string("tree/") + number + ".html");
    return names;
  };
  const std::pair<std::u16string_view, Strings> rows[] = {
      {u"kMDItemTextContent == harbour && kMDItemTitle == \"*forest*\"", files("02")},
      {u"kMDItemTitle == \"*forest*\" && kMDItemTextContent == harbour", files("02")},
      {u"kMDItemTextContent == harbour || kMDItemTitle == \"*harbour*\"", files("013")},
      {u"!(kMDItemTitle == x) && kMDItemFSName != \"3*\"", files("2")},
  };
  const std::string store = scratch.at("store");
  for (const auto& row : rows) {
    for (const auto& before : rows) {
      inCopy([&] { find(before.first); }, store);
      inCopy([&] { EXPECT_EQ(unseenBy(row.first), row.second); }, store);
      std::filesystem::remove_all(store);
    }
  }
}

TEST_F(Unseeing, NamesTheFirstFiveByTheirPathsAndCountsAll) {
  for (int i = 10; i < 50; ++i) file(std::to_string(i) + ".html", "slow " + std::to_string(60 - i));
  for (int i = 20; i < 40; i += 2) file(std::to_string(i) + ".html", i % 4 ? "refuse" : "end");
  const std::string store = scratch.at("store");
  for (int round = 0; round < 3; ++round) {
    inCopy(
        [&] {
          find(u"kMDItemTextContent == harbour");
          const UnseenPlaces::Told told = unseen().files.take();
          EXPECT_EQ(told.count, 10u);
          Strings names;
          for (const auto& [path, why] : told.first) names.push_back(path.substr(path.size() - 7));
          EXPECT_EQ(names, (Strings{"20.html", "22.html", "24.html", "26.html", "28.html"}));
          EXPECT_EQ(told.first.begin()->second,
                    std::string("text program ended without an answer") + kNotSearched);
          EXPECT_EQ(std::next(told.first.begin())->second, std::string("makes no sense") + kNotSearched);
          find(u"kMDItemTextContent == harbour");
          EXPECT_EQ(unseen().files.take().count, 0u);  // it has been told
        },
        round == 0 ? "" : store);
  }
}

TEST_F(Unseeing, CountsTextThatIsReadInPartWhereTheRestWouldDecide) {
  file("a.html", "part harbour");
  inCopy([&] {
    EXPECT_EQ(unseenBy(u"kMDItemTextContent == harbour"), Strings{});
    EXPECT_EQ(find(u"kMDItemTextContent == harbour").size(), 1u);
    EXPECT_EQ(unseenBy(u"kMDItemTextContent == forest"), Strings{"tree/a.html"});
  });
  inCopy([&] { EXPECT_EQ(unseenBy(u"kMDItemTextContent != forest"), Strings{"tree/a.html"}); });
}

TEST_F(Unseeing, CountsFilesWithoutReaderApart) {
  for (int i = 0; i < 9; ++i) file(std::to_string(i) + ".html", "harbour");
  inCopy([&] {
    contentReaderOptions().text.pool.program = scratch.at("none");
    EXPECT_EQ(unseenBy(u"kMDItemTextContent == harbour"), Strings{});
    EXPECT_EQ(unseen().filesWithoutReader.take().count, 9u);
  });
}

TEST_F(Unseeing, CountsFilesThatMayNotBeRead) {
  for (const char* const name : {"a.txt", "b", "c.jpg", "folder/d.txt"}) file(name, "harbour");
  for (const char* const name : {"a.txt", "b", "c.jpg"}) lock(name);
  inCopy([&] {
    const OrdinaryUser user;
    EXPECT_EQ(unseenBy(u"kMDItemFSSize > 0"), Strings{});
    EXPECT_EQ(unseenBy(u"kMDItemContentType == \"public.data\""), Strings{"tree/b"});  // by its bytes alone
    EXPECT_EQ(unseenBy(u"kMDItemTextContent == harbour"), Strings{"tree/a.txt"});
  });
  inCopy([&] {
    const OrdinaryUser user;
    EXPECT_EQ(unseenBy(u"kMDItemWhereFroms == x").size(), 3u);
  });
  inCopy([&] {
    const OrdinaryUser user;
    EXPECT_EQ(find(u"!(kMDItemTextContent == harbour)"),
              (Strings{"tree/a.txt", "tree/b", "tree/c.jpg", "tree/folder"}));
    EXPECT_EQ(named(unseen().files), (Strings{"tree/a.txt", "tree/b"}));
  });
}

// Its entries have names, and nothing else.
TEST_F(Unseeing, CountsFilesThatMayNotBeLookedAt) {
  file("folder/a.txt", "harbour");
  ASSERT_EQ(::chmod(scratch.at("tree/folder").c_str(), 0400), 0);
  inCopy([&] {
    const OrdinaryUser user;
    EXPECT_EQ(find(u"kMDItemFSName == \"a*\""), Strings{"tree/folder/a.txt"});
    EXPECT_EQ(named(unseen().files), Strings{});
    EXPECT_EQ(find(u"kMDItemFSSize > 0"), Strings{});
    const UnseenPlaces::Told told = unseen().files.take();
    ASSERT_EQ(told.count, 1u);
    EXPECT_EQ(told.first.begin()->second, "can't be looked at: Permission denied");
  });
  // Whether a picture may have text after all, by an attribute of the file's own, can't be told, either.
  ASSERT_EQ(::rename(scratch.at("tree/folder/a.txt").c_str(), scratch.at("tree/folder/a.jpg").c_str()), 0);
  inCopy([&] {
    const OrdinaryUser user;
    EXPECT_EQ(unseenBy(u"kMDItemTextContent == harbour"), Strings{"tree/folder/a.jpg"});
  });
  ASSERT_EQ(::chmod(scratch.at("tree/folder").c_str(), 0700), 0);
}

TEST_F(Unseeing, CountsFoldersThatMayNotBeReadAndNoneThatAreGone) {
  file("one/a.txt", "");
  file("two/b.txt", "");
  lock("one");
  inCopy([&] {
    const OrdinaryUser user;
    ResultStore results;
    Search search({std::get<ExpressionRef>(parseQuery(u"kMDItemFSName == \"*\"")), {scratch.at("tree")}, {}},
                  results);
    search.step();
    std::filesystem::rename(scratch.at("tree/two"), scratch.at("aside"));
    while (search.step()) {
    }
    const UnseenPlaces::Told told = unseen().folders.take();
    ASSERT_EQ(told.count, 1u);
    EXPECT_EQ(told.first.begin()->first, scratch.at("tree/one"));
    EXPECT_EQ(told.first.begin()->second, "Permission denied");
  });
  ASSERT_EQ(::chmod(scratch.at("tree/one").c_str(), 0700), 0);
}

TEST_F(Unseeing, CountsNoFileThatGoesWhileItIsRead) {
  const std::string path = file("a.jpg", "vanish"), other = file("b.jpg", "refuse");
  inCopy([&] {
    for (const std::string& each : {path, other})
      EXPECT_FALSE(FileByPath(each, Reading::Anyway).record().value(FileAttribute::Title));
    EXPECT_EQ(named(unseen().files), Strings{"tree/b.jpg"});
  });
}

TEST_F(Unseeing, CountsPlainTextThatIsTooLong) {
  const std::string word = "harbour ";
  file("text", word);
  std::filesystem::resize_file(file("zeros", word), (16 << 20) + 1);
  std::string large;
  while (large.size() <= (16 << 20)) large += "na\xC3\xAFve ";
  file("large", large);
  file("other", "\xFF\xFF" + large);
  EXPECT_EQ(find(u"kMDItemTextContent == harbour"), Strings{"tree/text"});
  const UnseenPlaces::Told told = unseen().files.take();
  ASSERT_EQ(told.count, 1u);
  EXPECT_EQ(told.first.begin()->first, scratch.at("tree/large"));
  EXPECT_EQ(told.first.begin()->second, "is larger than 16 MB; its text is not searched");
}

TEST_F(Unseeing, CountsFilesThatChangeLive) {
  const std::string path = file("a.html", "refuse"), other = file("b.html", "harbour");
  inCopy([&] {
    LiveChanges changes(std::get<ExpressionRef>(parseQuery(u"kMDItemTextContent == harbour")),
                        {scratch.at("tree")}, {});
    EXPECT_FALSE(changes.isResult(path));
    EXPECT_TRUE(changes.isResult(other));
    EXPECT_EQ(named(unseen().files), Strings{"tree/a.html"});
  });
}

}  // namespace
}  // namespace standin::metadata
