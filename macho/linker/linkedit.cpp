#include "macho/linker/linkedit.h"

#include "macho/format/format.h"
#include "macho/linker/fixup_opcodes.h"
#include "macho/linker/leb.h"

namespace macho {
namespace {

void pad(std::vector<uint8_t>& bytes) {
  bytes.resize(roundUp(static_cast<uint32_t>(bytes.size()), 8));
}

// A node of the export trie. Its offset in the stream depends on the sizes of the offsets before it, which
// depend on the offsets themselves: they are computed until nothing changes.
struct TrieNode {
  std::vector<uint8_t> terminal;
  struct Edge {
    std::string label;
    size_t child;
  };
  std::vector<Edge> edges;
  uint32_t offset = 0;
};

class Trie {
 public:
  explicit Trie(const std::vector<Export>& exports) : exports_(exports) { addNode(0, exports.size(), 0); }

  std::vector<uint8_t> encode() {
    std::vector<uint8_t> bytes;
    for (bool changed = true; changed;) {
      changed = false;
      bytes.clear();
      for (TrieNode& node : nodes_) {
        changed = changed || node.offset != bytes.size();
        node.offset = static_cast<uint32_t>(bytes.size());
        appendNode(bytes, node);
      }
    }
    return bytes;
  }

 private:
  // The node for exports first to last (excluded), which share their first `length` characters.
  size_t addNode(size_t first, size_t last, size_t length) {
    const size_t index = nodes_.size();
    nodes_.emplace_back();
    if (first < last && exports_[first].name.size() == length) {
      std::vector<uint8_t> terminal;
      appendULEB(terminal, 0);  // flags: an ordinary address
      appendULEB(terminal, exports_[first].address);
      nodes_[index].terminal = terminal;
      ++first;
    }
    while (first < last) {
      size_t end = first + 1;
      while (end < last && exports_[end].name[length] == exports_[first].name[length]) ++end;
      // Sorted, so what the first and the last share, all share.
      const std::string &low = exports_[first].name, &high = exports_[end - 1].name;
      size_t shared = length;
      while (shared < low.size() && low[shared] == high[shared]) ++shared;
      const size_t child = addNode(first, end, shared);
      nodes_[index].edges.push_back({low.substr(length, shared - length), child});
      first = end;
    }
    return index;
  }

  void appendNode(std::vector<uint8_t>& bytes, const TrieNode& node) const {
    appendULEB(bytes, static_cast<uint32_t>(node.terminal.size()));
    bytes.insert(bytes.end(), node.terminal.begin(), node.terminal.end());
    bytes.push_back(static_cast<uint8_t>(node.edges.size()));
    for (const TrieNode::Edge& edge : node.edges) {
      appendText(bytes, edge.label);
      appendULEB(bytes, nodes_[edge.child].offset);
    }
  }

  const std::vector<Export>& exports_;
  std::vector<TrieNode> nodes_;
};

}  // namespace

std::vector<uint8_t> rebaseBlob(const LoadTimeWork& work, uint32_t dataAddress) {
  std::vector<uint8_t> bytes = encodeRebases(work.rebases, dataAddress);
  pad(bytes);
  return bytes;
}

std::vector<uint8_t> bindBlob(const LoadTimeWork& work, const std::vector<Import>& imports,
                              uint32_t dataAddress) {
  std::vector<uint8_t> bytes = encodeBinds(work.binds, imports, dataAddress);
  pad(bytes);
  return bytes;
}

std::vector<uint8_t> encodeExports(const std::vector<Export>& exports) {
  std::vector<uint8_t> bytes;
  if (!exports.empty()) bytes = Trie(exports).encode();
  pad(bytes);
  return bytes;
}

SymbolTable encodeSymbols(const std::vector<Export>& exports, const std::vector<Import>& imports,
                          const Layout& layout) {
  SymbolTable table;
  table.strings = {' ', 0};  // offset 0 means no name
  for (const Export& symbol : exports) {
    append(table.symbols, SymbolRecord{static_cast<uint32_t>(table.strings.size()),
                                       kDefinedInSection | kExternal, symbol.section, 0, symbol.address});
    appendText(table.strings, symbol.name);
  }
  for (const Import& symbol : imports) {
    const auto ordinal = static_cast<uint16_t>((symbol.library + 1) << 8);
    const auto description = static_cast<uint16_t>(ordinal | (symbol.weak ? kWeakReference : 0));
    append(table.symbols, SymbolRecord{static_cast<uint32_t>(table.strings.size()), kUndefined | kExternal, 0,
                                       description, 0});
    appendText(table.strings, symbol.name);
  }
  pad(table.strings);

  const auto indexOf = [&](uint32_t import) { return static_cast<uint32_t>(exports.size()) + import; };
  for (const Symbols::Target& target : layout.pointers) {
    const bool imported = target.kind == Symbols::Target::kImport;
    append(table.indirect, imported ? indexOf(target.import) : kIndirectLocal);
  }
  for (const uint32_t import : layout.stubs) append(table.indirect, indexOf(import));
  return table;
}

}  // namespace macho
