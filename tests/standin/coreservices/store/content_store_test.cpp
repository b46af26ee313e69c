// The store of what is in files: who may read it, and that whatever becomes of its database costs time, never
// another result, and is said once.
#include "standin/coreservices/store/content_store.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/standin/coreservices/store/samples.h"
#include "tests/support/forked.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/sanitizers.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/tier.h"

namespace standin::metadata {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;
using Found = std::optional<std::string>;

constexpr uint64_t kEntries = 40;

std::string contentOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

mode_t rightsOf(const std::string& path) {
  struct stat info {};
  EXPECT_EQ(::lstat(path.c_str(), &info), 0) << path;
  return info.st_mode & 07777;
}

class Store : public testing::Test {
 protected:
  std::unique_ptr<ContentStore> open() {
    ContentStore::Options options;
    options.folder = folder;
    options.complain = [this](const std::string& message) { complaints.push_back(message); };
    return std::make_unique<ContentStore>(std::move(options));
  }
  static void put(ContentStore& store, uint64_t number) {
    store.put(sampleKey(number), sampleBytes(number), true);
  }
  void fill(uint64_t entries = kEntries) {
    const auto store = open();
    for (uint64_t i = 0; i < entries; ++i) put(*store, i);
  }
  // How many there are; those that are must be right.
  static uint64_t countIn(ContentStore& store, uint64_t entries = kEntries) {
    uint64_t found = 0;
    for (uint64_t i = 0; i < entries; ++i) {
      const Found bytes = store.find(sampleKey(i));
      if (!bytes) continue;
      ++found;
      EXPECT_TRUE(*bytes == sampleBytes(i)) << "wrong bytes of " << i;
    }
    return found;
  }
  uint64_t count(uint64_t entries = kEntries) { return countIn(*open(), entries); }

  // Looks everything up, and puts what isn't there, as a search does: afterwards all is known.
  void use(ContentStore& store) {
    for (uint64_t i = 0; i < kEntries; ++i) {
      const Found bytes = store.find(sampleKey(i));
      if (bytes) {
        EXPECT_TRUE(*bytes == sampleBytes(i)) << "wrong bytes of " << i;
      } else {
        put(store, i);
      }
    }
    EXPECT_EQ(countIn(store), kEntries);
  }
  // It works, says at most one thing, and that is this.
  void expectUse(const std::string& problem, const std::string& consequence) {
    complaints.clear();
    use(*open());
    ASSERT_EQ(complaints.size(), 1u);
    EXPECT_TRUE(complaints[0].starts_with("the store of what is in files, " + database +
                                          ", can't be used: " + problem))
        << complaints[0];
    EXPECT_TRUE(complaints[0].ends_with(". " + consequence)) << complaints[0];
  }
  // After damage: what was damaged may be found out late, and once. An entry whose key became another one
  // stands in the wrong place, which nothing but a check finds out: it hides one of its neighbours at a time.
  void expectRecovery(const std::string& what) {
    SCOPED_TRACE(what);
    uint64_t found = 0;
    for (int round = 0; round < 4; ++round) {
      complaints.clear();
      const auto store = open();
      found = countIn(*store);
      for (uint64_t i = 0; i < kEntries; ++i) {
        if (!store->find(sampleKey(i))) put(*store, i);
      }
      EXPECT_EQ(countIn(*store), kEntries);
      store->write(true);
      EXPECT_LE(complaints.size(), 1u);
      if (found == kEntries && complaints.empty()) return;
    }
    EXPECT_EQ(found, kEntries - 1) << "it was never whole again";
    EXPECT_NE(ContentDatabase(database, ContentDatabase::Access::ReadWrite).check(), Strings());
  }

