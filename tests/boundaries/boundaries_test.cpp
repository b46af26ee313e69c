// Another implementation of Core Foundation can take the place of ours: everything around it uses the
// functions that Core Foundation declares and the runtime's class registration, nothing else.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "tests/boundaries/includes.h"
#include "tests/boundaries/symbols.h"

namespace {

Names declared() {
  Names names = declaredInFolder(HEADERS);
  names.merge(declaredIn(RUNTIME_HEADER));
  return names;
}

bool isOfCoreFoundation(const std::string& name, const Names& exported) {
  const auto starts = [&](const char* prefix) { return name.rfind(prefix, 0) == 0; };
  return exported.count(name) != 0 || starts("CF") || starts("kCF") || starts("_CF") || starts("__CF") ||
         starts("_ZN2cf") || starts("_ZNK2cf");
}

// What a part takes from Core Foundation.
Names takenBy(const Names& undefined) {
  static const Names exported = symbolsOf(CORE_FOUNDATION, Symbols::Exported);
  Names taken;
  std::copy_if(undefined.begin(), undefined.end(), std::inserter(taken, taken.end()),
               [](const std::string& name) { return isOfCoreFoundation(name, exported); });
  return taken;
}

Names undeclared(const Names& taken) {
  static const Names allowed = declared();
  Names rest;
  std::set_difference(taken.begin(), taken.end(), allowed.begin(), allowed.end(),
                      std::inserter(rest, rest.end()));
  return rest;
}

struct Part {
  const char* name;
  const char* file;
  Symbols symbols;
  const char* uses;  // something that it surely takes: otherwise the symbols weren't read
};

std::ostream& operator<<(std::ostream& out, const Part& part) {
  return out << part.name;
}

class Boundaries : public testing::TestWithParam<Part> {};

TEST_P(Boundaries, TakesOnlyWhatCoreFoundationDeclares) {
  const Names taken = takenBy(symbolsOf(GetParam().file, GetParam().symbols));
  EXPECT_EQ(taken.count(GetParam().uses), 1U);
  EXPECT_EQ(undeclared(taken), Names{});
}

INSTANTIATE_TEST_SUITE_P(
    , Boundaries,
    testing::Values(Part{"System", SYSTEM, Symbols::Undefined, "_CFRuntimeCreateInstance"},
                    Part{"CoreServices", CORE_SERVICES, Symbols::Undefined, "_CFRuntimeCreateInstance"},
                    Part{"ApplicationServices", APPLICATION_SERVICES, Symbols::Undefined,
                         "_CFRuntimeRegisterClass"},
                    Part{"Carbon", CARBON, Symbols::Undefined, "CFStringGetCString"},
                    Part{"Host", HOST, Symbols::UndefinedOfArchive, "CFRelease"},
                    Part{"Plugin", PLUGIN, Symbols::Undefined, "CFRelease"},
                    Part{"Bridge", BRIDGE, Symbols::Undefined, "CFDictionaryApplyFunction"},
                    Part{"HostTests", HOST_TESTS, Symbols::Undefined, "CFRelease"},
                    Part{"PluginTests", PLUGIN_TESTS, Symbols::Undefined, "CFRelease"},
                    Part{"BridgeTests", BRIDGE_TESTS, Symbols::Undefined, "CFGetRetainCount"}),
    [](const auto& info) { return info.param.name; });

TEST(BoundariesCheck, FindsWhatALibraryTakesBeyondThat) {
  const Names taken = takenBy(symbolsOf(OVERSTEPS, Symbols::Undefined));
  EXPECT_EQ(undeclared(taken), (Names{"CFNobodyDeclaresThis", "_ZN2cf6insideEv"}));
  EXPECT_EQ(taken.count("CFGetRetainCount"), 1U);
}

TEST(BoundariesCheck, ReadsFunctionsAndDataFromTheHeaders) {
  const Names names = declared();
  for (const char* name : {"CFRelease", "kCFNull", "kCFTypeSetCallBacks", "CFDictionaryCreate",
                           "__CFStringMakeConstantString", "_CFRuntimeRegisterClass"}) {
    EXPECT_EQ(names.count(name), 1U) << name;
  }
  EXPECT_EQ(names.count("allocator"), 0U);
}

// What is declared exists: in Core Foundation itself or in the library of what only the Mac's own adds.
TEST(BoundariesCheck, AllThatIsDeclaredIsDefined) {
  Names defined = symbolsOf(CORE_FOUNDATION, Symbols::Exported);
  defined.merge(symbolsOf(SYSTEM, Symbols::Exported));
  Names missing;
  const Names wanted = declared();
  std::set_difference(wanted.begin(), wanted.end(), defined.begin(), defined.end(),
                      std::inserter(missing, missing.end()));
  EXPECT_EQ(missing, Names{});
}

// The ledger is the gate's: it is there whatever Core Foundation is, and only has no lines of one that
// doesn't write them.
TEST(BoundariesCheck, TheLedgerNeedsNoCoreFoundation) {
  EXPECT_EQ(symbolsOf(GATE, Symbols::Exported).count("_ZN7standin6ledgerEv"), 1U);
  EXPECT_EQ(takenBy(symbolsOf(GATE, Symbols::Undefined)), Names{});
}

// What a header alone gives away (a layout, an inline function) leaves no symbol.
TEST(BoundariesCheck, NothingOutsideIncludesAnotherOfItsHeadersThanTheRuntimes) {
  const std::string folder = "standin/corefoundation/";
  int runtimes = 0;
  for (const auto& [file, included] : includesOf(SOURCES)) {
    if (!included.starts_with(folder) || file.starts_with(folder)) continue;
    EXPECT_EQ(included, folder + "CFRuntime.h") << file;
    ++runtimes;
  }
  EXPECT_GT(runtimes, 5);
}

TEST(BoundariesCheck, CoreFoundationExportsNothingElse) {
  EXPECT_EQ(undeclared(symbolsOf(CORE_FOUNDATION, Symbols::Exported)), Names{});
}

}  // namespace
