// What whole commands cost: shotlight beside the command that people would type instead, in processor time
// and paired in each round; and in instructions for each file, where there is valgrind. Usage: bench-command
// [FILES]; 100,000 unless said otherwise.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/instructions.h"
#include "bench/processes.h"
#include "bench/rows.h"
#include "bench/tree.h"

namespace {

constexpr int kRounds = 7;
constexpr int kFewFiles = 1000, kMoreFiles = 3000;  // whose difference tells the instructions of one

bench::Usage runOrEnd(const bench::Command& command) {
  const bench::Usage usage = bench::run(command);
  if (usage.status == 0) return usage;
  std::fprintf(stderr, "bench-command: %s failed: %s\n", command.front().c_str(), usage.errors.c_str());
  std::exit(1);
}

double median(std::vector<double> numbers) {
  std::sort(numbers.begin(), numbers.end());
  return numbers[numbers.size() / 2];
}

void compare(const bench::Row& row, const std::string& folder) {
  std::vector<double> ours, theirs, ratios;
  double megabytes = 0;
  for (int round = 0; round < kRounds; ++round) {
    const bench::Usage shotlight = runOrEnd(bench::shotlightIn(SHOTLIGHT, row, folder));
    ours.push_back(shotlight.seconds);
    theirs.push_back(runOrEnd(bench::otherIn(row, folder)).seconds);
    ratios.push_back(ours.back() / theirs.back());
    megabytes = std::max(megabytes, shotlight.megabytes);
  }
  std::printf("%-26s %7.3f s %7.3f s  %6.2f times %-13s %6.1f MB", row.what, bench::best(ours),
              bench::best(theirs), median(ratios), row.otherName, megabytes);
}

void compareInstructions(const bench::Row& row, const std::string& few, const std::string& more) {
  constexpr int kMore = kMoreFiles - kFewFiles;
  const auto ours = bench::instructionsEach(bench::shotlightIn(SHOTLIGHT, row, few),
                                            bench::shotlightIn(SHOTLIGHT, row, more), kMore);
  const auto theirs = bench::instructionsEach(bench::otherIn(row, few), bench::otherIn(row, more), kMore);
  if (ours) std::printf("  %6.0f instructions a file", *ours);
  if (ours && theirs) std::printf(", %5.2f times", *ours / *theirs);
}

void countLiveChanges() {
  double before = 0;
  for (const int results : {10000, 20000, 40000}) {
    const bench::Tree followed("bench-command", results);
    const auto each = bench::instructionsEach({LIVE_CHANGE, followed.path(), "10"},
                                              {LIVE_CHANGE, followed.path(), "60"}, 50);
    if (!each) return;
    std::printf("a file added to %6d results: %6.0f instructions", results, *each);
    if (before > 0) std::printf(", %.3f times that of half the results", *each / before);
    std::printf("\n");
    before = *each;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int files = bench::countFrom("bench-command", argc, argv, 100000);
  const bench::Tree tree("bench-command", files);
  const bench::Tree few("bench-command", kFewFiles), more("bench-command", kMoreFiles);
  std::printf("%d files; processor time, best of %d rounds; the ratio is the median of each round's\n", files,
              kRounds);
  for (const bench::Row& row : bench::rows()) {
    compare(row, tree.path());
    compareInstructions(row, few.path(), more.path());
    std::printf("\n");
    std::fflush(stdout);
  }
  countLiveChanges();
}
