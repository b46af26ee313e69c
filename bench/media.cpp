// What queries for the content of photos, songs and documents cost, the first time and later, each beside
// what people would type instead: exiftool over all the files, with as many processes as there are
// processors, and find. Usage: bench-media [FILES]; 2,000 unless said otherwise.
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "bench/media_files.h"
#include "bench/processes.h"
#include "bench/tree.h"

namespace {

using Command = std::vector<std::string>;

constexpr int kFirstRounds = 3, kLaterRounds = 25;

Command shell(const std::string& script, const std::string& folder, const std::string& more = "") {
  return {"sh", "-c", script, "sh", folder, more};
}

bench::Usage runOrEnd(const Command& command) {
  const bench::Usage usage = bench::run(command);
  if (usage.status == 0) return usage;
  std::fprintf(stderr, "bench-media: %s failed: %s\n", command.front().c_str(), usage.errors.c_str());
  std::exit(1);
}

double median(std::vector<double> numbers) {
  std::ranges::sort(numbers);
  return numbers[numbers.size() / 2];
}

struct Measured {
  double ours, theirs;  // seconds, the median of the rounds
};

// Pairs the commands in each round.
Measured compare(const char* what, const Command& ours, const Command& theirs, const char* name, int rounds,
                 const Command& before) {
  std::vector<double> own, others, ratios, processor;
  for (int round = 0; round < rounds; ++round) {
    if (!before.empty()) runOrEnd(before);
    const bench::Usage mine = runOrEnd(ours);
    const bench::Usage other = runOrEnd(theirs);
    own.push_back(mine.elapsed);
    others.push_back(other.elapsed);
    ratios.push_back(mine.elapsed / other.elapsed);
    processor.push_back(mine.seconds / other.seconds);
  }
  std::printf("%-26s %8.4f s %8.4f s %6.2f times %-9s %6.2f in processor time\n", what, median(own),
              median(others), median(ratios), name, median(processor));
  std::fflush(stdout);
  return {median(own), median(others)};
}

void compareQuery(const char* what, const char* query, const std::string& folder, int files) {
  const Command ours = {SHOTLIGHT, "find", query, "--count", "--in", folder};
  const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
  const std::string share = std::to_string((static_cast<unsigned>(files) + processors - 1) / processors);
  const Command exiftool = shell("find \"$1\" -type f -print0 | xargs -0 -P " + std::to_string(processors) +
                                     " -n \"$2\" exiftool -q -j -fast",
                                 folder, share);
  const Command find = {"find", folder, "-printf", "%s %T@ %p\\n"};
  const Measured first = compare((std::string(what) + ", first").c_str(), ours, exiftool, "exiftool",
                                 kFirstRounds, {SHOTLIGHT, "store", "--clear"});
  const Measured later =
      compare((std::string(what) + ", later").c_str(), ours, find, "find", kLaterRounds, {});
  std::printf("%-26s %8.0f times faster than the first\n", "", first.ours / later.ours);
}

}  // namespace

int main(int argc, char** argv) {
  const int files = bench::countFrom("bench-media", argc, argv, 2000);
  const bench::Tree tree("bench-media", files, bench::media);
  const bench::Tree cache("bench-media", 1);
  ::setenv("XDG_CACHE_HOME", cache.path().c_str(), 1);
  std::printf("%d photos, songs and documents; the median of %d rounds first, %d later; of wall time\n",
              files, kFirstRounds, kLaterRounds);
  compareQuery("ISO speed", "kMDItemISOSpeed > 100", tree.path(), files);
  compareQuery("text", "kMDItemTextContent == \"harbour\"c", tree.path(), files);
}
