// The general methods of items: attributes as variants and as a dictionary, their names, and Constructor.
#include <CoreServices/CoreServices.h>

#include "standin/coreservices/metadata/planned_answers.h"
#include "tests/plugin/cf_values.h"
#include "tests/plugin/guard.h"
#include "tests/plugin/item/item_fixture.h"

namespace {

class ItemMethods : public ItemTest {};

MDItemRef itemOf(const host::Value& item) {
  return reinterpret_cast<MDItemRef>(static_cast<intptr_t>(host::get(item, "Handle").integer()));
}

std::vector<host::Value> none() {
  return {};
}
std::vector<host::Value> name() {
  return {host::Value("kMDItemFSName")};
}
std::vector<host::Value> names() {
  return {host::stringArray({"kMDItemFSName"})};
}
std::vector<host::Value> rootFolder() {
  return {host::folderItem("/")};
}

using ItemGuard = GuardTest;

TEST_P(ItemGuard, RaisesAndAnswersTheNeutralValueWithoutCallingTheService) {
  expectGuarded("MDItemZNK", kNilItem, {"MDItemC", "CFString", "CFURL", "FolderItem"});
}

INSTANTIATE_TEST_SUITE_P(
    Operations, ItemGuard,
    testing::Combine(testing::Values(GuardCase{"GetAttributes", names, GuardCase::kNil},
                                     GuardCase{"GetAttribute", name, GuardCase::kNil},
                                     GuardCase{"Constructor", rootFolder, GuardCase::kNone},
                                     GuardCase{"AttributeNames", none, GuardCase::kNil, true},
                                     GuardCase{"AttributeString", name, GuardCase::kNil},
                                     GuardCase{"AttributeBoolean", name, GuardCase::kFalse},
                                     GuardCase{"AttributeDouble", name, GuardCase::kZero},
                                     GuardCase{"AttributeStringArray", name, GuardCase::kNil, true}),
                     testing::Bool()));

// Constructor

TEST_F(ItemMethods, ConstructorOnANewInstanceRaisesAndLeavesTheReferenceNil) {
  tree_.file("f");
  start();
  const host::Value item = host::construct("MDItemZNK", host::folderItem(tree_.at("f")));
  EXPECT_EQ(Exceptions{kNilItem}, host::takeExceptions());
  EXPECT_EQ(0, host::get(item, "Handle").integer());
}

TEST_F(ItemMethods, ConstructorOnAnInstanceWithAnItemStoresAnotherWithoutReleasingTheFirst) {
  start();
  const host::Value item = this->item();
  tree_.file("other", "xxxxxxx");
  const CFOwner first = own(itemOf(item));  // the instance's own reference, which it forgets
  const CFIndex count = CFGetRetainCount(first.get());
  host::call(item, "Constructor", host::folderItem(tree_.at("other")));
  EXPECT_EQ(count, CFGetRetainCount(first.get()));
  EXPECT_EQ("other", host::get(item, "FSName").text());
  EXPECT_EQ(7, host::get(item, "FSSize").integer());
  EXPECT_EQ(1, CFGetRetainCount(itemOf(item)));
}

TEST_F(ItemMethods, ConstructorWithAFolderItemThatNamesNothingLeavesTheItem) {
  start();
  const host::Value item = this->item();
  const MDItemRef before = itemOf(item);
  host::call(item, "Constructor", nullptr);
  host::call(item, "Constructor", host::folderItem(tree_.at("no such folder/f")));
  EXPECT_EQ(before, itemOf(item));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(ItemMethods, ConstructorForAFileThatIsNotThereLeavesNoItemAndRaisesNothing) {
  start();
  const host::Value item = this->item();
  const CFOwner first = own(itemOf(item));
  host::call(item, "Constructor", host::folderItem(tree_.at("missing")));
  EXPECT_EQ(0, host::get(item, "Handle").integer());
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(ItemMethods, ConstructorReleasesTheURLAfterTheItemIsMade) {
  start();
  const host::Value item = this->item();
  const CFOwner first = own(itemOf(item));
  const host::Value folder = host::folderItem(tree_.at("f"));
  const Calls calls = callsOf([&] { host::call(item, "Constructor", folder); });
  EXPECT_EQ((Calls{"MDItemCreateWithURL", "CFRelease"}), lastOf(calls, 2));
}

// GetAttribute

TEST_F(ItemMethods, GetAttributeGivesEachValueAsItsHostType) {
  start();
  const host::Value item = this->item();
  EXPECT_EQ("f", host::call(item, "GetAttribute", "kMDItemFSName").text());
  EXPECT_EQ(5, host::call(item, "GetAttribute", "kMDItemFSSize").integer());
  EXPECT_EQ(tree_.at("f"), host::call(item, "GetAttribute", "kMDItemPath").text());
  EXPECT_FALSE(host::call(item, "GetAttribute", "kMDItemFSInvisible").boolean());
  EXPECT_TRUE(host::isA(host::call(item, "GetAttribute", "kMDItemFSContentChangeDate"), "Date"));
  const CFOwner one = cfText("one"), two = cfText("two");
  standin::planAnswer("MDItemCopyAttribute", cfUnretainedArray({one.get(), two.get()}).leak());
  const auto elements = host::elements(host::call(item, "GetAttribute", "kMDItemAuthors"));
  ASSERT_EQ(2u, elements.size());
  EXPECT_EQ("one", elements[0].text());
  EXPECT_EQ("two", elements[1].text());
}

TEST_F(ItemMethods, GetAttributeOfAnAbsentAttributeOrAnUnconvertibleNameIsNilWithoutAnException) {
  start();
  const host::Value item = this->item();
  EXPECT_TRUE(host::call(item, "GetAttribute", "kMDItemNoSuchKey").isNil());
  const Calls calls = callsOf([&] {
    EXPECT_TRUE(host::call(item, "GetAttribute", host::Value::nullString()).isNil());
    EXPECT_TRUE(host::call(item, "GetAttribute", unconvertible()).isNil());
  });
  EXPECT_EQ(0, std::count(calls.begin(), calls.end(), "MDItemCopyAttribute"));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(ItemMethods, GetAttributeReleasesTheValueThenTheKey) {
  host::Settings settings;
  settings.unknownClasses = {"CFObjectZNK"};
  start(settings);
  const host::Value item = this->item();
  host::call(item, "GetAttribute", "kMDItemFSSize");  // finds the services
  EXPECT_EQ((Calls{"REALGetStringCFString", "MDItemCopyAttribute", "CFGetTypeID", "CFURLGetTypeID",
                   "CFBooleanGetTypeID", "CFNumberGetTypeID", "CFNumberIsFloatType", "CFNumberGetByteSize",
                   "CFNumberGetValue", "Int32ToVariant", "CFRelease", "CFRelease"}),
            callsOf([&] { host::call(item, "GetAttribute", "kMDItemFSSize"); }));
  standin::planAnswer("MDItemCopyAttribute", cfWitness().leak());
  const Calls calls = callsOf([&] { host::call(item, "GetAttribute", "key"); });
  EXPECT_EQ((Calls{"CFRelease", "value finalized", "CFRelease"}), lastOf(calls, 3));
}

// GetAttributes

TEST_F(ItemMethods, GetAttributesGivesTheAttributesThatAreThereByName) {
  start();
  const host::Value item = this->item();
  const host::Value dictionary = host::call(
      item, "GetAttributes", host::stringArray({"kMDItemFSName", "kMDItemNoSuchKey", "kMDItemFSSize"}));
  EXPECT_EQ(2u, host::entries(dictionary).size());
  EXPECT_EQ("f", host::lookUp(dictionary, "kMDItemFSName").value().text());
  EXPECT_EQ(5, host::lookUp(dictionary, "kMDItemFSSize").value().integer());
  EXPECT_FALSE(host::lookUp(dictionary, "kMDItemNoSuchKey"));
}

TEST_F(ItemMethods, GetAttributesOfNamesThatTheItemLacksIsAnEmptyDictionary) {
  start();
  const host::Value item = this->item();
  for (const auto& names : {host::stringArray({"kMDItemNoSuchKey"}), host::stringArray({})}) {
    const host::Value dictionary = host::call(item, "GetAttributes", names);
    EXPECT_FALSE(dictionary.isNil());
    EXPECT_EQ(0u, host::entries(dictionary).size());
  }
}

TEST_F(ItemMethods, GetAttributesOfANilArrayIsNilWithoutAnException) {
  start();
  const host::Value item = this->item();
  EXPECT_EQ(Calls(), callsOf([&] { EXPECT_TRUE(host::call(item, "GetAttributes", nullptr).isNil()); }));
}

TEST_F(ItemMethods, GetAttributesIsNilWhenTheServiceHasNone) {
  start();
  const host::Value item = this->item();
  standin::failCall("MDItemCopyAttributes", 1);
  EXPECT_TRUE(host::call(item, "GetAttributes", names()[0]).isNil());
}

TEST_F(ItemMethods, GetAttributesIsNilOnAHostThatMakesNoDictionary) {
  host::Settings settings;
  settings.unknownClasses = {"Dictionary"};
  start(settings);
  const host::Value item = this->item();
  EXPECT_TRUE(host::call(item, "GetAttributes", names()[0]).isNil());
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(ItemMethods, GetAttributesIsNilWithoutTheServiceThatMakesInstances) {
  host::Settings settings;
  settings.delayed = {{"PluginNewInstance", 1000}};
  start(settings);
  tree_.file("f", "xxxxx");
  const host::Value item = host::newInstance("MDItemZNK");
  const CFOwner path = cfText(tree_.at("f"));
  const CFOwner url = own(CFURLCreateWithFileSystemPath(
      kCFAllocatorDefault, static_cast<CFStringRef>(path.get()), kCFURLPOSIXPathStyle, false));
  const MDItemRef reference = MDItemCreateWithURL(kCFAllocatorDefault, static_cast<CFURLRef>(url.get()));
  host::set(item, "Handle", static_cast<int32_t>(reinterpret_cast<intptr_t>(reference)));
  const auto asked = names();
  const Calls calls = callsOf([&] { EXPECT_TRUE(host::callWith(item, "GetAttributes", asked).isNil()); });
  EXPECT_EQ((Calls{"MDItemCopyAttributes", "resolve PluginNewInstance", "CFRelease", "CFRelease"}),
            lastOf(calls, 4));
}

TEST_F(ItemMethods, GetAttributesReleasesTheDictionaryThenTheKeys) {
  start();
  const host::Value item = this->item();
  const auto asked = names();
  host::callWith(item, "GetAttributes", asked);  // finds the services
  const Calls once = callsOf([&] { host::callWith(item, "GetAttributes", asked); });
  EXPECT_EQ((Calls{"RuntimeUBound", "CFArrayCreateMutable", "RuntimeDirectReadStringArray",
                   "REALGetStringCFString", "CFArrayAppendValue", "CFRelease", "REALUnlockString",
                   "MDItemCopyAttributes", "PluginNewInstance", "CFDictionaryApplyFunction"}),
            firstOf(once, 10));
  EXPECT_EQ((Calls{"REALUnlockObject", "REALUnlockObject", "CFRelease", "CFRelease"}), lastOf(once, 4));
  // The dictionary's end is seen by the end of a value that it alone holds.
  const CFOwner key = cfText("key");
  CFOwner witness = cfWitness();
  standin::planAnswer("MDItemCopyAttributes", cfDictionary({{key.get(), witness.get()}}).leak());
  witness = {};
  const Calls calls = callsOf([&] { host::callWith(item, "GetAttributes", asked); });
  EXPECT_EQ((Calls{"CFRelease", "value finalized", "CFRelease"}), lastOf(calls, 3));
  EXPECT_EQ((Calls{"CFRelease CFDictionary", "CFRelease CFArray"}),
            lastOf(detailedCallsOf([&] { host::callWith(item, "GetAttributes", asked); }), 2));
}

TEST_F(ItemMethods, GetAttributesForgetsTheDictionarySoThatAnotherAtItsAddressLoadsItsOwnMethods) {
  host::Settings settings;
  settings.reusesAddresses = true;
  start(settings);
  const host::Value item = this->item();
  const auto asked = names();
  void* address = nullptr;
  for (int i = 0; i < 2; ++i) {
    host::Value dictionary;
    const Calls calls = callsOf([&] { dictionary = host::callWith(item, "GetAttributes", asked); });
    EXPECT_EQ(3, std::count(calls.begin(), calls.end(), "REALLoadObjectMethod")) << i;
    if (i == 1) {
      EXPECT_EQ(address, dictionary.handle());
    }
    address = dictionary.handle();
  }
}

// AttributeNames

TEST_F(ItemMethods, AttributeNamesAreThoseThatTheItemHas) {
  start();
  const host::Value item = this->item();
  const auto names = host::texts(host::call(item, "AttributeNames"));
  for (const char* name : {"kMDItemFSName", "kMDItemFSSize", "kMDItemContentType"}) {
    EXPECT_EQ(1, std::count(names.begin(), names.end(), name)) << name;
  }
  for (const auto& name : names) {
    EXPECT_FALSE(host::call(item, "GetAttribute", name).isNil()) << name;
  }
}

TEST_F(ItemMethods, AttributeNamesOfAnItemWithoutAttributesIsAnEmptyArrayNotNil) {
  start();
  const host::Value item = this->item();
  standin::planAnswer("MDItemCopyAttributeNames", cfUnretainedArray({}).leak());
  const host::Value empty = host::call(item, "AttributeNames");
  EXPECT_FALSE(empty.isNil());
  EXPECT_EQ(0u, host::elements(empty).size());
  standin::failCall("MDItemCopyAttributeNames", 1);
  const host::Value none = host::call(item, "AttributeNames");
  EXPECT_FALSE(none.isNil());
  EXPECT_EQ(0u, host::elements(none).size());
}

TEST_F(ItemMethods, AttributeNamesIsNilWithoutTheServiceThatMakesArrays) {
  host::Settings settings;
  settings.hidden = {"RuntimeArrayCreateSingleDimBoundedArray"};
  start(settings);
  const host::Value item = this->item();
  EXPECT_TRUE(host::call(item, "AttributeNames").isNil());
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(ItemMethods, GetAttributesTakesANullOrUnconvertibleNameAsTheEmptyOne) {
  start();
  const host::Value item = this->item();
  const host::Value dictionary = host::call(
      item, "GetAttributes",
      host::stringArrayOf({host::Value::nullString(), unconvertible(), host::Value("kMDItemFSName")}));
  EXPECT_EQ(1u, host::entries(dictionary).size());
  EXPECT_TRUE(host::lookUp(dictionary, "kMDItemFSName"));
}

TEST_F(ItemMethods, AttributeNamesAreReadWithTheseCalls) {
  start();
  const host::Value item = this->item();
  const CFOwner name = cfText("kMDItemFSName");
  host::call(item, "AttributeNames");  // finds the services
  standin::planAnswer("MDItemCopyAttributeNames", cfUnretainedArray({name.get()}).leak());
  host::Value names;
  EXPECT_EQ((Calls{"RuntimeArrayCreateSingleDimBoundedArray", "MDItemCopyAttributeNames", "CFArrayGetCount",
                   "CFArrayGetValueAtIndex", "CFStringGetLength", "CFStringGetCString", "REALBuildString",
                   "REALSetStringEncoding", "RuntimeArrayDirectGetInsertProc", "array insert",
                   "REALUnlockString", "CFRelease"}),
            callsOf([&] { names = host::call(item, "AttributeNames"); }));
  EXPECT_EQ(Texts{"kMDItemFSName"}, host::texts(names));
}

}  // namespace
