#include "standin/coreservices/disk/walk_filter.h"

#include <fnmatch.h>
#include <sys/stat.h>

#include <algorithm>

#include "standin/coreservices/disk/paths.h"
#include "standin/system/paths.h"

namespace standin::metadata {
namespace {

constexpr std::string_view kAnyFolders = "**";

std::vector<std::string> partsOf(std::string_view path) {
  std::vector<std::string> parts;
  while (!path.empty()) {
    const size_t end = std::min(path.find('/'), path.size());
    if (end > 0 && path.substr(0, end) != ".") parts.emplace_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return parts;
}

bool matchesPart(const std::string& pattern, const std::string& part) {
  return ::fnmatch(pattern.c_str(), part.c_str(), 0) == 0;
}

// One part of the pattern after the other, with every beginning of the path that those so far match.
bool matchesPath(const std::vector<std::string>& pattern, const std::vector<std::string>& path) {
  std::vector<bool> matched(path.size() + 1);
  matched[0] = true;
  for (const std::string& part : pattern) {
    std::vector<bool> next(path.size() + 1);
    bool before = false;
    const bool isLast = &part == &pattern.back();
    for (size_t i = 0; i <= path.size(); ++i) {
      if (part == kAnyFolders) {
        next[i] = before || (matched[i] && !isLast);  // at its end it stands for something in the folder
        before = before || matched[i];
      } else if (i > 0) {
        next[i] = matched[i - 1] && matchesPart(part, path[i - 1]);
      }
    }
    matched = next;
  }
  return matched.back();
}

std::string_view below(std::string_view root, std::string_view path) {
  path.remove_prefix(std::min(root.size(), path.size()));
  return path;
}

}  // namespace

size_t depthBelow(std::string_view root, std::string_view path) {
  const std::string_view rest = below(root, path);
  if (rest.empty()) return 0;
  return static_cast<size_t>(std::count(rest.begin() + 1, rest.end(), '/')) + 1;
}

WalkFilter::WalkFilter(const WalkLimits& limits)
    : limits_(limits),
      open_(limits.excluded.empty() && limits.depth == SIZE_MAX && !limits.oneFileSystem && limits.hidden) {
  for (const std::string& glob : limits.excluded) patterns_.push_back(patternOf(glob));
}

WalkFilter::Pattern WalkFilter::patternOf(std::string_view glob) {
  Pattern pattern{};
  pattern.forFolders = glob.ends_with('/');
  while (glob.size() > 1 && glob.ends_with('/')) glob.remove_suffix(1);
  pattern.isAbsolute = glob.starts_with('/');
  pattern.parts = partsOf(glob);
  pattern.isPath = glob.find('/') != std::string_view::npos || pattern.parts.empty();
  return pattern;
}

bool WalkFilter::isExcluded(std::string_view root, std::string_view folder, std::string_view name,
                            bool isFolder) const {
  const std::string ownName(name);
  return std::any_of(patterns_.begin(), patterns_.end(), [&](const Pattern& pattern) {
    if (pattern.forFolders && !isFolder) return false;
    if (!pattern.isPath) return matchesPart(pattern.parts.front(), ownName);
    std::vector<std::string> path = partsOf(pattern.isAbsolute ? folder : below(root, folder));
    path.push_back(ownName);
    return matchesPath(pattern.parts, path);
  });
}

bool WalkFilter::leavesOut(std::string_view root, std::string_view folder, std::string_view name,
                           bool isFolder) const {
  if (!limits_.hidden && name.starts_with('.')) return true;
  return !patterns_.empty() && isExcluded(root, folder, name, isFolder);
}

// Any of the path's entries from the root on.
bool WalkFilter::leavesOutBetween(const std::string& root, const std::string& path, bool isFolder) const {
  for (size_t start = root.ends_with('/') ? root.size() - 1 : root.size(); start < path.size();) {
    const size_t end = std::min(path.find('/', start + 1), path.size());
    const bool isLast = end == path.size();
    const std::string_view folder(path.data(), std::max<size_t>(start, 1));
    if (leavesOut(root, folder, std::string_view(path).substr(start + 1, end - start - 1),
                  !isLast || isFolder))
      return true;
    start = end;
  }
  return false;
}

bool WalkFilter::reaches(const std::string& root, const std::string& path) const {
  if (open_) return true;
  struct stat own {
  }, above{}, top{};
  const bool isFolder = ::lstat(path.c_str(), &own) == 0 && S_ISDIR(own.st_mode);
  if (depthBelow(root, path) > limits_.depth || leavesOutBetween(root, path, isFolder)) return false;
  if (!limits_.oneFileSystem) return true;
  return ::stat(parentPath(path).c_str(), &above) == 0 && ::stat(root.c_str(), &top) == 0 &&
         above.st_dev == top.st_dev;
}

bool WalkFilter::enters(const std::string& root, const std::string& folder) const {
  if (open_) return true;
  if (depthBelow(root, folder) >= limits_.depth || leavesOutBetween(root, folder, true)) return false;
  if (!limits_.oneFileSystem) return true;
  struct stat own {
  }, top{};
  return ::stat(folder.c_str(), &own) == 0 && ::stat(root.c_str(), &top) == 0 && own.st_dev == top.st_dev;
}

}  // namespace standin::metadata
