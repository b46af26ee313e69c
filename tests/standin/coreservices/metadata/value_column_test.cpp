// Values of attributes that may have several, which a column of values takes apart.
#include "standin/coreservices/metadata/value_column.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "tests/support/owned.h"
#include "tests/support/texts.h"

namespace standin::metadata {
namespace {

class Column : public testing::Test {
 protected:
  ~Column() override {
    column.reset();
    EXPECT_EQ(alive(), "");
  }

  // A value of no texts is none, of one text that text, of more an array.
  using Elements = std::vector<const char*>;

  std::vector<std::string> distinct() const {
    const Owned array(column->copyDistinct());
    std::vector<std::string> all;
    for (CFIndex i = 0; i < CFArrayGetCount(array.get()); ++i) {
      all.push_back(textOf(CFArrayGetValueAtIndex(array.get(), i)));
    }
    return all;
  }
  CFIndex countOf(const char* text) const { return column->countOf(makeString(text).get()); }
  void readAll() {
    for (const auto& [file, texts] : values) column->valueOf(file);
  }

  std::map<ResultStore::File, Elements> values;
  std::vector<ResultStore::File> read;
  std::unique_ptr<ValueColumn> column = std::make_unique<ValueColumn>(
      CFSTR("authors"), true, [this](ResultStore::File file, CFStringRef name) -> CFTypeRef {
        EXPECT_EQ(textOf(name), "authors");
        read.push_back(file);
        const Elements& elements = values[file];
        if (elements.empty()) return nullptr;
        if (elements.size() == 1) return makeString(elements[0]).leak();
        const CFMutableArrayRef array = CFArrayCreateMutable(kCFAllocatorDefault, 0, &kCFTypeArrayCallBacks);
        for (const char* text : elements) CFArrayAppendValue(array, makeString(text).get());
        return array;
      });
};

TEST_F(Column, ReadsEachFilesValueOnceAlsoWhenItHasNone) {
  values = {{0, {"Ann"}}, {1, {}}, {5, {"Bob"}}};
  readAll();
  readAll();
  EXPECT_EQ(read, (std::vector<ResultStore::File>{0, 1, 5}));
  EXPECT_EQ(column->known(), 3u);
  EXPECT_EQ(column->valueOf(1), nullptr);
  EXPECT_EQ(textOf(column->valueOf(5)), "Bob");
}

TEST_F(Column, KeepsEqualValuesAsOneObject) {
  values = {{0, {"Ann"}}, {1, {"Ann"}}, {2, {"Bob"}}};
  EXPECT_EQ(column->valueOf(0), column->valueOf(1));
  EXPECT_NE(column->valueOf(0), column->valueOf(2));
}

TEST_F(Column, ListsAndCountsTheElementsOfArraysForThemselves) {
  values = {{0, {"Ann", "Bob"}}, {1, {"Bob"}}, {2, {"Bob", "Cid", "Cid"}}, {3, {"Ann", "Bob"}}};
  readAll();
  EXPECT_EQ(sorted(distinct()), sorted({"Ann", "Bob", "Cid"}));
  EXPECT_EQ(countOf("Ann"), 2);
  EXPECT_EQ(countOf("Bob"), 4);
  EXPECT_EQ(countOf("Cid"), 1);
  EXPECT_EQ(countOf("Dan"), 0);
  EXPECT_EQ(column->countOf(column->valueOf(0)), 2);
}

TEST_F(Column, ForgetsTheValueOfAFileThatChangedOrWent) {
  values = {{0, {"Ann", "Bob"}}, {1, {"Bob"}}, {2, {}}};
  readAll();
  values[0] = {"Cid"};
  for (const ResultStore::File file : {0u, 1u, 2u, 7u}) column->forget(file);
  EXPECT_EQ(column->known(), 0u);
  EXPECT_EQ(distinct(), Texts{});
  EXPECT_EQ(countOf("Bob"), 0);
  EXPECT_EQ(textOf(column->valueOf(0)), "Cid");
  EXPECT_EQ(distinct(), Texts{"Cid"});
}

}  // namespace
}  // namespace standin::metadata
