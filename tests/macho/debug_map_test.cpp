// macho-link -debug-map: where each symbol went.
#include "tests/macho/toolbox.h"

namespace {

using testing::Test;
using toolbox::Outcome;

class DebugMap : public toolbox::Workshop {
 protected:
  Outcome linkWithMap(const std::vector<std::string>& objects, const std::string& map) const {
    std::vector<std::string> command = {
        toolbox::linker(), "-o",        path("test.dylib"), "-install_name", "n", "-imports",
        importList({}),    "-exported", "_entry",           "-debug-map",    map};
    command.insert(command.end(), objects.begin(), objects.end());
    return toolbox::run(command);
  }
};

// The address of a symbol, as eight hexadecimal digits without leading zeros; empty when there is none.
std::string addressOf(const std::string& symbol, const std::string& file) {
  const std::string names = toolbox::run({LLVM_NM, file}).output;
  const size_t at = names.find(" " + symbol + "\n");
  if (at == std::string::npos) return "";
  std::string digits = names.substr(names.rfind('\n', at) + 1, 8);
  digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
  return digits;
}

TEST_F(DebugMap, TellsWhereTheObjectHasASymbolAndWhereTheDylibHasIt) {
  const std::string first = compile("first", "EXPORT int other(int i) { return i; }");
  const std::string object =
      compile("it's",
              "static int table[100]; extern \"C\" int other(int);\n"
              "static __attribute__((noinline)) int hidden(int i) { return ++table[i]; }\n"
              "EXPORT int entry(int i) { return hidden(i) + other(i); }");
  ASSERT_EQ("", linkWithMap({first, object}, path("map")).output);
  const std::string map = toolbox::readFile(path("map"));
  EXPECT_NE(std::string::npos, map.find("binary-path: '" + path("test.dylib") + "'\n")) << map;
  EXPECT_NE(std::string::npos, map.find("  - filename: '" + path("it''s.o") + "'\n")) << map;
  const std::string there = addressOf("_entry", object), here = addressOf("_entry", path("test.dylib"));
  ASSERT_NE("", here);
  EXPECT_NE(there, here);
  EXPECT_NE(std::string::npos,
            map.find("{ sym: '_entry', objAddr: 0x" + there + ", binAddr: 0x" + here + ", "))
      << map;
  EXPECT_NE(std::string::npos,
            map.find("{ sym: '__ZL6hiddeni', objAddr: 0x" + addressOf("__ZL6hiddeni", object)))
      << map;
}

TEST_F(DebugMap, LeavesTheDylibAsItIsWithout) {
  const std::string source = "EXPORT int entry(int i) { return i; }";
  const std::string plain = toolbox::readFile(build(source, {}));
  ASSERT_EQ(0, toolbox::run({toolbox::linker(), "-o", path("again.dylib"), "-install_name", "@rpath/t",
                             "-imports", importList({}), "-exported", "_entry", "-debug-map", path("map"),
                             compile("test", source, {"-gdwarf-4", "-fforce-dwarf-frame"})})
                   .status);
  EXPECT_EQ(plain, toolbox::readFile(path("again.dylib")));
}

TEST_F(DebugMap, ThatCanNotBeWrittenIsNamed) {
  const std::string map = path("no/such/map");
  const Outcome result = linkWithMap({compile("a", "EXPORT int entry() { return 1; }")}, map);
  EXPECT_EQ(1, result.status);
  EXPECT_EQ("macho-link: " + map +
                ": can't be written: No such file or directory; check that the folder exists and has room\n",
            result.output);
}

}  // namespace
