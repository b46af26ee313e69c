// macho-link: its command line, and the files that it names.
#include "tests/macho/toolbox.h"

namespace {

using toolbox::Outcome;

class LinkerCommandLine : public toolbox::Workshop {};

TEST_F(LinkerCommandLine, HelpExplainsTheOptionsAndTheImportList) {
  const Outcome help = toolbox::run({toolbox::linker(), "--help"});
  EXPECT_EQ(0, help.status);
  for (const char* word : {"-o OUT", "-install_name", "-imports", "-exported", "-current_version",
                           "-minimum-system", "library "}) {
    EXPECT_NE(std::string::npos, help.output.find(word)) << word;
  }
}

TEST_F(LinkerCommandLine, WhatIsMissingOrWrongIsSaidWithStatus2) {
  struct Row {
    std::vector<std::string> words;
    const char* message;
  };
  const Row rows[] = {
      {{}, "no output is named; add -o OUT"},
      {{"-o", "x"}, "the dylib has no name of its own; add -install_name NAME"},
      {{"-o", "x", "-install_name", "n"}, "there is no list of imports; add -imports LIST"},
      {{"-o", "x", "-install_name", "n", "-imports", "i"}, "nothing is exported; add -exported SYMBOL"},
      {{"-o", "x", "-install_name", "n", "-imports", "i", "-exported", "_e"},
       "there is nothing to link; name the objects"},
      {{"-o", "x", "-o", "y"}, "-o is given twice; remove one of them"},
      {{"-o"}, "-o stands at the end; write its value behind it"},
      {{"-frobnicate"}, "unknown option -frobnicate; see --help"},
      {{"-minimum-system", "ten"}, "ten is not a version; write it as 10.6"},
      {{"-current_version", "1.2.3.4"}, "1.2.3.4 is not a version; write it as 10.6"},
      {{"-minimum-system", "10.256"}, "10.256 is not a version; write it as 10.6"},
      {{"-minimum-system", "10.6."}, "10.6. is not a version; write it as 10.6"},
  };
  for (const Row& row : rows) {
    std::vector<std::string> command = {toolbox::linker()};
    command.insert(command.end(), row.words.begin(), row.words.end());
    const Outcome result = toolbox::run(command);
    EXPECT_EQ(2, result.status) << row.message;
    EXPECT_EQ(std::string("macho-link: ") + row.message + "\n", result.output);
  }
}

TEST_F(LinkerCommandLine, AnObjectThatIsNotThereIsNamed) {
  const Outcome result = link({path("none.o")}, {});
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("macho-link: " + path("none.o") +
                ": can't be read: No such file or directory; check the name and the permissions\n",
            result.output);
}

TEST_F(LinkerCommandLine, AFolderInPlaceOfAnObjectIsNamed) {
  const Outcome result = link({path("")}, {});
  EXPECT_EQ(1, result.status);
  EXPECT_EQ(
      "macho-link: " + path("") + ": can't be read: Is a directory; check the name and the permissions\n",
      result.output);
}

TEST_F(LinkerCommandLine, AnOutputThatCanNotBeWrittenIsNamedAndLeavesNothingBehind) {
  const std::string object = compile("a", "EXPORT int entry() { return 1; }");
  const std::string output = path("no/such/folder.dylib");
  const Outcome result = toolbox::run({toolbox::linker(), "-o", output, "-install_name", "n", "-imports",
                                       importList({}), "-exported", "_entry", object});
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("macho-link: " + output +
                ": can't be written: No such file or directory; check that the folder exists and has room\n",
            result.output);
}

TEST_F(LinkerCommandLine, AFailedLinkLeavesTheOldOutputAlone) {
  write("test.dylib", "old");
  EXPECT_EQ(1, link({path("none.o")}, {}).status);
  EXPECT_EQ("old", toolbox::readFile(path("test.dylib")));
}

TEST_F(LinkerCommandLine, AnImportListIsReadLineByLine) {
  struct Row {
    const char* text;
    const char* message;
  };
  const Row rows[] = {
      {"_a\n", ":1: has the symbol _a before any library; write its library first"},
      {"# x\nlibrary /l 1 1\n_a _b\n", ":3: has words after the symbol _a; write one symbol to a line"},
      {"library /l 1 1\n_a # first\n_a\n", ":3: has the symbol _a a second time; remove one of them"},
      {"library /l 1 1\n_a\nlibrary /l 1 1\n", ":3: names a library a second time; merge the two"},
      {"library /l 1\n",
       ":1: is not of the form: library INSTALL-NAME CURRENT COMPATIBILITY [weak]; correct it"},
      {"library /l 1 1 strong\n",
       ":1: is not of the form: library INSTALL-NAME CURRENT COMPATIBILITY [weak]; correct it"},
      {"library /l 1 70000\n",
       ":1: is not of the form: library INSTALL-NAME CURRENT COMPATIBILITY [weak]; correct it"},
  };
  const std::string object = compile("a", "EXPORT int entry() { return 1; }");
  for (const Row& row : rows) {
    const std::string list = write("list.txt", row.text);
    const Outcome result = toolbox::run({toolbox::linker(), "-o", path("out"), "-install_name", "n",
                                         "-imports", list, "-exported", "_entry", object});
    EXPECT_EQ(1, result.status) << row.text;
    EXPECT_EQ("macho-link: " + list + row.message + "\n", result.output);
  }
}

}  // namespace
