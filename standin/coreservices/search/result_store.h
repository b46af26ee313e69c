// The files that a search found, in little memory: a name each, and a number for its folder, whose name is
// kept once for all that was found in it. Memory is taken in pieces, which stay where they are: what grows by
// moving takes twice as much, and the time to fill it again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace standin::metadata {

class ResultStore {
 public:
  using Folder = uint32_t;
  using File = uint32_t;  // below fileLimit(); that of a removed file is given to another
  static constexpr Folder kNoFolder = UINT32_MAX;
  static constexpr File kNoFile = UINT32_MAX;

  ResultStore() = default;
  ResultStore(const ResultStore&) = delete;
  ResultStore& operator=(const ResultStore&) = delete;

  // The first folder of a search has no folder above it, and its absolute path for a name.
  Folder addFolder(Folder above, std::string_view name);
  File add(Folder folder, std::string_view name);
  File add(std::string_view path);  // absolute, of a file that isn't there yet
  void remove(File file);
  // Gives back the memory of removed files, once that is worth it. Numbers of folders change.
  void compact();

  size_t fileLimit() const { return files_.size(); }
  std::string path(File file) const;  // bytes, absolute
  File find(std::string_view path) const;
  std::vector<std::string> pathsBelow(std::string_view folder) const;

 private:
  using Name = uint32_t;  // a piece of names, and a place in it
  struct Entry {
    Folder folder;
    Name name;  // kRemoved for a file that isn't there
  };
  using Entries = std::deque<Entry>;
  static constexpr Name kRemoved = UINT32_MAX;

  // Each ended by a zero byte.
  class Names {
   public:
    Name add(std::string_view name);
    const char* at(Name name) const { return pieces_[name >> kPieceBits].get() + (name & (kPieceSize - 1)); }
    size_t size() const { return size_; }  // bytes

   private:
    static constexpr int kPieceBits = 16;
    static constexpr size_t kPieceSize = size_t{1} << kPieceBits;
    std::vector<std::unique_ptr<char[]>> pieces_;
    size_t room_ = 0;  // in the last of them
    size_t size_ = 0;
  };

  // Hash and equality of entries by their paths, in sets of numbers.
  struct PathHash {
    using is_transparent = void;
    const ResultStore* store;
    const Entries* entries;
    size_t operator()(uint32_t number) const { return (*this)(store->pathOf((*entries)[number])); }
    size_t operator()(std::string_view path) const { return std::hash<std::string_view>{}(path); }
  };
  struct SamePath {
    using is_transparent = void;
    const ResultStore* store;
    const Entries* entries;
    bool operator()(uint32_t left, uint32_t right) const { return left == right; }
    bool operator()(std::string_view path, uint32_t number) const {
      return store->pathOf((*entries)[number]) == path;
    }
    bool operator()(uint32_t number, std::string_view path) const { return (*this)(path, number); }
  };
  using ByPath = std::unordered_set<uint32_t, PathHash, SamePath>;

  std::string pathOf(const Entry& entry) const;
  Folder folderAt(std::string_view path);

  Names names_;
  size_t removedNames_ = 0;  // bytes
  Entries folders_;
  Entries files_;
  std::vector<File> free_;
  // Filled when they are first needed, and kept up to date from then on.
  mutable bool filesIndexed_ = false;
  mutable ByPath filesByPath_{0, PathHash{this, &files_}, SamePath{this, &files_}};
  ByPath foldersByPath_{0, PathHash{this, &folders_}, SamePath{this, &folders_}};
};

}  // namespace standin::metadata
