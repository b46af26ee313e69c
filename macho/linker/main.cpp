// macho-link: reads the objects, decides what each name means, lays out, puts addresses in, writes.
#include <algorithm>
#include <iostream>
#include <new>

#include "macho/format/files.h"
#include "macho/linker/dead_strip.h"
#include "macho/linker/debug_map.h"
#include "macho/linker/error.h"
#include "macho/linker/frames.h"
#include "macho/linker/image.h"
#include "macho/linker/imports.h"
#include "macho/linker/join.h"
#include "macho/linker/layout.h"
#include "macho/linker/object.h"
#include "macho/linker/options.h"
#include "macho/linker/relocate.h"
#include "macho/linker/symbols.h"

namespace macho {
namespace {

uint8_t sectionNumber(const Layout& layout, uint32_t address) {
  uint8_t number = 0;
  for (const OutputSegment* segment : {&layout.text, &layout.data}) {
    for (const OutputSection& section : segment->sections) {
      ++number;
      if (address >= section.address && address - section.address < section.size) return number;
    }
  }
  return number;
}

std::vector<std::string> sortedExportNames(const Options& options, const Symbols& symbols) {
  std::vector<std::string> names = options.exported;
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  for (const std::string& name : names) {
    const InputSymbol* symbol = symbols.definingSymbol(name);
    if (!symbol) {
      throw LinkError(options.output,
                      "no object defines the exported " + name + "; define it or don't export it");
    }
    if (symbol->hidden) {
      throw LinkError(options.output, "the exported " + name + " is hidden; give it default visibility");
    }
  }
  return names;
}

void link(const Options& options) {
  const ImportList list = readImportList(options.imports);
  std::vector<Object> objects;
  for (const std::string& path : options.objects) objects.push_back(readObject(path));
  Symbols symbols(objects);
  const std::vector<std::string> exportNames = sortedExportNames(options, symbols);
  dropUnreached(objects, symbols, exportNames);
  symbols.import(list);
  shortenFrames(objects, symbols);
  joinEqualConstants(objects, symbols);
  Layout layout(objects, symbols, [&](size_t sections) { return headerSize(options, list, sections); });
  const LoadTimeWork work = relocate(objects, symbols, layout);
  std::vector<Export> exports;
  for (const std::string& name : exportNames) {
    const uint32_t address = layout.addressOf(*symbols.definition(name));
    exports.push_back({name, address, sectionNumber(layout, address)});
  }
  writeWholeFile(options.output, makeImage(options, list, symbols, layout, work, exports));
  if (!options.debugMap.empty()) {
    const std::string map = makeDebugMap(options.output, objects, layout);
    writeWholeFile(options.debugMap, {map.begin(), map.end()});
  }
}

}  // namespace
}  // namespace macho

int main(int count, char** words) {
  try {
    const macho::Options options = macho::parseOptions({words + 1, words + count});
    if (options.help) {
      std::cout << macho::kHelp;
      return 0;
    }
    macho::link(options);
    return 0;
  } catch (const macho::UsageError& error) {
    std::cerr << "macho-link: " << error.what() << "\n";
    return 2;
  } catch (const macho::FileError& error) {
    std::string lines = error.what();
    for (size_t end = lines.find('\n'); end != std::string::npos; end = lines.find('\n', end + 1)) {
      lines.insert(end + 1, "macho-link: ");
    }
    std::cerr << "macho-link: " << lines << "\n";
  } catch (const std::bad_alloc&) {
    std::cerr << "macho-link: out of memory; close other programs\n";
  }
  return 1;
}
