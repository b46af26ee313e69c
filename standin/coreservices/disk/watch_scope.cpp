#include "standin/coreservices/disk/watch_scope.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "standin/system/paths.h"

namespace standin::metadata {
namespace {

bool liesBelow(const std::string& path, const std::string& folder) {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

// The real path of as much of it as exists, then the rest of it.
std::optional<std::string> resolve(const std::string& path) {
  if (!path.starts_with('/')) return {};
  size_t length = path.size();
  for (;;) {
    const std::string head = length > 0 ? path.substr(0, length) : "/";
    const std::optional<std::string> real = realPath(head);
    if (real || length == 0) {
      const std::string whole = real.value_or("") + '/' + path.substr(length);
      std::string result = std::filesystem::path(whole).lexically_normal().string();
      while (result.ends_with('/')) result.pop_back();
      return result;
    }
    length = path.rfind('/', length - 1);
  }
}

std::set<std::string> resolve(const std::vector<std::string>& paths) {
  std::set<std::string> resolved;
  for (const std::string& path : paths) {
    if (std::optional<std::string> real = resolve(path)) resolved.insert(std::move(*real));
  }
  return resolved;
}

}  // namespace

WatchScope::WatchScope(const std::vector<std::string>& roots, const std::vector<std::string>& excluded,
                       const WalkFilter& filter)
    : excluded_(resolve(excluded)), filter_(filter) {
  const std::set<std::string> named = resolve(roots);
  for (const std::string& root : named) {
    if (!isCovered(root, named)) roots_.insert(root);
  }
}

// Whether the root lies in another one, and nothing between the two is excluded.
bool WatchScope::isCovered(const std::string& root, const std::set<std::string>& by) const {
  if (!filter_.isOpen()) return false;
  for (const std::string& outer : by) {
    if (!liesBelow(root, outer)) continue;
    bool reached = true;
    for (const std::string& cut : excluded_) {
      if (liesBelow(cut, outer) && (root == cut || liesBelow(root, cut))) reached = false;
    }
    if (reached) return true;
  }
  return false;
}

bool WatchScope::hasRootBelow(const std::string& path) const {
  const auto next = roots_.lower_bound(path + '/');
  return next != roots_.end() && liesBelow(*next, path);
}

WatchRole WatchScope::roleOf(const std::string& path, WatchRole parent) const {
  if (isRoot(path)) return WatchRole::Inside;
  if (parent == WatchRole::Inside && excluded_.count(path) == 0 && isEntered(path)) return WatchRole::Inside;
  return hasRootBelow(path) ? WatchRole::Passage : WatchRole::Outside;
}

// Of the roots around it, the innermost counts.
bool WatchScope::isEntered(const std::string& path) const {
  if (filter_.isOpen()) return true;
  std::string root = path;
  do {
    root.resize(root.rfind('/'));
  } while (!root.empty() && !isRoot(root));
  return filter_.enters(root, path);
}

std::vector<std::string> WatchScope::rootsWithin(const std::string& path) const {
  std::vector<std::string> within;
  if (isRoot(path)) within.push_back(path);
  for (auto it = roots_.lower_bound(path + '/'); it != roots_.end() && liesBelow(*it, path); ++it) {
    within.push_back(*it);
  }
  return within;
}

std::set<std::string> WatchScope::namesTowardsRoots(const std::string& path) const {
  std::set<std::string> names;
  const size_t start = path.size() + 1;
  for (auto it = roots_.lower_bound(path + '/'); it != roots_.end() && liesBelow(*it, path); ++it) {
    names.insert(it->substr(start, it->find('/', start) - start));
  }
  return names;
}

}  // namespace standin::metadata
