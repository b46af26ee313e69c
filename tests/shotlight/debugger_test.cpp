// The dylib in gdb, as ./run --debug starts it.
#include <filesystem>
#include <fstream>
#include <map>

#include "tests/shotlight/run.h"
#include "tests/support/sanitizers.h"

namespace {

// The lines of a function, from its first to the end of its body, numbered from 1; zeros when it isn't there.
struct Lines {
  int first = 0, last = 0;
};
Lines linesOf(const std::string& function, const std::string& path) {
  std::ifstream source(path);
  Lines found;
  int number = 0;
  for (std::string line; std::getline(source, line);) {
    ++number;
    if (!found.first && line.find(" " + function + "(") != std::string::npos && line.back() == '{')
      found.first = number;
    if (found.first && line == "}") {
      found.last = number;
      break;
    }
  }
  return found;
}

Result gdb(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"gdb", "-nx", "-batch", "-iex", "set debuginfod enabled off"});
  return run({.arguments = std::move(arguments), .program = "/usr/bin/env"});
}

// Why no program can be debugged on this machine; empty when it can.
std::string obstacle() {
  if (gdb({"--version"}).status != 0) return "gdb is not installed";
  const Result result = gdb({"-ex", "run", "/bin/true"});
  if (result.output.find("exited normally") != std::string::npos) return "";
  return "gdb can't run a program here: " + result.errors;
}

TEST(Debugger, StopsInAMethodOfTheDylibAtItsSourceLine) {
  if (underAddressSanitizer())
    GTEST_SKIP() << "the dylib is the same in both builds, and is debugged in the plain one";
  if (const std::string why = obstacle(); !why.empty()) GTEST_SKIP() << why;
  const std::string method = "rbMDQueryExecute";
  const Result result =
      gdb({"-x", files.gdbScript, "-ex", "break " + method, "-ex", "run", "-ex", "backtrace",
           // Once the dylib is gone, nothing of it is known any more.
           "-ex", "break -qualified exit", "-ex", "continue", "-ex", "info line " + method, "--args",
           files.program, "find", "kMDItemFSName == \"*\"", "--in", files.library, "--plugin", files.dylib});

  ASSERT_TRUE(
      matches(result.output,
              ".*#0  " + method + " \\(self=0x[0-9a-f]+, flags=0\\) at /.*/query/query\\.cpp:[0-9]+\n.*"));
  const size_t place = result.output.find(") at /", result.output.find("#0  " + method)) + 5;
  const size_t colon = result.output.find(':', place);
  const Lines expected = linesOf(method, result.output.substr(place, colon - place));
  ASSERT_GT(expected.last, 0) << result;
  const int line = std::stoi(result.output.substr(colon + 1));
  EXPECT_GT(line, expected.first);
  EXPECT_LT(line, expected.last);

  EXPECT_TRUE(matches(result.output, ".*#[0-9]+ .*find \\(\\) at .*find\\.cpp:.*"));
  EXPECT_TRUE(matches(result.output, ".*#[0-9]+ .*main \\(\\) at .*main\\.cpp:.*"));

  EXPECT_PRED_FORMAT2(testing::IsSubstring, "Breakpoint 2, ", result.output);
  EXPECT_PRED_FORMAT2(testing::IsNotSubstring, "Line ", result.output) << result;
}

// The functions of an object, each with the names of its instructions. With debug information clang writes
// the same functions in another order; the debugger finds them by their names.
std::map<std::string, std::string> functionsOf(const std::string& object) {
  std::map<std::string, std::string> functions;
  std::string* function = nullptr;
  for (const std::string& line :
       lines(run({.arguments = {"-d", "--no-show-raw-insn", "--no-leading-addr", object},
       .program = LLVM_OBJDUMP})
                 .output)) {
    if (line.ends_with(">:")) function = &functions[line];
    const size_t start = line.find_first_not_of(" \t");
    if (!function || line.ends_with(":") || start == std::string::npos) continue;
    const std::string name = line.substr(start, line.find_first_of(" \t", start) - start);
    if (name != "nop" && name != "nopl" && name != "nopw") *function += name + ' ';  // between functions
  }
  return functions;
}

TEST(Debugger, IsToldOfTheCodeThatTheDylibHas) {
  if (underAddressSanitizer())
    GTEST_SKIP() << "the dylib is the same in both builds, and is debugged in the plain one";
  namespace fs = std::filesystem;
  const fs::path build = fs::path(files.dylib).parent_path().parent_path();
  const fs::path shipped = build / "SpotlightDylib.macho", debugged = build / "SpotlightDylib.macho-debug";
  size_t count = 0;
  for (const auto& entry : fs::recursive_directory_iterator(debugged)) {
    if (entry.path().extension() != ".o") continue;
    const auto functions = functionsOf(entry.path());
    EXPECT_EQ(functionsOf(shipped / fs::relative(entry.path(), debugged)), functions) << entry.path();
    count += functions.size();
  }
  EXPECT_GT(count, 200u);
}

}  // namespace
