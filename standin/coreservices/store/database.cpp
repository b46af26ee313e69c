#include "standin/coreservices/store/database.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

#include "standin/coreservices/store/sqlite_files.h"

namespace standin::metadata {
namespace {

// Of the tables and what is in them. A database of another one is emptied.
constexpr int64_t kFormat = 4;
constexpr int kPatience = 1000;  // milliseconds to wait for another process that writes
constexpr int kMoment = 5;       // milliseconds between two attempts to open

// Few bytes, as the tags of a photo are, stand in the entry itself, where one search finds them; many, as a
// text has, stand apart under the same id, so that entries stay close together.
constexpr size_t kMostBytesInEntry = 1000;

// As SQLite keeps their texts. The content of an entry is a Head, and the bytes unless they are apart: each
// further column would cost every lookup.
constexpr const char* kTables[] = {"CREATE TABLE entry(id INTEGER PRIMARY KEY, used INTEGER, content BLOB)",
                                   "CREATE TABLE apart(id INTEGER PRIMARY KEY, bytes BLOB)",
                                   "CREATE TABLE total(reads INTEGER, hits INTEGER)"};

DatabaseError::Kind kindOf(int code) {
  switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:  // a table that isn't as this program makes it
    case SQLITE_FORMAT:
    case SQLITE_MISMATCH:
    case SQLITE_CONSTRAINT:
      return DatabaseError::Damaged;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
      return DatabaseError::Busy;
    default:
      return DatabaseError::Unusable;
  }
}

sqlite3_int64 integer(uint64_t number) {
  return static_cast<sqlite3_int64>(number);
}

// Files that were made one after the other, as those of a folder often were, stay close together. Where two
// devices share an id the later entry takes the place of the other one; which file it is of stands in it.
int64_t idOf(const ContentKey& key) {
  constexpr int kDeviceBits = 16;
  constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
  const uint64_t device = (key.file.device * kOdd) >> (64 - kDeviceBits) << (64 - kDeviceBits);
  return integer((key.file.inode << 1 | static_cast<uint64_t>(key.reader & 1)) ^ device);
}
constexpr char kFiles[] = "SELECT count(DISTINCT id >> 1) FROM entry";

[[noreturn]] void failOfEntry() {
  throw DatabaseError(DatabaseError::Damaged, "an entry isn't what was written");
}

// Without a lock file there is no reading beside a writer: what is read-only is taken as nobody's to write.
std::string readOnlyUri(const std::string& path) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string uri = "file:";
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      uri += {'%', kDigits[c >> 4], kDigits[c & 15]};
    } else {
      uri += c;
    }
  }
  return uri + "?immutable=1";
}

// Finds what became of bytes on a disk, not what somebody made of them: Fletcher's sums, of words, in four
// lanes that a processor adds at once, since texts are long. In 64 bits the highest bit of a word counts as
// others do.
uint32_t checksum(const ContentKey& key, std::string_view bytes) {
  std::array<uint64_t, 4> sums{}, sumsOfSums{};
  const auto addBlock = [&](const char* data, size_t size) {
    std::array<uint32_t, 4> words{};
    std::memcpy(words.data(), data, size);
    for (size_t lane = 0; lane < words.size(); ++lane) sums[lane] += words[lane];
    for (size_t lane = 0; lane < words.size(); ++lane) sumsOfSums[lane] += sums[lane];
  };
  const auto add = [&](const char* data, size_t size) {
    constexpr size_t kBlock = 4 * sizeof(uint32_t);
    for (; size >= kBlock; size -= kBlock, data += kBlock) addBlock(data, kBlock);
    if (size > 0) addBlock(data, size);
  };
  const uint64_t numbers[] = {key.file.device,   key.file.inode,   key.file.size,
                              key.file.modified, key.file.changed, static_cast<uint64_t>(key.reader),
                              key.version,       bytes.size()};
  add(reinterpret_cast<const char*>(numbers), sizeof numbers);
  add(bytes.data(), bytes.size());
  constexpr uint64_t kPrime = 1099511628211;
  uint64_t sum = 0;
  for (const auto& lanes : {sums, sumsOfSums}) {
    for (const uint64_t lane : lanes) sum = std::rotl((sum ^ lane) * kPrime, 31);
  }
  return static_cast<uint32_t>(sum);
}

}  // namespace

// As it is in memory: the database stays on its machine.
struct ContentDatabase::Head {
  uint64_t device, inode, size, modified, changed, version;
  uint32_t reader, isApart, sum;

