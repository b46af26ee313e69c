// Whether limits let a search come to something. Of the folder that is searched itself they leave out
// nothing: it was asked for by name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standin/coreservices/disk/walk_limits.h"

namespace standin::metadata {

class WalkFilter {
 public:
  WalkFilter() = default;  // lets everything pass
  explicit WalkFilter(const WalkLimits& limits);

  bool isOpen() const { return open_; }  // everything passes
  bool staysOnFileSystem() const { return limits_.oneFileSystem; }
  size_t depth() const { return limits_.depth; }

  // Whether an entry isn't to be looked at, by its name and path alone. `root` is the folder that is
  // searched, and `folder` one in it that is looked into, or itself.
  bool leavesOut(std::string_view root, std::string_view folder, std::string_view name, bool isFolder) const;

  // Of paths below the root, which must be there: whether the entry is come to, and whether the folder is
  // looked into.
  bool reaches(const std::string& root, const std::string& path) const;
  bool enters(const std::string& root, const std::string& folder) const;

 private:
  struct Pattern {
    std::vector<std::string> parts;  // between its slashes
    bool isPath;
    bool isAbsolute;
    bool forFolders;
  };

  static Pattern patternOf(std::string_view glob);
  bool isExcluded(std::string_view root, std::string_view folder, std::string_view name, bool isFolder) const;
  bool leavesOutBetween(const std::string& root, const std::string& path, bool isFolder) const;

  WalkLimits limits_;
  std::vector<Pattern> patterns_;
  bool open_ = true;
};

// How many folders down: 0 for the folder itself.
size_t depthBelow(std::string_view root, std::string_view path);

}  // namespace standin::metadata
