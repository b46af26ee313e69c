// How long people wait for what they type: shotlight beside find, fd and exiftool, from the start of a
// command to its end, paired in each round. Prints the figures that docs/pictures/draw.py makes a plot of:
// lines of fields that tabs separate. Usage: bench-typed [FILES]; 100,000 unless said otherwise, and one
// photo, song or document for each 50.
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bench/media_files.h"
#include "bench/processes.h"
#include "bench/tree.h"

namespace {

constexpr int kRounds = 5;
constexpr int kFilesToOneOfMedia = 50;

using Command = std::vector<std::string>;

struct Typed {
  const char* text;  // as people type it, without the folder
  Command command;
  std::vector<double> seconds;  // of each round
};

[[noreturn]] void end(const std::string& why) {
  std::fprintf(stderr, "bench-typed: %s\n", why.c_str());
  std::exit(1);
}

double median(std::vector<double> numbers) {
  std::ranges::sort(numbers);
  return numbers[numbers.size() / 2];
}

// What is compared must have found the same.
void expectLines(const Typed& typed, size_t lines, size_t expected) {
  if (lines == expected) return;
  end(std::string(typed.text) + " found " + std::to_string(lines) + " files, and another command " +
      std::to_string(expected));
}

size_t runRound(std::vector<Typed>& commands) {
  size_t expected = 0;
  for (Typed& typed : commands) {
    const bench::Usage usage = bench::run(typed.command);
    if (usage.status == 127) end(typed.command.front() + " can't be run; install it");
    if (usage.status != 0) end(std::string(typed.text) + " failed: " + usage.errors);
    if (&typed == &commands.front()) expected = usage.lines;
    expectLines(typed, usage.lines, expected);
    typed.seconds.push_back(usage.elapsed);
  }
  return expected;
}

void compare(const char* what, int files, std::vector<Typed> commands, const std::function<void()>& before) {
  size_t found = 0;
  for (int round = 0; round < kRounds; ++round) {
    before();
    found = runRound(commands);
  }
  std::printf("chart\t%s\t%d\t%zu\n", what, files, found);
  for (const Typed& typed : commands) std::printf("bar\t%s\t%.3f\n", typed.text, median(typed.seconds));
  std::fflush(stdout);
}

void compareNames(int files) {
  const bench::Tree tree("bench-typed", files);
  const std::string& folder = tree.path();
  compare("files by name", files,
          {{"shotlight find '*7.txt'", {SHOTLIGHT, "find", "*7.txt", "--in", folder}, {}},
           {"find -iname '*7.txt'", {"find", folder, "-iname", "*7.txt"}, {}},
           {"fd --glob '*7.txt'", {"fdfind", "--glob", "*7.txt", folder}, {}}},
          [] {});
}

void compareMedia(int files) {
  const bench::Tree tree("bench-typed", files, bench::media);
  const std::string& folder = tree.path();
  const Command ours = {SHOTLIGHT, "find", "kMDItemISOSpeed > 400", "--in", folder};
  const Command exiftool = {"exiftool", "-q", "-q", "-r", "-if", "$ISO > 400", "-p", "$Directory/$FileName",
                            folder};
  compare("files by ISO speed", files,
          {{"shotlight find 'kMDItemISOSpeed > 400'", ours, {}},
           {"the same, again", ours, {}},
           {"exiftool -if '$ISO > 400'", exiftool, {}},
           {"the same, again", exiftool, {}}},
          [] {
            if (bench::run({SHOTLIGHT, "store", "--clear"}).status != 0) end("the store can't be removed");
          });
}

}  // namespace

int main(int argc, char** argv) {
  const int files = bench::countFrom("bench-typed", argc, argv, 100000);
  const bench::Tree cache("bench-typed", 1);
  ::setenv("XDG_CACHE_HOME", cache.path().c_str(), 1);
  std::printf(
      "# How long commands take, from start to end: seconds, the median of the rounds. Written by "
      "bench-typed.\n");
  std::printf("rounds\t%d\nprocessors\t%u\n", kRounds, std::thread::hardware_concurrency());
  compareNames(files);
  compareMedia(std::max(files / kFilesToOneOfMedia, 1));
}
