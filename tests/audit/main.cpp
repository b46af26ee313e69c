// dylib-audit: tells what a Mac loads when it loads a dylib of the plug-in, and what is wrong with it.
#include <cstdio>
#include <cstring>
#include <exception>

#include "standin/gate/shown_text.h"
#include "tests/audit/audit.h"
#include "tests/audit/report.h"

namespace {

enum Status { kAsItShouldBe, kFindings, kNotRead };

const char kUsage[] =
    "usage: dylib-audit --report DYLIB\n"
    "prints a page about DYLIB: exports, load commands, sections, and imports with the macOS that first has "
    "them.\n"
    "The exit status is 0 when it is as it should be, 1 when not, and 2 when it can't be read.\n";

}  // namespace

int main(int count, char** words) {
  if (count == 2 && std::strcmp(words[1], "--help") == 0)
    return std::fputs(kUsage, stdout) < 0 ? kNotRead : kAsItShouldBe;
  if (count != 3 || std::strcmp(words[1], "--report") != 0) {
    std::fputs(kUsage, stderr);
    return kNotRead;
  }
  const audit::Lists lists = {IMPORTS, INTRODUCED};
  try {
    const auto findings = audit::findings(words[2], lists);
    const std::string report = audit::report(words[2], lists, findings);
    if (std::fputs(report.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
      std::perror("dylib-audit: the report can't be written");
      return kNotRead;
    }
    return findings.empty() ? kAsItShouldBe : kFindings;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "dylib-audit: %s\n", standin::shownText(error.what()).c_str());
    return kNotRead;
  }
}
