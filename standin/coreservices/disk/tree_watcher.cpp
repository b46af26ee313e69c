#include "standin/coreservices/disk/tree_watcher.h"

#include <dirent.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "standin/coreservices/disk/descriptor.h"
#include "standin/coreservices/disk/unseen.h"
#include "standin/coreservices/disk/watch_changes.h"
#include "standin/coreservices/disk/watch_nodes.h"
#include "standin/coreservices/disk/watch_scope.h"

// What is on the disk is always ahead of the events that tell of it: folders may have moved on, or be gone,
// when the event of their appearance is read. So a folder that appeared is looked at as it is now (first
// watched, then read), the system tells by its watch whether it is one that is known already, and whatever
// happened later follows as an event, which then may repeat what is known. An event that comes too late, of
// an entry that isn't there any more, is followed by the event of its removal.

namespace standin::metadata {
namespace {

// Watching a folder anew adds to its mask: two paths may lead to it.
constexpr uint32_t kHow = IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK | IN_MASK_ADD;
constexpr uint32_t kAppearing = IN_CREATE | IN_MOVED_TO;
constexpr uint32_t kLeaving = IN_DELETE | IN_MOVED_FROM;
constexpr uint32_t kPassageEvents = kAppearing | kLeaving | IN_ATTRIB;
// Closing tells of what was written through memory, too.
constexpr uint32_t kInsideEvents =
    kPassageEvents | IN_MODIFY | IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF;

const char* forSystem(const std::string& path) {
  return path.empty() ? "/" : path.c_str();
}

// Links aren't followed.
bool isFolderItself(const std::string& path) {
  struct stat info;
  return ::lstat(forSystem(path), &info) == 0 && S_ISDIR(info.st_mode);
}

bool isSameFile(const std::string& left, const std::string& right) {
  struct stat a, b;
  return ::lstat(forSystem(left), &a) == 0 && ::lstat(forSystem(right), &b) == 0 && a.st_dev == b.st_dev &&
         a.st_ino == b.st_ino;
}

// Gone again, replaced by something else, unreadable for this user, or too long: nothing to look for again.
bool isHarmless(int error) {
  return meansGone(error) || error == EACCES || error == ENAMETOOLONG;
}

// What lies in such a folder isn't seen now, either.
void noteIfUnreadable(const std::string& path, WatchRole role, int error) {
  if (role == WatchRole::Inside && error == EACCES) noteUnseenFolder(forSystem(path), error);
}

struct FolderCloser {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

}  // namespace

class TreeWatcher::Implementation {
 public:
  Implementation(const std::vector<std::string>& roots, const std::vector<std::string>& excluded,
                 const WalkFilter& filter)
      : scope_(roots, excluded, filter), buffer_(64 * 1024) {
    if (descriptor() >= 0) {
      followAll();
    } else {
      reason_ = "can't follow changes of files: " + std::generic_category().message(errno) +
                " (raise fs.inotify.max_user_instances, or the number of open files)";
    }
  }

  int descriptor() const { return instance_.get(); }
  std::string reason() { return std::exchange(reason_, {}); }

  std::vector<TreeChange> take() {
    if (descriptor() < 0) return {};
    handlePending();
    if (forgetDetached()) handlePending();  // the system tells of each watch that ended
    return changes_.take();
  }

  void forceRescan() {
    if (descriptor() < 0) return;
    while (::read(descriptor(), buffer_.data(), buffer_.size()) > 0) {
    }
    mustRescan_ = true;
  }

 private:
  enum class Telling { Nothing, Everything };

  void handlePending();
  void handle(const inotify_event& event);
  void handleSelf(WatchNode& node, const std::string& path, uint32_t what);
  void handleEntry(WatchNode& folder, const std::string& path, const std::string& name, uint32_t what);
  void appeared(WatchNode& parent, const std::string& name, const std::string& path, bool folder);
  void left(WatchNode& parent, const std::string& name, const std::string& path, uint32_t what);
  void unmounted(WatchNode& node, const std::string& path);

  void followAll();
  void follow(WatchNode* node, Telling telling);
  void readPassage(WatchNode& node, const std::string& path, Telling telling, std::vector<WatchNode*>& found);
  void readInside(WatchNode& node, const std::string& path, Telling telling, std::vector<WatchNode*>& found);
  WatchNode* place(WatchNode& parent, const std::string& name, const std::string& path);
  bool isSecondPath(const WatchNode& node, const WatchNode& parent, const std::string& path) const;
  void tellRescan(const std::string& path, WatchRole role);
  void cannotFollow(const std::string& path, WatchRole role, int error);
  void noteReason(const std::string& path, int error);
  bool forgetDetached();

