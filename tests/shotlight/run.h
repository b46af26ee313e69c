// Running the program, and what came of it.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"
#include "tests/support/texts.h"

// The files that the tests are about, from the test program's own command line.
struct Files {
  std::string program;
  std::string dylib;
  std::string elf;
  std::string emptyPlugin;   // an ELF plug-in that registers nothing
  std::string otherLibrary;  // an ELF library that is no plug-in
  std::string library;       // the folder of examples
  std::string gdbScript;     // what tells gdb of Mach-O images
};
extern Files files;

std::string exampleLibrary();  // that folder, as shotlight names what is in it

enum class Output { pipe, terminal, closed, full };

struct Launch {
  std::vector<std::string> arguments;  // after the program's name
  std::string folder = {};             // to run in, however long its path; empty: the test's own
  Output output = Output::pipe;
  Output errors = Output::pipe;
  bool unprivileged = false;  // a root that must obey the permissions of files
  std::string program = files.program;
  // "NAME=value", beside the test's own. Unless they are here, XDG_CACHE_HOME is an empty folder of this run,
  // the terminal is a dumb one, and nothing is said of colours.
  std::vector<std::string> environment = {};
  unsigned short columns = 0;  // of the terminal; 0: it doesn't say
  int pendingSignal = 0;       // sent before the program starts, and blocked until then
};

struct Result {
  int status = -1;  // the exit status; 128 and the number of the signal that ended it
  std::string output;
  std::string errors;
};
std::ostream& operator<<(std::ostream& out, const Result& result);

// A program that says nothing for a minute is killed.
Result run(const Launch& what);

// A program that goes on while the test does something.
class Running {
 public:
  explicit Running(const Launch& what);
  ~Running();
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  // Until what the program has printed to standard output, as far as its lines are complete, is enough. False
  // when it ended before.
  bool waitUntil(const std::function<bool(const std::string& output)>& enough);
  bool waitForLine(const std::string& line);
  void send(int signal);
  Result finish();  // waits for its end

 private:
  bool readSome();

  const ScratchFolder cache_;
  pid_t child_;
  int descriptors_[2];  // its output and its errors
  Result result_;
};

// `find` with these arguments, its output a pipe.
Result find(std::vector<std::string> arguments);

std::vector<std::string> lines(const std::string& text);

// Status 2, nothing printed, and exactly this after "shotlight: " on standard error.
void expectError(const Result& result, const std::string& message);

// What a text is like. A pattern is a POSIX extended regular expression for the whole text.
testing::AssertionResult startsWith(const std::string& text, const std::string& start);
testing::AssertionResult matches(const std::string& text, const std::string& pattern);
