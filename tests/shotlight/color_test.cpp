// The colours of names.
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

class Colors : public testing::Test {
 protected:
  Colors() {
    scratch_.folder("folder");
    scratch_.file("plain.txt");
    scratch_.file("program.sh");
    chmod(scratch_.at("program.sh").c_str(), 0755);
    scratch_.file("Picture.JPG");
    scratch_.link("link", "plain.txt");
    scratch_.link("dangling", "nowhere");
    mkfifo(scratch_.at("pipe").c_str(), 0600);
    scratch_.folder("open");
    chmod(scratch_.at("open").c_str(), 0777);
    scratch_.folder("sticky");
    chmod(scratch_.at("sticky").c_str(), 01777);
  }

  Launch colored(std::vector<std::string> more, std::vector<std::string> environment = {}) const {
    Launch what{.arguments = {"find", "kMDItemFSName == \"*\"", "--show", "kMDItemFSName"},
                .folder = scratch_.path(),
                .environment = std::move(environment)};
    what.arguments.insert(what.arguments.end(), more.begin(), more.end());
    return what;
  }

  // The colour of each name that has one.
  std::map<std::string, std::string> colors(std::vector<std::string> environment) const {
    std::map<std::string, std::string> result;
    for (const std::string& line : lines(run(colored({"--color=always"}, std::move(environment))).output)) {
      if (!line.starts_with("\x1B[")) continue;
      const size_t end = line.find('m');
      EXPECT_TRUE(line.ends_with("\x1B[0m")) << line;
      result[line.substr(end + 1, line.size() - end - 5)] = line.substr(2, end - 2);
    }
    return result;
  }

  bool isColored(const Launch& what) const { return run(what).output.find('\x1B') != std::string::npos; }

  const ScratchFolder scratch_;
};

using Expected = std::map<std::string, std::string>;

TEST_F(Colors, AreThoseOfLsWhereNothingIsSaid) {
  const Expected expected = {{"folder", "01;34"},   {"program.sh", "01;32"}, {"link", "01;36"},
                             {"dangling", "01;36"}, {"pipe", "33"},          {"open", "34;42"},
                             {"sticky", "30;42"}};
  EXPECT_EQ(colors({}), expected);
  EXPECT_EQ(colors({"LS_COLORS="}), expected);
}

TEST_F(Colors, AreThoseOfTheEnvironment) {
  EXPECT_EQ(colors({"LS_COLORS=di=1:ln=2:ex=3:or=4:pi=5:ow=6:tw=7:fi=8:*.jpg=9"}),
            (Expected{{"folder", "1"},
                      {"link", "2"},
                      {"program.sh", "3"},
                      {"dangling", "4"},
                      {"pipe", "5"},
                      {"open", "6"},
                      {"sticky", "7"},
                      {"plain.txt", "8"},
                      {"Picture.JPG", "9"}}));
}

// As dircolors writes them.
TEST_F(Colors, AreThoseOfLs) {
  const std::string definitions =
      "rs=0:di=01;34:ln=target:mh=00:pi=40;33:so=01;35:do=01;35:bd=40;33;01:cd=40;33;01:or=40;31;01:mi=00:su="
      "37;"
      "41:sg=30;43:ca=00:tw=0:ow=00:st=37;44:ex=01;32:*.txt=31:*n.txt=36:*.jpg=34:*.sh=33:";
  std::map<std::string, std::string> ls;
  const Result result = run({.arguments = {"--color=always", "-1"},
                             .folder = scratch_.path(),
                             .program = "/bin/ls",
                             .environment = {"LS_COLORS=" + definitions, "TERM=xterm"}});
  for (std::string line : lines(result.output)) {
    const std::string reset = "\x1B[0m";
    if (line.starts_with(reset)) line.erase(0, reset.size());
    if (!line.starts_with("\x1B[")) continue;
    const size_t end = line.find('m');
    ls[line.substr(end + 1, line.size() - end - 1 - reset.size())] = line.substr(2, end - 2);
  }
  ASSERT_GE(ls.size(), 5u) << result;
  EXPECT_EQ(colors({"LS_COLORS=" + definitions}), ls);
}

