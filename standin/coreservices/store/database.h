// An SQLite database of what readers said of files, read by file and written in batches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "standin/coreservices/store/file_state.h"

struct sqlite3;
struct sqlite3_blob;

namespace standin::metadata {

struct ContentKey {
  FileState file;
  int reader = 0;        // which of the two readers of a file's content
  uint64_t version = 0;  // of that reader
  auto operator<=>(const ContentKey&) const = default;
};

struct ContentRow {
  ContentKey key;
  std::string bytes;
};

// What is wrong with a database.
class DatabaseError : public std::runtime_error {
 public:
  enum Kind {
    Damaged,   // nothing in it can be relied on
    Busy,      // another process has it for itself
    Unusable,  // it can't be opened, or not be written: rights, space, the disk
  };
  DatabaseError(Kind kind, const std::string& what) : std::runtime_error(what), kind(kind) {}
  const Kind kind;
};

// Every call but the destructor may throw DatabaseError.
class ContentDatabase {
 public:
  enum class Access { ReadWrite, ReadOnly };

  // Makes the database where there is none, and empties one of another version of the program. An empty path
  // means memory.
  ContentDatabase(const std::string& path, Access access);
  ~ContentDatabase();
  ContentDatabase(const ContentDatabase&) = delete;
  ContentDatabase& operator=(const ContentDatabase&) = delete;

  // `today` counts days; it becomes the day of the entry's last use with the next write().
  std::optional<std::string> find(const ContentKey& key, int64_t today);

  // Until it is called with false, or something is written, find() sees the database as it was at the first
  // call of find(), which is faster; what other processes write has to be kept apart meanwhile.
  void setHoldsStill(bool holdsStill);

  // In one transaction: adds the rows, each in place of the one of the same file and reader; notes what was
  // used today, how many files were read and how many needn't be; and makes room where there is more than
  // `limit` bytes.
  void write(const std::vector<ContentRow>& rows, uint64_t reads, uint64_t hits, uint64_t limit,
             int64_t today);

  struct Totals {
    uint64_t files = 0, entries = 0, bytes = 0;  // bytes of the database that are in use
    uint64_t reads = 0, hits = 0;                // since it was made
  };
  Totals totals();

  // What is wrong with it, looked at entry by entry; empty when nothing is.
  std::vector<std::string> check();

 private:
  class Statement;
  struct Head;
  // What a row has beside its bytes, and those where they aren't apart.
  struct Entry {
    int64_t id = 0;  // of the file and the reader
    int64_t used = 0;
    std::string_view content;
  };
  class Reset;
  class Transaction;

  [[noreturn]] void fail(int code) const;
  void run(const char* sql);
  bool isTimeToReadAll();
  void readAll();
  void endReading();
  static Entry entryAt(const Statement& row);
  std::string bytesOf(const Entry& entry);
  std::string bytesApart(int64_t id);
  int openApart(int64_t id);
  bool isWhole(const Entry& entry);
  int64_t number(const char* sql);
  void prepare();
  bool hasOurFormat();
  void prepareTables();
  void checkTables();
  uint64_t bytesUsed();
  void makeRoom(uint64_t limit);

  struct Close {
    void operator()(sqlite3* connection) const;
  };
  struct CloseBlob {
    void operator()(sqlite3_blob* blob) const;
  };
  std::unique_ptr<sqlite3, Close> connection_;
  std::unique_ptr<Statement> find_;
  std::unique_ptr<sqlite3_blob, CloseBlob> apart_;  // open while it is read in a transaction
  std::vector<Entry> all_;                          // in their order, where they were read
  std::pmr::monotonic_buffer_resource allContents_;
  uint64_t sought_ = 0;  // since the reading began
  uint64_t pageSize_ = 0;
  std::set<int64_t> used_;  // today
  bool holdsStill_ = false;
  bool isReading_ = false;  // in a transaction
};

}  // namespace standin::metadata
