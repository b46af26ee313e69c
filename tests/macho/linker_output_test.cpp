// The dylibs that macho-link writes, as other tools see them and as they run.
#include <set>
#include <sstream>

#include "tests/macho/toolbox.h"

namespace {

using toolbox::function;
using toolbox::Outcome;

class LinkerOutput : public toolbox::Workshop {
 protected:
  std::string objdump(const std::vector<std::string>& options) const {
    std::vector<std::string> command = {LLVM_OBJDUMP, "--macho"};
    command.insert(command.end(), options.begin(), options.end());
    command.push_back(path("test.dylib"));
    const Outcome dump = toolbox::run(command);
    EXPECT_EQ(0, dump.status) << dump.output;
    return dump.output;
  }
};

// The lines, words separated by single spaces; of those, the ones that begin with `first`.
std::vector<std::string> lines(const std::string& text, const std::string& first) {
  std::vector<std::string> result;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    std::istringstream words(line);
    std::string tidy;
    for (std::string word; words >> word;) tidy += (tidy.empty() ? "" : " ") + word;
    if (tidy.starts_with(first)) result.push_back(tidy);
  }
  return result;
}

typedef std::vector<std::string> Lines;

const char kMixed[] = R"(
#include <new>
extern "C" void strong(); extern "C" void absent() __attribute__((weak_import)); extern "C" int far;
struct Guard { ~Guard() { strong(); } };
static int zero[100];
const char* const names[] = {"one", "two"};
EXPORT const char* entry(int i) {
  Guard guard;
  try { strong(); } catch (std::bad_alloc&) { return nullptr; }
  if (absent) absent();
  zero[i] += far;
  return names[i];
}
)";
const std::vector<std::string> kMixedImports = {"_strong",
                                                "_absent",
                                                "_far",
                                                "__ZTISt9bad_alloc",
                                                "__ZSt9terminatev",
                                                "__Unwind_Resume",
                                                "___cxa_begin_catch",
                                                "___cxa_end_catch",
                                                "___gxx_personality_v0"};

TEST_F(LinkerOutput, HasTheseLoadCommandsInThisOrder) {
  build(kMixed, kMixedImports);
  EXPECT_EQ((Lines{"cmd LC_SEGMENT", "cmd LC_SEGMENT", "cmd LC_SEGMENT", "cmd LC_ID_DYLIB",
                   "cmd LC_DYLD_INFO_ONLY", "cmd LC_SYMTAB", "cmd LC_DYSYMTAB", "cmd LC_UUID",
                   "cmd LC_VERSION_MIN_MACOSX", "cmd LC_LOAD_DYLIB"}),
            lines(objdump({"--private-headers"}), "cmd LC_"));
}

TEST_F(LinkerOutput, StatesItsNameItsSystemAndItsLibraries) {
  const std::string object = compile("a",
                                     "extern \"C\" int a(); extern \"C\" int b(); EXPORT int entry() {"
                                     "return a() + b(); }");
  const std::string list = write(
      "list.txt", "library /usr/lib/liba.dylib 1.2.3 1 weak\n_a\nlibrary /usr/lib/libb.dylib 7.9 7\n_b\n");
  ASSERT_EQ(0, toolbox::run({toolbox::linker(), "-o", path("test.dylib"), "-install_name", "@rpath/mine",
                             "-imports", list, "-exported", "_entry", "-minimum-system", "10.6",
                             "-current_version", "300.40.5", object})
                   .status);
  const std::string headers = objdump({"--private-headers"});
  EXPECT_EQ((Lines{"cmd LC_ID_DYLIB", "cmd LC_LOAD_WEAK_DYLIB", "cmd LC_LOAD_DYLIB"}), [&] {
    Lines dylibs;
    for (const std::string& line : lines(headers, "cmd LC_")) {
      if (line.ends_with("DYLIB")) dylibs.push_back(line);
    }
    return dylibs;
  }());
  EXPECT_EQ((Lines{"name @rpath/mine (offset 24)", "name /usr/lib/liba.dylib (offset 24)",
                   "name /usr/lib/libb.dylib (offset 24)"}),
            lines(headers, "name "));
  EXPECT_EQ((Lines{"current version 300.40.5", "current version 1.2.3", "current version 7.9.0"}),
            lines(headers, "current version"));
  EXPECT_EQ(
      (Lines{"compatibility version 1.0.0", "compatibility version 1.0.0", "compatibility version 7.0.0"}),
      lines(headers, "compatibility version"));
  EXPECT_EQ((Lines{"version 10.6"}), lines(headers, "version "));
}

