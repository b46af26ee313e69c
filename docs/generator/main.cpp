// Prints docs/reference.md, as the plug-in and docs/reference.txt have it. Usage: make-reference [--write];
// --write writes it to its place.
#include <cstdio>
#include <fstream>
#include <string>

#include "docs/generator/reference.h"
#include "standin/host/host.h"
#include "standin/plugin/plugin_file.h"

namespace {

int fail(const std::string& what) {
  std::fprintf(stderr, "make-reference: %s\n", what.c_str());
  return 1;
}

std::string pageOfThePlugIn() {
  standin::host::start();
  const standin::PluginFile plugin(PLUGIN);
  plugin.main()(standin::host::resolve);
  const std::string page = docs::referencePage(docs::readFile(SENTENCES));
  standin::host::stop();
  return page;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string option = argc > 1 ? argv[1] : "";
  if (argc > 2 || (!option.empty() && option != "--write")) {
    fail("usage: make-reference [--write]");
    return 2;
  }
  try {
    const std::string page = pageOfThePlugIn();
    if (option.empty()) {
      std::fputs(page.c_str(), stdout);
    } else if (!(std::ofstream(PAGE, std::ios::binary) << page << std::flush)) {
      return fail(PAGE ": can't be written");
    }
  } catch (const std::runtime_error& error) {
    return fail(std::string(SENTENCES) + ":\n" + error.what());
  }
}