  const WatchScope scope_;
  WatchNodes nodes_;
  WatchChanges changes_;
  bool mustRescan_ = false;
  std::string reason_;
  std::vector<char> buffer_;
  const Descriptor instance_{::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)};  // last: errno still tells why none
};

// Handles what is pending now, not what comes meanwhile: that might never end.
void TreeWatcher::Implementation::handlePending() {
  int pending = 0;
  if (::ioctl(descriptor(), FIONREAD, &pending) != 0) pending = 0;
  while (pending > 0 && !mustRescan_) {
    const ssize_t size = ::read(descriptor(), buffer_.data(), buffer_.size());
    if (size <= 0) break;
    pending -= static_cast<int>(size);
    for (ssize_t offset = 0; offset < size;) {
      const auto& event = *reinterpret_cast<const inotify_event*>(buffer_.data() + offset);
      offset += static_cast<ssize_t>(sizeof event + event.len);
      handle(event);
    }
  }
  if (!std::exchange(mustRescan_, false)) return;
  followAll();
  for (const std::string& root : scope_.roots()) changes_.rescan(root);
}

void TreeWatcher::Implementation::handle(const inotify_event& event) {
  if (event.mask & IN_Q_OVERFLOW) mustRescan_ = true;
  WatchNode* const node = nodes_.find(event.wd);
  if (!node) return;
  const std::optional<std::string> path = nodes_.path(*node);
  if (!path) return;
  if (event.mask & IN_UNMOUNT) {
    unmounted(*node, *path);
  } else if (event.len == 0) {
    handleSelf(*node, *path, event.mask);
  } else {
    handleEntry(*node, *path, event.name, event.mask);
  }
}

// Of folders that aren't roots their parents tell the same, and of roots, too, if their parents may be read.
void TreeWatcher::Implementation::handleSelf(WatchNode& node, const std::string& path, uint32_t what) {
  if (!scope_.isRoot(path)) return;
  if (what & IN_ATTRIB) changes_.touched(path, true);
  if (what & (IN_DELETE_SELF | IN_MOVE_SELF) && node.parent) {
    const std::string name = *node.name;
    left(*node.parent, name, path, what | IN_ISDIR);
  }
}

void TreeWatcher::Implementation::handleEntry(WatchNode& folder, const std::string& folderPath,
                                              const std::string& name, uint32_t what) {
  const std::string path = folderPath + '/' + name;
  const bool isInside = folder.role == WatchRole::Inside;
  if (!isInside && !scope_.leadsToRoot(path)) return;
  if (isInside && what & (kAppearing | kLeaving)) changes_.touched(folderPath, true);
  if (what & kLeaving) {
    left(folder, name, path, what);
  } else if (what & kAppearing) {
    appeared(folder, name, path, what & IN_ISDIR);
  } else if (isInside || (what & IN_ISDIR && scope_.isRoot(path))) {
    changes_.touched(path, what & IN_ISDIR);
  }
  if (!(what & IN_ATTRIB && what & IN_ISDIR)) return;
  const WatchNode* const known = WatchNodes::child(folder, name);
  if (!known || known->watch == WatchNode::kNoWatch) {  // it may be readable now
    follow(place(folder, name, path), Telling::Everything);
  }
}

void TreeWatcher::Implementation::appeared(WatchNode& parent, const std::string& name,
                                           const std::string& path, bool folder) {
  if (parent.role == WatchRole::Inside || (folder && scope_.isRoot(path))) changes_.touched(path, folder);
  if (folder) follow(place(parent, name, path), Telling::Everything);
}

void TreeWatcher::Implementation::left(WatchNode& parent, const std::string& name, const std::string& path,
                                       uint32_t what) {
  if (WatchNode* const node = WatchNodes::child(parent, name)) nodes_.detach(*node);
  if (parent.role == WatchRole::Inside) {
    changes_.gone(path, what & IN_ISDIR);
  } else if (what & IN_ISDIR) {
    for (const std::string& root : scope_.rootsWithin(path)) changes_.gone(root, true);
  }
  // Two entries that are exchanged are told as if the second had left after the first had taken its place.
  struct stat info;
  if (what & (IN_MOVED_FROM | IN_MOVE_SELF) && ::lstat(path.c_str(), &info) == 0) {
    appeared(parent, name, path, S_ISDIR(info.st_mode));
  }
}

// What was beneath the mounted file system is there again.
void TreeWatcher::Implementation::unmounted(WatchNode& node, const std::string& path) {
  if (!node.parent) return;
  tellRescan(path, node.role);
  WatchNode& parent = *node.parent;
  const std::string name = *node.name;
  nodes_.detach(node);
  follow(place(parent, name, path), Telling::Nothing);
}

void TreeWatcher::Implementation::followAll() {
  const WatchRole role = scope_.roleOf("", WatchRole::Outside);
  if (role == WatchRole::Outside) return;
  const int watch = ::inotify_add_watch(descriptor(), "/",
                                        kHow | (role == WatchRole::Inside ? kInsideEvents : kPassageEvents));
  if (watch < 0 && !isHarmless(errno)) cannotFollow("", role, errno);
  nodes_.setTop(watch, role);
  follow(&nodes_.top(), Telling::Nothing);
}

// Watches what is below the folder (which is watched already) and tells of it. Null is no folder.
void TreeWatcher::Implementation::follow(WatchNode* node, Telling telling) {
  std::vector<WatchNode*> found;
  if (node) found.push_back(node);
  while (!found.empty()) {
    WatchNode& next = *found.back();
    found.pop_back();
    const std::optional<std::string> path = nodes_.path(next);
    if (!path) continue;
    if (next.role == WatchRole::Inside) {
      readInside(next, *path, telling, found);
    } else {
      readPassage(next, *path, telling, found);
    }
  }
}

void TreeWatcher::Implementation::readPassage(WatchNode& node, const std::string& path, Telling telling,
                                              std::vector<WatchNode*>& found) {
  nodes_.detachChildren(node);
  for (const std::string& name : scope_.namesTowardsRoots(path)) {
    const std::string childPath = path + '/' + name;
    WatchNode* const child = place(node, name, childPath);
    if (telling == Telling::Everything && scope_.isRoot(childPath) && isFolderItself(childPath)) {
      changes_.touched(childPath, true);
    }
    if (child) found.push_back(child);
  }
}

// The folders that are known are taken out and put back where they are found: what has moved away doesn't
// stay.
void TreeWatcher::Implementation::readInside(WatchNode& node, const std::string& path, Telling telling,
                                             std::vector<WatchNode*>& found) {
  const std::unique_ptr<DIR, FolderCloser> folder(::opendir(forSystem(path)));
  if (!folder) {
    const int error = errno;
    noteIfUnreadable(path, WatchRole::Inside, error);
    if (!isHarmless(error)) cannotFollow(path, WatchRole::Inside, error);
    return;
  }
  nodes_.detachChildren(node);
  while (const dirent* const entry = ::readdir(folder.get())) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    const std::string childPath = path + '/' + name;
    const bool isDirectory =
        entry->d_type == DT_DIR || (entry->d_type == DT_UNKNOWN && isFolderItself(childPath));
    if (telling == Telling::Everything) changes_.touched(childPath, isDirectory);
    if (!isDirectory) continue;
    if (WatchNode* const child = place(node, name, childPath)) found.push_back(child);
  }
}

