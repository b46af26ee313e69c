// The page about a dylib, and dylib-audit, which prints it, run as a child process.
#include "tests/audit/report.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdio>
#include <map>
#include <regex>
#include <sstream>

#include "tests/audit/altered.h"
#include "tests/audit/audit.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/scratch_folder.h"

namespace {

struct Printed {
  int status;
  std::string text;
};

// What the program prints to both of its outputs; the arguments are words of the shell.
Printed runAudit(const std::string& arguments, const std::string& folder = "/") {
  FILE* const pipe =
      popen(("cd " + folder + " && " + files.program + ' ' + arguments + " 2>&1").c_str(), "r");
  Printed printed = {-1, ""};
  if (!pipe) return printed;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) printed.text += static_cast<char>(c);
  const int status = pclose(pipe);
  printed.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return printed;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string reportOf(const std::string& dylib) {
  return audit::report(dylib, files.lists, audit::findings(dylib, files.lists));
}

// Without line breaks: a list may go on in the next line.
std::string joined(const std::string& report) {
  return std::regex_replace(report, std::regex("\n {4,}"), " ");
}

// Takes a line "  10.4: a, B{C, D}; 10.7 weak: e" apart: e is of 10.7, BC and BD of 10.4.
void readVersions(const std::string& line, std::map<std::string, std::string>& versions) {
  std::istringstream words(line);
  std::string version, beginning;
  for (std::string word; words >> word;) {
    if (word.starts_with("10.")) version = word.substr(0, word.find(':'));
    if (word.starts_with("10.") || word == "weak:") continue;
    if (const size_t brace = word.find('{'); brace != std::string::npos) {
      beginning = word.substr(0, brace);
      word.erase(0, brace + 1);
    }
    const size_t end = word.find_first_of(",;}");
    EXPECT_TRUE(versions.emplace(beginning + word.substr(0, end), version).second) << word;
    if (word.find('}') != std::string::npos) beginning.clear();
  }
}

class Report : public testing::Test {
 protected:
  void expectError(const std::string& arguments, const std::string& message) const {
    const Printed printed = runAudit(arguments);
    EXPECT_EQ(2, printed.status);
    EXPECT_EQ("dylib-audit: " + message + '\n', printed.text);
  }

