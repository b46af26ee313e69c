// What readers said of files, kept in a database on disk, in memory where there is none, and never the cause
// of another result: whatever is wrong with the database costs time, and is said once.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "standin/coreservices/store/database.h"

namespace standin::metadata {

class ContentStore {
 public:
  struct Options {
    std::string folder;                                                            // empty: memory alone
    uint64_t limit = 1'000'000'000;                                                // bytes on disk
    uint64_t memoryLimit = 250'000'000;                                            // bytes
    std::function<void(const std::string&)> complain = [](const std::string&) {};  // called once at the most
  };

  // Opens nothing.
  explicit ContentStore(Options options);
  // Writes what isn't written.
  ~ContentStore();
  ContentStore(const ContentStore&) = delete;
  ContentStore& operator=(const ContentStore&) = delete;

  // Between the two calls, lookups are faster: see ContentDatabase::setHoldsStill().
  void setHoldsStill(bool holdsStill);
  // Nothing when nobody has put it, or not for this state of the file.
  std::optional<std::string> find(const ContentKey& key);
  // Where it isn't `lasting`, it is kept for this process alone.
  void put(ContentKey key, std::string bytes, bool lasting);
  // Writes what has waited long enough, or all of it.
  void write(bool all);

 private:
  using Clock = std::chrono::steady_clock;

  enum class While { Reading, Writing };

  template <class Work>
  bool tryOnDisk(While what, const Work& work);
  bool openDisk();
  void openReadOnly(const std::string& path);
  void faultOf(const DatabaseError& error, While what);
  ContentDatabase& memory();
  std::optional<std::string> findInMemory(const ContentKey& key);
  void keepInMemory(const std::vector<ContentRow>& rows);
  static int64_t today();

  const Options options_;
  std::unique_ptr<ContentDatabase> disk_;
  enum class Disk { NotOpened, Writable, ReadOnly, Unused } state_;
  bool holdsStill_ = false;
  bool madeAnew_ = false;
  ino_t inode_ = 0;  // of the database that was opened
  bool complained_ = false;
  std::unique_ptr<ContentDatabase> memory_;
  std::map<ContentKey, std::string> unwritten_;
  size_t bytesUnwritten_ = 0;
  Clock::time_point firstUnwritten_;
  uint64_t reads_ = 0, hits_ = 0;  // that aren't written
  const int64_t today_ = today();
};

// The database file in a store's folder.
std::string contentDatabaseIn(const std::string& folder);

// Opens it, for this user alone. Null where there is none. Throws DatabaseError.
std::unique_ptr<ContentDatabase> openContentDatabase(const std::string& folder);

// Takes the database away, with what SQLite keeps beside it. Nothing, or why that can't be.
std::optional<std::string> removeContentDatabase(const std::string& folder);

}  // namespace standin::metadata
