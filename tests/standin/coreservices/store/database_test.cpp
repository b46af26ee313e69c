// What a database of contents finds again, and what it doesn't; what makes room; what other databases in its
// place come to.
#include "standin/coreservices/store/database.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <algorithm>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/standin/coreservices/store/samples.h"
#include "tests/support/scratch_folder.h"

namespace standin::metadata {
namespace {

constexpr uint64_t kNoLimit = 1'000'000'000;
constexpr int64_t kToday = 15000;
using Found = std::optional<std::string>;
using Access = ContentDatabase::Access;

class Database : public testing::Test {
 protected:
  Database() { open(); }

  void open() {
    database.reset();
    database = std::make_unique<ContentDatabase>(path, Access::ReadWrite);
  }
  void write(const std::vector<ContentRow>& rows, uint64_t limit = kNoLimit, int64_t today = kToday) {
    database->write(rows, 0, 0, limit, today);
  }
  Found find(const ContentKey& key, int64_t today = kToday) { return database->find(key, today); }
  bool has(uint64_t number) { return find(sampleKey(number)) == sampleBytes(number); }

  // Puts another program's database in its place.
  void replace(const std::string& sql) {
    database.reset();
    std::filesystem::remove(path);
    Sql(path).run(sql);
  }

  static DatabaseError::Kind kindOf(const std::function<void()>& work) {
    try {
      work();
    } catch (const DatabaseError& error) {
      return error.kind;
    }
    ADD_FAILURE() << "no error";
    return DatabaseError::Unusable;
  }

