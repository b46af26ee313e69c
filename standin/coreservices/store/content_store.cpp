#include "standin/coreservices/store/content_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <utility>

namespace standin::metadata {
namespace {

constexpr size_t kRowsWrittenAtOnce = 256;
constexpr auto kLongestWait = std::chrono::milliseconds(500);
constexpr mode_t kFolderRights = 0700;
constexpr mode_t kFileRights = 0600;

std::string systemError(const std::string& what) {
  return what + ": " + std::strerror(errno);
}

// Empty where it is this user's and nobody else may do with it what `others` says.
std::string makePrivate(const std::string& path, mode_t type, mode_t rights) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0) return systemError("can't be looked at");
  if ((info.st_mode & S_IFMT) != type) return type == S_IFDIR ? "is no folder" : "is no file";
  if (info.st_uid != ::geteuid()) return "belongs to another user";
  if ((info.st_mode & 07777 & ~rights) != 0 && ::chmod(path.c_str(), info.st_mode & rights) != 0)
    return systemError("its rights can't be changed");
  return {};
}

// SQLite gives the files beside a database the rights of the database itself.
std::string makeDatabaseFile(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kFileRights);
  if (file < 0 && errno != EACCES && errno != EROFS) return systemError("can't be opened");
  if (file >= 0) ::close(file);
  return makePrivate(path, S_IFREG, kFileRights);
}

}  // namespace

std::string contentDatabaseIn(const std::string& folder) {
  return folder + "/content.sqlite";
}

std::optional<std::string> makeStoreFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(std::filesystem::path(folder).parent_path(), error);
  if (::mkdir(folder.c_str(), kFolderRights) != 0 && errno != EEXIST) return systemError("can't be made");
  std::string problem = makePrivate(folder, S_IFDIR, kFolderRights);
  if (problem.empty()) return {};
  return problem;
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
  std::string problem = makeStoreFolder(options_.folder).value_or("");
  const std::string path = contentDatabaseIn(options_.folder);
  if (problem.empty()) problem = makeDatabaseFile(path);
  if (!problem.empty()) throw DatabaseError(DatabaseError::Unusable, problem);
  try {
    disk_ = std::make_unique<ContentDatabase>(path, ContentDatabase::Access::ReadWrite);
    disk_->setHoldsStill(holdsStill_);
    state_ = Disk::Writable;
  } catch (const DatabaseError& error) {
    if (error.kind != DatabaseError::Unusable) throw;
    disk_ = std::make_unique<ContentDatabase>(path, ContentDatabase::Access::ReadOnly);
    faultOf(error, While::Writing);
  }
  return true;
}

// What can't be relied on is made anew, once. What can't be written is read as long as that goes.
void ContentStore::faultOf(const DatabaseError& error, While what) {
  std::string consequence = "Contents of files are read anew";
  if (error.kind == DatabaseError::Damaged) {
    disk_.reset();
    state_ = Disk::Unused;
    if (!std::exchange(madeAnew_, true) && !removeContentDatabase(options_.folder)) {
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
  options_.complain("the store of what is in files, " + contentDatabaseIn(options_.folder) + ", can't be used: " +
                    error.what() + ". " + consequence + '.');
}

template <class Work>
bool ContentStore::tryOnDisk(While what, const Work& work) {
  try {
    if (!openDisk()) return false;
    work();
    return true;
  } catch (const DatabaseError& error) {
    faultOf(error, what);
    return false;
  }
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
  }
}

std::optional<std::string> ContentStore::findInMemory(const ContentKey& key) {
  try {
    return memory_->find(key, today_);
  } catch (const DatabaseError&) {
    memory_.reset();
    return {};
  }
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
  unwritten_.insert_or_assign(key, std::move(bytes));
  write(unwritten_.size() >= kRowsWrittenAtOnce);
}

void ContentStore::write(bool all) {
  const bool isTime = !unwritten_.empty() && Clock::now() >= firstUnwritten_ + kLongestWait;
  if (!all && !isTime) return;
  std::vector<ContentRow> rows;
  for (auto& [key, bytes] : std::exchange(unwritten_, {})) rows.push_back({key, std::move(bytes)});
  if (rows.empty() && hits_ == 0) return;
  const bool written = state_ != Disk::ReadOnly && state_ != Disk::Unused &&
                       tryOnDisk(While::Writing, [&] { disk_->write(rows, reads_, hits_, options_.limit, today_); });
  reads_ = hits_ = 0;
  if (!written && !rows.empty()) keepInMemory(rows);
}

}  // namespace standin::metadata
