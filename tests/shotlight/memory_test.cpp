// A machine that has too little memory: the program says so, however little it is, and is never killed.
#include "tests/shotlight/run.h"
#include "tests/support/sanitizers.h"
#include "tests/support/scratch_folder.h"

namespace {

constexpr int kMost = 60'000;  // KB of address space
constexpr int kScarce = 50'000;
constexpr int kTooLittleToStart = 127;  // the system's linker says so

Result runWith(int kilobytes, const std::vector<std::string>& arguments, const std::string& cache) {
  Launch what{
      .arguments = {"-c", "ulimit -v " + std::to_string(kilobytes) + "; exec \"$0\" \"$@\"", files.program},
      .program = "/bin/sh",
      .environment = {"XDG_CACHE_HOME=" + cache}};
  what.arguments.insert(what.arguments.end(), arguments.begin(), arguments.end());
  return run(what);
}

// Runs it with less and less memory. Answers how often it ended for want of it.
int sweep(const std::vector<std::string>& arguments) {
  const ScratchFolder cache;
  const Result usual = run({.arguments = arguments, .environment = {"XDG_CACHE_HOME=" + cache.path()}});
  EXPECT_LT(usual.status, 2) << usual;
  int failures = 0;
  for (int kilobytes = kMost; kilobytes > 0; kilobytes -= kilobytes > kScarce ? 3000 : 350) {
    SCOPED_TRACE(kilobytes);
    const Result result = runWith(kilobytes, arguments, cache.path());
    if (result.status == kTooLittleToStart) break;
    if (result.status == usual.status) {
      EXPECT_EQ(result.output, usual.output);
      continue;
    }
    ++failures;
    EXPECT_EQ(result.status, 2) << result;
    const bool saysSo =
        result.errors.find("memory") != std::string::npos ||
        result.errors.find("failed to map segment") != std::string::npos;  // the system's words
    EXPECT_TRUE(saysSo) << result;
    EXPECT_TRUE(startsWith(result.errors, "shotlight: "));
  }
  return failures;
}

TEST(TooLittleMemory, EndsEveryCommandWithAMessage) {
  if (underAddressSanitizer()) GTEST_SKIP() << "the sanitizers take all of the address space";
  const ScratchFolder folder;
  for (int i = 0; i < 3000; ++i) folder.file(std::to_string(i) + ".txt");
  const std::string all = "kMDItemFSName == \"*\"";
  EXPECT_GT(sweep({"find", all, "--in", folder.path(), "--sort", "kMDItemFSName:desc"}), 2);
  EXPECT_GT(sweep({"find", all, "--in", folder.path(), "--values", "kMDItemFSName"}), 2);
  EXPECT_GT(sweep({"find", all, "--in", folder.path(), "--live", "--for", "0"}), 2);
  sweep({"find", "kMDItemTextContent == \"x\"cdw", "--in", folder.path(), "--count", "--plugin", files.elf});
  sweep({"attrs", folder.at("1.txt"), folder.at("2.txt"), "--json"});
  sweep({"store"});
}

}  // namespace
