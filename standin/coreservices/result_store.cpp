#include "result_store.h"

#include <algorithm>
#include <functional>

namespace standin::metadata {
namespace {

uint32_t hashOf(const std::string& path) {
  return static_cast<uint32_t>(std::hash<std::string>{}(path));
}

}  // namespace

uint32_t ResultStore::keep(std::string_view name) {
  const auto offset = static_cast<uint32_t>(names_.size());
  names_.append(name);
  names_ += '\0';
  return offset;
}

ResultStore::Folder ResultStore::addFolder(Folder above, std::string_view name) {
  folders_.push_back({above, keep(name)});
  return static_cast<Folder>(folders_.size() - 1);
}

void ResultStore::add(Folder folder, std::string_view name) {
  byPath_.clear();
  results_.push_back({folder, keep(name)});
}

void ResultStore::reorder(const std::vector<uint32_t>& order) {
  byPath_.clear();
  std::vector<Entry> reordered;
  reordered.reserve(order.size());
  for (const uint32_t index : order) reordered.push_back(results_[index]);
  results_.swap(reordered);
}

void ResultStore::shrink() {
  names_.shrink_to_fit();
  folders_.shrink_to_fit();
  results_.shrink_to_fit();
}

void ResultStore::appendFolderPath(std::string& path, Folder folder) const {
  std::vector<Folder> chain;  // not by recursion: folders may nest deeper than the stack allows
  for (; folder != kNoFolder; folder = folders_[folder].folder) chain.push_back(folder);
  for (auto i = chain.rbegin(); i != chain.rend(); ++i) {
    if (!path.empty() && path.back() != '/') path += '/';
    path += names_.data() + folders_[*i].name;
  }
}

std::string ResultStore::path(size_t index) const {
  std::string path;
  appendFolderPath(path, results_[index].folder);
  if (path.back() != '/') path += '/';
  path += names_.data() + results_[index].name;
  return path;
}

size_t ResultStore::find(const std::string& wanted) const {
  const auto before = [](const HashedIndex& left, const HashedIndex& right) {
    return left.hash != right.hash ? left.hash < right.hash : left.index < right.index;
  };
  if (byPath_.size() != size()) {
    byPath_.reserve(size());
    for (size_t i = 0; i < size(); ++i) byPath_.push_back({hashOf(path(i)), static_cast<uint32_t>(i)});
    std::sort(byPath_.begin(), byPath_.end(), before);
  }
  const uint32_t hash = hashOf(wanted);
  for (auto i = std::lower_bound(byPath_.begin(), byPath_.end(), HashedIndex{hash, 0}, before);
       i != byPath_.end() && i->hash == hash; ++i) {
    if (path(i->index) == wanted) return i->index;
  }
  return size();
}

}  // namespace standin::metadata
