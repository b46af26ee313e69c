#include "standin/coreservices/disk/paths.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "standin/system/paths.h"

namespace standin::metadata {
namespace {

std::optional<std::string> realPathOfAbsolute(const std::string& path) {
  if (!path.starts_with('/')) return {};
  return realPath(path);
}

}  // namespace

std::string pathIn(const std::string& folder, std::string_view name) {
  std::string path = folder;
  if (!path.ends_with('/')) path += '/';
  path += name;
  return path;
}

bool liesIn(std::string_view path, std::string_view folder) {
  if (!path.starts_with(folder)) return false;
  return path.size() == folder.size() || folder.ends_with('/') || path[folder.size()] == '/';
}

std::string intendedPath(const std::string& path) {
  if (std::optional<std::string> real = realPathOfAbsolute(path)) return std::move(*real);
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos || slash == 0) return path;
  const std::string folder = intendedPath(parentPath(path));
  return (folder == "/" ? "" : folder) + path.substr(slash);
}

std::vector<std::string> realFolders(const std::vector<std::string>& folders, size_t& missing) {
  std::vector<std::string> real;
  for (const std::string& folder : folders) {
    std::optional<std::string> path = realPathOfAbsolute(folder);
    if (!path || !isFolder(*path)) {
      ++missing;
    } else if (std::find(real.begin(), real.end(), *path) == real.end()) {
      real.push_back(std::move(*path));
    }
  }
  return real;
}

std::vector<std::string> foldersInOthers(const std::vector<std::string>& folders) {
  std::vector<std::string> inner;
  std::copy_if(folders.begin(), folders.end(), std::back_inserter(inner), [&](const std::string& folder) {
    return std::any_of(folders.begin(), folders.end(),
                       [&](const std::string& other) { return other != folder && liesIn(folder, other); });
  });
  return inner;
}

}  // namespace standin::metadata