  ScratchFolder scratch_;
};

TEST_F(Report, IsOnePageOfTheDylib) {
  const Printed printed = runAudit("--report '" + files.dylib + "'");
  EXPECT_EQ(0, printed.status) << printed.text;
  EXPECT_EQ(reportOf(files.dylib), printed.text);
  const auto lines = linesOf(printed.text);
  EXPECT_LE(lines.size(), 100u);
  for (const std::string& line : lines) EXPECT_LE(line.size(), 100u) << line;
}

TEST_F(Report, TellsWhatAMacLoads) {
  const std::string report = joined(reportOf(files.dylib));
  for (const char* part : {
           "I386 DYLIB ",
           ", for macOS 10.6 and later, ",
           "\nAudit: all is as it should be\n",
           "\nExports: REALPluginMain\n",
           "\nLoad commands: 3 LC_SEGMENT, LC_ID_DYLIB, LC_DYLD_INFO_ONLY,",
           "\n  __TEXT at 0x000000, r-x, ",
           "\nInitialisers: none;",
           "/CoreServices 41 (1) weak\n",
           "; 10.7 weak: CTRunDelegateGetTypeID\n",
           "\n  10.7 weak: kMDItem{ApplicationCategories,",
       }) {
    EXPECT_NE(std::string::npos, report.find(part)) << part << "\n" << report;
  }
  EXPECT_TRUE(std::regex_search(report, std::regex("__text 0x[0-9a-f]+ [0-9]+ 2\\^4")));
  EXPECT_TRUE(
      std::regex_search(report, std::regex("\nAddresses that the loader writes: [0-9]+ in __DATA\n")));
}

// Each import stands behind its version.
TEST_F(Report, HasEveryImport) {
  const std::string report = joined(reportOf(files.dylib));
  EXPECT_NE(std::string::npos, report.find("\nImports: 322,"));
  std::map<std::string, std::string> printed;
  for (const std::string& line : linesOf(report.substr(report.find("\nImports: ")))) {
    if (line.starts_with("  10.")) readVersions(line, printed);
  }
  std::map<std::string, std::string> expected;
  for (const auto& [symbol, version] : audit::introducedIn(files.lists)) expected[symbol.substr(1)] = version;
  EXPECT_EQ(expected, printed);
}

TEST_F(Report, IsOfAnyDylib) {
  const Printed printed = runAudit("--report '" + files.otherDylib + "'");
  EXPECT_EQ(1, printed.status);
  const std::string report = joined(printed.text);
  EXPECT_NE(std::string::npos, report.find("\nAudit: "));
  EXPECT_NE(std::string::npos,
            report.find("\n  it imports libSystem dyld_stub_binder, which is not listed\n"));
  EXPECT_NE(std::string::npos, report.find("LC_FUNCTION_STARTS"));
  EXPECT_NE(std::string::npos, report.find(" in __TEXT\n"));
}

TEST_F(Report, TellsWhatIsWrong) {
  std::string bytes = contents(files.dylib);
  const size_t name = bytes.find("__const", command(bytes, kSegment, "__DATA"));
  std::memcpy(&bytes[name], "__mod_init_func\0", 16);
  const Printed printed = runAudit("--report " + scratch_.file("altered.dylib", bytes));
  EXPECT_EQ(1, printed.status);
  EXPECT_NE(std::string::npos,
            printed.text.find("\nAudit: 1 finding\n  it has the section __mod_init_func\n"));
  EXPECT_NE(std::string::npos, printed.text.find("\nInitialisers: __mod_init_func\n"));
}

TEST_F(Report, IsTheSameWhereverTheFileIs) {
  const std::string name = "SpotlightZNK.dylib";
  const std::string bytes = contents(files.dylib);
  const std::string copy = scratch_.file("it's here/-x $HOME/" + name, bytes);
  EXPECT_EQ(reportOf(files.dylib), audit::report(copy, files.lists, audit::findings(copy, files.lists)));
  scratch_.file("-h", bytes);
  EXPECT_EQ(0, runAudit("--report -h", scratch_.path()).status);
}

TEST_F(Report, IsOfDylibsOnly) {
  const std::string file = "is no Mach-O file; name a dylib";
  const std::string text = scratch_.file("text", "hello"), empty = scratch_.file("empty");
  expectError("--report " + text, text + ": " + file);
  expectError("--report " + empty, empty + ": " + file);
  expectError("--report " + scratch_.at("none"),
              scratch_.at("none") + ": there is no such file; name a dylib");
  expectError("--report " + scratch_.path(), scratch_.path() + ": is no file; name a dylib");
  const std::string universal = scratch_.file("universal", std::string("\xCA\xFE\xBA\xBE\0\0\0\1", 8));
  expectError("--report " + universal,
              universal + ": holds several files; take out the one for i386 with lipo -thin i386");
  const std::string cut = scratch_.file("cut", contents(files.dylib).substr(0, 5000));
  const Printed printed = runAudit("--report " + cut);
  EXPECT_EQ(2, printed.status);
  EXPECT_TRUE(printed.text.starts_with("dylib-audit: " + cut + ": llvm-objdump can't read it: "))
      << printed.text;
}

TEST_F(Report, IsOfFilesThatMayBeRead) {
  const std::string locked = scratch_.file("locked", contents(files.dylib));
  ASSERT_EQ(0, ::chmod(locked.c_str(), 0));
  const OrdinaryUser user;
  try {
    audit::report(locked, files.lists, {});
    ADD_FAILURE() << "it was read";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(locked + ": can't be read; allow it, or name another file", error.what());
  }
}

TEST_F(Report, IsAskedForByItsName) {
  for (const char* arguments : {"", "--report", "--report a b", "a"}) {
    const Printed printed = runAudit(arguments);
    EXPECT_EQ(2, printed.status) << arguments;
    EXPECT_TRUE(printed.text.starts_with("usage: dylib-audit --report DYLIB\n")) << printed.text;
  }
  EXPECT_EQ(0, runAudit("--help").status);
}

}  // namespace
