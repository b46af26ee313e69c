#include "macho/linker/dead_strip.h"

#include <map>
#include <set>

namespace macho {
namespace {

// In a frame record, the function's address.
constexpr uint32_t kFunctionField = 8;

class Reach {
 public:
  Reach(const std::vector<Object>& objects, const Symbols& symbols) : objects_(objects), symbols_(symbols) {
    for (uint32_t i = 0; i < objects.size(); ++i) {
      for (uint32_t j = 0; j < objects[i].sections.size(); ++j) noteFrame({i, j});
    }
  }

  void from(const Location& location) {
    reach({location.object, location.section});
    while (!waiting_.empty()) {
      const AtomIndex atom = waiting_.back();
      waiting_.pop_back();
      follow(atom);
    }
  }

  bool reached(uint32_t object, uint32_t section) const { return reached_.contains({object, section}); }

 private:
  const InputSection& sectionOf(const AtomIndex& atom) const {
    return objects_[atom.object].sections[atom.section];
  }

  void noteFrame(const AtomIndex& atom) {
    if (sectionOf(atom).name != "__eh_frame") return;
    for (const Fixup& fixup : sectionOf(atom).fixups) {
      if (fixup.offset != kFunctionField) continue;
      if (const auto function = symbols_.locate(atom.object, fixup.target)) {
        frames_[{function->object, function->section}].push_back(atom);
      }
    }
  }

  void reach(const AtomIndex& atom) {
    if (reached_.insert(atom).second) waiting_.push_back(atom);
  }

  void reach(uint32_t object, const Place& place) {
    if (const auto location = symbols_.locate(object, place)) reach({location->object, location->section});
  }

  void follow(const AtomIndex& atom) {
    const InputSection& section = sectionOf(atom);
    for (const Place& place : section.pointers) reach(atom.object, place);
    for (const Fixup& fixup : section.fixups) {
      reach(atom.object, fixup.target);
      if (fixup.kind == Fixup::kDifference) reach(atom.object, fixup.minus);
    }
    if (const auto frames = frames_.find(atom); frames != frames_.end()) {
      for (const AtomIndex& frame : frames->second) reach(frame);
    }
  }

  const std::vector<Object>& objects_;
  const Symbols& symbols_;
  std::map<AtomIndex, std::vector<AtomIndex>> frames_;  // of each function
  std::set<AtomIndex> reached_;
  std::vector<AtomIndex> waiting_;  // reached, and not yet followed
};

}  // namespace

void dropUnreached(std::vector<Object>& objects, const Symbols& symbols,
                   const std::vector<std::string>& exported) {
  Reach reach(objects, symbols);
  for (const std::string& name : exported) {
    if (const Location* location = symbols.definition(name)) reach.from(*location);
  }
  for (uint32_t i = 0; i < objects.size(); ++i) {
    for (uint32_t j = 0; j < objects[i].sections.size(); ++j) {
      if (!reach.reached(i, j)) objects[i].sections[j].dropped = true;
    }
  }
}

}  // namespace macho
