#include "standin/coreservices/store/content_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <utility>

namespace standin::metadata {
namespace {

constexpr size_t kRowsWrittenAtOnce = 256;
constexpr size_t kBytesWrittenAtOnce = 16'000'000;
constexpr auto kLongestWait = std::chrono::milliseconds(500);
constexpr mode_t kFolderRights = 0700;
constexpr mode_t kFileRights = 0600;

std::string systemError(const std::string& what) {
  return what + ": " + std::strerror(errno);
}

DatabaseError unusable(const std::string& problem) {
  return {DatabaseError::Unusable, problem};
}

// Nobody else may do anything with it afterwards; what isn't this user's is refused. Links aren't followed.
// Answers whether there is one.
bool makePrivate(const std::string& path, mode_t type, mode_t rights) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0) {
    if (errno == ENOENT) return false;
    throw unusable(systemError("can't be looked at"));
  }
  if ((info.st_mode & S_IFMT) != type) throw unusable(type == S_IFDIR ? "is no folder" : "is no file");
  if (info.st_uid != ::geteuid()) throw unusable("belongs to another user");
  if ((info.st_mode & 07777 & ~rights) != 0 && ::chmod(path.c_str(), info.st_mode & rights) != 0)
    throw unusable(systemError("its rights can't be changed"));
  return true;
}

void makeFolder(const std::string& folder) {
  if (::mkdir(folder.c_str(), kFolderRights) == 0 || errno == EEXIST) return;
  const size_t slash = folder.rfind('/');
  if (errno != ENOENT || slash == 0 || slash == std::string::npos)
    throw unusable(systemError("can't be made"));
  makeFolder(folder.substr(0, slash));
  if (::mkdir(folder.c_str(), kFolderRights) != 0 && errno != EEXIST)
    throw unusable(systemError("can't be made"));
}

// One that is there isn't opened here: closing it would end the locks of this process's other connections.
void makeDatabaseFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileRights);
  if (file < 0 && errno != EEXIST) throw unusable(systemError("can't be made"));
  if (file >= 0) ::close(file);
}

// 0 where there is none.
ino_t inodeOf(const std::string& path) {
  struct stat info;
  return ::lstat(path.c_str(), &info) == 0 ? info.st_ino : 0;
}

// Of the database and what SQLite keeps beside it; those get the rights of the database itself. Answers
// whether there is a database.
bool makeFilesPrivate(const std::string& path) {
  const bool exists = makePrivate(path, S_IFREG, kFileRights);
  for (const char* const end : {"-wal", "-shm"}) makePrivate(path + end, S_IFREG, kFileRights);
  return exists;
}

}  // namespace

std::string contentDatabaseIn(const std::string& folder) {
  return folder + "/content.sqlite";
}

std::unique_ptr<ContentDatabase> openContentDatabase(const std::string& folder) {
  const std::string path = contentDatabaseIn(folder);
  if (!makePrivate(folder, S_IFDIR, kFolderRights) || !makeFilesPrivate(path)) return nullptr;
  try {
    return std::make_unique<ContentDatabase>(path, ContentDatabase::Access::ReadWrite);
  } catch (const DatabaseError& error) {
    if (error.kind != DatabaseError::Unusable) throw;
    return std::make_unique<ContentDatabase>(path, ContentDatabase::Access::ReadOnly);
  }
}

std::optional<std::string> removeContentDatabase(const std::string& folder) {
  const std::string path = contentDatabaseIn(folder);
  for (const char* const end : {"", "-wal", "-shm", "-journal"}) {
    if (::unlink((path + end).c_str()) != 0 && errno != ENOENT) return systemError("can't be removed");
  }
  return {};
}

ContentStore::ContentStore(Options options)
    : options_(std::move(options)), state_(options_.folder.empty() ? Disk::Unused : Disk::NotOpened) {}

ContentStore::~ContentStore() {
  write(true);
}

int64_t ContentStore::today() {
  constexpr int64_t kSecondsOfADay = 86400;
  return ::time(nullptr) / kSecondsOfADay;
}

// Answers whether there is a database to look things up in.
bool ContentStore::openDisk() {
  if (state_ != Disk::NotOpened) return disk_ != nullptr;
  state_ = Disk::Unused;
  const std::string path = contentDatabaseIn(options_.folder);
  makeFolder(options_.folder);
  makePrivate(options_.folder, S_IFDIR, kFolderRights);
  makeDatabaseFile(path);
  makeFilesPrivate(path);
  inode_ = inodeOf(path);
  try {
    disk_ = std::make_unique<ContentDatabase>(path, ContentDatabase::Access::ReadWrite);
    disk_->setHoldsStill(holdsStill_);
    state_ = Disk::Writable;
  } catch (const DatabaseError& error) {
    if (error.kind != DatabaseError::Unusable) throw;
    openReadOnly(path);
    faultOf(error, While::Writing);
  }
  return disk_ != nullptr;
}

