// What the plug-in adds to the calls that it must make: its instructions beside those of the twin (twin.c),
// which makes the same calls. Usage: bench-calls [--markdown | --write]; --write puts the table into
// docs/developing.md, where the tests read what they hold.
#include <cstdio>
#include <string>

#include "bench/calls/rows.h"
#include "bench/calls/table.h"

namespace {

int fail(const std::string& what) {
  std::fprintf(stderr, "bench-calls: %s\n", what.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string option = argc > 1 ? argv[1] : "";
  if (argc > 2 || (!option.empty() && option != "--markdown" && option != "--write")) {
    fail("usage: bench-calls [--markdown | --write]");
    return 2;
  }
  const bench::calls::Comparison comparison = bench::calls::compareCalls();
  if (!comparison.difference.empty()) return fail("the calls are not the same: " + comparison.difference);
  const auto rows = bench::calls::countRows();
  if (!rows) return fail("nothing was counted; install valgrind and libc6-dbg:i386");
  if (option == "--markdown") {
    std::fputs(bench::calls::asMarkdown(*rows).c_str(), stdout);
  } else {
    std::printf("%zu calls are the same as the twin's; instructions of a call:\n%s", comparison.calls,
                bench::calls::asText(*rows).c_str());
  }
  const char* const document = bench::calls::kDocument;
  if (option == "--write" && !bench::calls::writeInto(document, *rows)) {
    return fail(std::string(document) + ": can't be written, or has no table with the heading of this one");
  }
}
