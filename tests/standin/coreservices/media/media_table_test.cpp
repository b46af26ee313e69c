// The table of exiftool's tags, against exiftool's own list of them.
#include "standin/coreservices/media/media_table.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "standin/coreservices/attributes/schema.h"
#include "tests/standin/coreservices/media/exiftool_command.h"

namespace {

using standin::metadata::FileAttribute;
using standin::metadata::MediaRow;

TEST(MediaTable, MapsEightyAttributesAndMore) {
  std::set<FileAttribute> attributes;
  for (const MediaRow& row : standin::metadata::mediaTable()) attributes.insert(row.attribute);
  EXPECT_GE(attributes.size(), 80u);
  RecordProperty("attributes", static_cast<int>(attributes.size()));
}

// Otherwise files would be read that cheaper conditions exclude.
TEST(MediaTable, HasOnlyAttributesThatCountAsContent) {
  for (const MediaRow& row : standin::metadata::mediaTable())
    EXPECT_EQ(costOf(row.attribute), standin::metadata::Cost::Content) << infoOf(row.attribute).key;
}

// A misspelt tag would never be found.
TEST(MediaTable, AsksForTagsThatExiftoolKnows) {
  const std::set<std::string> known = knownTags();
  // What exiftool makes up from the names in an OpenDocument file or a drawing.
  const std::set<std::string_view> made = {"Initial-creator", "Creation-date", "Document-statisticPage-count",
                                           "Desc"};
  ASSERT_TRUE(known.count("DateTimeOriginal"));
  for (const MediaRow& row : standin::metadata::mediaTable()) {
    for (std::string_view tag : row.tags) {
      if (tag.empty()) continue;
      if (tag.ends_with('#')) tag.remove_suffix(1);
      tag.remove_prefix(tag.find(':') == std::string_view::npos ? 0 : tag.find(':') + 1);
      EXPECT_TRUE(known.count(std::string(tag)) || made.count(tag)) << tag;
    }
  }
}

TEST(MediaTable, AsksForEachTagInOneFormAlone) {
  std::set<std::string_view> inWords, asNumbers;
  for (const MediaRow& row : standin::metadata::mediaTable()) {
    for (std::string_view tag : row.tags) {
      const bool isNumber = tag.ends_with('#');
      if (isNumber) tag.remove_suffix(1);
      if (!tag.empty()) (isNumber ? asNumbers : inWords).insert(tag);
    }
  }
  for (const std::string_view tag : inWords) EXPECT_FALSE(asNumbers.count(tag)) << tag;
}

TEST(MediaTable, KeepsTheRowsOfAnAttributeTogether) {
  std::set<FileAttribute> seen;
  FileAttribute last = FileAttribute::None;
  for (const MediaRow& row : standin::metadata::mediaTable()) {
    if (row.attribute == last) continue;
    EXPECT_TRUE(seen.insert(row.attribute).second) << standin::metadata::infoOf(row.attribute).key;
    last = row.attribute;
  }
}

// Which alternatives of OwnedValue the numbers of each attribute are.
std::map<std::string, std::set<size_t>> numberTypes() {
  std::map<std::string, std::set<size_t>> types;
  for (const MediaRow& row : standin::metadata::mediaTable()) {
    if (infoOf(row.attribute).type != standin::metadata::ValueType::Number) continue;
    for (const char* text : {"3", "3.5", "3 of 12", "3 4"}) {
      const std::vector<std::string> texts = {text};
      std::vector<standin::metadata::OwnedValue> values;
      row.convert({"EXIF", texts, {}}, values);
      for (const auto& value : values) types[std::string(infoOf(row.attribute).key)].insert(value.index());
    }
  }
  return types;
}

TEST(MediaTable, GivesNumbersOfOneTypeForAnAttribute) {
  const auto types = numberTypes();
  EXPECT_GE(types.size(), 30u);
  for (const auto& [key, found] : types) EXPECT_EQ(found.size(), 1u) << key;
}

// The page of keys lists those with a point.
TEST(MediaTable, GivesNumbersOfTheDocumentedTypes) {
  std::set<std::string> floating, documented;
  for (const auto& [key, found] : numberTypes()) {
    if (found.contains(standin::metadata::OwnedValue(1.0).index())) floating.insert(key);
  }
  std::ifstream stream(KEYS_DOCUMENT);
  const std::string page{std::istreambuf_iterator<char>(stream), {}};
  const size_t start = page.find("always floating-point"), end = page.find("all others are whole");
  ASSERT_LT(start, end);
  for (size_t at = page.find('`', start); at < end; at = page.find('`', at + 1)) {
    const size_t close = page.find('`', at + 1);
    documented.insert(page.substr(at + 1, close - at - 1));
    at = close;
  }
  EXPECT_EQ(documented, floating);
}

}  // namespace
