// Ctrl-C, being told to end, and printing for nobody.
#include <signal.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/shotlight/run.h"
#include "tests/support/sanitizers.h"
#include "tests/support/scratch_folder.h"

namespace {

// Each signal is there before the program starts, so that it comes in the middle of the first thing that
// waits for it.
class Interrupted : public testing::TestWithParam<int> {
 protected:
  Interrupted() {
    for (int i = 0; i < 100; ++i) scratch_.file("folder " + std::to_string(i) + "/a.txt");
  }

  Result interrupt(std::vector<std::string> arguments) {
    return run({.arguments = std::move(arguments), .folder = scratch_.path(), .pendingSignal = GetParam()});
  }

  ScratchFolder scratch_;
};

TEST_P(Interrupted, SearchPrintsNothingAndGivesBackEverything) {
  for (const auto& options : std::vector<std::vector<std::string>>{{}, {"--count"}, {"--live"}}) {
    for (const std::string& plugin : {files.dylib, files.elf}) {
      std::vector<std::string> arguments = {"find", "kMDItemFSName == \"*.txt\"", "--plugin", plugin};
      arguments.insert(arguments.end(), options.begin(), options.end());
      const Result result = interrupt(arguments);
      EXPECT_EQ(result.status, 128 + GetParam()) << result;
      EXPECT_EQ(result.output, "");
      EXPECT_EQ(result.errors, "shotlight: interrupted\n");  // an object that is left would be named here
    }
  }
}

TEST_P(Interrupted, AttributesAreStillWellFormed) {
  const Result result = interrupt({"attrs", "folder 1/a.txt", "--json"});
  EXPECT_EQ(result.status, 128 + GetParam()) << result;
  EXPECT_EQ(result.output, "[]\n");
  EXPECT_EQ(result.errors, "shotlight: interrupted\n");
}

INSTANTIATE_TEST_SUITE_P(By, Interrupted, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& info) { return std::string("SIG") + sigabbrev_np(info.param); });

using Clock = std::chrono::steady_clock;

// The program ends a quarter of a second after a signal that it doesn't heed by itself; machines are slow,
// and the sanitizers make them slower.
const auto kSoon = underAddressSanitizer() ? std::chrono::seconds(4) : std::chrono::seconds(1);

std::string textOfFile(const std::string& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

bool waitUntil(const std::function<bool()>& isSo) {
  const auto end = Clock::now() + std::chrono::minutes(1);
  while (!isSo() && Clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  return isSo();
}

// Gone, or dead and not yet taken note of.
bool isOver(const std::string& process) {
  const std::string record = textOfFile("/proc/" + process + "/stat");
  return record.empty() || record.find(") Z ") != std::string::npos;
}

// A reader that never answers.
class HungReader : public testing::TestWithParam<int> {
 protected:
  HungReader() {
    scratch_.file("photos/a.jpg", "x");
    const std::string reader =
        scratch_.file("bin/perl", "#!/bin/sh\necho $$ > " + scratch_.at("new") + " && mv " +
                                      scratch_.at("new") + ' ' + processFile_ + "\nexec sleep 1000\n");
    std::filesystem::permissions(reader, std::filesystem::perms::owner_all);
  }

  void expectPromptEnd(std::vector<std::string> arguments) {
    Running program({.arguments = std::move(arguments),
                     .environment = {"PATH=" + scratch_.at("bin") + ':' + std::getenv("PATH")}});
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(processFile_); }));
    const auto start = Clock::now();
    program.send(GetParam());
    const Result result = program.finish();
    EXPECT_LT(Clock::now() - start, kSoon);
    EXPECT_EQ(result.status, 128 + GetParam()) << result;
    EXPECT_EQ(result.errors, "shotlight: interrupted\n");
    const std::string reader = lines(textOfFile(processFile_)).at(0);
    EXPECT_TRUE(waitUntil([&] { return isOver(reader); })) << reader;
    std::filesystem::remove(processFile_);
  }

  const ScratchFolder scratch_;
  const std::string processFile_ = scratch_.at("process");
};

TEST_P(HungReader, HoldsNobodyUpAndDoesNotStayBehind) {
  expectPromptEnd({"find", "kMDItemISOSpeed > 0", "--in", scratch_.at("photos"), "--no-store"});
  expectPromptEnd({"attrs", scratch_.at("photos/a.jpg"), "--no-store"});
  expectPromptEnd({"find", "kMDItemFSName == \"*\"", "--in", scratch_.at("photos"), "--values",
                   "kMDItemISOSpeed", "--no-store"});
}

INSTANTIATE_TEST_SUITE_P(Interrupts, HungReader, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& info) { return std::string("SIG") + sigabbrev_np(info.param); });

// A shell runs it, with the program's name as $0.
Launch inShell(const ScratchFolder& folder, const std::string& script) {
  return {.arguments = {"-c", script, files.program}, .folder = folder.path(), .program = "/bin/sh"};
}

const std::string kLive = "\"$0\" find 'kMDItemFSName == \"*.txt\"' --live";

// Nothing changes there, so that nothing is printed after the first line.
TEST(NobodyReads, EndsALiveSearchAsPrintingWould) {
  const ScratchFolder folder;
  const std::string path = folder.file("a.txt");
  const Result result = run(inShell(folder, '(' + kLive + "; echo $? > status) | head -n 1"));
  EXPECT_EQ(result.output, "+ " + path + '\n');
  EXPECT_EQ(textOfFile(folder.at("status")), std::to_string(128 + SIGPIPE) + '\n');
}

TEST(NobodyReads, EndsALiveSearchThatWasStartedToIgnoreIt) {
  const ScratchFolder folder;
  folder.file("a.txt");
  const Result result = run(inShell(folder, "trap '' PIPE; (" + kLive + "; echo $? > status) | head -n 1"));
  EXPECT_EQ(textOfFile(folder.at("status")), std::to_string(128 + SIGPIPE) + '\n') << result;
}

TEST(IgnoredSignals, StayIgnored) {
  const ScratchFolder folder;
  const std::string path = folder.file("a.txt");
  Running program(inShell(folder, "trap '' INT; exec " + kLive + " --for 1"));
  ASSERT_TRUE(program.waitForLine("+ " + path));
  const auto start = Clock::now();
  program.send(SIGINT);
  EXPECT_EQ(program.finish().status, 0);
  EXPECT_GT(Clock::now() - start, std::chrono::milliseconds(300));
}

}  // namespace