// Where that doesn't go either, what is in the way of writing is what people should know.
void ContentStore::openReadOnly(const std::string& path) {
  try {
    disk_ = std::make_unique<ContentDatabase>(path, ContentDatabase::Access::ReadOnly);
  } catch (const DatabaseError&) {
  }
}

// What can't be relied on is made anew, once. What can't be written is read as long as that goes.
void ContentStore::faultOf(const DatabaseError& error, While what) {
  std::string consequence = "Contents of files are read anew";
  if (error.kind == DatabaseError::Damaged) {
    disk_.reset();
    state_ = Disk::Unused;
    // Another process may have made it anew before.
    const std::string path = contentDatabaseIn(options_.folder);
    const bool isGone = inodeOf(path) != inode_ || !removeContentDatabase(options_.folder);
    if (!std::exchange(madeAnew_, true) && isGone) {
      state_ = Disk::NotOpened;
      consequence = "It is made anew";
    }
  } else if (what == While::Writing && disk_) {
    state_ = Disk::ReadOnly;
    consequence = "What is read is not kept";
  } else {
    disk_.reset();
    state_ = Disk::Unused;
  }
  if (std::exchange(complained_, true)) return;
  options_.complain("the store of what is in files, " + contentDatabaseIn(options_.folder) +
                    ", can't be used: " + error.what() + ". " + consequence + '.');
}

template <class Work>
bool ContentStore::tryOnDisk(While what, const Work& work) {
  try {
    if (!openDisk()) return false;
    work();
    return true;
  } catch (const DatabaseError& error) {
    faultOf(error, what);
  } catch (const std::bad_alloc&) {
    faultOf(unusable("there is not enough memory"), what);
  }
  return false;
}

ContentDatabase& ContentStore::memory() {
  if (!memory_) memory_ = std::make_unique<ContentDatabase>("", ContentDatabase::Access::ReadWrite);
  return *memory_;
}

// Where there is no memory left, it is not kept.
void ContentStore::keepInMemory(const std::vector<ContentRow>& rows) {
  try {
    memory().write(rows, 0, 0, options_.memoryLimit, today_);
  } catch (const DatabaseError&) {
    memory_.reset();
  } catch (const std::bad_alloc&) {
    memory_.reset();
  }
}

std::optional<std::string> ContentStore::findInMemory(const ContentKey& key) {
  try {
    return memory_->find(key, today_);
  } catch (const DatabaseError&) {
    memory_.reset();
  } catch (const std::bad_alloc&) {
    memory_.reset();
  }
  return {};
}

void ContentStore::setHoldsStill(bool holdsStill) {
  holdsStill_ = holdsStill;
  if (disk_) tryOnDisk(While::Reading, [&] { disk_->setHoldsStill(holdsStill); });
}

std::optional<std::string> ContentStore::find(const ContentKey& key) {
  std::optional<std::string> bytes;
  if (const auto waiting = unwritten_.find(key); waiting != unwritten_.end()) return waiting->second;
  tryOnDisk(While::Reading, [&] { bytes = disk_->find(key, today_); });
  if (bytes) {
    ++hits_;
  } else if (memory_) {
    bytes = findInMemory(key);
  }
  return bytes;
}

void ContentStore::put(ContentKey key, std::string bytes, bool lasting) {
  if (!lasting || state_ == Disk::ReadOnly || state_ == Disk::Unused) {
    keepInMemory({{key, std::move(bytes)}});
    return;
  }
  ++reads_;
  if (unwritten_.empty()) firstUnwritten_ = Clock::now();
  bytesUnwritten_ += bytes.size();
  unwritten_.insert_or_assign(key, std::move(bytes));
  write(unwritten_.size() >= kRowsWrittenAtOnce || bytesUnwritten_ >= kBytesWrittenAtOnce);
}

void ContentStore::write(bool all) {
  const bool isTime = !unwritten_.empty() && Clock::now() >= firstUnwritten_ + kLongestWait;
  if (!all && !isTime) return;
  std::vector<ContentRow> rows;
  for (auto& [key, bytes] : std::exchange(unwritten_, {})) rows.push_back({key, std::move(bytes)});
  bytesUnwritten_ = 0;
  if (rows.empty() && hits_ == 0) return;
  const bool written = state_ != Disk::ReadOnly && state_ != Disk::Unused && tryOnDisk(While::Writing, [&] {
                         disk_->write(rows, reads_, hits_, options_.limit, today_);
                       });
  reads_ = hits_ = 0;
  if (!written && !rows.empty()) keepInMemory(rows);
}

}  // namespace standin::metadata
