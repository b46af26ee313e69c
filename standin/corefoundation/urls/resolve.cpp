#include "standin/corefoundation/urls/resolve.h"

#include <vector>

namespace cf {
namespace {

// Takes "." and "name/.." out of a path that starts with a slash; ".." that has no name before it stays.
std::string withoutDots(std::string_view path) {
  std::vector<std::string_view> kept;
  bool endsInSlash = false;
  for (path.remove_prefix(1);;) {
    const size_t slash = path.find('/');
    const bool isLast = slash == std::string_view::npos;
    const std::string_view name = path.substr(0, slash);
    endsInSlash = true;
    if (name == "..") {
      if (!kept.empty() && kept.back() != "..") {
        kept.pop_back();
      } else {
        kept.push_back(name);
        endsInSlash = !isLast;
      }
    } else if (name != "." && !(isLast && name.empty())) {
      kept.push_back(name);
      endsInSlash = !isLast;
    }
    if (isLast) break;
    path.remove_prefix(slash + 1);
  }
  std::string result;
  for (const std::string_view name : kept) result.append("/").append(name);
  if (endsInSlash || result.empty()) result += '/';
  return result;
}

std::string mergedPath(std::string_view base, std::string_view relative) {
  const size_t slash = base.rfind('/');
  std::string path(slash == std::string_view::npos ? "/" : base.substr(0, slash + 1));
  path.append(relative);
  return path.starts_with('/') ? withoutDots(path) : path;
}

}  // namespace

std::string resolve(const URLParts& base, const URLParts& relative) {
  std::string text(base.scheme);
  const auto append = [&text](std::string_view part) { text.append(part); };
  if (relative.hasHost()) {
    append(relative.authority);
    append(relative.path);
    append(relative.parameters);
    append(relative.query);
    append(relative.fragment);
    return text;
  }
  append(base.authority.empty() ? "//" : base.authority);
  if (relative.path.starts_with('/')) {
    append(relative.path);
  } else {
    append(relative.path.empty() ? std::string(base.path) : mergedPath(base.path, relative.path));
  }
  // What the relative URL leaves open comes from the base, up to the first part that it has.
  const bool hasOwnPath = !relative.path.empty();
  append(hasOwnPath || !relative.parameters.empty() ? relative.parameters : base.parameters);
  const bool hasOwnQuery = hasOwnPath || !relative.parameters.empty() || !relative.query.empty();
  append(hasOwnQuery ? relative.query : base.query);
  append(relative.fragment);
  return text;
}

}  // namespace cf
