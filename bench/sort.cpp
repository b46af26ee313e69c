// How much longer a query takes whose results are sorted, how long sorting them anew takes, and value lists.
// Usage: bench-sort [FILES]; 100,000 unless said otherwise.
#include <CoreServices/CoreServices.h>

#include <cstdio>
#include <initializer_list>
#include <vector>

#include "bench/tree.h"
#include "standin/coreservices/metadata/control.h"

namespace {

using bench::best;
using bench::secondsOf;

constexpr int kRounds = 5;

CFArrayRef makeArray(std::initializer_list<CFStringRef> names) {
  const CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
  for (const CFStringRef name : names) CFArrayAppendValue(array, name);
  return array;
}

struct Measured {
  std::vector<double> gathered, sortedAnew, listed, counted;
  size_t heap = 0;
  CFIndex results = 0, values = 0;
};

void countEachValue(MDQueryRef query, CFStringRef name, CFArrayRef values, CFIndex& sum) {
  for (CFIndex i = 0; i < CFArrayGetCount(values); ++i) {
    sum += MDQueryGetCountOfResultsWithAttributeValue(query, name, CFArrayGetValueAtIndex(values, i));
  }
}

void measureOnce(std::initializer_list<CFStringRef> sorting, CFStringRef listed, Measured& measured) {
  const CFArrayRef order = makeArray(sorting);
  const CFArrayRef lists = makeArray({listed});
  const size_t before = bench::heapInUse();
  const MDQueryRef query = MDQueryCreate(kCFAllocatorDefault, CFSTR("kMDItemFSSize >= 0"), lists, order);
  measured.gathered.push_back(secondsOf([&] { MDQueryExecute(query, kMDQuerySynchronous); }));
  measured.results = MDQueryGetResultCount(query);
  measured.heap = bench::heapInUse() - before;
  if (sorting.size() > 0) {
    measured.sortedAnew.push_back(
        secondsOf([&] { MDQuerySetSortOptionFlagsForAttribute(query, *sorting.begin(), 1); }));
  }
  CFArrayRef values = nullptr;
  measured.listed.push_back(secondsOf([&] { values = MDQueryCopyValuesOfAttribute(query, listed); }));
  measured.values = CFArrayGetCount(values);
  CFIndex sum = 0;
  measured.counted.push_back(secondsOf([&] { countEachValue(query, listed, values, sum); }));
  if (sum != measured.results)
    std::fprintf(stderr, "bench-sort: the values of %ld results were counted\n", sum);
  CFRelease(values);
  CFRelease(query);
  CFRelease(order);
  CFRelease(lists);
}

void report(const char* what, std::initializer_list<CFStringRef> sorting, CFStringRef listed) {
  Measured m;
  for (int round = 0; round < kRounds; ++round) measureOnce(sorting, listed, m);
  std::printf(
      "%-22s %7.3f s  sorted anew %7.3f s  %6.1f bytes each;  %6ld values listed %6.3f s, counted %6.3f s\n",
      what, best(m.gathered), m.sortedAnew.empty() ? 0 : best(m.sortedAnew),
      static_cast<double>(m.heap) / static_cast<double>(m.results), m.values, best(m.listed),
      best(m.counted));
}

}  // namespace

int main(int argc, char** argv) {
  const int files = bench::countFrom("bench-sort", argc, argv, 100000);
  const bench::Tree tree("bench-sort", files);
  standin::setIndexedFolders({tree.path()});
  std::printf("%d files; best of %d rounds\n", files, kRounds);
  report("not sorted", {}, kMDItemFSSize);
  report("by name", {kMDItemFSName}, kMDItemFSName);
  report("by size and name", {kMDItemFSSize, kMDItemFSName}, kMDItemFSSize);
  report("by date", {kMDItemFSContentChangeDate}, kMDItemFSContentChangeDate);
}
