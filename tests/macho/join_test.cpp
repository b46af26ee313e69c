// Equal constants of several objects, of which macho-link keeps one.
#include "tests/macho/toolbox.h"

namespace {

using toolbox::function;
using toolbox::Outcome;

class Join : public toolbox::Workshop {
 protected:
  // The dylib of these objects, as bytes; fails the test when they don't link.
  std::string linked(const std::vector<std::string>& objects,
                     const std::vector<std::string>& imports = {}) const {
    const Outcome outcome = link(objects, imports);
    EXPECT_EQ("", outcome.output);
    EXPECT_EQ(0, outcome.status);
    return toolbox::readFile(path("test.dylib"));
  }

  static size_t occurrences(const std::string& bytes, const std::string& part) {
    size_t count = 0;
    for (size_t at = bytes.find(part); at != std::string::npos; at = bytes.find(part, at + 1)) ++count;
    return count;
  }

  // The size of a section, 0 when it isn't there.
  size_t sizeOf(const std::string& section) const {
    const std::string headers = toolbox::run({LLVM_OBJDUMP, "--section-headers", path("test.dylib")}).output;
    const size_t at = headers.find(" " + section + " ");
    return at == std::string::npos ? 0 : std::stoul(headers.substr(at + section.size() + 2), nullptr, 16);
  }
};

TEST_F(Join, KeepsOneOfEqualStrings) {
  const std::string a =
      compile("a",
              "const char* other(int); static const char* const mine[] = {\"shared\", \"a\"};"
              "EXPORT int entry(int i) {"
              "  return (mine[i] == other(i)) * 10 + (mine[i][0] == other(i)[0]); }");
  const std::string b = compile("b",
                                "static const char* const mine[] = {\"shared\", \"b\"};"
                                "const char* other(int i) { return mine[i]; }");
  EXPECT_EQ(1u, occurrences(linked({a, b}), "shared"));
  const macho::Image image = macho::load(path("test.dylib"));
  EXPECT_EQ(11, function<int(int)>(image)(0));
  EXPECT_EQ(0, function<int(int)>(image)(1));
}

TEST_F(Join, LeavesAStringAloneThatIsTheEndOfAnother) {
  linked({compile("a",
                  "static const char* const texts[] = {\"the whole\", \"whole\"};"
                  "EXPORT const char* entry(int i) { return texts[i]; }")});
  EXPECT_EQ(sizeof "the whole" + sizeof "whole", sizeOf("__cstring"));
}

TEST_F(Join, KeepsOneOfEqualNumbers) {
  const std::string a = compile("a",
                                "double other(double); EXPORT double entry(double d) {"
                                "  return other(d * 1.25) + 2.5; }");
  const std::string b = compile("b", "double other(double d) { return d * 2.5 + 1.25; }");
  linked({a, b});
  EXPECT_EQ(2u * 8, sizeOf("__literal8"));
  EXPECT_EQ(4 * 1.25 * 2.5 + 1.25 + 2.5, function<double(double)>(macho::load(path("test.dylib")))(4));
}

TEST_F(Join, LeavesVariablesArraysAndFunctionsAlone) {
  const std::string a =
      compile("a",
              "extern const int other[]; extern const int mine[] = {1, 2, 3};"
              "int same(int i) { return i * 12345; } int equal(int i);"
              "EXPORT int entry() { int (*volatile f)(int) = same; int (*volatile g)(int) = equal;"
              "  const int* volatile p = mine; const int* volatile q = other;"
              "  return (f == g) + (p == q); }");
  const std::string b = compile("b",
                                "extern const int other[] = {1, 2, 3};"
                                "int equal(int i) { return i * 12345; }");
  linked({a, b});
  EXPECT_EQ(0, function<int()>(macho::load(path("test.dylib")))());
}

// Functions with equal exception tables, but for the type that they catch.
const char kCatching[] = R"(
extern "C" void call(int); struct One {}; struct Two {};
template <typename Type> __attribute__((noinline)) int catching(int i) {
  try { call(i); } catch (const Type&) { return i; }
  return 0;
}
)";

TEST_F(Join, KeepsOneOfEqualExceptionTables) {
  const std::vector<std::string> imports = {"_call", "___gxx_personality_v0", "___cxa_begin_catch",
                                            "___cxa_end_catch", "__ZTVN10__cxxabiv117__class_type_infoE"};
  const std::string one = compile("one", std::string(kCatching) +
                                             "EXPORT int entry(int i) {"
                                             "  return catching<One>(i) + 1; }");
  linked({one}, imports);
  const size_t table = sizeOf("__gcc_except_tab"), frames = sizeOf("__eh_frame");
  ASSERT_NE(0u, table);

  const std::string a = compile("a", std::string(kCatching) +
                                         "int other(int); EXPORT int entry(int i) {"
                                         "  return catching<One>(i) + other(i) + 1; }");
  // Another name for the same function, so that it isn't one copy of it that stays.
  std::string renamed = kCatching;
  renamed.replace(renamed.find("catching"), 8, "fetching");
  const std::string same = compile("same", renamed + "int other(int i) { return fetching<One>(i) + 2; }");
  linked({a, same}, imports);
  EXPECT_EQ(table, sizeOf("__gcc_except_tab"));
  // Three or four records more of functions, and no common record.
  const size_t bothFrames = sizeOf("__eh_frame");
  EXPECT_LT(frames, bothFrames);

  const std::string differing =
      compile("differing", renamed + "int other(int i) { return fetching<Two>(i) + 2; }");
  linked({a, differing}, imports);
  EXPECT_EQ(2 * table, sizeOf("__gcc_except_tab"));
  EXPECT_EQ(bothFrames, sizeOf("__eh_frame"));
}

TEST_F(Join, KeepsOneOfEqualCommonFrameRecords) {
  std::vector<std::string> objects;
  std::string calls;
  for (const std::string name : {"a", "b", "c", "d"}) {
    objects.push_back(compile(name, "extern \"C\" void call(); int " + name + "() { call(); return 1; }"));
    calls += " + " + name + "()";
  }
  objects.push_back(compile("entry",
                            "int a(); int b(); int c(); int d();\n"
                            "EXPORT int entry() { return 0" +
                                calls + "; }"));
  linked(objects, {"_call"});
  const std::string dump = toolbox::run({LLVM_OBJDUMP, "--dwarf=frames", path("test.dylib")}).output;
  EXPECT_EQ(1u, occurrences(dump, " CIE\n")) << dump;
  EXPECT_EQ(5u, occurrences(dump, " FDE ")) << dump;
}

}  // namespace
