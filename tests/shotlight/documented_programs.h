// The programs that a document shows, and what it says that they print.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

struct DocumentedProgram {
  int line;  // of the document, where it begins
  std::string text;
  std::string output;
};

// What can't be run, or isn't compared with anything.
struct DocumentError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Of a document in Markdown: each block of code of the language "basic" is a program, and the block after it,
// of the language "text", is its output. Blocks without a language are pictures. Throws DocumentError for a
// program without output, an output without program, and any other block of code, also one that is only
// indented.
std::vector<DocumentedProgram> programsOf(const std::string& document);

// Of a document in Markdown: the arguments of each line "    $ ./run ARGUMENTS", and what stands below it.
std::vector<DocumentedProgram> commandsOf(const std::string& document);

// The command for the shell in a line "// meanwhile: COMMAND" of a program; empty when it has none.
std::string commandIn(const std::string& program);