  ScratchFolder scratch;
  std::string path = scratch.at("content.sqlite");
  std::unique_ptr<ContentDatabase> database;
};

TEST_F(Database, FindsWhatWasWrittenAlsoWhenItIsOpenedAgain) {
  write({sampleRow(1), sampleRow(2)});
  EXPECT_TRUE(has(1) && has(2));
  EXPECT_EQ(find(sampleKey(3)), Found());
  open();
  EXPECT_TRUE(has(1) && has(2));
}

TEST_F(Database, FindsNothingWhereAnyPartOfTheKeyIsAnother) {
  const ContentKey key = sampleKey(1);
  write({sampleRow(1)});
  std::vector<ContentKey> others;
  for (uint64_t FileState::*const part :
       {&FileState::device, &FileState::inode, &FileState::size, &FileState::modified, &FileState::changed}) {
    for (const uint64_t difference : {uint64_t{1}, ~uint64_t{0}, uint64_t{1} << 32, uint64_t{1} << 63}) {
      others.push_back(key);
      others.back().file.*part += difference;
    }
  }
  for (const int reader : {1, -1}) {
    others.push_back(key);
    others.back().reader = reader;
  }
  for (const uint64_t version : {uint64_t{76}, uint64_t{78}, 77 + (uint64_t{1} << 32)}) {
    others.push_back(key);
    others.back().version = version;
  }
  for (size_t i = 0; i < others.size(); ++i) EXPECT_EQ(find(others[i]), Found()) << i;
  EXPECT_TRUE(has(1));
}

TEST_F(Database, HasOneEntryForAFileAndReader) {
  write({sampleRow(1)});
  ContentRow newer{sampleKey(1), "newer"};
  ++newer.key.file.changed;
  ContentRow text{sampleKey(1), "text"};
  text.key.reader = 1;
  write({newer, text});
  EXPECT_EQ(find(sampleKey(1)), Found());
  EXPECT_EQ(find(newer.key), "newer");
  EXPECT_EQ(find(text.key), "text");
  const ContentDatabase::Totals totals = database->totals();
  EXPECT_EQ(totals.entries, 2u);
  EXPECT_EQ(totals.files, 1u);
  const std::string longBytes(2000, 'x');  // too many for the entry itself
  write({{newer.key, longBytes}});
  EXPECT_EQ(find(newer.key), longBytes);
  EXPECT_EQ(Sql(path).run("SELECT count(*) FROM apart"), 1);
  write({newer});
  EXPECT_EQ(find(newer.key), "newer");
  EXPECT_EQ(Sql(path).run("SELECT count(*) FROM apart"), 0);
}

TEST_F(Database, TellsTimesApartThatAreFarOffOrBefore1970) {
  std::vector<ContentKey> keys;
  for (const int64_t seconds : {int64_t{-1}, int64_t{0}, int64_t{-2'000'000'000}, int64_t{9'300'000'000},
                                int64_t{1} << 34, (int64_t{1} << 34) - 1}) {
    for (const uint32_t nanoseconds : {0u, 1u, 999'999'999u}) {
      struct statx info {};
      info.stx_ino = 5;
      info.stx_mtime = {seconds, nanoseconds, {}};
      info.stx_ctime = {1, 2, {}};
      keys.push_back({stateOf(info), 0, 1});
    }
  }
  for (size_t i = 0; i < keys.size(); ++i) {
    write({{keys[i], std::to_string(i)}});
    for (size_t k = 0; k < keys.size(); ++k)
      EXPECT_EQ(find(keys[k]), k == i ? Found(std::to_string(i)) : Found());
  }
}

TEST(FileStates, AreSettledWhenTheClockThatDatesFilesHasGoneOn) {
  constexpr int64_t kSecond = 1'000'000'000;
  const auto isSettledAfter = [](int64_t changed, int64_t time) {
    FileState file;
    file.changed = static_cast<uint64_t>(changed);
    return isSettled(file, changed + time);
  };
  for (const int64_t changed : {int64_t{-5}, 1'400'000'000 * kSecond + 1}) {
    EXPECT_FALSE(isSettledAfter(changed, 0));
    EXPECT_FALSE(isSettledAfter(changed, kSecond / 100));
    EXPECT_TRUE(isSettledAfter(changed, kSecond / 10));
    EXPECT_FALSE(isSettledAfter(changed, -kSecond));
  }
  EXPECT_FALSE(isSettledAfter(1'400'000'000 * kSecond,
                              kSecond));  // kept in whole seconds, perhaps in every second one
  EXPECT_TRUE(isSettledAfter(1'400'000'000 * kSecond, 3 * kSecond));
}

TEST_F(Database, KeepsAnyBytes) {
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  std::string large;
  while (large.size() < 20'000'000) large += std::to_string(large.size());
  write(
      {{sampleKey(1), ""}, {sampleKey(2), all}, {sampleKey(3), large}, {sampleKey(4), std::string(3, '\0')}});
  open();
  EXPECT_EQ(find(sampleKey(1)), "");
  EXPECT_EQ(find(sampleKey(2)), all);
  EXPECT_TRUE(find(sampleKey(3)) == large);
  EXPECT_EQ(find(sampleKey(4)), std::string(3, '\0'));
  EXPECT_EQ(database->check(), std::vector<std::string>());
}

TEST_F(Database, CountsReadsAndHits) {
  database->write({sampleRow(1)}, 3, 4, kNoLimit, kToday);
  database->write({}, 10, 20, kNoLimit, kToday);
  open();
  EXPECT_EQ(database->totals().reads, 13u);
  EXPECT_EQ(database->totals().hits, 24u);
}

// Making room

// 40 entries of 50,000 bytes are two megabytes.
class Room : public Database {
 protected:
  static constexpr uint64_t kLimit = 1'000'000;
  static ContentRow large(uint64_t number) { return {sampleKey(number), std::string(50'000, 'x')}; }
  std::vector<uint64_t> left() {
    std::vector<uint64_t> numbers;
    for (uint64_t i = 0; i < 100; ++i) {
      if (find(sampleKey(i))) numbers.push_back(i);
    }
    return numbers;
  }
};

TEST_F(Room, IsMadeByWhatWasWrittenFirst) {
  for (uint64_t i = 0; i < 40; ++i) write({large(i)}, kLimit);
  const std::vector<uint64_t> numbers = left();
  ASSERT_FALSE(numbers.empty());
  EXPECT_EQ(numbers.back(), 39u);
  EXPECT_EQ(numbers.front(), 40 - numbers.size());
  EXPECT_GE(numbers.size(), 15u);  // down to nine tenths
  EXPECT_LE(database->totals().bytes, kLimit);
  database.reset();
  EXPECT_LE(std::filesystem::file_size(path), kLimit + 100'000);
}

TEST_F(Room, IsMadeByWhatWasUsedLongestAgo) {
  for (uint64_t i = 0; i < 15; ++i) write({large(i)}, kLimit, kToday);
  for (const uint64_t number : {0, 1, 7}) EXPECT_TRUE(find(sampleKey(number), kToday + 2));
  write({}, kLimit, kToday + 2);
  for (uint64_t i = 15; i < 30; ++i) write({large(i)}, kLimit, kToday + 1);
  const std::vector<uint64_t> numbers = left();
  for (const uint64_t number : {0, 1, 7}) EXPECT_TRUE(std::ranges::count(numbers, number)) << number;
  for (const uint64_t number : {2, 3, 6}) EXPECT_FALSE(std::ranges::count(numbers, number)) << number;
}

TEST_F(Room, IsNotMadeForWhatWasFoundButNotNoted) {
  write({large(1)}, kLimit, kToday);
  EXPECT_TRUE(find(sampleKey(1), kToday + 5));
  write({}, kLimit, kToday + 5);
  EXPECT_EQ(Sql(path).run("SELECT used FROM entry"), kToday + 5);
}

TEST_F(Room, IsMadeForOneThatIsTooLarge) {
  write({large(1), {sampleKey(2), std::string(2 * kLimit, 'x')}}, kLimit);
  EXPECT_EQ(left(), std::vector<uint64_t>());
  write({large(3)}, kLimit);
  EXPECT_EQ(left(), std::vector<uint64_t>{3});
}

TEST_F(Room, IsMeasuredInBytesWhateverThePages) {
  replace("PRAGMA page_size = 512; CREATE TABLE other(a); PRAGMA user_version = 9");
  open();
  for (uint64_t i = 0; i < 15; ++i) write({large(i)}, kLimit);
  EXPECT_EQ(left().size(), 15u);
  EXPECT_GT(database->totals().bytes, 750'000u);
  EXPECT_LT(database->totals().bytes, kLimit);
}

// What is in its place

TEST_F(Database, EmptiesOneOfAnotherFormat) {
  for (const char* const version : {"0", "999", "-1"}) {
    write({sampleRow(1)});
    database.reset();
    Sql(path).run(std::string("PRAGMA user_version = ") + version);
    open();
    EXPECT_EQ(find(sampleKey(1)), Found()) << version;
    EXPECT_EQ(database->totals().entries, 0u);
    write({sampleRow(1)});
    EXPECT_TRUE(has(1));
  }
}

TEST_F(Database, WritesNothingOnceAnotherVersionOfTheProgramHasIt) {
  write({sampleRow(1)});
  Sql(path).run("PRAGMA user_version = 999");
  EXPECT_EQ(kindOf([&] { write({sampleRow(2)}); }), DatabaseError::Unusable);
  EXPECT_EQ(Sql(path).run("SELECT count(*) FROM entry"), 1);
}

TEST_F(Database, TakesAnEmptyFile) {
  database.reset();
  std::filesystem::resize_file(path, 0);
  open();
  write({sampleRow(1)});
  EXPECT_TRUE(has(1));
}

TEST_F(Database, TakesAnotherProgramsWithTablesOfTheSameNames) {
  replace(
      "CREATE TABLE entry(x); CREATE TABLE content(y); INSERT INTO entry VALUES(1); CREATE TABLE notes(z)");
  open();
  write({sampleRow(1)});
  EXPECT_TRUE(has(1));
}

TEST_F(Database, CallsDamagedWhatIsNoneOrOfOtherTables) {
  replace("CREATE VIEW entry AS SELECT 1");
  EXPECT_EQ(kindOf([&] { open(); }), DatabaseError::Damaged);
  database.reset();
  scratch.file("content.sqlite", "This is a text.\n" + std::string(5000, 'x'));
  EXPECT_EQ(kindOf([&] { open(); }), DatabaseError::Damaged);
}

TEST_F(Database, IsUnusableWhereAFolderIsOrNothingCanBeMade) {
  const std::string folder = scratch.folder("box");
  EXPECT_EQ(kindOf([&] { ContentDatabase(folder, Access::ReadWrite); }), DatabaseError::Unusable);
  EXPECT_EQ(kindOf([&] { ContentDatabase(scratch.at("none/x"), Access::ReadWrite); }),
            DatabaseError::Unusable);
  EXPECT_EQ(kindOf([&] { ContentDatabase(scratch.at("none"), Access::ReadOnly); }), DatabaseError::Unusable);
}

TEST_F(Database, IsReadWithoutRightsToWriteWhateverItsName) {
  for (const char* const name : {"plain", "what?mode=rw", "50%41", "a#b", "two  words", "é"}) {
    path = scratch.at(name);
    open();
    write({sampleRow(1)});
    database.reset();
    database = std::make_unique<ContentDatabase>(path, Access::ReadOnly);
    EXPECT_TRUE(has(1)) << name;
    EXPECT_EQ(kindOf([&] { write({sampleRow(2)}); }), DatabaseError::Unusable) << name;
  }
}

// Damage

TEST_F(Database, TellsWhenAnEntryIsNotAsItWasWritten) {
  for (const size_t size : {10, 5000}) {  // in the entry, and apart from it
    SCOPED_TRACE(size);
    write({{sampleKey(1), std::string(size, 'x')}, sampleRow(2)});
    Sql(path).run(size < 100 ? "UPDATE entry SET content = CAST(replace(content, 'xxxxx', 'other') AS BLOB)"
                             : "UPDATE apart SET bytes = 'other'");
    EXPECT_EQ(database->check(), std::vector<std::string>{"1 entry isn't as written"});
    EXPECT_EQ(kindOf([&] { find(sampleKey(1)); }), DatabaseError::Damaged);
    EXPECT_TRUE(has(2));
  }
}

// Everything but finding works with such a table.
TEST_F(Database, TellsWhenATableIsAnother) {
  write({sampleRow(1)});
  database.reset();
  Sql sql(path);
  sql.run(
      "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET sql = replace(sql, 'id INTEGER', 'id INTEGEX')");
  EXPECT_EQ(kindOf([&] { open(); }), DatabaseError::Damaged);
}

// A bit of memory that is always set damages more than one word that passes through it.
TEST_F(Database, TellsWhenOneBitOfTwoWordsIsAnother) {
  const std::string bytes = randomBytes(64, 5);
  Sql sql(path);
  for (size_t bit = 0; bit < 128; ++bit) {
    std::string damaged = bytes;
    for (const size_t word : {0, 32}) damaged[word + bit / 8] ^= static_cast<char>(1 << bit % 8);
    write({{sampleKey(1), damaged}});
    sql.run("CREATE TEMP TABLE other AS SELECT substr(content, 1, length(content) - 64) AS head FROM entry");
    write({{sampleKey(1), bytes}});
    sql.run("UPDATE entry SET content = CAST((SELECT head FROM other) || substr(content, -64) AS BLOB)");
    sql.run("DROP TABLE other");
    EXPECT_EQ(kindOf([&] { find(sampleKey(1)); }), DatabaseError::Damaged) << bit;
  }
}

}  // namespace
}  // namespace standin::metadata
