// What whole commands cost: shotlight beside the command that people would type instead, in processor time
// and paired in each round; and instructions for each file, where there is valgrind. Usage: bench-command
// [FILES]; 100,000 unless said otherwise.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/instructions.h"
#include "bench/processes.h"
#include "bench/tree.h"

namespace {

using Command = std::vector<std::string>;

constexpr int kRounds = 7;
constexpr int kFewFiles = 1000, kMoreFiles = 3000;  // whose difference tells the instructions of one

struct Row {
  const char* what;
  Command shotlight;  // without the folder
  const char* other;  // of the shell; $1 is the folder
  const char* otherName;
};

const char* const kAll = "kMDItemFSName == \"*\"";
const char* const kPaths = "kMDItemPath";

const std::vector<Row> kRows = {
    {"name, size, path", {"find", kAll}, "find \"$1\" -mindepth 1 -printf '%f\\t%s\\t%p\\n'", "find -printf"},
    {"path", {"find", kAll, "--show", kPaths}, "find \"$1\" -mindepth 1", "find"},
    {"count", {"find", kAll, "--count"}, "find \"$1\" -mindepth 1", "find"},
    {"a tenth by name, counted",
     {"find", "kMDItemFSName == \"*7.txt\"c", "--count"},
     "find \"$1\" -iname '*7.txt'",
     "find -iname"},
    {"a tenth by name, path",
     {"find", "kMDItemFSName == \"*7.txt\"c", "--show", kPaths},
     "find \"$1\" -iname '*7.txt'",
     "find -iname"},
    {"path, sorted by name",
     {"find", kAll, "--show", kPaths, "--sort", "kMDItemFSName"},
     "find \"$1\" -mindepth 1 -printf '%f\\t%p\\n' | sort",
     "find | sort"},
};

Command shotlightIn(const Row& row, const std::string& folder) {
  Command command = {SHOTLIGHT};
  command.insert(command.end(), row.shotlight.begin(), row.shotlight.end());
  command.insert(command.end(), {"--in", folder});
  return command;
}

Command otherIn(const Row& row, const std::string& folder) {
  return {"sh", "-c", row.other, "sh", folder};
}

bench::Usage runOrEnd(const Command& command) {
  const bench::Usage usage = bench::run(command);
  if (usage.status == 0) return usage;
  std::fprintf(stderr, "bench-command: %s failed: %s\n", command.front().c_str(), usage.errors.c_str());
  std::exit(1);
}

double median(std::vector<double> numbers) {
  std::sort(numbers.begin(), numbers.end());
  return numbers[numbers.size() / 2];
}

void compare(const Row& row, const std::string& folder) {
  std::vector<double> ours, theirs, ratios;
  double megabytes = 0;
  for (int round = 0; round < kRounds; ++round) {
    const bench::Usage shotlight = runOrEnd(shotlightIn(row, folder));
    ours.push_back(shotlight.seconds);
    theirs.push_back(runOrEnd(otherIn(row, folder)).seconds);
    ratios.push_back(ours.back() / theirs.back());
    megabytes = std::max(megabytes, shotlight.megabytes);
  }
  std::printf("%-26s %7.3f s %7.3f s  %6.2f times %-13s %6.1f MB", row.what, bench::best(ours),
              bench::best(theirs), median(ratios), row.otherName, megabytes);
}

}  // namespace

int main(int argc, char** argv) {
  const int files = bench::countFrom("bench-command", argc, argv, 100000);
  const bench::Tree tree("bench-command", files);
  const bench::Tree few("bench-command", kFewFiles), more("bench-command", kMoreFiles);
  std::printf("%d files; processor time, best of %d rounds; the ratio is the median of each round's\n", files,
              kRounds);
  for (const Row& row : kRows) {
    compare(row, tree.path());
    const auto each = bench::instructionsEach(shotlightIn(row, few.path()), shotlightIn(row, more.path()),
                                              kMoreFiles - kFewFiles);
    if (each) std::printf("  %6.0f instructions a file", *each);
    std::printf("\n");
    std::fflush(stdout);
  }
  for (const int results : {10000, 20000, 40000}) {
    const bench::Tree followed("bench-command", results);
    const auto each = bench::instructionsEach({LIVE_CHANGE, followed.path(), "10"},
                                              {LIVE_CHANGE, followed.path(), "60"}, 50);
    if (!each) break;
    std::printf("a file added to %6d results: %6.0f instructions\n", results, *each);
  }
}
