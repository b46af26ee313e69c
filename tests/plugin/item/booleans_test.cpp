// Booleans of the plug-in, on a host that looks at the whole register in which they come.
#include <CoreServices/CoreServices.h>

#include "standin/coreservices/metadata/planned_answers.h"
#include "tests/plugin/item/item_fixture.h"

namespace {

class Booleans : public ItemTest {
 protected:
  void SetUp() override {
    host::Settings settings;
    settings.wholeBooleans = true;
    start(settings);
  }
};

TEST_F(Booleans, OfAnItemFillTheRegister) {
  const host::Value item = this->item();
  for (const CFBooleanRef truth : {kCFBooleanTrue, kCFBooleanFalse}) {
    standin::planAnswer("MDItemCopyAttribute", CFRetain(truth));
    EXPECT_EQ(truth == kCFBooleanTrue, host::call(item, "AttributeBoolean", "kMDItemFSInvisible").boolean());
  }
  EXPECT_FALSE(host::call(item, "AttributeBoolean", "kMDItemNoSuchKey").boolean());
  EXPECT_FALSE(host::call(item, "AttributeBoolean", "").boolean());
}

TEST_F(Booleans, OfTheSchemaFillTheRegister) {
  EXPECT_TRUE(host::callShared("MDItemZNK", "AttributeMultiValued", "kMDItemAuthors").boolean());
  EXPECT_FALSE(host::callShared("MDItemZNK", "AttributeMultiValued", "kMDItemFSName").boolean());
  EXPECT_FALSE(host::callShared("MDItemZNK", "AttributeMultiValued", "kMDItemNoSuchKey").boolean());
  EXPECT_FALSE(host::callShared("MDItemZNK", "AttributeMultiValued", "").boolean());
}

TEST_F(Booleans, OfAQueryFillTheRegister) {
  tree_.file("f");
  standin::setIndexedFolders({tree_.path()});
  const host::Value query = host::construct("MDQueryZNK", "kMDItemFSName == \"f\"");
  EXPECT_FALSE(host::get(query, "IsGatheringComplete").boolean());
  standin::failCall("MDQueryExecute", 1);
  EXPECT_FALSE(host::call(query, "Execute", 1).boolean());
  EXPECT_TRUE(host::call(query, "Execute", 1).boolean());
  EXPECT_TRUE(host::get(query, "IsGatheringComplete").boolean());
}

TEST_F(Booleans, OfTheOrderOfResultsFillTheRegister) {
  const host::Value query =
      host::construct("MDQueryZNK", "kMDItemFSName == \"f\"", nullptr, host::stringArray({"kMDItemFSName"}));
  const uint32_t reverse = 1;
  EXPECT_TRUE(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", reverse).boolean());
  EXPECT_FALSE(host::call(query, "SetSortOptionFlagsForAttribute", "", reverse).boolean());
  standin::failCall("MDQuerySetSortOptionFlagsForAttribute", 1);
  EXPECT_FALSE(host::call(query, "SetSortOptionFlagsForAttribute", "kMDItemFSName", reverse).boolean());
  EXPECT_TRUE(host::call(query, "SetSortOrder", host::stringArray({"kMDItemFSName"})).boolean());
  EXPECT_FALSE(host::call(query, "SetSortOrder", nullptr).boolean());
  standin::failCall("MDQuerySetSortOrder", 1);
  EXPECT_FALSE(host::call(query, "SetSortOrder", host::stringArray({"kMDItemFSName"})).boolean());
}

}  // namespace
