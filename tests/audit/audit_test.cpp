// The audit of the dylib, and the proof that the audit sees: altered copies, each with what must be found.
#include "tests/audit/audit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iostream>
#include <set>

#include "tests/audit/altered.h"
#include "tests/support/main.h"
#include "tests/support/scratch_folder.h"

AuditFiles files;

namespace {

typedef std::vector<std::string> Findings;

// So many findings, of which these are parts.
void expectFindings(const Findings& parts, const Findings& findings) {
  ASSERT_EQ(parts.size(), findings.size()) << testing::PrintToString(findings);
  for (size_t i = 0; i < parts.size(); ++i) {
    EXPECT_PRED_FORMAT2(testing::IsSubstring, parts[i], findings[i]);
  }
}

class Audit : public testing::Test {
 protected:
  std::vector<std::string> ofDylib(const std::string& bytes) const {
    return audit::findings(altered_.file("altered.dylib", bytes), files.lists);
  }
  std::vector<std::string> ofList(const std::string& text) const {
    return audit::findings(files.dylib, {altered_.file("altered.txt", text), files.lists.introduced});
  }

  ScratchFolder altered_;
};

TEST_F(Audit, FindsNothingWrongWithTheDylib) {
  EXPECT_EQ(Findings(), audit::findings(files.dylib, files.lists));
}

// The numbers of a row of the table, by its name with the blanks before it; 0 when there is none.
size_t sizeIn(const std::string& table, const std::string& row) {
  const size_t at = ("\n" + table).find("\n" + row + " ");
  return at == std::string::npos ? 0 : std::stoul(table.substr(at + row.size()));
}

TEST_F(Audit, TellsWhereTheBytesAre) {
  const std::string table = audit::sizeTable(files.dylib);
  std::cout << table;
  const size_t whole = contents(files.dylib).size();
  EXPECT_EQ(whole, sizeIn(table, "__TEXT") + sizeIn(table, "__DATA") + sizeIn(table, "__LINKEDIT"));
  EXPECT_EQ(whole, sizeIn(table, "of 98304 at the most"));
  size_t linkedit = 0;
  for (const char* part : {"rebases", "binds", "exports", "symbols", "indirect symbols", "strings"}) {
    EXPECT_NE(0u, sizeIn(table, std::string("  ") + part)) << part;
    linkedit += sizeIn(table, std::string("  ") + part);
  }
  EXPECT_EQ(sizeIn(table, "__LINKEDIT"), linkedit);
  EXPECT_LT(whole / 4, sizeIn(table, "  __text"));
  EXPECT_GT(whole, sizeIn(table, "  __text"));
}

TEST_F(Audit, FindsAFileThatIsTooLarge) {
  std::string bytes = contents(files.dylib);
  ASSERT_GE(audit::kLargestSize, bytes.size());
  bytes.resize(audit::kLargestSize);
  EXPECT_EQ(Findings(), ofDylib(bytes));
  bytes += '\0';
  EXPECT_EQ(Findings{"it takes 98305 bytes, which is more than 98304"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAnotherKindOfFile) {
  std::string bytes = contents(files.dylib);
  setWord(bytes, 12, 9);  // a stub of a dylib
  const Findings findings = ofDylib(bytes);
  EXPECT_EQ(1, std::count(findings.begin(), findings.end(), "it is not an i386 dylib but I386 DYLIB_STUB"));
}

TEST_F(Audit, FindsAnotherMinimumSystem) {
  std::string bytes = contents(files.dylib);
  setWord(bytes, command(bytes, kMinimumSystem) + 8, 0x000A0700);
  EXPECT_EQ(Findings{"its minimum system is not 10.6 but 10.7"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAStronglyLoadedCoreServices) {
  std::string bytes = contents(files.dylib);
  setWord(bytes, command(bytes, kLoadWeakDylib, "/CoreServices"), kLoadDylib);
  expectFindings({"CoreServices is not loaded weakly", "CoreServices 41.0.0 1.0.0 LC_LOAD_DYLIB,"},
                 ofDylib(bytes));
}

TEST_F(Audit, FindsAnotherVersionOfALibrary) {
  std::string bytes = contents(files.dylib);
  setWord(bytes, command(bytes, kLoadDylib, "/CoreFoundation") + 16, 0x02000000);
  expectFindings({"CoreFoundation 512.0.0 150.0.0 LC_LOAD_DYLIB, listed is"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAStronglyImportedConstant) {
  std::string bytes = contents(files.dylib);
  const uint32_t binds = wordAt(bytes, command(bytes, kDyldInfo) + 16);
  // In front of the name stands the opcode, whose lowest bit says weak.
  const size_t name = bytes.find("_kMD", binds);
  ASSERT_NE(std::string::npos, name);
  ASSERT_EQ(0x41, bytes[name - 1]);
  bytes[name - 1] = 0x40;
  EXPECT_EQ(Findings{std::string(&bytes[name]) + " is not a weak import"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAnotherExport) {
  const std::string bytes = contents(files.dylib);
  const uint32_t trie = wordAt(bytes, command(bytes, kDyldInfo) + 40);
  EXPECT_EQ(
      (Findings{"it does not export _REALPluginMain", "it exports _REALPluginMine"}),
      ofDylib(bytes.substr(0, trie) + replaced(bytes.substr(trie), "_REALPluginMain", "_REALPluginMine")));
}

TEST_F(Audit, FindsAStaticInitialiser) {
  // The section's name in its record; the old one is found where the segment's sections are.
  std::string bytes = contents(files.dylib);
  const size_t data = command(bytes, kSegment, "__DATA");
  const size_t name = bytes.find("__const", data);
  ASSERT_NE(std::string::npos, name);
  std::memcpy(&bytes[name], "__mod_init_func\0", 16);
  EXPECT_EQ(Findings{"it has the section __mod_init_func"}, ofDylib(bytes));
}

TEST_F(Audit, FindsATextThatChangesAtLoadTime) {
  std::string bytes = contents(files.dylib);
  const uint32_t rebases = wordAt(bytes, command(bytes, kDyldInfo) + 8);
  // Set the type; segment 0, offset 0x1000; once; done.
  const uint8_t stream[] = {0x11, 0x20, 0x80, 0x20, 0x51, 0x00};
  std::memcpy(&bytes[rebases], stream, sizeof stream);
  expectFindings({"at load time its text changes at 0x"}, ofDylib(bytes));
}

TEST_F(Audit, FindsRelocationsOfTheOldKind) {
  std::string bytes = contents(files.dylib);
  const size_t dynamic = command(bytes, kDynamicSymbols);
  const uint32_t rebases = wordAt(bytes, command(bytes, kDyldInfo) + 8);
  setWord(bytes, command(bytes, kDyldInfo) + 8, 0);  // its place is taken, or llvm-objdump sees an overlap
  setWord(bytes, command(bytes, kDyldInfo) + 12, 0);
  setWord(bytes, dynamic + 72, rebases);
  setWord(bytes, dynamic + 76, 1);
  EXPECT_EQ(Findings{"it has relocations of the old kind: nlocrel"}, ofDylib(bytes));
}

TEST_F(Audit, FindsWhatTheListHasNotAndWhatTheListAloneHas) {
  const std::string list = contents(files.lists.imports);
  EXPECT_EQ((Findings{"it imports CoreFoundation _CFRelease, which is not listed"}),
            ofList(replaced(list, "\n_CFRelease\n", "\n")));
  EXPECT_EQ((Findings{"it does not import CoreFoundation _CFUnheardOf, which is listed"}),
            ofList(replaced(list, "\n_CFRelease\n", "\n_CFRelease\n_CFUnheardOf\n")));
  expectFindings({"is nothing, listed is /usr/lib/libz.1.dylib 1.2.3 1.0.0 LC_LOAD_DYLIB"},
                 ofList(list + "library /usr/lib/libz.1.dylib 1.2.3 1\n"));
}

TEST_F(Audit, FindsAnInitialiserByItsType) {
  std::string bytes = contents(files.dylib);
  // The type is in the lowest byte of the flags of the section's record, 56 bytes from its name.
  const size_t name = bytes.find("__const", command(bytes, kSegment, "__DATA"));
  ASSERT_NE(std::string::npos, name);
  bytes[name + 56] = 9;
  EXPECT_EQ(Findings{"it has the section __const"}, ofDylib(bytes));
}

TEST_F(Audit, FindsWhatIsNotAligned) {
  std::string bytes = contents(files.dylib);
  const size_t name = bytes.find("__common", command(bytes, kSegment, "__DATA"));
  ASSERT_NE(std::string::npos, name);
  setWord(bytes, name + 44, 12);
  EXPECT_EQ(Findings{"the section __common is not where its alignment wants it"}, ofDylib(bytes));
}

TEST_F(Audit, FindsASectionThatIsElsewhere) {
  std::string bytes = contents(files.dylib);
  const size_t name = bytes.find("__data", command(bytes, kSegment, "__DATA"));
  ASSERT_NE(std::string::npos, name);
  setWord(bytes, name + 40, wordAt(bytes, name + 40) + 16);
  EXPECT_EQ(Findings{"the section __data is elsewhere in the file"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAStrongImportThatTheMinimumSystemLacks) {
  const std::string list = contents(files.lists.introduced);
  const audit::Lists lists = {
      files.lists.imports,
      altered_.file("introduced.txt", replaced(list, "_CFRelease 10.0", "_CFRelease 10.10"))};
  EXPECT_EQ(Findings{"_CFRelease is first in macOS 10.10, and not a weak import"},
            audit::findings(files.dylib, lists));
}

TEST_F(Audit, LooksAtWhatIsBoundAtItsFirstCall) {
  const Findings findings = audit::findings(files.otherDylib, files.lists);
  const auto isMissing = [](const std::string& finding) {
    return finding.starts_with("it does not import ");
  };
  EXPECT_TRUE(std::ranges::none_of(findings, isMissing)) << testing::PrintToString(findings);
}

// The versions

TEST(Introduced, AreThoseOfAllImports) {
  std::set<std::string> imports, versions;
  for (const std::string& import : audit::wantedOf(files.lists).imports)
    imports.insert(import.substr(import.find(' ') + 1));
  for (const auto& [symbol, version] : audit::introducedIn(files.lists)) {
    EXPECT_TRUE(version.starts_with("10.")) << symbol << ' ' << version;
    versions.insert(symbol);
  }
  EXPECT_EQ(imports, versions);
}

TEST(Introduced, AreThoseOfTheDocumentOfKeys) {
  const std::string document = contents(files.keys);
  size_t keys = 0;
  for (const auto& [symbol, version] : audit::introducedIn(files.lists)) {
    if (!symbol.starts_with("_kMDItem")) continue;
    ++keys;
    EXPECT_NE(std::string::npos, document.find("\n| `" + symbol.substr(1) + "` | " + version)) << symbol;
  }
  EXPECT_EQ(168u, keys);  // all but kMDItemDateAdded, whose name the plug-in spells
}

TEST(Introduced, AreComparedByTheirNumbers) {
  EXPECT_TRUE(audit::isLater("10.10", "10.9"));
  EXPECT_TRUE(audit::isLater("11", "10.9"));
  EXPECT_FALSE(audit::isLater("10.6", "10.6"));
  EXPECT_FALSE(audit::isLater("10.4", "10.10"));
}

}  // namespace

const std::vector<FileOption> fileOptions = {
    {"dylib", &files.dylib},           {"other-dylib", &files.otherDylib},
    {"imports", &files.lists.imports}, {"introduced", &files.lists.introduced},
    {"program", &files.program},       {"keys", &files.keys}};
