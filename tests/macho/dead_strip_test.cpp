// What macho-link leaves out because nothing refers to it, and what it must not.
#include "tests/macho/toolbox.h"

namespace {

using toolbox::function;
using toolbox::Outcome;

size_t occurrences(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

class DeadStrip : public toolbox::Workshop {
 protected:
  void expectLinked(const std::vector<std::string>& objects,
                    const std::vector<std::string>& imports = {}) const {
    const Outcome linked = link(objects, imports);
    ASSERT_EQ("", linked.output);
    ASSERT_EQ(0, linked.status);
  }

  bool contains(const std::string& text) const {
    return toolbox::readFile(path("test.dylib")).find(text) != std::string::npos;
  }

  // How many functions its frame table describes.
  size_t frames() const {
    return occurrences(toolbox::run({LLVM_OBJDUMP, "--dwarf=frames", path("test.dylib")}).output, " FDE ");
  }

  int entry() const { return function<int()>(macho::load(path("test.dylib")))(); }
};

TEST_F(DeadStrip, LeavesOutFunctionsThatNothingCallsAndWhatOnlyTheyUse) {
  expectLinked({compile("a",
                        "const char* text(int i) { return i ? \"never wanted\" : \"nor this\"; }"
                        "const char* (*const pointer)(int) = text;"
                        "EXPORT const char* (*const* unexported())(int) { return &pointer; }"
                        "EXPORT int entry() { return \"wanted\"[1]; }"
                        "EXPORT const char* word() { return \"wanted, too\"; }")});
  EXPECT_FALSE(contains("never wanted"));
  EXPECT_FALSE(contains("nor this"));
  EXPECT_FALSE(contains("wanted, too"));
  EXPECT_EQ('a', entry());
}

TEST_F(DeadStrip, LeavesOutTheCopiesThatLost) {
  const std::string shared =
      "inline __attribute__((noinline)) int wanted(int i) {"
      "  static const char* const texts[] = {\"first\", \"second\"};"
      "  return texts[i & 1][0] ^ 0x1badcafe; }\n";
  const std::string a =
      compile("a", shared + "int other(); EXPORT int entry() { return wanted(0) ^ other(); }");
  const std::string b = compile("b", shared + "int other() { return wanted(1); }");
  expectLinked({a, b});
  EXPECT_EQ('f' ^ 's', entry());
  EXPECT_EQ(1u, occurrences(toolbox::readFile(path("test.dylib")), "\xfe\xca\xad\x1b"));
}

TEST_F(DeadStrip, ImportsNothingForThem) {
  const std::string object = compile("a",
                                     "extern \"C\" int needed(); extern \"C\" int unneeded();"
                                     "int dead() { return unneeded(); }"
                                     "EXPORT int entry() { return needed(); }");
  expectLinked({object}, {"_needed"});
  EXPECT_FALSE(contains("_unneeded"));
  EXPECT_EQ("macho-link: " + path("imports.txt") + ": _unneeded is listed but not used; remove it\n",
            link({object}, {"_needed", "_unneeded"}).output);
}

TEST_F(DeadStrip, LeavesOutTheirFramesAndExceptionTables) {
  const std::string guard = "extern \"C\" void call(); struct Guard { ~Guard() { call(); } };";
  const std::string used = "EXPORT void entry() { Guard g; call(); }";
  expectLinked({compile("a", guard + used)}, {"_call", "___gxx_personality_v0", "__Unwind_Resume",
                                              "___cxa_begin_catch", "__ZSt9terminatev"});
  const size_t frames = this->frames();
  EXPECT_LE(1u, frames);
  const std::string alone = toolbox::readFile(path("test.dylib"));
  expectLinked(
      {compile("a", guard + used + "void dead() { Guard a, b; call(); call(); }")},
      {"_call", "___gxx_personality_v0", "__Unwind_Resume", "___cxa_begin_catch", "__ZSt9terminatev"});
  EXPECT_EQ(frames, this->frames());
  EXPECT_EQ(alone, toolbox::readFile(path("test.dylib")));
}

TEST_F(DeadStrip, KeepsWhatIsReachedThroughPointersTablesAndOtherObjects) {
  const std::string a = compile("a",
                                "extern int (*const table[])(int); extern const int numbers[];"
                                "EXPORT int entry() { return table[1](3) + numbers[2]; }");
  const std::string b = compile("b",
                                "static int one(int i) { return i; }"
                                "static int step = 50;"
                                "static int two(int i) { return i * (step += 50); }"
                                "extern int (*const table[])(int); extern const int numbers[];"
                                "int (*const table[])(int) = {one, two}; const int numbers[] = {1, 2, 7};");
  expectLinked({b, a});
  EXPECT_EQ(307, entry());
}

TEST_F(DeadStrip, KeepsTheTypesThatAreCaught) {
  build(
      "extern \"C\" void call(); struct Mine {};"
      "EXPORT int entry() { try { call(); } catch (const Mine&) { return 1; } return 0; }",
      {"_call", "___gxx_personality_v0", "___cxa_begin_catch", "___cxa_end_catch",
       "__ZTVN10__cxxabiv117__class_type_infoE"});
  EXPECT_TRUE(contains("4Mine"));
}

TEST_F(DeadStrip, KeepsAnObjectWholeThatItsSymbolsDoNotDivide) {
  const std::string a = compile("a", "extern \"C\" int first(); EXPORT int entry() { return first(); }");
  const std::string code =
      ".text\n.globl _first\n_first: nop\n"  // goes on in the next one
      ".globl _second\n_second: movl $5, %eax\nret\n"
      ".globl _third\n_third: movl $0x1badcafe, %eax\nret\n";
  expectLinked({a, assemble("b", code)});
  EXPECT_EQ(5, entry());
  EXPECT_TRUE(contains("\xfe\xca\xad\x1b"));
  // Divided, the second symbol is nothing that the first leads to.
  expectLinked({a, assemble("b", code + ".subsections_via_symbols\n")});
  EXPECT_FALSE(contains("\xfe\xca\xad\x1b"));
}

TEST_F(DeadStrip, TakesAnotherEntryForAPartOfItsFunction) {
  const std::string a = compile("a", "extern \"C\" int first(); EXPORT int entry() { return first(); }");
  const std::string b = assemble("b",
                                 ".text\n.globl _first\n_first: nop\n"
                                 ".globl _within\n.alt_entry _within\n_within: movl $5, %eax\nret\n"
                                 ".subsections_via_symbols\n");
  expectLinked({a, b});
  EXPECT_EQ(5, entry());
}

TEST_F(DeadStrip, RefusesAnAddressThatTwoSymbolsShare) {
  const std::string object = assemble("a",
                                      ".data\n.globl _one\n_one: .long _one\n.globl _two\n_two: .long 0\n"
                                      ".subsections_via_symbols\n");
  std::string bytes = toolbox::readFile(object);
  // The relocation of the word: at 0, four bytes, to section 2. It is moved to 2.
  const std::string relocation("\0\0\0\0\2\0\0\4", 8);
  const size_t at = bytes.find(relocation);
  ASSERT_NE(std::string::npos, at);
  bytes[at] = 2;
  const std::string broken = write("broken.o", bytes);
  EXPECT_EQ("macho-link: " + broken +
                ": malformed: __DATA,__data has an address that two symbols share; compile it again\n",
            link({broken}, {}).output);
}

TEST_F(DeadStrip, RefusesLiteralsThatAreCutShort) {
  const std::string text = assemble("text", ".cstring\n.asciz \"one\"\n.ascii \"two\"\n");
  EXPECT_EQ("macho-link: " + text +
                ": malformed: the last string of __TEXT,__cstring has no end; compile it again\n",
            link({text}, {}).output);
  const std::string number = assemble("number", ".literal8\n.long 1, 2, 3\n");
  EXPECT_EQ("macho-link: " + number +
                ": malformed: __TEXT,__literal8 ends within its last entry; compile it again\n",
            link({number}, {}).output);
}

}  // namespace
