// Whoever only does what the changes say knows at the end what is on the disk, whatever happened.
#include <sys/stat.h>

#include <algorithm>
#include <set>

#include "tests/standin/coreservices/disk/random_operations.h"
#include "tests/standin/coreservices/disk/tree_watcher_fixture.h"
#include "tests/support/sanitizers.h"

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

  void apply(const std::vector<TreeChange>& changes) {
    for (const TreeChange& change : changes) {
      if (change.kind != TreeChange::Touched) forget(change.path);
      if (change.kind == TreeChange::Rescan) look(change.path);
      if (change.kind != TreeChange::Touched) continue;
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

class TreeWatcherModel : public Watched, public testing::WithParamInterface<unsigned> {};

TEST_P(TreeWatcherModel, KnowsWhatIsThereAfterTwoThousandRandomOperations) {
  scratch.folder("in");
  scratch.folder("out");
  RandomOperations operations(scratch, GetParam());
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
    if (operations.upTo(200) == 0) watcher.forceRescan();
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

INSTANTIATE_TEST_SUITE_P(Seeds, TreeWatcherModel, testing::Range(1u, underAddressSanitizer() ? 4u : 7u));

}  // namespace
}  // namespace standin::metadata
