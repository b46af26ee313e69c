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
  const std::string difference = bench::calls::differenceOfCalls();
  if (!difference.empty()) return fail("the calls are not the same; " + difference);
  const auto rows = bench::calls::countRows();
  if (!rows) return fail("nothing was counted; install valgrind and libc6-dbg:i386");
  const bool markdown = option == "--markdown";
  std::fputs((markdown ? bench::calls::asMarkdown(*rows) : bench::calls::asText(*rows)).c_str(), stdout);
  if (option == "--write" && !bench::calls::writeInto(DOCUMENT, *rows))
    return fail(DOCUMENT ": has no table with the heading of this one, or can't be written");
}
