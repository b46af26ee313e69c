#include "macho/linker/options.h"

#include "macho/linker/imports.h"

namespace macho {

const char kHelp[] =
    R"(usage: macho-link -o OUT -install_name NAME -imports LIST -exported SYMBOL [option...] OBJECT...

Links i386 Mach-O objects into a dylib for macOS. The same objects give the same bytes. What can't be reached
from the exported symbols is left out.

  -o OUT                   the dylib to write
  -install_name NAME       what the dylib calls itself
  -imports LIST            a text file that lists what comes from other libraries:
                             library INSTALL-NAME CURRENT-VERSION COMPATIBILITY-VERSION [weak]
                             _symbol
                             ...
                           It is to name all that is imported and nothing else.
  -exported SYMBOL         a symbol for others to use, such as _main; may be given again
  -current_version VERSION the dylib's own version; 1.0 when not given
  -debug-map FILE          a debug map to write, for dsymutil -y
  -minimum-system VERSION  the oldest macOS that it runs on; 10.6 when not given
  --help                   this text

Exit status: 0 linked, 1 the objects can't be linked, 2 wrong command line.
)";

namespace {

uint32_t* versionOption(Options& options, const std::string& name) {
  if (name == "-minimum-system") return &options.minimumSystem;
  if (name == "-current_version") return &options.currentVersion;
  return nullptr;
}

std::string* textOption(Options& options, const std::string& name) {
  if (name == "-o") return &options.output;
  if (name == "-debug-map") return &options.debugMap;
  if (name == "-install_name") return &options.installName;
  if (name == "-imports") return &options.imports;
  return nullptr;
}

void requireAll(const Options& options) {
  if (options.output.empty()) throw UsageError("no output is named; add -o OUT");
  if (options.installName.empty())
    throw UsageError("the dylib has no name of its own; add -install_name NAME");
  if (options.imports.empty()) throw UsageError("there is no list of imports; add -imports LIST");
  if (options.exported.empty()) throw UsageError("nothing is exported; add -exported SYMBOL");
  if (options.objects.empty()) throw UsageError("there is nothing to link; name the objects");
}

}  // namespace

Options parseOptions(const std::vector<std::string>& words) {
  Options options;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--help") {
      options.help = true;
      return options;
    }
    if (!word.starts_with('-')) {
      options.objects.push_back(word);
      continue;
    }
    std::string* text = textOption(options, word);
    uint32_t* version = versionOption(options, word);
    if (!text && !version && word != "-exported") {
      throw UsageError("unknown option " + word + "; see --help");
    }
    if (++i == words.size()) throw UsageError(word + " stands at the end; write its value behind it");
    const std::string& value = words[i];
    if (text) {
      if (!text->empty()) throw UsageError(word + " is given twice; remove one of them");
      *text = value;
    } else if (word == "-exported") {
      options.exported.push_back(value);
    } else {
      const auto parsed = parseVersion(value);
      if (!parsed) throw UsageError(value + " is not a version; write it as 10.6");
      *version = *parsed;
    }
  }
  requireAll(options);
  return options;
}

}  // namespace macho
