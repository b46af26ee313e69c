#include "standin/system/fsref_table.h"

#include <cstring>
#include <deque>
#include <unordered_map>

#include "standin/system/file_names.h"

namespace standin {
namespace {

struct Content {
  char mark[4];
  uint32_t index;
};
static_assert(sizeof(Content) <= sizeof(FSRef));

constexpr char kMark[4] = {'F', 'S', 'r', 'f'};
constexpr uint32_t kFirstNode = 16;

struct Table {
  std::deque<std::string> paths;  // a deque: its strings stay where they are
  std::unordered_map<std::string, uint32_t> indexes;

  uint32_t indexOf(const std::string& path) {
    const auto [place, added] = indexes.emplace(path, static_cast<uint32_t>(paths.size()));
    if (added) paths.push_back(path);
    return place->second;
  }
};

Table& table() {
  static Table* const t = new Table;  // never destroyed: FSRefs are good to the very end
  return *t;
}

Content contentOf(const FSRef& ref) {
  Content content;
  std::memcpy(&content, ref.hidden, sizeof content);
  return content;
}

}  // namespace

bool makeFSRef(const std::string& path, FSRef& ref) {
  if (path.empty() || path.front() != '/' || !isThere(path)) return false;
  Content content{{}, table().indexOf(canonicalPath(path))};
  std::memcpy(content.mark, kMark, sizeof kMark);
  std::memset(ref.hidden, 0, sizeof ref.hidden);
  std::memcpy(ref.hidden, &content, sizeof content);
  return true;
}

const std::string* pathOfFSRef(const FSRef& ref) {
  const Content content = contentOf(ref);
  if (std::memcmp(content.mark, kMark, sizeof kMark) != 0 || content.index >= table().paths.size()) {
    return nullptr;
  }
  return &table().paths[content.index];
}

uint32_t nodeOfFSRef(const FSRef& ref) {
  const uint32_t index = contentOf(ref).index;
  return table().paths[index] == "/" ? uint32_t{fsRtDirID} : kFirstNode + index;
}

const std::string* pathOfNode(uint32_t node) {
  static const std::string kRoot = "/";
  if (node == fsRtDirID) return &kRoot;
  if (node < kFirstNode || node - kFirstNode >= table().paths.size()) return nullptr;
  return &table().paths[node - kFirstNode];
}

}  // namespace standin
