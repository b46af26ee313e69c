#include "standin/coreservices/disk/paths.h"

#include <algorithm>
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

std::vector<std::string> distinctFolders(const std::vector<std::string>& folders, size_t& missing) {
  std::vector<std::string> real;
  for (const std::string& folder : folders) {
    std::optional<std::string> path = realPathOfAbsolute(folder);
    if (path && isFolder(*path)) {
      real.push_back(std::move(*path));
    } else {
      ++missing;
    }
  }
  std::vector<std::string> distinct;
  for (size_t i = 0; i < real.size(); ++i) {
    const auto coversThis = [&](const std::string& other) { return liesIn(real[i], other); };
    const bool earlier = std::any_of(distinct.begin(), distinct.end(), coversThis);
    const bool later =
        std::any_of(real.begin() + static_cast<ptrdiff_t>(i) + 1, real.end(),
                    [&](const std::string& other) { return other != real[i] && coversThis(other); });
    if (!earlier && !later) distinct.push_back(real[i]);
  }
  return distinct;
}

}  // namespace standin::metadata