TEST_F(Colors, AreNothingButNumbers) {
  const Expected found =
      colors({"LS_COLORS=di=\x1B]0;x\a:ex=1m\x1B[2J:pi=\\e[2J:no equals:=:*=:ln=35:*.txt"});
  EXPECT_EQ(found.at("link"), "35");
  EXPECT_EQ(found.at("folder"), "01;34");
  EXPECT_EQ(found.at("program.sh"), "01;32");
  EXPECT_EQ(found.at("pipe"), "33");
}

TEST_F(Colors, AreForTerminalsUnlessTheyAreAskedFor) {
  const auto on = [&](Output output, std::vector<std::string> more, std::vector<std::string> environment) {
    Launch what = colored(std::move(more), std::move(environment));
    what.output = output;
    return isColored(what);
  };
  const std::string terminal = "TERM=xterm";
  EXPECT_TRUE(on(Output::terminal, {}, {terminal}));
  EXPECT_TRUE(on(Output::terminal, {"--color=auto"}, {terminal}));
  EXPECT_TRUE(on(Output::terminal, {}, {terminal, "NO_COLOR="}));
  EXPECT_FALSE(on(Output::terminal, {}, {terminal, "NO_COLOR=1"}));
  EXPECT_FALSE(on(Output::terminal, {}, {"TERM=dumb"}));
  EXPECT_FALSE(on(Output::terminal, {}, {"TERM="}));
  EXPECT_FALSE(on(Output::terminal, {"--color", "never"}, {terminal}));
  EXPECT_FALSE(on(Output::pipe, {}, {terminal}));
  EXPECT_TRUE(on(Output::pipe, {"--color", "always"}, {"NO_COLOR=1"}));
  EXPECT_FALSE(on(Output::pipe, {"--color=always", "-0"}, {terminal}));
}

TEST_F(Colors, AreForNamesAndPathsAlone) {
  Launch what = colored({"--color=always", "--sort", "kMDItemFSName"});
  what.arguments[1] = "kMDItemFSName == \"program.sh\"";
  what.arguments[3] = "kMDItemFSSize,kMDItemFSName,kMDItemPath,kMDItemContentType,kMDItemDisplayName";
  const auto green = [](const std::string& text) { return "\x1B[01;32m" + text + "\x1B[0m"; };
  EXPECT_EQ(run(what).output, "0\t" + green("program.sh") + '\t' + green(scratch_.at("program.sh")) +
                                  "\tpublic.shell-script\t" + green("program.sh") + '\n');
}

TEST_F(Colors, DoNotMoveTheColumnsOfATable) {
  Launch what = colored({}, {"TERM=xterm"});
  what.output = Output::terminal;
  what.arguments[1] = "kMDItemFSName == \"p*\"";
  what.arguments[3] = "kMDItemFSName,kMDItemFSSize";
  EXPECT_EQ(lines(run(what).output), (Texts{"File        Size", "\x1B[33mpipe\x1B[0m           0",
                                            "plain.txt      0", "\x1B[01;32mprogram.sh\x1B[0m     0"}));
}

TEST_F(Colors, AreInTheLinesOfLiveUpdates) {
  Launch what = colored({"--color=always", "--live", "--for", "0"});
  what.arguments.erase(what.arguments.begin() + 2, what.arguments.begin() + 4);
  what.arguments[1] = "kMDItemFSName == \"program.sh\"";
  EXPECT_EQ(run(what).output, "+ \x1B[01;32m" + scratch_.at("program.sh") + "\x1B[0m\n");
}

TEST(ColorOption, IsOneOfThree) {
  expectError(find({"kMDItemFSName == \"x\"", "--color", "sometimes"}),
              "--color 'sometimes': auto, always or never is needed");
}

}  // namespace
