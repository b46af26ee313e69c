#include "macho/linker/debug_map.h"

#include <sstream>

namespace macho {
namespace {

// In YAML's single quotes only the quote itself is special.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? std::string("''") : std::string(1, c);
  return result + "'";
}

}  // namespace

std::string makeDebugMap(const std::string& dylib, const std::vector<Object>& objects, const Layout& layout) {
  std::ostringstream map;
  map << std::hex << "---\ntriple: 'i386-apple-darwin'\nbinary-path: " << quoted(dylib) << "\nobjects:\n";
  for (uint32_t i = 0; i < objects.size(); ++i) {
    map << "  - filename: " << quoted(objects[i].path) << "\n    timestamp: 0\n    symbols:\n";
    for (const InputSymbol& symbol : objects[i].symbols) {
      if (!symbol.defined) continue;
      const InputSection& section = objects[i].sections[symbol.section];
      if (section.dropped || section.size == 0) continue;
      // The object's own copy of a weak definition: its debug information is about that one.
      const uint32_t address = layout.addressOf({i, symbol.section, static_cast<int32_t>(symbol.offset)});
      // Sizes count only for objects without debug information.
      map << "      - { sym: " << quoted(symbol.name) << ", objAddr: 0x" << section.address + symbol.offset
          << ", binAddr: 0x" << address << ", size: 0x0 }\n";
    }
  }
  map << "...\n";
  return map.str();
}

}  // namespace macho
