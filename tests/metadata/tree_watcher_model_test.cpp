// Whoever only does what the changes say knows at the end what is on the disk, whatever happened.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <set>

#include "tree_watcher_fixture.h"

namespace standin::metadata {
namespace {

namespace fs = std::filesystem;
using Paths = std::set<std::string>;

void list(const std::string& path, Paths& paths) {
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
    paths.insert(entry.path().string());
  }
}

// What a receiver of changes knows.
class Model {
 public:
  explicit Model(std::string root) : root_(std::move(root)) { look(root_); }

  void apply(const std::vector<TreeWatcher::Change>& changes) {
    for (const TreeWatcher::Change& change : changes) {
      if (change.kind != TreeWatcher::Change::Touched) forget(change.path);
      if (change.kind == TreeWatcher::Change::Rescan) look(change.path);
      if (change.kind != TreeWatcher::Change::Touched) continue;
      struct stat info;
      if (::lstat(change.path.c_str(), &info) == 0) {
        paths_.insert(change.path);
      } else {
        paths_.erase(change.path);
      }
    }
  }
  const Paths& paths() const { return paths_; }

 private:
  void forget(const std::string& path) {
    paths_.erase(path);
    auto it = paths_.lower_bound(path + '/');
    while (it != paths_.end() && it->starts_with(path + '/')) it = paths_.erase(it);
  }
  void look(const std::string& path) {
    const fs::file_status status = fs::symlink_status(path);
    if (fs::exists(status)) paths_.insert(path);
    if (fs::is_directory(status)) list(path, paths_);
  }

  const std::string root_;
  Paths paths_;
};

// Does something to one of the files and folders in "in" and, fewer, in "out".
class Operations {
 public:
  Operations(const ScratchFolder& scratch, unsigned seed) : scratch_(scratch), random_(seed) {}

  size_t upTo(size_t end) { return random_() % end; }

  void doOne() {
    switch (upTo(12)) {
      case 0:
      case 1:
        return makeFile();
      case 2:
        return void(fs::create_directories(newPath() + "/" + newName() + "/" + newName(), ignored_));
      case 3:
        return void(fs::create_directory(newPath(), ignored_));
      case 4:
        return std::ofstream(somePath(), std::ios::app) << "more", void();
      case 5:
      case 6:
      case 7:
        return void(std::rename(somePath().c_str(), newPath().c_str()));
      case 8:
        return exchange();
      case 9:
        return void(fs::remove(somePath(), ignored_));
      case 10:
        if (upTo(3) == 0) fs::remove_all(somePath(), ignored_);
        return;
      default:
        return void(::chmod(somePath().c_str(), 0700));
    }
  }

 private:
  std::string newName() { return std::string(1, static_cast<char>('a' + upTo(6))); }

  std::string someRoot() { return scratch_.at(upTo(6) == 0 ? "out" : "in"); }

  // Goes down from a root, at each folder stopping or going on with one of its entries.
  std::string somePath(bool onlyFolders = false) {
    std::string path = someRoot();
    for (bool atRoot = true; atRoot || upTo(4) != 0; atRoot = false) {
      std::vector<std::string> below;
      for (const fs::directory_entry& entry : fs::directory_iterator(path, ignored_)) {
        if (!onlyFolders || entry.is_directory()) below.push_back(entry.path().string());
      }
      if (below.empty() || (onlyFolders && atRoot && upTo(4) == 0))
        return atRoot && !onlyFolders ? path + "/none" : path;
      path = below[upTo(below.size())];
    }
    return path;
  }
  std::string newPath() { return somePath(true) + "/" + newName(); }
  void makeFile() { std::ofstream stream(newPath(), std::ios::app); }
  void exchange() {
    constexpr unsigned kExchange = 2;
    ::syscall(SYS_renameat2, AT_FDCWD, somePath().c_str(), AT_FDCWD, somePath().c_str(), kExchange);
  }

  const ScratchFolder& scratch_;
  std::mt19937 random_;
  std::error_code ignored_;
};

class TreeWatcherModel : public Watched, public testing::WithParamInterface<unsigned> {};

TEST_P(TreeWatcherModel, KnowsWhatIsThereAfterTwoThousandRandomOperations) {
  scratch.folder("in");
  scratch.folder("out");
  Operations operations(scratch, GetParam());
  for (int i = 0; i < 50; ++i) operations.doOne();
  TreeWatcher watcher({scratch.at("in")}, {});
  Model model(scratch.at("in"));
  const auto compare = [&] {
    model.apply(watcher.take());
    Paths actual{scratch.at("in")};
    list(scratch.at("in"), actual);
    EXPECT_EQ(model.paths(), actual);
  };

  for (int i = 0; i < 2000 && !HasFailure(); ++i) {
    SCOPED_TRACE(i);
    operations.doOne();
    if (operations.upTo(200) == 0) watcher.loseEvents();
    if (operations.upTo(10) == 0) compare();
  }
  compare();

  // Every folder is watched, by its present path, and nothing else is.
  size_t folders = 0;
  const Paths paths = model.paths();
  for (const std::string& path : paths) {
    if (!fs::is_directory(fs::symlink_status(path))) continue;
    ++folders;
    std::ofstream(path + "/one more");
  }
  compare();
  const std::string root = scratch.at("in");
  const auto above = std::count(root.begin(), root.end(), '/');
  EXPECT_EQ(watchesOf(watcher), folders + static_cast<size_t>(above));
}

INSTANTIATE_TEST_SUITE_P(Seeds, TreeWatcherModel, testing::Range(1u, 7u));

}  // namespace
}  // namespace standin::metadata
