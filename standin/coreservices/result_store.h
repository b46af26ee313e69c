// The files that a search found, in little memory: a name each, and a number for its folder, whose name is
// kept once for all that was found in it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace standin::metadata {

class ResultStore {
 public:
  using Folder = uint32_t;
  static constexpr Folder kNoFolder = UINT32_MAX;

  // The first folder of a search has no folder above it, and its absolute path for a name.
  Folder addFolder(Folder above, std::string_view name);
  void add(Folder folder, std::string_view name);
  // The result at order[i] goes to place i.
  void reorder(const std::vector<uint32_t>& order);
  void shrink();  // gives back what growing kept in reserve

  size_t size() const { return results_.size(); }
  std::string path(size_t index) const;  // bytes, absolute
  // The index of the file with that path; size() when there is none.
  size_t find(const std::string& path) const;

 private:
  struct Entry {
    Folder folder;
    uint32_t name;  // offset of its zero-ended bytes
  };
  struct HashedIndex {
    uint32_t hash;
    uint32_t index;
  };

  uint32_t keep(std::string_view name);
  void appendFolderPath(std::string& path, Folder folder) const;

  std::string names_;
  std::vector<Entry> folders_;
  std::vector<Entry> results_;
  mutable std::vector<HashedIndex> byPath_;  // sorted by hash; made by the first find() after a change
};

}  // namespace standin::metadata
