// A dylib in this process: where it lies, what it is bound to, what may be done to its memory.
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "tests/macho/toolbox.h"

namespace {

using toolbox::function;
using toolbox::loadError;

class Loader : public toolbox::Workshop {};

int twice(int value) {
  return 2 * value;
}

int variable = 41;

macho::LoadOptions known() {
  macho::LoadOptions options;
  options.lookup = [](const std::string& name) -> void* {
    if (name == "twice") return reinterpret_cast<void*>(&twice);
    if (name == "variable") return &variable;
    return nullptr;
  };
  return options;
}

TEST_F(Loader, RunsAFunction) {
  const macho::Image image = macho::load(build("EXPORT int entry(int a) { return a + 1; }"));
  EXPECT_EQ(8, function<int(int)>(image)(7));
}

TEST_F(Loader, GivesEveryImageItsOwnVariables) {
  const std::string file = build(
      "static int counter = 10; static int zero; EXPORT int entry() { return ++counter * 100 + ++zero; }");
  const macho::Image one = macho::load(file), two = macho::load(file);
  EXPECT_NE(one.base(), two.base());
  EXPECT_EQ("1.0.0", one.version());
  EXPECT_EQ(1101, function<int()>(one)());
  EXPECT_EQ(1202, function<int()>(one)());
  EXPECT_EQ(1101, function<int()>(two)());
}

TEST_F(Loader, TakesAnImageOutOfMemoryWithItsObject) {
  const std::string file = build("EXPORT int entry() { return 1; }");
  macho::Image first = macho::load(file);
  const macho::Image second = std::move(first);
  EXPECT_EQ(1, function<int()>(second)());
  first = macho::load(file);
  EXPECT_EQ(1, function<int()>(first)());
  // Far more than fits the address space, if any stayed.
  for (int i = 0; i < 20000; ++i) macho::load(file);
}

TEST_F(Loader, SlidesThePointersOfConstantTables) {
  const macho::Image image = macho::load(build(R"(
    static int one() { return 1; }
    static int two() { return 2; }
    struct Row { const char* name; int (*function)(); const Row* next; };
    extern const Row rows[3];
    const Row rows[3] = {{"one", one, &rows[1]}, {"two", two, &rows[0]}, {0, 0, 0}};
    EXPORT const Row* entry() { return rows; }
  )"));
  struct Row {
    const char* name;
    int (*function)();
    const Row* next;
  };
  const Row* rows = function<const Row*()>(image)();
  EXPECT_STREQ("one", rows[0].name);
  EXPECT_EQ(1, rows[0].function());
  EXPECT_STREQ("two", rows[1].name);
  EXPECT_EQ(2, rows[1].function());
  EXPECT_EQ(&rows[1], rows[0].next);
  EXPECT_EQ(&rows[0], rows[1].next);
  EXPECT_EQ(nullptr, rows[2].name);
}

TEST_F(Loader, BindsCallsPointersAndDataToTheProcess) {
  const macho::Image image = macho::load(build(R"(
    extern "C" int twice(int); extern "C" int variable;
    extern int (*const table[])(int); int (*const table[])(int) = {twice};
    int* const address = &variable;
    EXPORT int entry(int i) { return twice(i) * 1000000 + table[0](i) * 1000 + ++*address; }
  )",
                                               {"_twice", "_variable"}),
                                         known());
  variable = 41;
  EXPECT_EQ(10010042, function<int(int)>(image)(5));
  EXPECT_EQ(42, variable);
}

TEST_F(Loader, AddsTheOffsetOfAnImportedArraysElement) {
  static int numbers[] = {1, 2, 3};
  macho::LoadOptions options;
  options.lookup = [](const std::string& name) -> void* { return name == "numbers" ? numbers : nullptr; };
  const macho::Image image = macho::load(build("extern \"C\" int numbers[3]; extern int* const third;"
                                               "int* const third = &numbers[2];"
                                               "EXPORT int* entry() { return third; }",
                                               {"_numbers"}),
                                         options);
  EXPECT_EQ(&numbers[2], function<int*()>(image)());
}

TEST_F(Loader, ReadsFloatingPointConstantsAndJumpTables) {
  const macho::Image image = macho::load(build(R"(
    EXPORT double entry(int i, double x) {
      switch (i) {
        case 0: return x * 3.25; case 1: return x + 1e10; case 2: return x / 7.5; case 3: return 0.125 - x;
        case 4: return x * x + 2.75; case 5: return -x; case 6: return x + 0.1f;
      }
      return 1.5;
    }
  )"));
  double (*const entry)(int, double) = function<double(int, double)>(image);
  EXPECT_EQ(6.5, entry(0, 2.0));
  EXPECT_EQ(1e10 + 2.0, entry(1, 2.0));
  EXPECT_EQ(2.0, entry(2, 15.0));
  EXPECT_EQ(-0.875, entry(3, 1.0));
  EXPECT_EQ(6.75, entry(4, 2.0));
  EXPECT_EQ(1.5, entry(9, 2.0));
}

TEST_F(Loader, BindsAnAbsentWeakImportToNull) {
  const std::string file = build(
      "extern \"C\" int twice(int) __attribute__((weak_import));"
      "extern \"C\" int variable __attribute__((weak_import));"
      "EXPORT int entry(int i) { return (twice ? twice(i) : -1) * 100 +"
      "(&variable ? 1 : 0); }",
      {"_twice", "_variable"});
  EXPECT_EQ(-100, function<int(int)>(macho::load(file))(4));
  EXPECT_EQ(801, function<int(int)>(macho::load(file, known()))(4));
  macho::LoadOptions hiding = known();
  hiding.hidden = {"twice"};
  EXPECT_EQ(-99, function<int(int)>(macho::load(file, hiding))(4));
}

TEST_F(Loader, NamesAnAbsentStrongImportAndItsLibrary) {
  const std::string file =
      build("extern \"C\" int nowhere(); EXPORT int entry() { return nowhere(); }", {"_nowhere"});
  EXPECT_EQ(file +
                ": it needs _nowhere of /usr/lib/libtest.dylib, which this process has not; link the library "
                "that has it into this program",
            loadError(file));
}

TEST_F(Loader, HidesWhatTheProcessHas) {
  const std::string file =
      build("#include <string.h>\nEXPORT size_t entry(const char* t) { return strlen(t); }", {"_strlen"});
  EXPECT_EQ(5u, function<size_t(const char*)>(macho::load(file))("hello"));
  macho::LoadOptions options;
  options.hidden = {"strlen"};
  EXPECT_EQ(0u, loadError(file, options).find(file + ": it needs _strlen of /usr/lib/libtest.dylib"));
}

TEST_F(Loader, AsksTheCallersLookupBeforeTheProcess) {
  const std::string file =
      build("extern \"C\" int abs(int); EXPORT int entry(int i) { return abs(i); }", {"_abs"});
  EXPECT_EQ(3, function<int(int)>(macho::load(file))(-3));
  macho::LoadOptions options;
  options.lookup = [](const std::string& name) {
    return name == "abs" ? reinterpret_cast<void*>(&twice) : nullptr;
  };
  EXPECT_EQ(-6, function<int(int)>(macho::load(file, options))(-3));
}

TEST_F(Loader, KnowsTheNamesThatOnlyTheOtherSystemHas) {
  const macho::Image image = macho::load(
      build(R"(
    #include <new>
    #include <string.h>
    EXPORT int entry(int n) {
      char* bytes = new char[n];
      memset(bytes, 0, n);
      int sum = 0;
      for (int i = 0; i < n; ++i) sum |= bytes[i];
      delete[] bytes;
      int* one = new int(sum);
      sum = *one;
      asm volatile("" : : "r"(one) : "memory");
      delete one;
      return sum;
    }
    extern "C" void __bzero(void*, size_t); EXPORT void clear(void* p, size_t n) { __bzero(p, n); }
  )",
            {"__Znam", "__ZdaPv", "__Znwm", "__ZdlPv", "___bzero", "_memset"}, {"_entry", "_clear"}));
  EXPECT_EQ(0, function<int(int)>(image)(1000));
  char text[] = "text";
  function<void(void*, size_t)>(image, "_clear")(text, 2);
  EXPECT_EQ(0, std::memcmp(text, "\0\0xt", 4));
}

TEST_F(Loader, HasTheFunctionsThatFillMemoryWithAPattern) {
  const macho::Image image = macho::load(build(
      R"(
    extern "C" void memset_pattern4(void*, const void*, unsigned long);
    extern "C" void memset_pattern8(void*, const void*, unsigned long);
    extern "C" void memset_pattern16(void*, const void*, unsigned long);
    EXPORT void entry(char* p, const char* pattern) {
      memset_pattern4(p, pattern, 10);
      memset_pattern8(p + 11, pattern, 19);
      memset_pattern16(p + 31, pattern, 18);
    }
  )",
      {"_memset_pattern4", "_memset_pattern8", "_memset_pattern16"}));
  std::string memory(50, '.');
  function<void(char*, const char*)>(image)(memory.data(), "abcdefghijklmnop");
  EXPECT_EQ("abcdabcdab.abcdefghabcdefghabc.abcdefghijklmnopab.", memory);
}

