#include "macho/loader/export_trie.h"

#include "macho/format/format.h"

namespace macho {
namespace {

// The child of this node whose label begins the rest of the name; that part is taken off the name.
std::optional<uint32_t> descend(Cursor& cursor, std::string& name) {
  const auto children = cursor.next<uint8_t>();
  for (unsigned i = 0; i < children; ++i) {
    const std::string label = cursor.text();
    const uint32_t child = cursor.uleb();
    // An empty label would let a hostile trie go round in circles.
    if (label.empty()) throw FormatError("malformed: an edge of its export trie has no label");
    if (name.compare(0, label.size(), label) != 0) continue;
    name.erase(0, label.size());
    return child;
  }
  return std::nullopt;
}

std::optional<FoundExport> terminal(Cursor cursor, const std::string& name) {
  const uint32_t flags = cursor.uleb();
  if (flags & kExportReexport) {
    cursor.uleb();  // the library
    const std::string theirs = cursor.text();
    return FoundExport{0, theirs.empty() ? name : theirs};
  }
  if (flags & kExportStubAndResolver || (flags & kExportKindMask) == kExportAbsolute) return std::nullopt;
  return FoundExport{cursor.uleb(), ""};
}

}  // namespace

std::optional<FoundExport> findExport(Bytes trie, const std::string& name) {
  if (trie.size() == 0) return std::nullopt;
  std::string rest = name;
  std::optional<uint32_t> node = 0;
  while (node) {
    Cursor cursor(trie, *node);
    const uint32_t terminalSize = cursor.uleb();
    if (rest.empty()) return terminalSize ? terminal(cursor, name) : std::nullopt;
    cursor.skip(terminalSize);
    node = descend(cursor, rest);
  }
  return std::nullopt;
}

}  // namespace macho
