// What a terminal would obey, in everything that comes from outside, and never reaches it.
#include <algorithm>

#include "tests/shotlight/run.h"
#include "tests/support/scratch_folder.h"

namespace {

const char kMark[] = "planted";

const std::string kControls[] = {
    "\x1B[31m",           // an escape sequence
    "\x1B]0;title\x07",   // one that ends in BEL
    "\b\b",               //
    "\r",                 //
    "\nshotlight: fake",  // a line of its own
    "\x7F",               //
    "\u009B31m",          // a control character of the second set
    "\u0085",             //
    "\u202Egpj",          // the direction of writing
    "\u2066x\u2069",      //
    "\u200F",             //
};
const std::string kStrayBytes[] = {
    "\x9B"
    "31m",           // the same control character in other encodings
    "\xFF",          // no UTF-8
    "\xE6\x9D",      // a character that is cut short
    "\xED\xA0\x80",  // half of a surrogate pair
};

// What is found first that mustn't be in the program's output. `keepsBytes`: bytes of other encodings may be.
std::string firstHarm(const std::string& text, bool keepsBytes) {
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte == 0x7F || (byte < 0x20 && byte != '\n' && !(byte == '\t' && keepsBytes)))
      return "control character " + std::to_string(byte) + " at " + std::to_string(i);
  }
  for (const char* const harm :
       {"\u0085", "\u009B", "\u202E", "\u2066", "\u2069", "\u200F", "\nshotlight: fake"}) {
    if (text.find(harm) != std::string::npos) return std::string("character ") + harm;
  }
  for (const char* const bytes : {"\x9B", "\xE6\x9D", "\xED\xA0\x80", "\xFF"}) {
    const bool isKept = keepsBytes && static_cast<unsigned char>(*bytes) >= 0xA0;
    const size_t found = text.find(bytes);
    const bool isInCharacter = found != std::string::npos && found > 0 && (text[found - 1] & 0x80) != 0;
    if (found != std::string::npos && !isKept && !isInCharacter) return std::string("bytes ") + bytes;
  }
  return "";
}

template <size_t size>
std::string planted(const std::string (&texts)[size]) {
  std::string all = kMark;
  for (const std::string& text : texts) all += text + 'x';
  return all;
}

class Escapes : public testing::TestWithParam<std::string> {
 protected:
  // Runs the command with both streams on pipes and on terminals. It must say something of what was planted.
  void expectHarmless(Launch what, bool isTold = true) {
    for (const Output output : {Output::pipe, Output::terminal}) {
      what.output = what.errors = output;
      const Result result = run(what);
      EXPECT_LT(result.status, 128) << result;
      EXPECT_EQ(firstHarm(result.output, output == Output::pipe), "") << result;
      EXPECT_EQ(firstHarm(result.errors, false), "") << result;
      if (isTold) {
        EXPECT_NE((result.output + result.errors).find(kMark), std::string::npos) << result;
      }
    }
  }

  const std::string evil_ = GetParam();
  const ScratchFolder folder_;
};

TEST_P(Escapes, OfNamesOfFiles) {
  const std::string file = folder_.file(evil_ + "/" + evil_ + ".txt", "text");
  const std::string query = "kMDItemFSName == \"*.txt\"";
  const std::string folder = folder_.at(evil_);
  expectHarmless({.arguments = {"find", query}, .folder = folder_.path()});
  expectHarmless({.arguments = {"find", query, "--in", folder, "--color", "always"},
                  .environment = {"LS_COLORS=*.txt="}});
  expectHarmless({.arguments = {"find", query, "--values", "kMDItemFSName"}, .folder = folder});
  expectHarmless({.arguments = {"find", query, "--live", "--for", "0"}, .folder = folder});
  expectHarmless({.arguments = {"attrs", file, file}});
  expectHarmless({.arguments = {"attrs", "--json", file}});
}

TEST_P(Escapes, OfArguments) {
  const std::string good = "kMDItemFSName == \"x\"";
  const std::vector<std::string> commands[] = {
      {evil_},
      {"help", evil_},
      {"find", good, evil_},
      {"find", good, "--" + evil_},
      {"find", good, "--in", evil_},
      {"find", good, "--scope", evil_},
      {"find", good, "--show", evil_},
      {"find", good, "--sort", evil_},
      {"find", good, "--values", evil_},
      {"find", good, "--limit", evil_},
      {"find", good, "--live", "--for", evil_},
      {"find", good, "--color", evil_},
      {"find", good, "--plugin", evil_},
      {"attrs", evil_},
      {"attrs", "--keys", evil_, "/tmp"},
      {"schema", evil_},
      {"keys", evil_},
      {"keys", "--plugin", evil_},
      {"store", evil_},
      {"window", "text", evil_},
  };
  for (const std::vector<std::string>& arguments : commands) expectHarmless({.arguments = arguments});
}

// Text that isn't UTF-8 is refused without repeating it.
TEST_P(Escapes, OfTextsOfQueriesAndOfTheSearchWindow) {
  expectHarmless({.arguments = {"find", "kMDItemFSName == \"" + evil_}, .folder = folder_.path()}, false);
  expectHarmless({.arguments = {"find", "(kMDItemFSName == \"" + evil_ + "\""}, .folder = folder_.path()},
                 false);
  expectHarmless({.arguments = {"find", evil_ + " ==="}, .folder = folder_.path()}, false);
  expectHarmless({.arguments = {"find", "kMDItemFSSize > 0", "--within", evil_ + " =="}}, false);
  expectHarmless({.arguments = {"window", evil_}}, false);
}

TEST_P(Escapes, OfTheEnvironment) {
  const std::string cache = folder_.file("file " + evil_, "no folder");
  expectHarmless({.arguments = {"store"}, .environment = {"XDG_CACHE_HOME=" + cache}});
  expectHarmless({.arguments = {"store", "--check"}, .environment = {"XDG_CACHE_HOME=" + cache}}, false);
  folder_.file("song.mp3", "no song");
  expectHarmless({.arguments = {"find", "kMDItemTitle == \"*\"", "--in", folder_.path()},
                  .environment = {"XDG_CACHE_HOME=" + cache}});
  expectHarmless({.arguments = {"find", "kMDItemFSName == \"song.mp3\"", "--in", folder_.path(), "--show",
                                "kMDItemFSName"},
                  .environment = {"TERM=" + evil_, "COLUMNS=" + evil_, "LS_COLORS=*.mp3=" + evil_}},
                 false);
}

TEST_P(Escapes, OfAPluginsName) {
  const std::string plugin = folder_.file(evil_ + ".dylib", "neither Mach-O nor ELF");
  expectHarmless({.arguments = {"keys", "--plugin", plugin}});
}

INSTANTIATE_TEST_SUITE_P(Of, Escapes, testing::Values(planted(kControls), planted(kStrayBytes)),
                         [](const auto& info) { return info.index == 0 ? "Controls" : "StrayBytes"; });

// The test's own check.
TEST(EscapesCheck, FindsWhateverIsPlanted) {
  for (const std::string& text : kControls) EXPECT_NE(firstHarm(kMark + text, false), "") << text;
  for (const std::string& text : kStrayBytes) EXPECT_NE(firstHarm(kMark + text, false), "") << text;
  EXPECT_EQ(firstHarm("plain\n\u00DB\u6771\n", false), "");
}

}  // namespace
