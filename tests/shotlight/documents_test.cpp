// What the documents for people who write host code show is so: each program in them, run in a copy of
// examples/library, prints what stands below it.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "tests/shotlight/documented_programs.h"
#include "tests/shotlight/run.h"
#include "tests/support/sanitizers.h"

namespace {

std::string contentOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << file;
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string mistakeIn(const std::string& document) {
  try {
    programsOf(document);
  } catch (const DocumentError& error) {
    return error.what();
  }
  return "none";
}

struct Surroundings {
  std::string plugin;
  std::string zone;
};

// What a document shows must be so in every time zone. The dylib is not instrumented: the build without
// sanitizers runs it.
std::vector<Surroundings> allSurroundings() {
  const Surroundings elf = {files.elf, "EAST-9"}, dylib = {files.dylib, "WEST8"};
  return underAddressSanitizer() ? std::vector{elf} : std::vector{dylib, elf};
}

class Documents : public testing::Test {
 protected:
  // What readers put into the store is read once for all programs.
  Launch launchOf(const Surroundings& surroundings, const std::string& text,
                  const std::string& folder) const {
    return {.arguments = {"program", "--plugin", surroundings.plugin, scratch_.file("program", text)},
            .folder = folder,
            .environment = {"XDG_CACHE_HOME=" + scratch_.folder("cache"), "TZ=" + surroundings.zone}};
  }

  std::string copyOfLibrary(const std::string& name) const {
    const std::string folder = scratch_.at(name);
    std::filesystem::remove_all(folder);
    std::filesystem::copy(files.library, folder, std::filesystem::copy_options::recursive);
    return folder;
  }

  // The command is given when the program has printed its first line.
  Result runWith(const std::string& command, const Launch& launch) const {
    Running program(launch);
    EXPECT_TRUE(program.waitUntil([](const std::string& output) { return !output.empty(); }));
    EXPECT_EQ(std::system(("cd '" + launch.folder + "' && " + command).c_str()), 0) << command;
    return program.finish();
  }

  void expectOutputs(const std::string& document, const Surroundings& surroundings) const {
    SCOPED_TRACE(surroundings.plugin);
    const auto programs = programsOf(contentOf(document));
    EXPECT_GT(programs.size(), 1U);
    const std::string unchanged = copyOfLibrary("unchanged");
    for (const DocumentedProgram& program : programs) {
      SCOPED_TRACE(document + ':' + std::to_string(program.line));
      const std::string command = commandIn(program.text);
      const std::string folder = command.empty() ? unchanged : copyOfLibrary("changed");
      const Launch launch = launchOf(surroundings, program.text, folder);
      const Result result = command.empty() ? run(launch) : runWith(command, launch);
      EXPECT_EQ(result.output, program.output);
      EXPECT_EQ(result.errors, "");
      EXPECT_EQ(result.status, 0);
    }
  }

  const ScratchFolder scratch_;
};

TEST_F(Documents, ShowProgramsWithWhatTheyPrint) {
  const auto folder = std::filesystem::path(files.library).parent_path().parent_path() / "docs";
  for (const Surroundings& surroundings : allSurroundings()) expectOutputs(folder / "guide.md", surroundings);
  expectOutputs(folder / "host-programs.md", allSurroundings().front());
  // Its many examples call each member once, which other tests do on both binaries: one is enough.
  expectOutputs(folder / "reference.md", allSurroundings().front());
}

// How long it took is otherwise each time, and the project may lie anywhere. On a slow machine a line tells
// how far the search is, until it is done.
std::string comparable(const std::string& output, const std::string& root) {
  const std::string left = std::regex_replace(output, std::regex("\r[^\r\n]*\x1B\\[K"), "");
  const std::string timed = std::regex_replace(left, std::regex(R"(\b\d+\.\d{3} s\b)"), "TIME");
  std::string text;
  size_t begin = 0;
  for (size_t at; (at = timed.find(root, begin)) != std::string::npos; begin = at + root.size())
    text += timed.substr(begin, at - begin) + "/home/you/SpotlightZNK";
  return text + timed.substr(begin);
}

TEST_F(Documents, ShowCommandsOverTheExamplesWithWhatTheyPrint) {
  const auto root = std::filesystem::path(exampleLibrary()).parent_path().parent_path();
  const std::string cache = "XDG_CACHE_HOME=" + scratch_.folder("cache");
  // On a terminal, what a command prints and its errors come in the order in which they are seen.
  const auto printedBy = [&](const std::string& arguments) {
    return run({.arguments = {"-c", "exec \"$SHOTLIGHT\" " + arguments + " 2>&1"},
                .folder = root,
                .output = Output::terminal,
                .program = "/bin/sh",
                .environment = {"SHOTLIGHT=" + files.program, cache},
                .columns = 200})
        .output;
  };
  for (const char* name : {"README.md", "docs/using.md"}) {
    int tried = 0;
    for (const DocumentedProgram& command : commandsOf(contentOf(root / name))) {
      if (command.text.find(" examples/") == std::string::npos) continue;  // over somebody's own files
      SCOPED_TRACE(name + (':' + std::to_string(command.line)));
      EXPECT_EQ(comparable(printedBy(command.text), root), comparable(command.output, root));
      ++tried;
    }
    EXPECT_GT(tried, 1) << name;
  }
}

TEST(DocumentsCheck, TakesCommandsAndTheirOutputs) {
  const auto commands =
      commandsOf("a\n\n    $ ./run find 'b c'\n    1\n      2\n    $ ./run keys\n\n    $ other\nd\n");
  ASSERT_EQ(commands.size(), 2U);
  EXPECT_EQ(commands[0].line, 3);
  EXPECT_EQ(commands[0].text, "find 'b c'");
  EXPECT_EQ(commands[0].output, "1\n  2\n");
  EXPECT_EQ(commands[1].output, "");
}

TEST(DocumentsCheck, TakesProgramsAndTheirOutputs) {
  const auto programs =
      programsOf("a\n```\n+--+\n```\n```basic\nPrint 1\n\nPrint 2\n```\n\n```text\n1\n2\n```\nb\n");
  ASSERT_EQ(programs.size(), 1U);
  EXPECT_EQ(programs[0].line, 5);
  EXPECT_EQ(programs[0].text, "Print 1\n\nPrint 2\n");
  EXPECT_EQ(programs[0].output, "1\n2\n");
}

TEST(DocumentsCheck, LeavesNoBlockOut) {
  const std::string program = "```basic\nPrint 1\n```\n", output = "```text\n1\n```\n";
  EXPECT_EQ(mistakeIn(program + output), "none");
  EXPECT_EQ(mistakeIn(program), "line 1: no output follows this program");
  EXPECT_EQ(mistakeIn(program + "prints\n" + output), "line 1: no output follows this program");
  EXPECT_EQ(mistakeIn("\n" + program + program + output), "line 2: no output follows this program");
  EXPECT_EQ(mistakeIn(output), "line 1: nobody runs a block of text here");
  EXPECT_EQ(mistakeIn("```sh\nls\n```\n"), "line 1: nobody runs a block of sh here");
  EXPECT_EQ(mistakeIn("so:\n\n    Print 1\n"), "line 3: a block that is only indented isn't run");
  EXPECT_EQ(mistakeIn("```basic\nPrint 1\n"), "line 1: this block doesn't end");
}

TEST(DocumentsCheck, FindsTheCommandForTheMeanwhile) {
  EXPECT_EQ(commandIn("Print 1\n// meanwhile: rm 'a b'; ls\nPrint 2\n"), "rm 'a b'; ls");
  EXPECT_EQ(commandIn("Print 1\n"), "");
}

}  // namespace
