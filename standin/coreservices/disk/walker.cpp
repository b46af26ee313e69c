#include "standin/coreservices/disk/walker.h"

#include <dirent.h>
#include <endian.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include "standin/coreservices/disk/descriptor.h"
#include "standin/coreservices/disk/unseen.h"
#include "standin/system/long_paths.h"

namespace standin::metadata {
namespace {

// Folders above the current one that stay open. Beyond that the walk closes them and finds its way back by
// "..", so that depth isn't limited by the number of files that a process may have open.
constexpr size_t kFoldersKeptOpen = 64;

Descriptor openFolder(int parent, const char* name) {
  return Descriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
}

std::optional<FileId> idOf(int fd) {
  struct stat info;
  if (::fstat(fd, &info) != 0) return {};
  return FileId{info.st_dev, info.st_ino};
}

struct Entry {
  uint32_t name;       // offset into the folder's names
  uint16_t length;     // of the name
  unsigned char type;  // DT_UNKNOWN where the file system doesn't tell
  uint64_t differing;  // eight bytes of the name, for sorting
};

// How many bytes the names begin with that are the same in all of them.
size_t commonLength(const std::vector<Entry>& entries, const char* names) {
  if (entries.empty()) return 0;
  const char* const first = names + entries.front().name;
  size_t length = entries.front().length;
  for (const Entry& entry : entries) {
    const char* const name = names + entry.name;
    if (entry.length >= length && std::memcmp(name, first, length) == 0) continue;
    length = static_cast<size_t>(
        std::mismatch(name, name + std::min<size_t>(entry.length, length), first).first - name);
  }
  return length;
}

// The first bytes as one number, which orders as they do; zero after the end.
uint64_t firstBytes(std::string_view text) {
  uint64_t bytes = 0;
  std::memcpy(&bytes, text.data(), std::min(text.size(), sizeof bytes));
  return be64toh(bytes);
}

// By their bytes. Names of one folder often begin alike, and few bytes after that decide most comparisons.
void sortByName(std::vector<Entry>& entries, const char* names) {
  const size_t same = commonLength(entries, names);
  for (Entry& entry : entries) {
    entry.differing = firstBytes({names + entry.name + same, entry.length - same});
  }
  std::sort(entries.begin(), entries.end(), [names, same](const Entry& left, const Entry& right) {
    if (left.differing != right.differing) return left.differing < right.differing;
    return std::strcmp(names + left.name + same, names + right.name + same) < 0;
  });
}

struct Folder {
  Descriptor descriptor;
  FileId id;
  size_t pathLength;  // of the path up to and including this folder
  std::string names;  // of the entries, each ended by a zero byte
  std::vector<Entry> entries;
  size_t next = 0;
};

const WalkFilter kOpenFilter;

}  // namespace

std::vector<FileId> fileIdsOf(const std::vector<std::string>& folders) {
  std::vector<FileId> ids;
  for (const std::string& folder : folders) {
    struct stat info;
    if (::stat(folder.c_str(), &info) == 0) ids.push_back({info.st_dev, info.st_ino});
  }
  return ids;
}

class Walk::Implementation {
 public:
  Implementation(const std::string& root, const std::vector<FileId>& excluded, WalkVisitor& visitor,
                 const WalkFilter& filter, const std::string& base)
      : excluded_(excluded),
        visitor_(visitor),
        filter_(filter),
        base_(base),
        rootDepth_(depthBelow(base, root)),
        buffer_(64 * 1024),
        path_(root) {
    enter(Descriptor(openLongPath(root, O_RDONLY | O_DIRECTORY)), root.size());
  }

  // Handles the next entry of the innermost folder.
  bool step() {
    if (stack_.empty()) return false;
    Folder& folder = stack_.back();
    if (folder.next == folder.entries.size()) {
      leave();
      return !stack_.empty();
    }
    const Entry entry = folder.entries[folder.next++];
    const char* const name = folder.names.data() + entry.name;
    if (isLeftOut(folder, name, entry.type)) return true;
    visitor_.found(folder.descriptor.get(), path_, name);
    if (!mayBeFolder(entry.type) || rootDepth_ + stack_.size() >= filter_.depth()) return true;
    Descriptor descriptor = openFolder(folder.descriptor.get(), name);
    const size_t nameLength = entry.length;
    const size_t pathLength = path_.size();
    const int error = errno;
    if (path_.back() != '/') path_ += '/';
    path_.append(name, nameLength);
    errno = error;
    if (!enter(std::move(descriptor), nameLength)) path_.resize(pathLength);
    return true;
  }

