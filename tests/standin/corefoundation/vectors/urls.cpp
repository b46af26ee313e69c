#include <CoreFoundation/CFURL.h>
#include <unistd.h>

#include "tests/standin/corefoundation/vectors/checks.h"

namespace {

CFURLRef makeBase(const std::string& cell) {
  if (cell == "-") return nullptr;
  if (cell == "(cwd=/)") {
    if (chdir("/") != 0) throw BadTable("the row needs / as its current directory, which can't be entered");
    return nullptr;
  }
  const Owned<CFStringRef> text(makeText({cell.begin(), cell.end()}));
  const CFURLRef base = CFURLCreateWithString(kCFAllocatorDefault, text.get(), nullptr);
  if (base == nullptr) throw BadTable("the base \"" + cell + "\" is no URL");
  return base;
}

CFURLRef make(const Row& row) {
  const Owned<CFURLRef> base(makeBase(row.cells[2]));
  const Owned<CFStringRef> input(makeText(textOf(row.cells[1])));
  const bool isDirectory = integerOf(row.cells[3]) != 0;
  if (row.cells[0] == "string") return CFURLCreateWithString(kCFAllocatorDefault, input.get(), base.get());
  if (row.cells[0] != "path") throw BadTable("\"" + row.cells[0] + "\" is neither path nor string");
  if (base.get() == nullptr) {
    return CFURLCreateWithFileSystemPath(kCFAllocatorDefault, input.get(), kCFURLPOSIXPathStyle, isDirectory);
  }
  return CFURLCreateWithFileSystemPathRelativeToBase(kCFAllocatorDefault, input.get(), kCFURLPOSIXPathStyle,
                                                     isDirectory, base.get());
}

std::string differs(const char* name, CFStringRef got, const std::string& cell) {
  return difference(name, describe(got), cell == "null" ? "null" : hexOf(textOf(cell)));
}

std::string stringDiffers(const char* name, CFURLRef url, const std::string& cell) {
  return differs(name, url ? CFURLGetString(url) : nullptr, cell);
}

std::string forms(const Row& row) {
  const Owned<CFURLRef> url(make(row));
  if (integerOf(row.cells[4]) != 0) return url.get() ? "got a URL; " : "";
  if (url.get() == nullptr) return "got null; ";
  const Owned<CFURLRef> absolute(CFURLCopyAbsoluteURL(url.get()));
  const Owned<CFStringRef> last(CFURLCopyLastPathComponent(url.get()));
  const Owned<CFURLRef> shorter(CFURLCreateCopyDeletingLastPathComponent(kCFAllocatorDefault, url.get()));
  const Owned<CFStringRef> path(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle));
  return stringDiffers("string", url.get(), row.cells[5]) +
         stringDiffers("absolute", absolute.get(), row.cells[6]) +
         differs("last_component", last.get(), row.cells[7]) +
         stringDiffers("deleting_last", shorter.get(), row.cells[8]) +
         differs("posix_path", path.get(), row.cells[9]);
}

std::string appended(const Row& row) {
  const Owned<CFURLRef> url(make(row));
  if (url.get() == nullptr) return "got null; ";
  const Owned<CFStringRef> name(makeText(textOf(row.cells[4])));
  const Owned<CFURLRef> longer(
      CFURLCreateCopyAppendingPathComponent(kCFAllocatorDefault, url.get(), name.get(), false));
  if (longer.get() == nullptr) return row.cells[5] == "null" ? "" : "appending: got null; ";
  const Owned<CFURLRef> absolute(CFURLCopyAbsoluteURL(longer.get()));
  return stringDiffers("string", longer.get(), row.cells[5]) +
         stringDiffers("absolute", absolute.get(), row.cells[6]);
}

}  // namespace

std::vector<Check> urlChecks() {
  return {
      {"url.tsv",
       {"make", "input", "base", "is_dir", "is_null", "string", "absolute", "last_component", "deleting_last",
        "posix_path"},
       forms},
      {"url_append.tsv", {"make", "input", "base", "is_dir", "name", "string", "absolute"}, appended},
  };
}