// The access rights of the page at this address, as the kernel has them.
std::string rights(const void* address) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    std::istringstream words(line);
    uint64_t begin = 0, end = 0;
    char dash;
    std::string flags;
    words >> std::hex >> begin >> dash >> end >> flags;
    const auto value = reinterpret_cast<uintptr_t>(address);
    if (begin <= value && value < end) return flags;
  }
  return "not mapped";
}

TEST_F(Loader, LeavesCodeUnwritableAndDataUnexecutable) {
  const macho::Image image =
      macho::load(build("static int counter = 5; EXPORT int* entry() { return &counter; }"));
  EXPECT_EQ("r-xp", rights(image.symbol("_entry")));
  EXPECT_EQ("r-xp", rights(image.base()));
  EXPECT_EQ("rw-p", rights(function<int*()>(image)()));
  EXPECT_EQ("r--p", rights(static_cast<const uint8_t*>(image.base()) + image.size() - 1));
}

TEST_F(Loader, SaysWhatIsWrongWithAFileThatIsNoDylib) {
  EXPECT_EQ(path("none") + ": can't be read: No such file or directory; name a Mach-O dylib for i386",
            loadError(path("none")));
  const std::string text = write("text", "hello, this is a letter, not a program at all");
  EXPECT_EQ(text + ": not a 32-bit Mach-O file; build or copy the file again", loadError(text));
  const std::string object = compile("a", "EXPORT int entry() { return 1; }");
  EXPECT_EQ(object + ": not a dylib but another kind of Mach-O file; build or copy the file again",
            loadError(object));
  const std::string folder = path("");
  EXPECT_EQ(0u, loadError(folder).find(folder + ": can't be read: ")) << loadError(folder);
}

}  // namespace