TEST_F(LinkerOutput, ExportsWhatWasNamedAndNothingElse) {
  build(
      "EXPORT int entry() { return 1; } EXPORT int entrance() { return 2; } EXPORT int kept() { return 3; }",
      {}, {"_entry", "_entrance"});
  std::set<std::string> names;
  for (const std::string& line : lines(objdump({"--exports-trie"}), "0x")) {
    names.insert(line.substr(line.find(' ') + 1));
  }
  EXPECT_EQ((std::set<std::string>{"_entry", "_entrance"}), names);
  const macho::Image image = macho::load(path("test.dylib"));
  EXPECT_EQ(1, function<int()>(image, "_entry")());
  EXPECT_EQ(2, function<int()>(image, "_entrance")());
  EXPECT_EQ(nullptr, image.symbol("_kept"));
}

TEST_F(LinkerOutput, BindsAnImportWeaklyOnlyWhenEveryReferenceIsWeak) {
  const std::string a =
      compile("a",
              "extern \"C\" int sometimes __attribute__((weak_import));"
              "extern \"C\" int always __attribute__((weak_import));"
              "int other();"
              "EXPORT int entry() { return (&sometimes ? sometimes : 0) + always + other(); }");
  const std::string b = compile("b", "extern \"C\" int sometimes, always; int other() { return always; }");
  ASSERT_EQ("", link({a, b}, {"_sometimes", "_always"}).output);
  const Lines binds = lines(objdump({"--bind"}), "__DATA");
  ASSERT_EQ(2u, binds.size());
  for (const std::string& bind : binds) {
    const bool weak = bind.find("(weak_import)") != std::string::npos;
    EXPECT_EQ(bind.find("_sometimes") != std::string::npos, weak) << bind;
  }
  const Outcome names = toolbox::run({LLVM_NM, "-m", path("test.dylib")});
  EXPECT_NE(std::string::npos, names.output.find("(undefined) weak external _sometimes (from libtest)"));
  EXPECT_NE(std::string::npos, names.output.find("(undefined) external _always (from libtest)"));
}

TEST_F(LinkerOutput, ChangesNothingInTextAtLoadTime) {
  build(kMixed, kMixedImports);
  const std::string tables = objdump({"--rebase", "--bind"});
  EXPECT_EQ(Lines(), lines(tables, "__TEXT"));
  EXPECT_LE(3u, lines(tables, "__DATA").size());
  EXPECT_EQ(Lines(), lines(objdump({"--lazy-bind"}), "__"));
  EXPECT_EQ(Lines(), lines(objdump({"--weak-bind"}), "__"));
  const std::string headers = objdump({"--private-headers"});
  EXPECT_EQ((Lines{"nlocrel 0"}), lines(headers, "nlocrel"));
  EXPECT_EQ((Lines{"nextrel 0"}), lines(headers, "nextrel"));
}

TEST_F(LinkerOutput, DescribesItsPointersAndStubsToOtherTools) {
  build("extern \"C\" int call(); EXPORT int entry() { return call() + 1; }", {"_call"});
  const std::string table = objdump({"--indirect-symbols"});
  EXPECT_EQ(2u, lines(table, "0x").size()) << table;
  for (const std::string& line : lines(table, "0x")) EXPECT_TRUE(line.ends_with(" _call")) << line;
}

TEST_F(LinkerOutput, BindsItsPointersOneAfterTheOther) {
  build(
      "extern \"C\" int zebra, apple, melon; extern \"C\" void call();"
      "EXPORT int entry() { call(); return zebra + apple + melon; }",
      {"_zebra", "_apple", "_melon", "_call"});
  const Lines binds = lines(objdump({"--bind"}), "__DATA __nl_symbol_ptr");
  ASSERT_EQ(4u, binds.size());
  const std::vector<std::string> names = {"_apple", "_call", "_melon", "_zebra"};
  uint32_t address = 0;
  for (size_t i = 0; i < names.size(); ++i) {
    EXPECT_TRUE(binds[i].ends_with(names[i])) << binds[i];
    const uint32_t here =
        static_cast<uint32_t>(std::stoul(binds[i].substr(binds[i].find("0x")), nullptr, 16));
    if (i) {
      EXPECT_EQ(address + 4, here);
    }
    address = here;
  }
}

