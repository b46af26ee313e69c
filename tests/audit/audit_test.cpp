// The audit of the dylib, and the proof that the audit sees: altered copies, each with what must be found.
#include "tests/audit/audit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>

#include "tests/support/main.h"
#include "tests/support/scratch_folder.h"

namespace {

typedef std::vector<std::string> Findings;

std::string dylibPath, importsPath;

// So many findings, of which these are parts.
void expectFindings(const Findings& parts, const Findings& findings) {
  ASSERT_EQ(parts.size(), findings.size()) << testing::PrintToString(findings);
  for (size_t i = 0; i < parts.size(); ++i) {
    EXPECT_PRED_FORMAT2(testing::IsSubstring, parts[i], findings[i]);
  }
}

std::string contents(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

class Audit : public testing::Test {
 protected:
  std::vector<std::string> ofDylib(const std::string& bytes) const {
    return audit::findings(altered_.file("altered.dylib", bytes), importsPath);
  }
  std::vector<std::string> ofList(const std::string& text) const {
    return audit::findings(dylibPath, altered_.file("altered.txt", text));
  }

  ScratchFolder altered_;
};

uint32_t wordAt(const std::string& bytes, size_t offset) {
  uint32_t word;
  std::memcpy(&word, &bytes.at(offset), sizeof word);
  return word;
}

void setWord(std::string& bytes, size_t offset, uint32_t word) {
  std::memcpy(&bytes.at(offset), &word, sizeof word);
}

// The offset of the first load command of this kind in which this text stands.
size_t command(const std::string& bytes, uint32_t kind, const std::string& text = "") {
  size_t offset = 28;
  for (uint32_t left = wordAt(bytes, 16); left; --left) {
    const uint32_t size = wordAt(bytes, offset + 4);
    if (wordAt(bytes, offset) == kind && bytes.substr(offset, size).find(text) != std::string::npos)
      return offset;
    offset += size;
  }
  throw std::runtime_error("no such load command");
}

constexpr uint32_t kSegment = 0x1, kLoadDylib = 0xC, kLoadWeakDylib = 0x80000018, kDyldInfo = 0x80000022,
                   kMinimumSystem = 0x24, kDynamicSymbols = 0xB;

std::string replaced(std::string text, const std::string& old, const std::string& fresh) {
  const size_t position = text.find(old);
  EXPECT_NE(std::string::npos, position) << old;
  return position == std::string::npos ? text : text.replace(position, old.size(), fresh);
}

TEST_F(Audit, FindsNothingWrongWithTheDylib) {
  EXPECT_EQ(Findings(), audit::findings(dylibPath, importsPath));
}

// The numbers of a row of the table, by its name with the blanks before it; 0 when there is none.
size_t sizeIn(const std::string& table, const std::string& row) {
  const size_t at = ("\n" + table).find("\n" + row + " ");
  return at == std::string::npos ? 0 : std::stoul(table.substr(at + row.size()));
}

TEST_F(Audit, TellsWhereTheBytesAre) {
  const std::string table = audit::sizeTable(dylibPath);
  std::cout << table;
  const size_t whole = contents(dylibPath).size();
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
  std::string bytes = contents(dylibPath);
  ASSERT_GE(audit::kLargestSize, bytes.size());
  bytes.resize(audit::kLargestSize);
  EXPECT_EQ(Findings(), ofDylib(bytes));
  bytes += '\0';
  EXPECT_EQ(Findings{"it takes 98305 bytes, which is more than 98304"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAnotherKindOfFile) {
  std::string bytes = contents(dylibPath);
  setWord(bytes, 12, 9);  // a stub of a dylib
  const Findings findings = ofDylib(bytes);
  EXPECT_EQ(1, std::count(findings.begin(), findings.end(), "it is not an i386 dylib but I386 DYLIB_STUB"));
}

TEST_F(Audit, FindsAnotherMinimumSystem) {
  std::string bytes = contents(dylibPath);
  setWord(bytes, command(bytes, kMinimumSystem) + 8, 0x000A0700);
  EXPECT_EQ(Findings{"its minimum system is not 10.6 but 10.7"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAStronglyLoadedCoreServices) {
  std::string bytes = contents(dylibPath);
  setWord(bytes, command(bytes, kLoadWeakDylib, "/CoreServices"), kLoadDylib);
  expectFindings({"CoreServices is not loaded weakly", "CoreServices 41.0.0 1.0.0 LC_LOAD_DYLIB,"},
                 ofDylib(bytes));
}

TEST_F(Audit, FindsAnotherVersionOfALibrary) {
  std::string bytes = contents(dylibPath);
  setWord(bytes, command(bytes, kLoadDylib, "/CoreFoundation") + 16, 0x02000000);
  expectFindings({"CoreFoundation 512.0.0 150.0.0 LC_LOAD_DYLIB, listed is"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAStronglyImportedConstant) {
  std::string bytes = contents(dylibPath);
  const uint32_t binds = wordAt(bytes, command(bytes, kDyldInfo) + 16);
  // In front of the name stands the opcode, whose lowest bit says weak.
  const size_t name = bytes.find("_kMD", binds);
  ASSERT_NE(std::string::npos, name);
  ASSERT_EQ(0x41, bytes[name - 1]);
  bytes[name - 1] = 0x40;
  EXPECT_EQ(Findings{std::string(&bytes[name]) + " is not a weak import"}, ofDylib(bytes));
}

TEST_F(Audit, FindsAnotherExport) {
  const std::string bytes = contents(dylibPath);
  const uint32_t trie = wordAt(bytes, command(bytes, kDyldInfo) + 40);
  EXPECT_EQ(
      (Findings{"it does not export _REALPluginMain", "it exports _REALPluginMine"}),
      ofDylib(bytes.substr(0, trie) + replaced(bytes.substr(trie), "_REALPluginMain", "_REALPluginMine")));
}

TEST_F(Audit, FindsAStaticInitialiser) {
  // The section's name in its record; the old one is found where the segment's sections are.
  std::string bytes = contents(dylibPath);
  const size_t data = command(bytes, kSegment, "__DATA");
  const size_t name = bytes.find("__const", data);
  ASSERT_NE(std::string::npos, name);
  std::memcpy(&bytes[name], "__mod_init_func\0", 16);
  EXPECT_EQ(Findings{"it has the section __mod_init_func"}, ofDylib(bytes));
}

TEST_F(Audit, FindsATextThatChangesAtLoadTime) {
  std::string bytes = contents(dylibPath);
  const uint32_t rebases = wordAt(bytes, command(bytes, kDyldInfo) + 8);
  // Set the type; segment 0, offset 0x1000; once; done.
  const uint8_t stream[] = {0x11, 0x20, 0x80, 0x20, 0x51, 0x00};
  std::memcpy(&bytes[rebases], stream, sizeof stream);
  expectFindings({"at load time its text changes at 0x"}, ofDylib(bytes));
}

TEST_F(Audit, FindsRelocationsOfTheOldKind) {
  std::string bytes = contents(dylibPath);
  const size_t dynamic = command(bytes, kDynamicSymbols);
  const uint32_t rebases = wordAt(bytes, command(bytes, kDyldInfo) + 8);
  setWord(bytes, command(bytes, kDyldInfo) + 8, 0);  // its place is taken, or llvm-objdump sees an overlap
  setWord(bytes, command(bytes, kDyldInfo) + 12, 0);
  setWord(bytes, dynamic + 72, rebases);
  setWord(bytes, dynamic + 76, 1);
  EXPECT_EQ(Findings{"it has relocations of the old kind: nlocrel"}, ofDylib(bytes));
}

TEST_F(Audit, FindsWhatTheListHasNotAndWhatTheListAloneHas) {
  const std::string list = contents(importsPath);
  EXPECT_EQ((Findings{"it imports CoreFoundation _CFRelease, which is not listed"}),
            ofList(replaced(list, "\n_CFRelease\n", "\n")));
  EXPECT_EQ((Findings{"it does not import CoreFoundation _CFUnheardOf, which is listed"}),
            ofList(replaced(list, "\n_CFRelease\n", "\n_CFRelease\n_CFUnheardOf\n")));
  expectFindings({"is nothing, listed is /usr/lib/libz.1.dylib 1.2.3 1.0.0 LC_LOAD_DYLIB"},
                 ofList(list + "library /usr/lib/libz.1.dylib 1.2.3 1\n"));
}

}  // namespace

const std::vector<FileOption> fileOptions = {{"dylib", &dylibPath}, {"imports", &importsPath}};
