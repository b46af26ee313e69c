#include "standin/coreservices/store/database.h"

#include <sqlite3.h>

#include <array>
#include <cstring>
#include <utility>

namespace standin::metadata {
namespace {

// Of the tables below. A database of another one is emptied.
constexpr int64_t kFormat = 1;
constexpr int kPatience = 1000;  // milliseconds to wait for another process that writes
constexpr int kPageSize = 4096;

constexpr char kTables[] = R"(
  CREATE TABLE entry(device INTEGER, inode INTEGER, reader INTEGER, size INTEGER, modified INTEGER,
                     changed INTEGER, version INTEGER, used INTEGER, content INTEGER,
                     PRIMARY KEY(device, inode, reader)) WITHOUT ROWID;
  CREATE TABLE content(id INTEGER PRIMARY KEY, checksum INTEGER, bytes BLOB);
  CREATE TABLE total(reads INTEGER, hits INTEGER);
  INSERT INTO total VALUES(0, 0);
)";

DatabaseError::Kind kindOf(int code) {
  switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_ERROR:   // a table that isn't as this program makes it
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

}  // namespace

// Ready for the next use when this dies or is reset.
class ContentDatabase::Statement {
 public:
  Statement(const ContentDatabase& database, const char* sql) : database_(database) {
    const int code =
        sqlite3_prepare_v3(database.connection_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr);
    if (code != SQLITE_OK) database.fail(code);
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  template <class... Numbers>
  Statement& bind(Numbers... numbers) {
    sqlite3_reset(statement_);
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

void ContentDatabase::Close::operator()(sqlite3* connection) const {
  sqlite3_close_v2(connection);
}

ContentDatabase::ContentDatabase(const std::string& path, Access access) {
  const bool writes = access == Access::ReadWrite;
  sqlite3* connection = nullptr;
  // Without a lock file there is no reading beside a writer: what is read-only is taken as nobody's to write.
  const std::string name = path.empty() ? ":memory:" : writes ? path : "file:" + path + "?immutable=1";
  const int flags = writes ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
  const int code = sqlite3_open_v2(name.c_str(), &connection, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  connection_.reset(connection);
  if (code != SQLITE_OK) fail(code);
  sqlite3_busy_timeout(connection, kPatience);
  if (writes) {
    // What a crash of the system leaves damaged is found by the checksums, and read anew: nothing waits for
    // the disk.
    run("PRAGMA journal_mode=WAL; PRAGMA synchronous=OFF;");
    prepareTables();
  }
  find_ = std::make_unique<Statement>(
      *this,
      "SELECT size, modified, changed, version, used, checksum, bytes FROM entry JOIN content ON id = content "
      "WHERE device = ? AND inode = ? AND reader = ?");
}

ContentDatabase::~ContentDatabase() = default;

void ContentDatabase::fail(int code) const {
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

// Whoever finds another format empties the database, once, whatever other processes do at the same time.
void ContentDatabase::prepareTables() {
  if (number("PRAGMA user_version") == kFormat) return;
  run("BEGIN IMMEDIATE");
  if (number("PRAGMA user_version") != kFormat) {
    run("DROP TABLE IF EXISTS entry; DROP TABLE IF EXISTS content; DROP TABLE IF EXISTS total;");
    run(kTables);
    run(("PRAGMA user_version = " + std::to_string(kFormat)).c_str());
  }
  run("COMMIT");
}

// Finds what became of bytes on a disk, not what somebody made of them. It is FNV-1a, of words rather than of
// bytes, in four lanes that a processor works on at once: texts are long.
uint32_t ContentDatabase::checksum(const ContentKey& key, std::string_view bytes) {
  constexpr uint32_t kPrime = 16777619;
  std::array<uint32_t, 4> sums = {2166136261, 2166136262, 2166136263, 2166136264};
  const auto add = [&sums](const char* data, size_t size) {
    std::array<uint32_t, 4> words{};
    for (size_t done = 0; done < size; done += sizeof words) {
      const size_t left = size - done;
      if (left < sizeof words) words = {};
      std::memcpy(words.data(), data + done, left < sizeof words ? left : sizeof words);
      for (size_t lane = 0; lane < sums.size(); ++lane) sums[lane] = (sums[lane] ^ words[lane]) * kPrime;
    }
  };
  const uint64_t numbers[] = {key.file.device,  key.file.inode,
                              key.file.size,    key.file.modified,
                              key.file.changed, static_cast<uint64_t>(key.reader),
                              key.version,      bytes.size()};
  add(reinterpret_cast<const char*>(numbers), sizeof numbers);
  add(bytes.data(), bytes.size());
  uint32_t sum = 0;
  for (const uint32_t each : sums) sum = (sum ^ each) * kPrime;
  return sum;
}

std::optional<std::string> ContentDatabase::find(const ContentKey& key, int64_t today) {
  const FileState& file = key.file;
  if (holdsStill_ && !isReading_) {
    run("BEGIN");
    isReading_ = true;
  }
  find_->bind(file.device, file.inode, key.reader);
  if (!find_->step()) return {};
  const bool isTheSame = find_->number(0) == integer(file.size) && find_->number(1) == integer(file.modified) &&
                         find_->number(2) == integer(file.changed) && find_->number(3) == integer(key.version);
  std::optional<std::string> bytes;
  if (isTheSame) {
    bytes = find_->bytes(6);
    if (find_->number(5) != checksum(key, *bytes)) {
      find_->reset();
      throw DatabaseError(DatabaseError::Damaged, "an entry isn't what was written");
    }
    if (find_->number(4) != today) used_.push_back({file, key.reader});
  }
  find_->reset();
  return bytes;
}

void ContentDatabase::endReading() {
  if (std::exchange(isReading_, false)) run("COMMIT");
}

void ContentDatabase::setHoldsStill(bool holdsStill) {
  holdsStill_ = holdsStill;
  if (!holdsStill) endReading();
}

void ContentDatabase::write(const std::vector<ContentRow>& rows, uint64_t reads, uint64_t hits, uint64_t limit,
                            int64_t today) {
  endReading();
  run("BEGIN IMMEDIATE");
  try {
    Statement forget(*this,
                     "DELETE FROM content WHERE id = (SELECT content FROM entry WHERE device = ? AND inode = ? "
                     "AND reader = ?)");
    Statement keep(*this, "INSERT INTO content(checksum, bytes) VALUES(?, ?)");
    Statement enter(*this, "INSERT OR REPLACE INTO entry VALUES(?, ?, ?, ?, ?, ?, ?, ?, last_insert_rowid())");
    Statement use(*this, "UPDATE entry SET used = ? WHERE device = ? AND inode = ? AND reader = ?");
    for (const auto& [key, bytes] : rows) {
      const FileState& file = key.file;
      forget.bind(file.device, file.inode, key.reader).run();
      keep.bind(checksum(key, bytes)).bindBytes(bytes).run();
      enter.bind(file.device, file.inode, key.reader, file.size, file.modified, file.changed, key.version, today)
          .run();
    }
    for (const auto& [file, reader] : used_) use.bind(today, file.device, file.inode, reader).run();
    Statement(*this, "UPDATE total SET reads = reads + ?, hits = hits + ?").bind(reads, hits).run();
    makeRoom(limit);
    run("COMMIT");
  } catch (...) {
    sqlite3_exec(connection_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  used_.clear();
}

// Takes away what was used longest ago, down to nine tenths of the limit.
void ContentDatabase::makeRoom(uint64_t limit) {
  const auto pagesUsed = [this] {
    return static_cast<uint64_t>(number("PRAGMA page_count") - number("PRAGMA freelist_count"));
  };
  const uint64_t pages = pagesUsed();
  if (pages * kPageSize <= limit) return;
  const uint64_t entries = static_cast<uint64_t>(number("SELECT count(*) FROM entry"));
  // Entries are of very different sizes; a share of them is taken until enough is gone.
  const uint64_t share = entries / 16 + 1;
  Statement oldest(*this, "SELECT device, inode, reader, content FROM entry ORDER BY used, content LIMIT ?");
  Statement forget(*this, "DELETE FROM content WHERE id = ?");
  Statement leave(*this, "DELETE FROM entry WHERE device = ? AND inode = ? AND reader = ?");
  while (pagesUsed() * kPageSize > limit / 10 * 9) {
    std::vector<std::array<int64_t, 4>> old;
    oldest.bind(share);
    while (oldest.step()) old.push_back({oldest.number(0), oldest.number(1), oldest.number(2), oldest.number(3)});
    if (old.empty()) return;
    for (const auto& [device, inode, reader, content] : old) {
      forget.bind(content).run();
      leave.bind(device, inode, reader).run();
    }
  }
}

ContentDatabase::Totals ContentDatabase::totals() {
  Totals totals;
  totals.files = static_cast<uint64_t>(number("SELECT count(*) FROM (SELECT DISTINCT device, inode FROM entry)"));
  totals.entries = static_cast<uint64_t>(number("SELECT count(*) FROM entry"));
  totals.bytes = static_cast<uint64_t>(number("PRAGMA page_count") - number("PRAGMA freelist_count")) * kPageSize;
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
  Statement all(*this,
                "SELECT device, inode, reader, size, modified, changed, version, checksum, bytes FROM entry "
                "LEFT JOIN content ON id = content");
  uint64_t bad = 0;
  while (all.step()) {
    const auto at = [&](int column) { return static_cast<uint64_t>(all.number(column)); };
    const ContentKey key{{at(0), at(1), at(3), at(4), at(5)}, static_cast<int>(at(2)), at(6)};
    if (all.number(7) != checksum(key, all.bytes(8))) ++bad;
  }
  if (bad > 0) faults.push_back(std::to_string(bad) + (bad == 1 ? " entry isn't" : " entries aren't") + " as written");
  return faults;
}

}  // namespace standin::metadata