// Watches the folder. Null if that can't be done, or needn't.
WatchNode* TreeWatcher::Implementation::place(WatchNode& parent, const std::string& name,
                                              const std::string& path) {
  const WatchRole role = scope_.roleOf(path, parent.role);
  if (role == WatchRole::Outside) return nullptr;
  const uint32_t mask = kHow | (role == WatchRole::Inside ? kInsideEvents : kPassageEvents);
  int watch = ::inotify_add_watch(descriptor(), path.c_str(), mask);
  if (watch < 0) {
    const bool mayPassThrough = errno == EACCES && role == WatchRole::Passage;
    if (!mayPassThrough) {
      const int error = errno;
      noteIfUnreadable(path, role, error);
      if (error == ENAMETOOLONG && role == WatchRole::Inside) noteReason(path, error);
      if (!isHarmless(error)) cannotFollow(path, role, error);
      return nullptr;
    }
    watch = WatchNode::kNoWatch;
  }
  const WatchNode* const known = nodes_.find(watch);
  if (known && isSecondPath(*known, parent, path)) return nullptr;
  return &nodes_.put(parent, name, watch, role);
}

// Whether the folder, to be placed in `parent`, is mounted in two places: it hasn't left the one that is
// known.
bool TreeWatcher::Implementation::isSecondPath(const WatchNode& node, const WatchNode& parent,
                                               const std::string& path) const {
  if (WatchNodes::isWithin(parent, node)) return true;
  const std::optional<std::string> known = nodes_.path(node);
  return known && *known != path && isSameFile(*known, path);
}

// Roots below a folder that is told may lie in an excluded one, at which those who look at the folder turn
// back.
void TreeWatcher::Implementation::tellRescan(const std::string& path, WatchRole role) {
  if (role == WatchRole::Inside) changes_.rescan(path);
  for (const std::string& root : scope_.rootsWithin(path)) changes_.rescan(root);
}

void TreeWatcher::Implementation::cannotFollow(const std::string& path, WatchRole role, int error) {
  tellRescan(path, role);
  noteReason(path, error);
}

void TreeWatcher::Implementation::noteReason(const std::string& path, int error) {
  if (!reason_.empty()) return;
  reason_ = "can't follow the changes in " + std::string(forSystem(path)) + ": ";
  reason_ += error == ENOSPC ? "the system has no watches left (raise fs.inotify.max_user_watches)"
                             : std::generic_category().message(error);
}

bool TreeWatcher::Implementation::forgetDetached() {
  const std::vector<int> watches = nodes_.prune();
  for (const int watch : watches) ::inotify_rm_watch(descriptor(), watch);
  return !watches.empty();
}

TreeWatcher::TreeWatcher(const std::vector<std::string>& roots, const std::vector<std::string>& excluded,
                         const WalkFilter& filter)
    : implementation_(std::make_unique<Implementation>(roots, excluded, filter)) {}

TreeWatcher::~TreeWatcher() = default;

int TreeWatcher::descriptor() const {
  return implementation_->descriptor();
}

std::vector<TreeChange> TreeWatcher::take() {
  return implementation_->take();
}

std::string TreeWatcher::reason() {
  return implementation_->reason();
}

void TreeWatcher::forceRescan() {
  implementation_->forceRescan();
}

}  // namespace standin::metadata
