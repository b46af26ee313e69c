// No answer of a search depends on the store: random queries over photos, songs and documents, without a
// store, while it is filled, when it is full, damaged, locked, not to be written or taken away; and after
// changes of files that hide as well as they can.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "standin/coreservices/content/content_reader.h"
#include "standin/coreservices/language/parser.h"
#include "standin/coreservices/search/search.h"
#include "tests/standin/coreservices/content/reader_programs.h"
#include "tests/standin/coreservices/media/sample_files.h"
#include "tests/standin/coreservices/store/samples.h"
#include "tests/support/forked.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/tier.h"

namespace standin::metadata {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

std::string bytesOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string shown(const Value& value) {
  if (const auto* const text = std::get_if<std::string_view>(&value)) return std::string(*text);
  if (const auto* const number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  if (const auto* const number = std::get_if<double>(&value)) return std::to_string(*number);
  if (const auto* const date = std::get_if<Date>(&value)) return "date " + std::to_string(date->seconds);
  return std::get<bool>(value) ? "true" : "false";
}

// Conditions on what the files below have, and on what they don't.
class QueryMaker {
 public:
  explicit QueryMaker(uint32_t seed) : random_(seed) {}

  std::u16string query() {
    const std::string text = condition(2);
    return {text.begin(), text.end()};
  }
  size_t below(size_t bound) { return random_() % bound; }

 private:
  std::string condition(int depth) {
    if (depth > 0 && below(5) < 3) {
      const std::string first = "(" + condition(depth - 1) + ")";
      const size_t kind = below(5);
      if (kind == 0) return "!" + first;
      return first + (kind < 3 ? " && (" : " || (") + condition(depth - 1) + ")";
    }
    static constexpr const char* kNumbers[] = {"kMDItemPixelWidth", "kMDItemPixelHeight",
                                               "kMDItemISOSpeed",   "kMDItemDurationSeconds",
                                               "kMDItemFSSize",     "kMDItemNumberOfPages"};
    static constexpr const char* kTexts[] = {
        "kMDItemTitle",  "kMDItemAuthors",     "kMDItemAlbum", "kMDItemKeywords",
        "kMDItemFSName", "kMDItemTextContent", "kMDItemKind",  "*"};
    static constexpr const char* kValues[] = {"*a*",     "Tide Tables", "Ann", "harbour", "*.jpg",
                                              "song 1?", "*",           "T",   "no such", "*e*"};
    static constexpr const char* kBounds[] = {"0", "3", "16", "32", "400", "1000", "20000"};
    if (below(3) == 0) {
      static constexpr const char* kOps[] = {"==", "!=", "<", ">", "<=", ">="};
      return std::string(kNumbers[below(6)]) + " " + kOps[below(6)] + " " + kBounds[below(7)];
    }
    return std::string(kTexts[below(8)]) + (below(3) ? " == \"" : " != \"") + kValues[below(10)] + '"' +
           (below(2) ? "cd" : "");
  }

  std::mt19937 random_;
};

class StoredAnswers : public testing::Test {
 protected:
  // In a copy of this process, which keeps what it reads in that folder.
  static void useStore(const std::string& folder, ReaderPool::Options text) {
    ContentReader::Options& options = contentReaderOptions();
    options.store.folder = folder;
    options.text.pool = std::move(text);
    options.complain = [](const std::string&) {};
  }

  // Paths, and what is known of each attribute that is asked for.
  std::string answer(const std::u16string& query, size_t maximum, std::vector<FileAttribute> attributes) {
    std::string told;
    ResultStore results;
    auto parsed = parseQuery(query);
    if (std::holds_alternative<ParseError>(parsed)) return "no query\n";
    Search search({std::get<ExpressionRef>(parsed), {scratch.at("tree")}, {}, maximum, attributes}, results,
                  [&](ResultStore::File file, FileRecord& record) {
                    told += results.path(file);
                    for (const FileAttribute attribute : attributes) {
                      const std::optional<Value> value = record.value(attribute);
                      told += " | " + (value ? shown(*value) : "none");
                    }
                    told += '\n';
                  });
    while (search.step()) {
    }
    return told;
  }

  ScratchFolder scratch;
  std::string store = scratch.at("store");
};

// Random queries

class RandomQueries : public StoredAnswers {
 protected:
  RandomQueries() {
    fs::copy(EXAMPLE_LIBRARY, scratch.at("tree"), fs::copy_options::recursive);
    for (int i = 0; i < 12; ++i) {
      const std::string number = std::to_string(i);
      scratch.file("tree/songs/" + number + ".mp3", sample::mp3({{"TIT2", "song " + number},
                                                                 {"TPE1", i % 2 ? "Ann" : "Bob"},
                                                                 {"TALB", "Tide Tables"}}));
      scratch.file("tree/pages/" + number + ".html", "harbour " + number + " <title>page</title>");
    }
    scratch.file("tree/a.jpg", sample::jpeg());
    scratch.file("tree/b.png", sample::png());
    scratch.file("tree/c.avi", sample::avi());
    scratch.file("tree/d.pdf", sample::pdf());
    scratch.file("tree/e.docx", sample::docx());
    scratch.file("tree/f.m4a", sample::mpeg4Audio());
    scratch.file("tree/broken.jpg", "no picture");
    scratch.file("tree/empty.mp3", "");
    std::this_thread::sleep_for(50ms);  // the files are no longer new
  }

  // All answers, one after the other; `between` is done after each.
  std::string answers(
      const std::string& folder, const std::function<void(int)>& between = [](int) {}) {
    const std::string path = scratch.at("answers");
    EXPECT_TRUE(succeedsForked([&] {
      useStore(folder, textProgram(scratch, 2));
      contentReaderOptions().tags.pool.processes = 1;  // starting it takes the longest
      QueryMaker maker(2011);
      std::string all;
      const int queries = isLongTier() ? 2000 : 40;
      for (int i = 0; i < queries; ++i) {
        const std::u16string query = maker.query();
        std::vector<FileAttribute> attributes;
        if (maker.below(2)) attributes.push_back(FileAttribute::Title);
        if (maker.below(2)) attributes.push_back(FileAttribute::PixelWidth);
        if (maker.below(2)) attributes.push_back(FileAttribute::ContentCreationDate);
        const size_t maximum = maker.below(4) ? SIZE_MAX : 1 + maker.below(9);
        all += std::string(query.begin(), query.end()) + '\n' + answer(query, maximum, attributes);
        between(i);
      }
      scratch.file("answers", all);
      contentReader().writeStore();
    }));
    return bytesOf(path);
  }

  std::string database = contentDatabaseIn(store);
};

TEST_F(RandomQueries, AreAnsweredAlikeWhateverBecomesOfTheStore) {
  const std::string expected = answers("");
  ASSERT_GT(std::ranges::count(expected, '\n'), isLongTier() ? 20'000 : 400);
  EXPECT_TRUE(answers(store) == expected) << "while it is filled";
  openContentDatabase(store);  // and closed, which puts the log into it
  const std::string filled = bytesOf(database);
  ASSERT_GT(filled.size(), 20'000u);
  EXPECT_TRUE(answers(store) == expected) << "when it is full";
  const auto eachTime = [&](const char* what, const std::function<void(int)>& happens) {
    EXPECT_TRUE(answers(store, happens) == expected) << what;
    fs::remove_all(store);
    scratch.file("store/content.sqlite", filled);
  };
  std::mt19937 random(1);
  eachTime("damaged", [&](int query) {
    if (query % 20 != 5) return;
    std::fstream file(database, std::ios::in | std::ios::out | std::ios::binary);
    for (int i = 0; i < 30; ++i) {
      file.seekp(static_cast<std::streamoff>(random() % filled.size()));
      file << 'x';
    }
  });
  eachTime("overwritten", [&](int query) {
    if (query % 20 == 5) scratch.file("store/content.sqlite", "no database");
  });
  eachTime("taken away", [&](int query) {
    if (query % 10 == 5) fs::remove_all(store);
  });
  {
    Sql other(database);
    other.run("PRAGMA journal_mode = DELETE; BEGIN EXCLUSIVE");
    EXPECT_TRUE(answers(store) == expected) << "locked";
  }
  ASSERT_EQ(::chmod(database.c_str(), 0400), 0);
  ASSERT_EQ(::chmod(store.c_str(), 0500), 0);
  {
    const OrdinaryUser user;
    EXPECT_TRUE(answers(store) == expected) << "not to be written";
  }
  ASSERT_EQ(::chmod(store.c_str(), 0700), 0);
}

// Files that change

class ChangingFiles : public StoredAnswers {
 protected:
  static constexpr int kFiles = 12;
  static constexpr std::array<const char*, 4> kTitles = {"aaaaa", "bbbbb", "ccccc", "ddddd"};

  std::string path(size_t number) const { return scratch.at("tree/" + std::to_string(10 + number) + ".jpg"); }
  void setTimes(const std::string& path, timespec time) {
    const timespec times[] = {time, time};
    EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  }
  static timespec timeOf(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0);
    return info.st_mtim;
  }

  // Every change leaves names, sizes and times of content as they were, as far as that can be.
  void change(std::mt19937& random) {
    const std::string file = path(random() % kFiles), other = path(random() % kFiles);
    const std::string title = kTitles[random() % kTitles.size()];
    const timespec time = timeOf(file);
    const std::string aside = scratch.at("aside");
    switch (random() % 5) {
      case 0:  // written over
        std::fstream(file, std::ios::in | std::ios::out) << title;
        break;
      case 1:  // replaced
        std::ofstream(aside) << title;
        fs::rename(aside, file);
        break;
      case 2:  // two that change places
        fs::rename(file, aside);
        if (file != other) fs::rename(other, file);
        fs::rename(aside, other);
        return;
      case 3:  // another name for another file
        if (file == other) return;
        fs::remove(file);
        fs::create_hard_link(other, file);
        return;
      case 4:  // made again, perhaps in the very place
        fs::remove(file);
        std::ofstream(file) << title;
        break;
    }
    setTimes(file, time);
  }

  void expectAnswers() {
    std::map<std::string, std::string> expected;
    for (size_t i = 0; i < kFiles; ++i) expected[bytesOf(path(i))] += path(i) + '\n';
    for (const char* const title : kTitles) {
      const std::string text = "kMDItemTitle == \"" + std::string(title) + '"';
      ASSERT_EQ(answer({text.begin(), text.end()}, SIZE_MAX, {}), expected[title]) << title;
    }
  }
};

TEST_F(ChangingFiles, AreAnsweredAsTheyAre) {
  std::mt19937 random(4);
  for (size_t i = 0; i < kFiles; ++i) {
    scratch.file("tree/" + std::to_string(10 + i) + ".jpg", kTitles[random() % kTitles.size()]);
    setTimes(path(i), {1'300'000'000, 0});
  }
  const int processes = isLongTier() ? 40 : 3;
  for (int process = 0; process < processes; ++process) {
    const auto seed = static_cast<uint32_t>(random());
    ASSERT_TRUE(succeedsForked([&] {
      contentReaderOptions().tags.pool = tagsProgram(scratch, 2);
      useStore(store, textProgram(scratch));
      std::mt19937 own(seed);
      expectAnswers();
      for (int step = 0; step < 30 && !HasFatalFailure(); ++step) {
        SCOPED_TRACE(step);
        change(own);
        expectAnswers();
        std::this_thread::sleep_for(12ms);  // a tick of the clock that files are dated by
      }
      contentReader().writeStore();
    })) << "process "
        << process;
  }
  ContentDatabase database(contentDatabaseIn(store), ContentDatabase::Access::ReadWrite);
  EXPECT_GT(database.totals().hits, 100u);
}

}  // namespace
}  // namespace standin::metadata
