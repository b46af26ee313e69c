// The line that tells people who wait how far a search is: on a terminal alone.
#include <sched.h>
#include <sys/stat.h>

#include <cstdlib>
#include <regex>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr int kPhotos = 25;  // each of which takes the reader a tenth of a second

// Programs that are started now see one processor: there is one reader then, and its time is that of the
// search.
class OneProcessor {
 public:
  OneProcessor() {
    EXPECT_EQ(sched_getaffinity(0, sizeof before_, &before_), 0);
    cpu_set_t one;
    CPU_ZERO(&one);
    int first = 0;
    while (first < CPU_SETSIZE - 1 && !CPU_ISSET(first, &before_)) ++first;
    CPU_SET(first, &one);
    EXPECT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
  }
  ~OneProcessor() { sched_setaffinity(0, sizeof before_, &before_); }

 private:
  cpu_set_t before_;
};

struct Shown {
  int looked;
  int perSecond;
  int remaining;  // 0 where nothing is told of it
};

std::vector<Shown> shownIn(const std::string& errors) {
  static const std::regex kLine(
      "\r([0-9]+) files looked at, ([0-9]+) a second(; ([0-9]+)( or more)? are still to be read)?\x1B\\[K");
  std::vector<Shown> shown;
  for (std::sregex_iterator it(errors.begin(), errors.end(), kLine), end; it != end; ++it) {
    shown.push_back({std::stoi((*it)[1]), std::stoi((*it)[2]), (*it)[3].matched ? std::stoi((*it)[4]) : 0});
  }
  return shown;
}

class ProgressLine : public testing::Test {
 protected:
  ProgressLine() {
    for (int i = 0; i < kPhotos; ++i) scratch_.file("photos/" + std::to_string(i) + ".jpg", "x");
    const std::string reader = scratch_.file("bin/perl", R"(#!/usr/bin/perl
$| = 1;
$/ = "\0";
print "ready\n";
while (<STDIN>) {
  select undef, undef, undef, 0.1;
  print "ok 0\n";
}
)");
    EXPECT_EQ(chmod(reader.c_str(), 0755), 0);
  }

  Result search(Output errors) {
    const OneProcessor one;
    return run({.arguments = {"find", "kMDItemPixelWidth > 0", "--in", scratch_.at("photos")},
                .errors = errors,
                .environment = {"PATH=" + scratch_.at("bin") + ':' + std::getenv("PATH"), "LC_ALL=C"}});
  }

  const ScratchFolder scratch_;
};

TEST_F(ProgressLine, TellsOnATerminalWhatIsStillToBeRead) {
  const Result result = search(Output::terminal);
  EXPECT_EQ(result.status, 1) << result;
  const std::vector<Shown> shown = shownIn(result.errors);
  ASSERT_GE(shown.size(), 2u) << result;
  for (size_t i = 0; i < shown.size(); ++i) {
    EXPECT_EQ(shown[i].looked + shown[i].remaining, kPhotos) << result;
    EXPECT_LE(shown[i].perSecond, shown[i].looked) << "a second has passed when it is first shown";
    if (i > 0) {
      EXPECT_LE(shown[i].remaining, shown[i - 1].remaining);
    }
  }
  EXPECT_GT(shown.back().perSecond, 0) << result;  // the first may come before the reader has answered
  EXPECT_LT(shown.back().remaining, shown.front().remaining) << result;
  // It is taken away before anything else is said.
  EXPECT_TRUE(matches(result.errors, "(\r[^\r\n]*\x1B\\[K)*\r\x1B\\[K0 results in [0-9.]+ s\n"));
}

TEST_F(ProgressLine, IsNotShownElsewhere) {
  const Result result = search(Output::pipe);
  EXPECT_EQ(result.status, 1) << result;
  EXPECT_TRUE(matches(result.errors, "0 results in [0-9.]+ s\n"));
}

}  // namespace
