#include "standin/coreservices/disk/watch_changes.h"

#include <algorithm>
#include <utility>

namespace standin::metadata {

void WatchChanges::touched(const std::string& path, bool folder) {
  const auto [it, isNew] =
      pending_.try_emplace(path, Pending{TreeChange::Touched, folder, folder, ++events_});
  if (isNew) return;
  Pending& pending = it->second;
  pending.folder = folder;
  // A Rescan stays where it is: what was told of things below it since then came after it.
  if (pending.kind == TreeChange::Rescan) return;
  // Only one change is told of the path, but both are true: what was below is gone, and something is there.
  pending.kind =
      pending.kind == TreeChange::Gone && pending.wasFolder ? TreeChange::Rescan : TreeChange::Touched;
  pending.wasFolder |= folder;
  pending.order = events_;
}

void WatchChanges::gone(const std::string& path, bool folder) {
  dropBelow(path);
  Pending& pending = pending_.try_emplace(path, Pending{TreeChange::Gone, folder, folder, 0}).first->second;
  const bool wasFolder = pending.wasFolder || folder;
  pending = {TreeChange::Gone, wasFolder, wasFolder, ++events_};
}

void WatchChanges::rescan(const std::string& path) {
  dropBelow(path);
  pending_[path] = {TreeChange::Rescan, true, true, ++events_};
}

void WatchChanges::dropBelow(const std::string& path) {
  const std::string prefix = path + '/';
  const auto first = pending_.lower_bound(prefix);
  auto last = first;
  while (last != pending_.end() && last->first.starts_with(prefix)) ++last;
  pending_.erase(first, last);
}

std::vector<TreeChange> WatchChanges::take() {
  std::vector<std::pair<size_t, TreeChange>> ordered;
  ordered.reserve(pending_.size());
  while (!pending_.empty()) {
    auto node = pending_.extract(pending_.begin());
    const Pending& pending = node.mapped();
    std::string& path = node.key();
    ordered.push_back({pending.order, {pending.kind, path.empty() ? "/" : std::move(path), pending.folder}});
  }
  std::sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  events_ = 0;
  std::vector<TreeChange> changes;
  changes.reserve(ordered.size());
  for (auto& [order, change] : ordered) changes.push_back(std::move(change));
  return changes;
}

}  // namespace standin::metadata
