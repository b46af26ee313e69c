// The shared methods that name the attribute keys.
#include <fstream>
#include <set>

#include "tests/plugin/fixture.h"
#include "tests/support/memory_fault.h"
#include "tests/support/sanitizers.h"

namespace {

const char* const kDeclaredKeys[] = {
#include "tests/plugin/tables/declared_keys.inc"
};
const size_t kSchemaMethods = 5;

class AttributeKeys : public PluginTest {};

TEST_F(AttributeKeys, Are169BehindTheFiveSchemaMethodsInTheDeclaredOrder) {
  start();
  std::vector<std::string> shared;
  for (const auto& member : host::members("MDItemZNK")) {
    if (member.kind == host::MemberKind::sharedMethod) shared.push_back(member.text);
  }
  ASSERT_EQ(174u, shared.size());
  for (size_t i = 0; i < std::size(kDeclaredKeys); ++i) {
    EXPECT_EQ(kDeclaredKeys[i] + std::string(" as string"), shared[i + kSchemaMethods]);
  }
}

TEST_F(AttributeKeys, AnswerTheirOwnNames) {
  start();
  ASSERT_EQ(169u, std::size(kDeclaredKeys));
  for (const char* key : kDeclaredKeys) EXPECT_EQ(key, host::callShared("MDItemZNK", key).text());
}

// The text is that of the platform's constant: it comes as every text of the platform does.
TEST_F(AttributeKeys, AreThePlatformsConstantsButForTheDateAdded) {
  start();
  for (const char* key : kDeclaredKeys) {
    host::Value name;
    const Calls calls = callsOf([&] { name = host::callShared("MDItemZNK", key); });
    const bool added = key == std::string("kMDItemDateAdded");
    EXPECT_EQ(added ? host::kEncodingAscii : host::kEncodingUtf8, name.encoding()) << key;
    EXPECT_EQ(added ? 0 : 1, std::count(calls.begin(), calls.end(), "CFStringGetCString")) << key;
  }
}

TEST_F(AttributeKeys, AreBuiltAnewAtEveryCall) {
  start();
  const host::Value first = host::callShared("MDItemZNK", "kMDItemTitle");
  const host::Value second = host::callShared("MDItemZNK", "kMDItemTitle");
  EXPECT_NE(first.handle(), second.handle());
  EXPECT_EQ((Calls{"CFStringGetLength", "CFStringGetCString", "REALBuildString", "REALSetStringEncoding"}),
            callsOf([] { host::callShared("MDItemZNK", "kMDItemTitle"); }));
  EXPECT_EQ(host::kEncodingUtf8, first.encoding());
}

TEST_F(AttributeKeys, OfTheDateAddedIsSpelledByThePlugInItself) {
  start();
  host::Value added = host::callShared("MDItemZNK", "kMDItemDateAdded");
  EXPECT_EQ("kMDItemDateAdded", added.text());
  EXPECT_EQ(host::kEncodingAscii, added.encoding());
  EXPECT_EQ((Calls{"REALBuildString", "REALSetStringEncoding"}),
            callsOf([&] { added = host::callShared("MDItemZNK", "kMDItemDateAdded"); }));
}

TEST_F(AttributeKeys, AllAnswerOnASystemThatLacksOneOfThemButForThatOne) {
  if (!isMachO()) GTEST_SKIP() << "only our loader can take a constant away";
  if (underAddressSanitizer()) GTEST_SKIP() << "the dylib is not instrumented: the other build does this";
  for (const char* missing : kDeclaredKeys) {
    start({}, {missing});
    for (const char* key : kDeclaredKeys) {
      if (key != missing) {
        EXPECT_EQ(key, host::callShared("MDItemZNK", key).text()) << "without " << missing;
      }
    }
    TearDown();
  }
}

TEST_F(AttributeKeys, OfTheDateAddedAnswersOnASystemThatLacksAllOfThem) {
  if (!isMachO()) GTEST_SKIP() << "only our loader can take a constant away";
  start({}, {std::begin(kDeclaredKeys), std::end(kDeclaredKeys)});
  EXPECT_EQ("kMDItemDateAdded", host::callShared("MDItemZNK", "kMDItemDateAdded").text());
}

// Of a row of a table: "| one | two |".
std::vector<std::string> cellsOf(const std::string& row) {
  std::vector<std::string> cells;
  if (!row.starts_with("| ")) return cells;
  for (size_t start = 2, end; (end = row.find(" |", start)) != std::string::npos; start = end + 3) {
    cells.push_back(row.substr(start, end - start));
  }
  return cells;
}

// The document for users lists the keys in the same order, with the types that the schema knows.
TEST_F(AttributeKeys, AreDocumentedWithTheirTypes) {
  start();
  std::ifstream document(KEYS_DOCUMENT);
  std::vector<std::string> keys;
  for (std::string line; std::getline(document, line);) {
    const std::vector<std::string> cells = cellsOf(line);
    if (cells.size() != 3 || !cells[0].starts_with('`')) continue;
    const std::string key = cells[0].substr(1, cells[0].size() - 2), type = cells[2];
    keys.push_back(key);
    const std::string word = type.substr(0, type.find(" of "));
    EXPECT_EQ(word == "Data" ? "" : word,  // the class has no word for data
              host::callShared("MDItemZNK", "AttributeType", key).text())
        << key;
    EXPECT_EQ(type != word, host::callShared("MDItemZNK", "AttributeMultiValued", key).boolean()) << key;
  }
  EXPECT_EQ(std::vector<std::string>(std::begin(kDeclaredKeys), std::end(kDeclaredKeys)), keys);
}

// Keys that the libraries of macOS 10.6 don't export.
const std::set<std::string> kNotOn106 = {
    "kMDItemParticipants",
    "kMDItemDownloadedDate",
    "kMDItemCameraOwner",
    "kMDItemFocalLength35mm",
    "kMDItemLensModel",
    "kMDItemNamedLocation",
    "kMDItemGPSStatus",
    "kMDItemGPSMeasureMode",
    "kMDItemGPSDOP",
    "kMDItemGPSMapDatum",
    "kMDItemGPSDestLatitude",
    "kMDItemGPSDestLongitude",
    "kMDItemGPSDestBearing",
    "kMDItemGPSDestDistance",
    "kMDItemGPSProcessingMethod",
    "kMDItemGPSAreaInformation",
    "kMDItemGPSDateStamp",
    "kMDItemGPSDifferental",
    "kMDItemLabelIcon",
    "kMDItemLabelID",
    "kMDItemLabelKind",
    "kMDItemLabelUUID",
    "kMDItemIsLikelyJunk",
    "kMDItemExecutableArchitectures",
    "kMDItemApplicationCategories",
    "kMDItemIsApplicationManaged",
    "kMDItemDateAdded",
};
const std::set<std::string> kDeprecated = {
    "kMDItemFSExists",  "kMDItemFSIsReadable", "kMDItemFSIsWriteable", "kMDItemSupportFileType",
    "kMDItemLabelIcon", "kMDItemLabelID",      "kMDItemLabelKind",     "kMDItemLabelUUID",
};

TEST_F(AttributeKeys, AreDocumentedWithTheSystemsThatHaveThem) {
  std::ifstream document(KEYS_DOCUMENT);
  std::set<std::string> notOn106, deprecated;
  for (std::string line; std::getline(document, line);) {
    const std::vector<std::string> cells = cellsOf(line);
    if (cells.size() != 3 || !cells[0].starts_with('`')) continue;
    const std::string key = cells[0].substr(1, cells[0].size() - 2);
    if (!cells[1].starts_with("10.4") && !cells[1].starts_with("10.5") && !cells[1].starts_with("10.6")) {
      notOn106.insert(key);
    }
    if (cells[1].ends_with(", deprecated")) deprecated.insert(key);
  }
  EXPECT_EQ(kNotOn106, notOn106);
  EXPECT_EQ(kDeprecated, deprecated);
}

// The constants are read without a test, as host programs know it: they ask for keys that their system has.
TEST_F(AttributeKeys, OfAConstantThatTheSystemLacksEndsTheProcess) {
  if (!isMachO()) GTEST_SKIP() << "only our loader can take a constant away";
  start({}, {"kMDItemLensModel"});
  EXPECT_MEMORY_FAULT(host::callShared("MDItemZNK", "kMDItemLensModel"));
}

}  // namespace