  static Head of(const ContentKey& key, std::string_view bytes) {
    const FileState& file = key.file;
    return {file.device,
            file.inode,
            file.size,
            file.modified,
            file.changed,
            key.version,
            static_cast<uint32_t>(key.reader),
            bytes.size() > kMostBytesInEntry,
            checksum(key, bytes)};
  }
  static Head read(std::string_view content) {
    Head head;
    if (content.size() < sizeof head) failOfEntry();
    std::memcpy(&head, content.data(), sizeof head);
    return head;
  }
  std::string_view written() const { return {reinterpret_cast<const char*>(this), sizeof *this}; }
  ContentKey key() const {
    return {{device, inode, size, modified, changed}, static_cast<int>(reader), version};
  }
};

class ContentDatabase::Statement {
 public:
  Statement(const ContentDatabase& database, const char* sql) : database_(database) {
    const int code = sqlite3_prepare_v3(database.connection_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT,
                                        &statement_, nullptr);
    if (code != SQLITE_OK) database.fail(code);
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  template <class... Numbers>
  Statement& bind(Numbers... numbers) {
    int index = 0;
    (sqlite3_bind_int64(statement_, ++index, integer(static_cast<uint64_t>(numbers))), ...);
    next_ = index + 1;
    return *this;
  }
  Statement& bindBytes(std::string_view bytes) {
    sqlite3_bind_blob64(statement_, next_++, bytes.data() ? bytes.data() : "", bytes.size(), SQLITE_STATIC);
    return *this;
  }

  // Answers whether there is one more row.
  bool step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    sqlite3_reset(statement_);
    if (code != SQLITE_DONE) database_.fail(code);
    return false;
  }
  void run() {
    while (step()) {
    }
  }

  int64_t number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string_view bytes(int column) const {
    const auto* const data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    return {data ? data : "", static_cast<size_t>(sqlite3_column_bytes(statement_, column))};
  }
  void reset() { sqlite3_reset(statement_); }

 private:
  const ContentDatabase& database_;
  sqlite3_stmt* statement_ = nullptr;
  int next_ = 1;
};

// Ends the reading of a statement that is kept.
class ContentDatabase::Reset {
 public:
  explicit Reset(Statement& statement) : statement_(statement) {}
  ~Reset() { statement_.reset(); }
  Reset(const Reset&) = delete;
  Reset& operator=(const Reset&) = delete;

 private:
  Statement& statement_;
};

