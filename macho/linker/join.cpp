#include "macho/linker/join.h"

#include <algorithm>
#include <compare>
#include <cstring>
#include <map>
#include <optional>

#include "macho/format/format.h"

namespace macho {
namespace {

// An address within a constant, and what it leads to.
struct Link {
  Fixup::Kind kind;
  uint32_t offset;
  Symbols::Target target;
  bool throughPointer;  // the target is what the pointer that is named points to
  int32_t from;         // of a distance: where in the constant it begins
  int32_t addend;
  auto operator<=>(const Link&) const = default;
};

// What makes two constants equal. Bytes that addresses are put into count by what these lead to.
struct Content {
  std::string section;
  std::vector<uint8_t> bytes;
  std::vector<Link> links;
  auto operator<=>(const Content&) const = default;
};

bool isConstant(const InputSection& atom) {
  switch (atom.type) {
    case kCStrings:
    case k4ByteLiterals:
    case k8ByteLiterals:
    case k16ByteLiterals:
      return true;
  }
  if (atom.name == "__eh_frame") {
    constexpr uint8_t common[4] = {};
    return atom.bytes.size() >= 8 && std::memcmp(&atom.bytes[4], common, sizeof common) == 0;
  }
  return atom.name == "__gcc_except_tab";
}

class Joiner {
 public:
  Joiner(std::vector<Object>& objects, const Symbols& symbols) : objects_(objects), symbols_(symbols) {}

  void run() {
    for (uint32_t i = 0; i < objects_.size(); ++i) {
      for (uint32_t j = 0; j < objects_[i].sections.size(); ++j) {
        const InputSection& atom = objects_[i].sections[j];
        if (!atom.dropped && atom.size && isConstant(atom)) join({i, j});
      }
    }
  }

 private:
  void join(const AtomIndex& index) {
    std::optional<Content> content = contentOf(index);
    if (!content) return;
    const auto [first, isNew] = firsts_.emplace(std::move(*content), index);
    if (isNew) return;
    InputSection& kept = objects_[first->second.object].sections[first->second.section];
    InputSection& atom = objects_[index.object].sections[index.section];
    kept.alignment = std::max(kept.alignment, atom.alignment);
    atom.joined = first->second;
    atom.dropped = true;
  }

  // Nothing when an address depends on more than this constant and one other place.
  std::optional<Content> contentOf(const AtomIndex& index) const {
    const InputSection& atom = objects_[index.object].sections[index.section];
    Content content = {atom.label(), atom.bytes, {}};
    for (const Fixup& fixup : atom.fixups) {
      std::memset(&content.bytes[fixup.offset], 0, 4);
      const bool distance = fixup.kind == Fixup::kDifference;
      const bool fromHere = fixup.minus.kind == Place::kSection && fixup.minus.index == index.section;
      if (distance && !fromHere) return std::nullopt;
      Link link = {fixup.kind, fixup.offset, symbols_.resolve(index.object, fixup.target), false,
                   0,          fixup.addend};
      if (distance) link.from = fixup.minus.offset;
      followPointer(link);
      content.links.push_back(link);
    }
    return content;
  }

  // Each object has its own pointer to a thing; the dylib has one for all.
  void followPointer(Link& link) const {
    if (link.target.kind != Symbols::Target::kLocation) return;
    const Location location = link.target.location;
    const InputSection& atom = objects_[location.object].sections[location.section];
    if (location.offset != 0 || atom.pointers.size() != 1) return;
    link.target = symbols_.resolve(location.object, atom.pointers.front());
    link.throughPointer = true;
  }

  std::vector<Object>& objects_;
  const Symbols& symbols_;
  std::map<Content, AtomIndex> firsts_;
};

}  // namespace

void joinEqualConstants(std::vector<Object>& objects, const Symbols& symbols) {
  Joiner(objects, symbols).run();
}

}  // namespace macho
