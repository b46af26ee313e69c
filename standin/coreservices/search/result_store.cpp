#include "standin/coreservices/search/result_store.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "standin/coreservices/disk/paths.h"
#include "standin/system/paths.h"

namespace standin::metadata {

// One that is longer than a piece has a piece of its own.
ResultStore::Name ResultStore::Names::add(std::string_view name) {
  const size_t needed = name.size() + 1;
  if (room_ < needed) {
    const size_t size = std::max(kPieceSize, needed);
    pieces_.push_back(std::unique_ptr<char[]>(new char[size]));
    room_ = kPieceSize;
  }
  const auto place = static_cast<Name>(kPieceSize - room_);
  char* const copy = pieces_.back().get() + place;
  std::memcpy(copy, name.data(), name.size());
  copy[name.size()] = '\0';
  room_ -= std::min(room_, needed);
  size_ += needed;
  return static_cast<Name>((pieces_.size() - 1) << kPieceBits) | place;
}

ResultStore::Folder ResultStore::addFolder(Folder above, std::string_view name) {
  folders_.push_back({above, names_.add(name)});
  const auto folder = static_cast<Folder>(folders_.size() - 1);
  if (!foldersByPath_.empty()) foldersByPath_.insert(folder);
  return folder;
}

ResultStore::File ResultStore::add(Folder folder, std::string_view name) {
  File file = static_cast<File>(files_.size());
  if (free_.empty()) {
    files_.push_back({folder, names_.add(name)});
  } else {
    file = free_.back();
    free_.pop_back();
    files_[file] = {folder, names_.add(name)};
  }
  if (filesIndexed_) filesByPath_.insert(file);
  return file;
}

ResultStore::File ResultStore::add(std::string_view path) {
  return add(folderAt(parentPath(std::string(path))), path.substr(path.rfind('/') + 1));
}

// A folder that isn't known stands for itself, with its whole path for a name.
ResultStore::Folder ResultStore::folderAt(std::string_view path) {
  if (foldersByPath_.empty()) {
    for (Folder folder = 0; folder < folders_.size(); ++folder) foldersByPath_.insert(folder);
  }
  if (const auto known = foldersByPath_.find(path); known != foldersByPath_.end()) return *known;
  return addFolder(kNoFolder, path);
}

void ResultStore::remove(File file) {
  if (filesIndexed_) filesByPath_.erase(file);
  removedNames_ += std::strlen(names_.at(files_[file].name)) + 1;
  files_[file].name = kRemoved;
  free_.push_back(file);
}

void ResultStore::compact() {
  constexpr size_t kWorthIt = 64 * 1024;
  if (removedNames_ < kWorthIt || removedNames_ < names_.size() / 2) return;
  const Names oldNames = std::exchange(names_, {});
  const Entries oldFolders = std::exchange(folders_, {});
  removedNames_ = 0;
  std::vector<bool> used(oldFolders.size());
  for (const Entry& file : files_) {
    if (file.name == kRemoved) continue;
    for (Folder f = file.folder; f != kNoFolder && !used[f]; f = oldFolders[f].folder) used[f] = true;
  }
  foldersByPath_.clear();
  std::vector<Folder> moved(oldFolders.size(), kNoFolder);
  for (Folder f = 0; f < oldFolders.size(); ++f) {  // those above come before those below
    if (!used[f]) continue;
    const Folder above = oldFolders[f].folder;
    moved[f] = addFolder(above == kNoFolder ? kNoFolder : moved[above], oldNames.at(oldFolders[f].name));
  }
  for (Entry& file : files_) {
    if (file.name != kRemoved) file = {moved[file.folder], names_.add(oldNames.at(file.name))};
  }
}

// Written from the end, after one way up for the length: no list of the folders is needed.
std::string ResultStore::pathOf(const Entry& entry) const {
  const auto nameOf = [&](const Entry& e) { return std::string_view(names_.at(e.name)); };
  size_t length = nameOf(entry).size();
  for (Folder f = entry.folder; f != kNoFolder; f = folders_[f].folder) {
    length += nameOf(folders_[f]) == "/" ? 1 : nameOf(folders_[f]).size() + 1;
  }
  std::string path(length, '/');
  size_t end = length;
  const auto write = [&](std::string_view name) {
    end -= name.size();
    name.copy(path.data() + end, name.size());
  };
  write(nameOf(entry));
  for (Folder f = entry.folder; f != kNoFolder; f = folders_[f].folder) {
    if (nameOf(folders_[f]) == "/") break;
    --end;
    write(nameOf(folders_[f]));
  }
  return path;
}

std::string ResultStore::path(File file) const {
  return pathOf(files_[file]);
}

ResultStore::File ResultStore::find(std::string_view path) const {
  if (!filesIndexed_) {
    filesIndexed_ = true;
    filesByPath_.reserve(files_.size());
    for (File file = 0; file < files_.size(); ++file) {
      if (files_[file].name != kRemoved) filesByPath_.insert(file);
    }
  }
  const auto found = filesByPath_.find(path);
  return found == filesByPath_.end() ? kNoFile : *found;
}

std::vector<std::string> ResultStore::pathsBelow(std::string_view folder) const {
  std::vector<bool> below(folders_.size());
  for (Folder f = 0; f < folders_.size(); ++f) {
    const Folder above = folders_[f].folder;
    const std::string path = pathOf(folders_[f]);
    below[f] = (above != kNoFolder && below[above]) || liesIn(path, folder);
  }
  std::vector<std::string> paths;
  for (const Entry& file : files_) {
    if (file.name != kRemoved && below[file.folder]) paths.push_back(pathOf(file));
  }
  return paths;
}

}  // namespace standin::metadata
