// How long a query takes over a tree of files, and how much memory its results hold, beside `find` over the
// same tree printing size, time and path. Usage: bench-scan [FILES]; 100,000 unless said otherwise.
#include <CoreServices/CoreServices.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/tree.h"
#include "standin/coreservices/metadata/control.h"

namespace {

using bench::best;
using bench::heapInUse;
using bench::secondsOf;

constexpr int kRounds = 5;

MDQueryRef makeQuery() {
  return MDQueryCreate(kCFAllocatorDefault, CFSTR("kMDItemFSSize >= 0"), nullptr, nullptr);
}

void readResults(MDQueryRef query) {
  for (CFIndex i = 0; i < MDQueryGetResultCount(query); ++i) {
    const auto item = static_cast<MDItemRef>(const_cast<void*>(MDQueryGetResultAtIndex(query, i)));
    for (const CFStringRef key : {kMDItemFSName, kMDItemFSSize, kMDItemPath}) {
      const CFTypeRef value = MDItemCopyAttribute(item, key);
      if (!value) {
        std::fprintf(stderr, "bench-scan: result %ld has no value\n", i);
        std::exit(1);
      }
      CFRelease(value);
    }
  }
}

struct Measured {
  std::vector<double> find, query, read;
  CFIndex results = 0;
  size_t heapOfResults = 0, heapOfItems = 0;
};

void measureOnce(const std::string& root, Measured& measured) {
  const std::string find = "find '" + root + "' -printf '%s %T@ %p\\n' > /dev/null";
  measured.find.push_back(secondsOf([&] {
    if (std::system(find.c_str()) != 0) std::exit(1);
  }));
  const size_t before = heapInUse();
  const MDQueryRef query = makeQuery();
  measured.query.push_back(secondsOf([&] { MDQueryExecute(query, kMDQuerySynchronous); }));
  measured.results = MDQueryGetResultCount(query);
  const size_t gathered = heapInUse();
  measured.read.push_back(secondsOf([&] { readResults(query); }));
  measured.heapOfResults = gathered - before;
  measured.heapOfItems = heapInUse() - gathered;
  CFRelease(query);
}

}  // namespace

int main(int argc, char** argv) {
  const int files = bench::countFrom("bench-scan", argc, argv, 100000);
  const bench::Tree tree("bench-scan", files);
  standin::setIndexedFolders({tree.path()});
  Measured measured;
  for (int round = 0; round < kRounds; ++round) measureOnce(tree.path(), measured);

  const double results = static_cast<double>(measured.results);
  std::printf("%ld results of %d files; best of %d rounds\n", measured.results, files, kRounds);
  std::printf("find                    %7.3f s\n", best(measured.find));
  std::printf("query                   %7.3f s  %.2f times find\n", best(measured.query),
              best(measured.query) / best(measured.find));
  std::printf("name, size, path of all %7.3f s\n", best(measured.read));
  std::printf("query and reading       %7.3f s  %.2f times find\n",
              best(measured.query) + best(measured.read),
              (best(measured.query) + best(measured.read)) / best(measured.find));
  std::printf("memory of a result      %7.1f bytes\n", static_cast<double>(measured.heapOfResults) / results);
  std::printf("memory of its item      %7.1f bytes more, once it was looked at\n",
              static_cast<double>(measured.heapOfItems) / results);
  return measured.results == files ? 0 : 1;
}