// Takes everything back that isn't committed.
class ContentDatabase::Transaction {
 public:
  explicit Transaction(ContentDatabase& database) : database_(database) { database.run("BEGIN IMMEDIATE"); }
  ~Transaction() {
    if (!committed_) sqlite3_exec(database_.connection_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void commit() {
    database_.run("COMMIT");
    committed_ = true;
  }

 private:
  ContentDatabase& database_;
  bool committed_ = false;
};

void ContentDatabase::Close::operator()(sqlite3* connection) const {
  sqlite3_close_v2(connection);
}

void ContentDatabase::CloseBlob::operator()(sqlite3_blob* blob) const {
  sqlite3_blob_close(blob);
}

ContentDatabase::ContentDatabase(const std::string& path, Access access) {
  letSQLiteUseFilesOfAnyDate();
  const bool writes = access == Access::ReadWrite;
  sqlite3* connection = nullptr;
  const std::string name = path.empty() ? ":memory:" : writes ? path : readOnlyUri(path);
  const int flags =
      writes ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
  const int code = sqlite3_open_v2(name.c_str(), &connection, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  connection_.reset(connection);
  if (code != SQLITE_OK) fail(code);
  sqlite3_busy_timeout(connection, kPatience);
  if (writes) prepare();
  pageSize_ = static_cast<uint64_t>(number("PRAGMA page_size"));
  find_ = std::make_unique<Statement>(*this, "SELECT id, used, content FROM entry WHERE id = ?");
}

ContentDatabase::~ContentDatabase() = default;

void ContentDatabase::fail(int code) const {
  if (code == SQLITE_NOMEM) throw std::bad_alloc();
  const char* const message = connection_ ? sqlite3_errmsg(connection_.get()) : sqlite3_errstr(code);
  throw DatabaseError(kindOf(code), message);
}

void ContentDatabase::run(const char* sql) {
  const int code = sqlite3_exec(connection_.get(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) fail(code);
}

int64_t ContentDatabase::number(const char* sql) {
  Statement statement(*this, sql);
  return statement.step() ? statement.number(0) : 0;
}

// SQLite doesn't wait where several processes switch to the log, or repair it, at the same time.
void ContentDatabase::prepare() {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + std::chrono::milliseconds(kPatience);
  for (;;) {
    try {
      // What a crash of the system leaves damaged is found by the checksums, and read anew: nothing waits for
      // the disk. Most pages are read once: it costs less to read some again than to fill more memory (KB).
      run("PRAGMA page_size=16384; PRAGMA cache_size=-512;"
          "PRAGMA synchronous=OFF; PRAGMA journal_mode=WAL;");
      return prepareTables();
    } catch (const DatabaseError& error) {
      if (error.kind != DatabaseError::Busy || Clock::now() >= end) throw;
      sqlite3_sleep(kMoment);
    }
  }
}

bool ContentDatabase::hasOurFormat() {
  return number("PRAGMA user_version") == kFormat;
}

// Whoever finds another format empties the database, once, whatever other processes do at the same time.
void ContentDatabase::prepareTables() {
  if (hasOurFormat()) return checkTables();
  Transaction transaction(*this);
  if (!hasOurFormat()) {
    run("DROP TABLE IF EXISTS entry; DROP TABLE IF EXISTS apart; DROP TABLE IF EXISTS total;");
    for (const char* const table : kTables) run(table);
    run("INSERT INTO total VALUES(0, 0)");
    run(("PRAGMA user_version = " + std::to_string(kFormat)).c_str());
  }
  transaction.commit();
}

// With a column of another type everything seems to work, and nothing is ever found.
void ContentDatabase::checkTables() {
  Statement texts(*this, "SELECT sql FROM sqlite_schema WHERE type = 'table'");
  size_t found = 0;
  while (texts.step()) found += static_cast<size_t>(std::ranges::count(kTables, texts.bytes(0)));
  if (found != std::size(kTables)) throw DatabaseError(DatabaseError::Damaged, "its tables are others");
}

std::optional<std::string> ContentDatabase::find(const ContentKey& key, int64_t today) {
  if (holdsStill_ && !isReading_) {
    run("BEGIN");
    isReading_ = true;
  }
  const int64_t id = idOf(key);
  if (holdsStill_ && isTimeToReadAll()) readAll();
  const Reset reset(*find_);
  Entry entry;
  if (!all_.empty()) {
    const auto found = std::ranges::lower_bound(all_, id, {}, &Entry::id);
    if (found == all_.end() || found->id != id) return {};
    entry = *found;
  } else {
    if (!find_->bind(id).step()) return {};
    entry = entryAt(*find_);
  }
  const Head head = Head::read(entry.content);
  if (head.key() != key) return {};
  std::string bytes = bytesOf(entry);
  if (head.sum != checksum(key, bytes)) failOfEntry();
  if (entry.used != today) used_.insert(id);
  return bytes;
}

// Reading all entries one after the other takes a third of the time of finding each of them, and who has
// sought many mostly seeks the others, too. If not, it costs a few times what the search has cost so far.
bool ContentDatabase::isTimeToReadAll() {
  constexpr uint64_t kFewest = 16;
  constexpr uint64_t kMost = 50000;  // of less than 1 KB each, and mostly of half of that
  constexpr uint64_t kTimes = 16;
  const uint64_t sought = ++sought_;
  if (!all_.empty() || sought < kFewest || (sought & (sought - 1)) != 0) return false;
  const auto entries = static_cast<uint64_t>(number("SELECT count(*) FROM entry"));
  return entries <= kMost && entries <= sought * kTimes;
}

void ContentDatabase::readAll() {
  Statement all(*this, "SELECT id, used, content FROM entry ORDER BY id");
  while (all.step()) {
    all_.push_back(entryAt(all));
    std::string_view& content = all_.back().content;
    void* const copy = allContents_.allocate(content.size(), 1);
    content = {static_cast<char*>(std::memcpy(copy, content.data(), content.size())), content.size()};
  }
}

// What it borrows is gone with the next step.
ContentDatabase::Entry ContentDatabase::entryAt(const Statement& row) {
  return {row.number(0), row.number(1), row.bytes(2)};
}

std::string ContentDatabase::bytesOf(const Entry& entry) {
  if (!Head::read(entry.content).isApart) return std::string(entry.content.substr(sizeof(Head)));
  std::string bytes = bytesApart(entry.id);
  if (!isReading_) apart_.reset();
  return bytes;
}

// A blob that stays open finds the next one in half the time that a statement takes.
std::string ContentDatabase::bytesApart(int64_t id) {
  std::string bytes;
  int code = openApart(id);
  if (code == SQLITE_OK) {
    bytes.resize(static_cast<size_t>(sqlite3_blob_bytes(apart_.get())));
    code = sqlite3_blob_read(apart_.get(), bytes.data(), static_cast<int>(bytes.size()), 0);
  }
  if (code == SQLITE_OK) return bytes;
  const std::unique_ptr<sqlite3_blob, CloseBlob> unusable = std::move(apart_);
  if (code == SQLITE_ERROR) return {};  // there are none
  fail(code);
}

int ContentDatabase::openApart(int64_t id) {
  if (apart_) return sqlite3_blob_reopen(apart_.get(), id);
  sqlite3_blob* opened = nullptr;
  const int code = sqlite3_blob_open(connection_.get(), "main", "apart", "bytes", id, 0, &opened);
  apart_.reset(opened);
  return code;
}

bool ContentDatabase::isWhole(const Entry& entry) {
  if (entry.content.size() < sizeof(Head)) return false;
  const Head head = Head::read(entry.content);
  return idOf(head.key()) == entry.id && head.sum == checksum(head.key(), bytesOf(entry));
}

void ContentDatabase::endReading() {
  apart_.reset();
  all_ = {};
  allContents_.release();
  sought_ = 0;
  if (std::exchange(isReading_, false)) run("COMMIT");
}

void ContentDatabase::setHoldsStill(bool holdsStill) {
  holdsStill_ = holdsStill;
  if (!holdsStill) endReading();
}

void ContentDatabase::write(const std::vector<ContentRow>& rows, uint64_t reads, uint64_t hits,
                            uint64_t limit, int64_t today) {
  endReading();
  Transaction transaction(*this);
  if (!hasOurFormat())
    throw DatabaseError(DatabaseError::Unusable, "another version of this program has taken it over");
  Statement enter(*this, "INSERT OR REPLACE INTO entry VALUES(?, ?, ?)");
  Statement keepApart(*this, "INSERT OR REPLACE INTO apart VALUES(?, ?)");
  Statement forgetApart(*this, "DELETE FROM apart WHERE id = ?");
  Statement use(*this, "UPDATE entry SET used = ? WHERE id = ?");
  for (const auto& [key, bytes] : rows) {
    const int64_t id = idOf(key);
    const Head head = Head::of(key, bytes);
    std::string content(head.written());
    if (head.isApart) {
      keepApart.bind(id).bindBytes(bytes).run();
    } else {
      forgetApart.bind(id).run();
      content += bytes;
    }
    enter.bind(id, today).bindBytes(content).run();
  }
  for (const int64_t id : used_) use.bind(today, id).run();
  Statement(*this, "UPDATE total SET reads = reads + ?, hits = hits + ?").bind(reads, hits).run();
  makeRoom(limit);
  transaction.commit();
  used_.clear();
}

uint64_t ContentDatabase::bytesUsed() {
  return static_cast<uint64_t>(number("PRAGMA page_count") - number("PRAGMA freelist_count")) * pageSize_;
}

// Takes away what was used longest ago, down to nine tenths of the limit.
void ContentDatabase::makeRoom(uint64_t limit) {
  if (bytesUsed() <= limit) return;
  const uint64_t entries = static_cast<uint64_t>(number("SELECT count(*) FROM entry"));
  // Entries are of very different sizes; a share of them is taken until enough is gone.
  const uint64_t share = entries / 16 + 1;
  Statement oldest(*this, "SELECT id FROM entry ORDER BY used LIMIT ?");
  Statement forgetApart(*this, "DELETE FROM apart WHERE id = ?");
  Statement leave(*this, "DELETE FROM entry WHERE id = ?");
  while (bytesUsed() > limit / 10 * 9) {
    std::vector<int64_t> old;
    oldest.bind(share);
    while (oldest.step()) old.push_back(oldest.number(0));
    if (old.empty()) return;
    for (const int64_t id : old) {
      forgetApart.bind(id).run();
      leave.bind(id).run();
    }
  }
}

ContentDatabase::Totals ContentDatabase::totals() {
  Totals totals;
  totals.files = static_cast<uint64_t>(number(kFiles));
  totals.entries = static_cast<uint64_t>(number("SELECT count(*) FROM entry"));
  totals.bytes = bytesUsed();
  totals.reads = static_cast<uint64_t>(number("SELECT reads FROM total"));
  totals.hits = static_cast<uint64_t>(number("SELECT hits FROM total"));
  return totals;
}

std::vector<std::string> ContentDatabase::check() {
  std::vector<std::string> faults;
  Statement structure(*this, "PRAGMA integrity_check(5)");
  while (structure.step()) {
    if (const std::string_view said = structure.bytes(0); said != "ok") faults.emplace_back(said);
  }
  if (!faults.empty()) return faults;
  Statement all(*this, "SELECT id, used, content FROM entry");
  uint64_t bad = 0;
  while (all.step()) {
    if (!isWhole(entryAt(all))) ++bad;
  }
  if (bad > 0)
    faults.push_back(std::to_string(bad) + (bad == 1 ? " entry isn't" : " entries aren't") + " as written");
  return faults;
}

}  // namespace standin::metadata