  const WalkReport& report() const { return report_; }

 private:
  // Answers whether the folder was entered; errno tells why `descriptor` is empty, if it is.
  bool enter(Descriptor descriptor, size_t nameLength) {
    Folder folder;
    folder.descriptor = std::move(descriptor);
    if (!folder.descriptor) {
      if (!meansGone(errno)) skip();
      return false;
    }
    const std::optional<FileId> id = idOf(folder.descriptor.get());
    if (!id || isExcluded(*id)) return false;
    folder.id = *id;
    folder.pathLength = path_.size();
    if (!readEntries(folder)) {
      if (!meansGone(errno)) skip();
      return false;
    }
    ++report_.folders;
    stack_.push_back(std::move(folder));
    if (stack_.size() > kFoldersKeptOpen) stack_[stack_.size() - 1 - kFoldersKeptOpen].descriptor.close();
    visitor_.entered(path_, nameLength);
    return true;
  }

  // The folder at the path; errno tells why.
  void skip() {
    ++report_.unreadableFolders;
    noteUnseenFolder(path_, errno);
  }

  // The first folder is walked through whatever is excluded: it was asked for by name.
  bool isExcluded(const FileId& id) const {
    if (stack_.empty()) return false;
    if (filter_.staysOnFileSystem() && id.device != stack_.front().id.device) return true;
    return std::find(excluded_.begin(), excluded_.end(), id) != excluded_.end();
  }

  static bool mayBeFolder(unsigned char type) { return type == DT_DIR || type == DT_UNKNOWN; }

  bool isLeftOut(const Folder& folder, const char* name, unsigned char type) const {
    if (filter_.isOpen()) return false;
    struct stat info;
    const bool isFolder =
        type == DT_DIR ||
        (type == DT_UNKNOWN && ::fstatat(folder.descriptor.get(), name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISDIR(info.st_mode));
    return filter_.leavesOut(base_, path_, name, isFolder);
  }

  bool readEntries(Folder& folder) {
    for (;;) {
      const ssize_t size = ::getdents64(folder.descriptor.get(), buffer_.data(), buffer_.size());
      if (size < 0) return false;
      if (size == 0) break;
      for (ssize_t offset = 0; offset < size;) {
        const auto* const record = reinterpret_cast<const dirent64*>(buffer_.data() + offset);
        offset += record->d_reclen;
        addEntry(folder, record->d_name, record->d_type);
      }
    }
    sortByName(folder.entries, folder.names.data());
    return true;
  }

  static void addEntry(Folder& folder, const char* name, unsigned char type) {
    if (name[0] == '.' && (!name[1] || (name[1] == '.' && !name[2]))) return;
    const size_t length = std::strlen(name);
    folder.entries.push_back(
        {static_cast<uint32_t>(folder.names.size()), static_cast<uint16_t>(length), type, 0});
    folder.names.append(name, length + 1);
  }

  void leave() {
    const Descriptor child = std::move(stack_.back().descriptor);
    stack_.pop_back();
    visitor_.left();
    if (stack_.empty()) return;
    Folder& parent = stack_.back();
    path_.resize(parent.pathLength);
    if (parent.descriptor) return;
    Descriptor above = openFolder(child.get(), "..");
    if (!above || idOf(above.get()) != parent.id) {  // the child was moved meanwhile
      above = Descriptor(openLongPath(path_, O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
    }
    if (above && idOf(above.get()) == parent.id) {
      parent.descriptor = std::move(above);
    } else {
      if (above) errno = ESTALE;  // another one has taken its place
      skip();
      parent.next = parent.entries.size();
    }
  }

  const std::vector<FileId>& excluded_;
  WalkVisitor& visitor_;
  const WalkFilter& filter_;
  const std::string base_;
  const size_t rootDepth_;  // below the base
  std::vector<char> buffer_;
  std::vector<Folder> stack_;
  std::string path_;
  WalkReport report_;
};

Walk::Walk(const std::string& root, const std::vector<FileId>& excluded, WalkVisitor& visitor,
           const WalkFilter& filter, const std::string& base)
    : implementation_(std::make_unique<Implementation>(root, excluded, visitor, filter, base)) {}

Walk::Walk(const std::string& root, const std::vector<FileId>& excluded, WalkVisitor& visitor)
    : Walk(root, excluded, visitor, kOpenFilter, root) {}

Walk::~Walk() = default;

bool Walk::step() {
  return implementation_->step();
}

const WalkReport& Walk::report() const {
  return implementation_->report();
}

}  // namespace standin::metadata
