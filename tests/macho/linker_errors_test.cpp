// What macho-link refuses to link, and what it says.
#include <cstring>

#include "tests/macho/toolbox.h"

namespace {

using toolbox::Outcome;

class LinkerRefuses : public toolbox::Workshop {
 protected:
  // The link of these objects fails with status 1 and this text, "macho-link: " before each line.
  void expectError(const std::vector<std::string>& objects, const std::string& message,
                   const std::vector<std::string>& imports = {}) const {
    const Outcome result = link(objects, imports);
    EXPECT_EQ(1, result.status);
    EXPECT_EQ("macho-link: " + message + "\n", result.output);
  }
};

TEST_F(LinkerRefuses, AnAbsoluteAddressInCode) {
  const std::string object =
      compile("a", "static int counter; EXPORT int entry() { return ++counter; }", {"-mdynamic-no-pic"});
  expectError({object}, object +
                            ": _entry in __TEXT,__text holds the absolute address of __ZL7counter in "
                            "__DATA,__bss; compile it as position-independent code "
                            "(without -mdynamic-no-pic, -fno-pic)");
}

TEST_F(LinkerRefuses, AnObjectForLinkTimeOptimisation) {
  const std::string object = compile("a", "EXPORT int entry() { return 1; }", {"-flto"});
  expectError({object}, object + ": holds compiler bitcode, not machine code; compile it without -flto");
}

TEST_F(LinkerRefuses, AnObjectWithBitcodeInside) {
  const std::string object = compile("a", "EXPORT int entry() { return 1; }", {"-fembed-bitcode"});
  expectError({object},
              object + ": holds compiler bitcode (__LLVM,__bitcode); compile it without -fembed-bitcode");
}

TEST_F(LinkerRefuses, AFileThatIsNoObject) {
  const std::string text = write("text.o", "hello, this is a letter");
  expectError({text},
              text + ": is not a 32-bit Mach-O object; compile it with -target i386-apple-macosx10.6 -c");
  const std::string empty = write("empty.o", "");
  expectError({empty},
              empty + ": is not a 32-bit Mach-O object; compile it with -target i386-apple-macosx10.6 -c");
}

TEST_F(LinkerRefuses, AnObjectOfAnotherProcessor) {
  const std::string object =
      compile("a", "EXPORT int entry() { return 1; }", {"-target", "armv7-apple-ios5"});
  expectError({object}, object +
                            ": is made for another processor than i386; compile it with -target "
                            "i386-apple-macosx10.6 -c");
}

TEST_F(LinkerRefuses, ADylibInPlaceOfAnObject) {
  const std::string dylib = build("EXPORT int entry() { return 1; }");
  expectError({dylib}, dylib +
                           ": is a linked Mach-O file, not an object; compile it with -target "
                           "i386-apple-macosx10.6 -c");
}

TEST_F(LinkerRefuses, TwoDefinitionsOfOneSymbol) {
  const std::string a = compile("a", "int twice() { return 1; } EXPORT int entry() { return twice(); }");
  const std::string b = compile("b", "int twice() { return 2; }");
  expectError({a, b},
              b + ": defines __Z5twicev, which " + a + " defines too; rename one of them, or make it static");
}

TEST_F(LinkerRefuses, EveryUndefinedSymbolAtOnce) {
  const std::string object = compile("a",
                                     "extern \"C\" int a(); extern \"C\" int b();"
                                     "EXPORT int entry() { return a() + b(); }");
  expectError({object}, object + ": undefined symbol _a; define it, or list it in " + path("imports.txt") +
                            "\nmacho-link: " + object + ": undefined symbol _b; define it, or list it in " +
                            path("imports.txt"));
}

TEST_F(LinkerRefuses, AListedImportThatNothingUses) {
  const std::string object = compile("a", "extern \"C\" int a(); EXPORT int entry() { return a(); }");
  expectError({object}, path("imports.txt") + ": _b is listed but not used; remove it", {"_a", "_b"});
}

TEST_F(LinkerRefuses, AListedImportThatTheObjectsDefine) {
  const std::string object =
      compile("a", "extern \"C\" int a() { return 1; } EXPORT int entry() { return a(); }");
  expectError({object}, path("imports.txt") + ": _a is listed but not used; remove it", {"_a"});
}

TEST_F(LinkerRefuses, AListedLibraryWithoutASymbol) {
  const std::string object = compile("a", "EXPORT int entry() { return 1; }");
  const std::string list = write("list.txt", "library /usr/lib/libempty.dylib 1 1\n");
  const Outcome result = toolbox::run({toolbox::linker(), "-o", path("out"), "-install_name", "n", "-imports",
                                       list, "-exported", "_entry", object});
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("macho-link: " + list + ": /usr/lib/libempty.dylib is listed without a symbol; remove it\n",
            result.output);
}

TEST_F(LinkerRefuses, AnExportThatNobodyDefines) {
  const std::string object = compile("a", "EXPORT int other() { return 1; }");
  expectError({object},
              path("test.dylib") + ": no object defines the exported _entry; define it or don't export it");
}

TEST_F(LinkerRefuses, AnExportThatIsHidden) {
  const std::string object = compile("a", "extern \"C\" int entry() { return 1; }");
  expectError({object}, path("test.dylib") + ": the exported _entry is hidden; give it default visibility");
}

TEST_F(LinkerRefuses, AStaticInitialiser) {
  const std::string object =
      compile("a", "extern \"C\" int a(); int made = a(); EXPORT int entry() { return made; }");
  expectError({object},
              object +
                  ": has a static initialiser or a function for the exit (__TEXT,__StaticInit); make the "
                  "variable constant-initialised and trivially destroyed",
              {"_a"});
}

TEST_F(LinkerRefuses, AListOfInitialFunctions) {
  const std::string object =
      compile("a",
              "extern \"C\" void a(); __attribute__((constructor)) static void early() { a(); }"
              "EXPORT int entry() { return 1; }");
  expectError({object},
              object +
                  ": has a static initialiser or a function for the exit (__DATA,__mod_init_func); make the "
                  "variable constant-initialised and trivially destroyed",
              {"_a"});
}

TEST_F(LinkerRefuses, ThreadLocalVariables) {
  const std::string object = assemble("a",
                                      ".section __DATA,__thread_vars,thread_local_variables\n"
                                      ".long 0, 0, 0\n");
  expectError({object}, object + ": has thread-local variables (__DATA,__thread_vars); use plain ones");
}

TEST_F(LinkerRefuses, ASectionThatItDoesNotKnow) {
  const std::string object = compile("a",
                                     "__attribute__((section(\"__DATA,__mine\"))) int mine = 1;"
                                     "EXPORT int entry() { return mine; }");
  expectError({object}, object +
                            ": has an unknown section __DATA,__mine; keep its contents out of the source, or "
                            "give the section a rule in the linker");
}

TEST_F(LinkerRefuses, AnArrayThatFillsTheAddressSpace) {
  const std::string object = compile("a", "char huge[1 << 30]; EXPORT char entry(int i) { return huge[i]; }");
  expectError({object},
              object + ": __DATA,__common takes 1073741824 bytes; allocate large arrays at run time");
}

TEST_F(LinkerRefuses, ACommonSymbol) {
  const std::string object = assemble("a", ".comm _shared,4,2\n");
  expectError({object}, object + ": the symbol _shared is a common one; compile with -fno-common");
}

TEST_F(LinkerRefuses, ASymbolAtAFixedAddress) {
  const std::string object = assemble("a", ".globl _fixed\n_fixed = 0x1000\n");
  expectError({object},
              object + ": the symbol _fixed has a fixed address or stands for another; define it as usual");
}

TEST_F(LinkerRefuses, ARelocationOfTwoBytes) {
  const std::string object = assemble("a", ".data\n.globl _half\n_half: .short _half\n");
  expectError(
      {object},
      object + ": malformed: __DATA,__data has a relocation of another size than 4 bytes; compile it again");
}

TEST_F(LinkerRefuses, AnOffsetOnAWeakImport) {
  const std::string object =
      compile("a",
              "extern \"C\" int far[4] __attribute__((weak_import));"
              "int* const behind = &far[1]; EXPORT int* const* entry() { return &behind; }");
  expectError({object},
              object +
                  ": __ZL6behind in __DATA,__const adds to the address of _far, which may be absent; add at "
                  "run time, after a test for null",
              {"_far"});
}

// Whatever is missing of a real object, the linker says so and does not fall over.
TEST_F(LinkerRefuses, ATruncatedObjectAtAnyLength) {
  const std::string object =
      compile("a",
              "#include <new>\nextern \"C\" void a(); struct Guard { ~Guard() { a(); } };"
              "const char* const names[] = {\"x\", \"y\"};"
              "EXPORT const char* entry(int i) { Guard g; try { a(); } "
              "catch (std::bad_alloc&) { return 0; } return names[i]; }");
  const std::string whole = toolbox::readFile(object);
  for (size_t length = 0; length < whole.size(); length += 41) {
    const std::string cut = write("cut.o", whole.substr(0, length));
    const Outcome result = link({cut}, {"_a"});
    EXPECT_EQ(1, result.status) << "cut to " << length << " bytes: " << result.output;
    EXPECT_EQ(0u, result.output.find("macho-link: " + cut + ": ")) << result.output;
  }
}

TEST_F(LinkerRefuses, AFrameTableThatItCanNotRead) {
  const std::string object = compile("a",
                                     "extern \"C\" void a(); struct Guard { ~Guard() { a(); } };"
                                     "EXPORT void entry() { Guard g; a(); }");
  std::string bytes = toolbox::readFile(object);
  const size_t augmentation = bytes.find("zPLR");
  ASSERT_NE(std::string::npos, augmentation);
  bytes[augmentation] = 'y';
  const std::string broken = write("broken.o", bytes);
  expectError(
      {broken},
      broken +
          ": malformed __eh_frame: record at offset 0 has an augmentation without a size; compile it again",
      {"_a"});
}

}  // namespace