TEST_F(LinkerOutput, IsTheSameOnEveryRunAndWhereverTheObjectsLie) {
  const std::string first = toolbox::readFile(build(kMixed, kMixedImports));
  toolbox::run({"mkdir", path("elsewhere")});
  toolbox::run({"mv", path("test.o"), path("elsewhere/moved.o")});
  ASSERT_EQ("", link({path("elsewhere/moved.o")}, kMixedImports).output);
  EXPECT_EQ(first, toolbox::readFile(path("test.dylib")));
}

TEST_F(LinkerOutput, HasAnotherUUIDWhenTheContentIsAnother) {
  build("EXPORT int entry() { return 1; }");
  const Lines one = lines(objdump({"--private-headers"}), "uuid");
  build("EXPORT int entry() { return 2; }");
  const Lines two = lines(objdump({"--private-headers"}), "uuid");
  ASSERT_EQ(1u, one.size());
  EXPECT_NE(one, two);
}

TEST_F(LinkerOutput, LeavesOutDebugInformation) {
  const std::string object = compile("a", "EXPORT int entry() { return 1; }", {"-g"});
  ASSERT_EQ("", link({object}, {}).output);
  EXPECT_EQ(std::string::npos, objdump({"--private-headers"}).find("__debug"));
  EXPECT_EQ(1, function<int()>(macho::load(path("test.dylib")))());
}

TEST_F(LinkerOutput, UsesOneCopyOfAnInlineVariable) {
  // Unnamed data follow the copies: they must stay apart while the copies become one.
  const std::string a =
      compile("a",
              "inline int shared = 7; int* mine() { return &shared; } int* theirs();"
              "extern int plainA; EXPORT int entry() { *mine() = 8; plainA = 3;"
              "return *theirs() * 10 + (mine() == theirs()) + plainA * 100; } int plainA = 1;");
  const std::string b = compile("b",
                                "int padding = 5; inline int shared = 7; extern int hiddenElsewhere;"
                                "int* theirs() { return hiddenElsewhere == 77 ? &shared : nullptr; }");
  const std::string c = compile("c", "int hiddenElsewhere = 77;");
  for (const std::vector<std::string>& order : {std::vector{a, b, c}, {b, a, c}, {c, b, a}}) {
    ASSERT_EQ("", link(order, {}).output);
    EXPECT_EQ(381, function<int()>(macho::load(path("test.dylib")))());
  }
}

TEST_F(LinkerOutput, PrefersAStrongDefinitionToAWeakOne) {
  const std::string a = compile("a",
                                "__attribute__((weak)) int which() { return 1; }"
                                "EXPORT int entry() { return which(); }");
  const std::string b = compile("b", "int which() { return 2; }");
  for (const std::vector<std::string>& order : {std::vector{a, b}, {b, a}}) {
    ASSERT_EQ("", link(order, {}).output);
    EXPECT_EQ(2, function<int()>(macho::load(path("test.dylib")))());
  }
}

TEST_F(LinkerOutput, SortsExportsWithCommonBeginnings) {
  const std::vector<std::string> names = {"_a", "_ab", "_abc", "_abd", "_b", "_ba", "_entry"};
  std::string source;
  for (const std::string& name : names) {
    source += "EXPORT const char* " + name.substr(1) + "() { return \"" + name + "\"; }\n";
  }
  build(source, {}, names);
  const macho::Image image = macho::load(path("test.dylib"));
  for (const std::string& name : names) EXPECT_EQ(name, function<const char*()>(image, name.c_str())());
  for (const char* other : {"", "_", "_abcd", "_abe", "_entr", "_entryy"}) {
    EXPECT_EQ(nullptr, image.symbol(other)) << other;
  }
}

}  // namespace
