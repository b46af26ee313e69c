#include "fsref_table.h"

#include <sys/stat.h>

#include <cstring>
#include <deque>
#include <unordered_map>

namespace standin {
namespace {

struct Content {
  char mark[4];
  uint32_t index;
};
static_assert(sizeof(Content) <= sizeof(FSRef));

constexpr char kMark[4] = {'F', 'S', 'r', 'f'};

struct Table {
  std::deque<std::string> paths;  // a deque: its strings stay where they are
  std::unordered_map<std::string, uint32_t> indexes;
};

Table& table() {
  static Table* const t = new Table;  // never destroyed: FSRefs are good to the very end
  return *t;
}

}  // namespace

bool makeFSRef(const std::string& path, FSRef& ref) {
  struct stat info;
  if (path.empty() || path.front() != '/' || ::lstat(path.c_str(), &info) != 0) return false;
  std::string plain = path;
  while (plain.size() > 1 && plain.back() == '/') plain.pop_back();
  Table& t = table();
  const auto [place, added] = t.indexes.emplace(plain, static_cast<uint32_t>(t.paths.size()));
  if (added) t.paths.push_back(plain);
  Content content{{}, place->second};
  std::memcpy(content.mark, kMark, sizeof kMark);
  std::memset(ref.hidden, 0, sizeof ref.hidden);
  std::memcpy(ref.hidden, &content, sizeof content);
  return true;
}

const std::string* pathOfFSRef(const FSRef& ref) {
  Content content;
  std::memcpy(&content, ref.hidden, sizeof content);
  if (std::memcmp(content.mark, kMark, sizeof kMark) != 0 || content.index >= table().paths.size()) {
    return nullptr;
  }
  return &table().paths[content.index];
}

}  // namespace standin