  ScratchFolder scratch;
  std::string folder = scratch.at("cache/shotlight");
  std::string database = folder + "/content.sqlite";
  Strings complaints;
};

// What is kept, and where

TEST_F(Store, KeepsForOthersWhatLasts) {
  {
    const auto store = open();
    put(*store, 1);
    store->put(sampleKey(2), "passing", false);
    EXPECT_EQ(store->find(sampleKey(1)), sampleBytes(1));
    EXPECT_EQ(store->find(sampleKey(2)), "passing");
    EXPECT_EQ(store->find(sampleKey(3)), Found());
  }
  const auto store = open();
  EXPECT_EQ(store->find(sampleKey(1)), sampleBytes(1));
  EXPECT_EQ(store->find(sampleKey(2)), Found());
  EXPECT_EQ(complaints, Strings{});
}

TEST_F(Store, KeepsInMemoryAloneWithoutAFolder) {
  folder.clear();
  const auto store = open();
  use(*store);
  store->write(true);
  EXPECT_EQ(countIn(*store), kEntries);
  EXPECT_EQ(complaints, Strings{});
}

TEST_F(Store, TouchesNothingUntilItIsUsed) {
  open();
  EXPECT_FALSE(fs::exists(folder));
}

TEST_F(Store, IsSeenByOthersBeforeItEnds) {
  const auto store = open();
  put(*store, 1);
  EXPECT_EQ(count(), 0u);
  for (uint64_t i = 2; i < 258; ++i) put(*store, i);
  EXPECT_GT(count(), 0u);
  put(*store, 300);
  store->write(true);
  EXPECT_EQ(open()->find(sampleKey(300)), sampleBytes(300));
}

TEST_F(Store, WritesWhatHasWaitedOrIsMuch) {
  const auto store = open();
  put(*store, 1);
  std::this_thread::sleep_for(std::chrono::milliseconds(510));
  store->write(false);
  EXPECT_EQ(count(), 1u);
  for (uint64_t i = 2; i < 12; ++i) store->put(sampleKey(i), std::string(4'000'000, 'x'), true);
  EXPECT_TRUE(open()->find(sampleKey(2)));
}

TEST_F(Store, CountsHitsAndReads) {
  fill(10);
  EXPECT_EQ(count(20), 10u);
  ContentDatabase opened(database, ContentDatabase::Access::ReadWrite);
  EXPECT_EQ(opened.totals().reads, 10u);
  EXPECT_EQ(opened.totals().hits, 10u);
}

// Rights

TEST_F(Store, IsReadByNobodyElse) {
  const auto store = open();
  use(*store);
  store->write(true);
  EXPECT_EQ(rightsOf(folder), 0700u);
  for (const char* const end : {"", "-wal", "-shm"}) EXPECT_EQ(rightsOf(database + end), 0600u) << end;
}

TEST_F(Store, MakesFoldersAboveItForNobodyElse) {
  folder = scratch.at("a/b/shotlight");
  use(*open());
  EXPECT_EQ(rightsOf(scratch.at("a")), 0700u);
  EXPECT_EQ(rightsOf(scratch.at("a/b")), 0700u);
  EXPECT_EQ(complaints, Strings{});
}

TEST_F(Store, TakesRightsAwayThatOthersHad) {
  const auto first = open();
  use(*first);
  first->write(true);
  ASSERT_EQ(::chmod(folder.c_str(), 0777), 0);
  for (const char* const end : {"", "-wal", "-shm"})
    ASSERT_EQ(::chmod((database + end).c_str(), 0666), 0) << end;
  const auto second = open();
  EXPECT_EQ(countIn(*second), kEntries);
  EXPECT_EQ(rightsOf(folder), 0700u);
  for (const char* const end : {"", "-wal", "-shm"}) EXPECT_EQ(rightsOf(database + end), 0600u) << end;
  EXPECT_EQ(complaints, Strings{});
}

TEST_F(Store, LeavesFoldersAndFilesOfOtherUsersAlone) {
  if (::geteuid() == 0) {
    fill();
    ASSERT_EQ(::chown(database.c_str(), 12345, 12345), 0);
    expectUse("belongs to another user", "Contents of files are read anew.");
    ASSERT_EQ(::chown(folder.c_str(), 12345, 12345), 0);
  } else {
    folder = "/usr";
    database = "/usr/content.sqlite";
  }
  expectUse("belongs to another user", "Contents of files are read anew.");
}

// What is in its place

TEST_F(Store, IsMadeAnewInPlaceOfAText) {
  scratch.file("cache/shotlight/content.sqlite", std::string(10'000, 'x'));
  expectUse("file is not a database", "It is made anew.");
  EXPECT_EQ(count(), kEntries);
}

TEST_F(Store, IsMadeInPlaceOfAnEmptyFileAndOfAnotherFormat) {
  scratch.file("cache/shotlight/content.sqlite");
  use(*open());
  EXPECT_EQ(count(), kEntries);
  Sql(database).run("PRAGMA user_version = 12345");
  EXPECT_EQ(count(), 0u);
  use(*open());
  EXPECT_EQ(count(), kEntries);
  EXPECT_EQ(complaints, Strings{});
}

TEST_F(Store, FollowsNoLinkAndOpensNothingButAFile) {
  const std::string other = scratch.at("other.sqlite");
  Sql(other).run("CREATE TABLE entry(a); INSERT INTO entry VALUES(1)");
  const std::string before = contentOf(other);
  fs::create_directories(folder);
  fs::create_symlink(other, database);
  expectUse("is no file", "Contents of files are read anew.");
  EXPECT_TRUE(contentOf(other) == before);
  fs::remove(database);
  fs::create_directory(database);
  expectUse("is no file", "Contents of files are read anew.");
  fs::remove(database);
  ASSERT_EQ(::mkfifo(database.c_str(), 0600), 0);
  expectUse("is no file", "Contents of files are read anew.");
  fs::remove_all(folder);
  fs::create_directory_symlink(scratch.path(), folder);
  expectUse("is no folder", "Contents of files are read anew.");
  fs::remove(folder);
  scratch.file("cache/shotlight");
  expectUse("is no folder", "Contents of files are read anew.");
  fs::remove_all(scratch.at("cache"));
  scratch.file("cache");
  expectUse("can't be made: Not a directory", "Contents of files are read anew.");
}

// Damage

class DamagedStore : public Store {
 protected:
  DamagedStore() {
    const auto store = open();
    use(*store);
    store->write(true);
    // As a process leaves it that is killed now; and as one that ends.
    withLog_ = {contentOf(database), contentOf(database + "-wal")};
  }
  void SetUp() override {
    whole_ = contentOf(database);
    ASSERT_GT(whole_.size(), 25u * kPage);
    ASSERT_GT(withLog_.log.size(), 25u * kPage);
  }

  static constexpr size_t kPage = 4096;
  const size_t kStep = underAddressSanitizer() && !isLongTier() ? 3 * kPage : kPage;
  struct Files {
    std::string database, log;
  };
  void place(const std::string& bytes, const std::string& log = "") {
    fs::remove_all(folder);
    scratch.file("cache/shotlight/content.sqlite", bytes);
    if (!log.empty()) scratch.file("cache/shotlight/content.sqlite-wal", log);
  }
  // Every way to damage some bytes.
  static std::map<std::string, std::string> damaged(const std::string& bytes, size_t at, size_t size) {
    std::map<std::string, std::string> all;
    const size_t length = std::min(size, bytes.size() - at);
    all["zeros"] = std::string(bytes).replace(at, length, length, '\0');
    all["random"] = std::string(bytes).replace(at, length, randomBytes(length, static_cast<uint32_t>(at)));
    all["another page"] =
        std::string(bytes).replace(at, length, bytes, (at + 7 * kPage) % (bytes.size() - kPage), length);
    return all;
  }

  std::string whole_;
  Files withLog_;
};

TEST_F(DamagedStore, AtAnyPageFindsWhatIsRightOrNothing) {
  uint64_t lost = 0;
  for (size_t at = 0; at < whole_.size(); at += kStep) {
    for (const auto& [how, bytes] : damaged(whole_, at, kPage)) {
      place(bytes);
      complaints.clear();
      const uint64_t found = count();
      lost += kEntries - found;
      EXPECT_LE(complaints.size(), 1u);
      expectRecovery(how + " at " + std::to_string(at));
    }
  }
  EXPECT_GT(lost, 0u);
}

TEST_F(DamagedStore, AtAnyPageOfTheLogFindsWhatIsRightOrNothing) {
  for (size_t at = 0; at < withLog_.log.size(); at += kStep) {
    for (const auto& [how, bytes] : damaged(withLog_.log, at, kPage)) {
      place(withLog_.database, bytes);
      expectRecovery(how + " in the log at " + std::to_string(at));
    }
  }
}

TEST_F(DamagedStore, InOneByteFindsWhatIsRightOrNothing) {
  std::mt19937 random(7);
  const int rounds = isLongTier() ? 20'000 : 200;
  for (int round = 0; round < rounds; ++round) {
    const bool inLog = round % 4 == 0;
    Files files = inLog ? withLog_ : Files{whole_, ""};
    std::string& bytes = inLog ? files.log : files.database;
    // The first pages, and the ends of pages, say what is where.
    const size_t at = round % 3 == 0 ? random() % 4096 : random() % bytes.size();
    if (at == 18)
      continue;  // with a higher number, SQLite takes it for a later SQLite's that may be read only
    bytes[at] ^= static_cast<char>(1 + random() % 255);
    place(files.database, files.log);
    expectRecovery("a byte at " + std::to_string(at) + (inLog ? " of the log" : ""));
  }
}

TEST_F(DamagedStore, CutAnywhereFindsWhatIsRightOrNothing) {
  for (size_t size = 0; size < whole_.size(); size += kPage / 2) {
    place(whole_.substr(0, size));
    expectRecovery("cut at " + std::to_string(size));
  }
  for (size_t size = 0; size < withLog_.log.size(); size += kPage) {
    place(withLog_.database, withLog_.log.substr(0, size));
    expectRecovery("log cut at " + std::to_string(size));
  }
}

TEST_F(DamagedStore, IsReadAnewWhereItCannotBeMadeAnew) {
  place(std::string(whole_).replace(0, kPage, kPage, 'x'));
  ASSERT_EQ(::chmod(folder.c_str(), 0500), 0);
  {
    const OrdinaryUser user;
    expectUse("file is not a database", "Contents of files are read anew.");
  }
  ASSERT_EQ(::chmod(folder.c_str(), 0700), 0);
}

// What others do to it

TEST_F(Store, LockedByAnotherIsWaitedForShortlyAndOnce) {
  fill();
  Sql other(database);
  other.run("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; UPDATE total SET hits = 5");
  const auto start = std::chrono::steady_clock::now();
  expectUse("database is locked", "Contents of files are read anew.");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  other.run("COMMIT");
}

TEST_F(Store, WrittenByAnotherForLongIsReadAllTheSame) {
  fill(kEntries / 2);
  Sql other(database);
  other.run("BEGIN EXCLUSIVE; UPDATE total SET hits = 5");
  const auto start = std::chrono::steady_clock::now();
  expectUse("database is locked", "What is read is not kept.");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  other.run("COMMIT");
  EXPECT_EQ(count(), kEntries / 2);
}

TEST_F(Store, RemovedOrReplacedWhileItIsOpenGivesNothingWrong) {
  const auto replace = [&] {
    const std::string kept = std::exchange(folder, scratch.at("cache/other"));
    fill(5);
    fs::rename(std::exchange(folder, kept) + "/content.sqlite", database);
  };
  const std::map<std::string, std::function<void()>> ways = {
      {"cleared", [&] { EXPECT_EQ(removeContentDatabase(folder), std::nullopt); }},
      {"folder removed", [&] { fs::remove_all(folder); }},
      {"overwritten", [&] { scratch.file("cache/shotlight/content.sqlite", "a text"); }},
      {"replaced", replace}};
  for (const auto& [what, happens] : ways) {
    SCOPED_TRACE(what);
    fs::remove_all(scratch.at("cache"));
    complaints.clear();
    fill();
    {
      const auto store = open();
      EXPECT_EQ(countIn(*store), kEntries);
      happens();
      use(*store);
      for (uint64_t i = kEntries; i < 2 * kEntries; ++i) put(*store, i);
      store->write(true);
      EXPECT_EQ(countIn(*store, 2 * kEntries), 2 * kEntries);
    }
    EXPECT_LE(complaints.size(), 1u);
    expectRecovery("afterwards");
  }
}

TEST_F(Store, IsRightAfterProcessesWereKilledWhileTheyWrote) {
  std::mt19937 random(3);
  const int rounds = isLongTier() ? 200 : 20;
  for (int round = 0; round < rounds; ++round) {
    const pid_t writer = startForked([&] {
      for (uint64_t i = 0;; i = (i + 1) % kEntries) {
        const auto store = open();
        for (uint64_t k = 0; k < 7; ++k) put(*store, (i + k) % kEntries);
      }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(5 + random() % 30));
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
    count();
  }
  EXPECT_EQ(complaints, Strings{});
  expectRecovery("after that");
}

// Several processes

TEST_F(Store, IsFilledBySeveralProcessesAtOnce) {
  constexpr uint64_t kRows = 200;
  std::vector<pid_t> children;
  for (uint64_t writer = 0; writer < 4; ++writer) {
    children.push_back(startForked([&] {
      const auto store = open();
      for (uint64_t i = 0; i < kRows; ++i) {
        put(*store, writer * kRows + i);
        if (i % 20 == 0) store->write(true);
      }
      store->write(true);
      EXPECT_EQ(complaints, Strings{});
    }));
  }
  for (int reader = 0; reader < 2; ++reader) {
    children.push_back(startForked([&] {
      for (int round = 0; round < 5; ++round) count(4 * kRows);
      EXPECT_EQ(complaints, Strings{});
    }));
  }
  for (const pid_t child : children) EXPECT_TRUE(endsWell(child));
  EXPECT_EQ(count(4 * kRows), 4 * kRows);
  EXPECT_EQ(complaints, Strings{});
}

// All find nothing, or another format, and all make it.
TEST_F(Store, IsMadeBySeveralProcessesAtOnce) {
  const int rounds = isLongTier() ? 300 : 15;
  for (int round = 0; round < rounds; ++round) {
    fs::remove_all(folder);
    if (round % 3 == 1) {
      fill(3);
      Sql(database).run("PRAGMA user_version = 4711");
    }
    std::vector<pid_t> children;
    const auto start = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
    for (uint64_t process = 0; process < 8; ++process) {
      children.push_back(startForked([&] {
        std::this_thread::sleep_until(start);
        const auto store = open();
        put(*store, process);
        store->write(true);
        EXPECT_EQ(store->find(sampleKey(process)), sampleBytes(process));
        EXPECT_EQ(complaints, Strings{});
      }));
    }
    for (const pid_t child : children) EXPECT_TRUE(endsWell(child));
    EXPECT_EQ(count(8), 8u) << "round " << round;
  }
  EXPECT_EQ(complaints, Strings{});
}

// No room, no rights

TEST_F(Store, OfALimitedSizeKeepsWhatItHas) {
  fill(kEntries / 2);
  EXPECT_TRUE(succeedsForked([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{16384, 16384};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    expectUse("", "What is read is not kept.");
  }));
  EXPECT_EQ(count(), kEntries / 2);
  expectRecovery("afterwards");
}

TEST_F(Store, ThatCannotBeginIsDoneWithout) {
  EXPECT_TRUE(succeedsForked([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{100, 100};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    expectUse("disk I/O error", "Contents of files are read anew.");
  }));
  expectRecovery("afterwards");
}

// A disk of 512 kB there, in a mount namespace of this process's own: the administrator alone can have one.
bool mountSmallDisk(const std::string& folder) {
  return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=512k") == 0;
}

TEST_F(Store, OnAFullDiskKeepsWhatItHas) {
  const std::string disk = scratch.folder("cache");
  const auto mountOrEnd = [&] {
    if (!mountSmallDisk(disk)) ::_exit(1);
  };
  if (!succeedsForked(mountOrEnd)) GTEST_SKIP() << "nothing can be mounted: that takes an administrator";
  EXPECT_TRUE(succeedsForked([&] {
    mountOrEnd();
    const std::string filling = scratch.at("cache/filling");
    fill(20);
    std::ofstream(filling) << std::string(500'000, 'x') << std::flush;
    expectUse("", "What is read is not kept.");  // in the words of what was full first
    EXPECT_GE(count(), 20u);
    fs::remove_all(folder);
    std::ofstream(filling, std::ios::app) << std::string(500'000, 'x') << std::flush;
    expectUse("", "Contents of files are read anew.");
    fs::remove(filling);
    complaints.clear();
    fs::remove_all(folder);
    fill(20);
    EXPECT_EQ(count(), 20u);
    EXPECT_EQ(complaints, Strings{});
  }));
}

TEST_F(Store, ThatMayNotBeWrittenIsReadAllTheSame) {
  fill(kEntries / 2);
  ASSERT_EQ(::chmod(database.c_str(), 0400), 0);
  {
    const OrdinaryUser user;
    expectUse("attempt to write a readonly database", "What is read is not kept.");
    EXPECT_EQ(count(), kEntries / 2);
  }
  ASSERT_EQ(::chmod(folder.c_str(), 0500), 0);
  {
    const OrdinaryUser user;
    expectUse("", "What is read is not kept.");
    EXPECT_EQ(count(), kEntries / 2);
  }
  ASSERT_EQ(::chmod(folder.c_str(), 0700), 0);
  ASSERT_EQ(::chmod(database.c_str(), 0600), 0);
  EXPECT_EQ(count(), kEntries / 2);
}

TEST_F(Store, InAFolderThatMayNotBeWrittenIsReadAllTheSame) {
  fill(kEntries / 2);
  ASSERT_EQ(::chmod(folder.c_str(), 0500), 0);
  {
    const OrdinaryUser user;
    expectUse("", "What is read is not kept.");
  }
  ASSERT_EQ(::chmod(folder.c_str(), 0700), 0);
  EXPECT_EQ(count(), kEntries / 2);
}

TEST_F(Store, WithoutAnyRightsIsDoneWithout) {
  fill(kEntries / 2);
  for (const std::string& path : {database, folder}) {
    const mode_t before = rightsOf(path);
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    {
      const OrdinaryUser user;
      expectUse("", "Contents of files are read anew.");
    }
    ASSERT_EQ(::chmod(path.c_str(), before), 0);
  }
  EXPECT_EQ(count(), kEntries / 2);
}

TEST_F(Store, ThatCannotBeMadeIsDoneWithout) {
  for (const char* const name : {"closed/shotlight", "closed/further/down/shotlight"}) {
    const std::string closed = scratch.folder("closed");
    ASSERT_EQ(::chmod(closed.c_str(), 0500), 0);
    folder = scratch.at(name);
    database = folder + "/content.sqlite";
    {
      const OrdinaryUser user;
      expectUse("can't be made: Permission denied", "Contents of files are read anew.");
    }
    ASSERT_EQ(::chmod(closed.c_str(), 0700), 0);
  }
  folder = scratch.folder("empty");
  database = folder + "/content.sqlite";
  ASSERT_EQ(::chmod(folder.c_str(), 0500), 0);
  {
    const OrdinaryUser user;
    expectUse("can't be made: Permission denied", "Contents of files are read anew.");
  }
  ASSERT_EQ(::chmod(folder.c_str(), 0700), 0);
}

}  // namespace
}  // namespace standin::metadata
