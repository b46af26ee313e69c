// What the class MDItemZNK says about attribute keys, without any item.
#include <CoreServices/CoreServices.h>

#include "standin/coreservices/metadata/planned_answers.h"
#include "tests/plugin/cf_values.h"
#include "tests/plugin/item/item_fixture.h"

namespace {

const char kMeta[] = "MDSchemaCopyMetaAttributesForAttribute";

class Schema : public PluginTest {
 protected:
  static host::Value ask(const char* method, const host::Value& key = "kMDItemFSName") {
    return host::callShared("MDItemZNK", method, key);
  }

  // A schema that says this of the next key that it is asked for.
  static void planMeta(const std::vector<std::pair<CFTypeRef, CFTypeRef>>& pairs) {
    standin::planAnswer(kMeta, cfDictionary(pairs).leak());
  }

  static void planType(CFTypeID type) {
    const CFOwner number = cfInt64(static_cast<int64_t>(type));
    planMeta({{kMDAttributeType, number.get()}});
  }
};

TEST_F(Schema, TellsDisplayNamesAndDescriptions) {
  start();
  standin::planAnswer("MDSchemaCopyDisplayNameForAttribute", cfText("Größe").leak());
  EXPECT_EQ("Größe", ask("DisplayNameForAttribute").text());
  standin::planAnswer("MDSchemaCopyDisplayDescriptionForAttribute", cfText("How large it is").leak());
  EXPECT_EQ("How large it is", ask("DisplayDescriptionForAttribute").text());
}

TEST_F(Schema, HasNoTextForAnUnknownKey) {
  start();
  EXPECT_TRUE(ask("DisplayNameForAttribute", "kMDItemNoSuchKey").isNil());
  EXPECT_TRUE(ask("DisplayDescriptionForAttribute", "kMDItemNoSuchKey").isNil());
  EXPECT_TRUE(ask("AttributeType", "kMDItemNoSuchKey").isNil());
  EXPECT_FALSE(ask("AttributeMultiValued", "kMDItemNoSuchKey").boolean());
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Schema, IsNotAskedAboutANameThatCantBeConverted) {
  start();
  const Calls calls = callsOf([] {
    for (const host::Value& name : {host::Value::nullString(), unconvertible()}) {
      EXPECT_TRUE(ask("DisplayNameForAttribute", name).isNil());
      EXPECT_TRUE(ask("DisplayDescriptionForAttribute", name).isNil());
      EXPECT_TRUE(ask("AttributeType", name).isNil());
      EXPECT_FALSE(ask("AttributeMultiValued", name).boolean());
    }
  });
  EXPECT_EQ(Calls(), startingWith("MDSchema", calls));
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Schema, ListsAllAttributes) {
  start();
  const CFOwner one = cfText("kMDItemOne"), two = cfText("kMDItemTwo");
  standin::planAnswer("MDSchemaCopyAllAttributes", cfUnretainedArray({one.get(), two.get()}).leak());
  EXPECT_EQ((Texts{"kMDItemOne", "kMDItemTwo"}), host::texts(host::callShared("MDItemZNK", "AllAttributes")));
  const Texts names = host::texts(host::callShared("MDItemZNK", "AllAttributes"));
  EXPECT_EQ(1, std::count(names.begin(), names.end(), "kMDItemFSName"));
}

TEST_F(Schema, ListsAllAttributesWithTheseCalls) {
  start();
  const CFOwner one = cfText("kMDItemOne");
  const auto list = [&] {
    standin::planAnswer("MDSchemaCopyAllAttributes", cfUnretainedArray({one.get()}).leak());
    standin::startLog();
    host::callShared("MDItemZNK", "AllAttributes");
  };
  list();  // finds the services
  EXPECT_EQ((Calls{"RuntimeArrayCreateSingleDimBoundedArray", "MDSchemaCopyAllAttributes", "CFArrayGetCount",
                   "CFArrayGetValueAtIndex", "CFStringGetLength", "CFStringGetCString", "REALBuildString",
                   "REALSetStringEncoding", "RuntimeArrayDirectGetInsertProc", "array insert",
                   "REALUnlockString", "CFRelease"}),
            callsOf(list));
}

TEST_F(Schema, ThatGivesNothingListsAnEmptyArrayNotNil) {
  start();
  standin::failCall("MDSchemaCopyAllAttributes", 1);
  const host::Value all = host::callShared("MDItemZNK", "AllAttributes");
  EXPECT_FALSE(all.isNil());
  EXPECT_EQ(0u, host::elements(all).size());
}

TEST_F(Schema, ListsNothingWithoutTheServiceThatMakesArrays) {
  host::Settings settings;
  settings.hidden = {"RuntimeArrayCreateSingleDimBoundedArray"};
  start(settings);
  EXPECT_TRUE(host::callShared("MDItemZNK", "AllAttributes").isNil());
}

// Types as words

struct TypeCase {
  const char* word;  // null: nil
  CFTypeID (*type)();
};
void PrintTo(const TypeCase& row, std::ostream* out) {
  *out << (row.word ? row.word : "nil");
}
class TypeWord : public Schema, public testing::WithParamInterface<TypeCase> {};

TEST_P(TypeWord, DependsOnTheTypeIdentifierAlone) {
  start();
  planType(GetParam().type());
  const host::Value word = ask("AttributeType");
  if (!GetParam().word) {
    EXPECT_TRUE(word.isNil()) << word.describe();
    return;
  }
  EXPECT_EQ(GetParam().word, word.text());
  EXPECT_EQ(host::kEncodingAscii, word.encoding());
}

INSTANTIATE_TEST_SUITE_P(
    Types, TypeWord,
    testing::Values(TypeCase{"Boolean", CFBooleanGetTypeID}, TypeCase{"Number", CFNumberGetTypeID},
                    TypeCase{"Date", CFDateGetTypeID}, TypeCase{"String", CFStringGetTypeID},
                    TypeCase{"UUID", CFUUIDGetTypeID}, TypeCase{"Array", CFArrayGetTypeID},
                    TypeCase{nullptr, CFDataGetTypeID}, TypeCase{nullptr, CFDictionaryGetTypeID},
                    TypeCase{nullptr, [] { return CFTypeID{0}; }},
                    TypeCase{nullptr, [] { return CFTypeID{0x7FFFFFFF}; }}));

TEST_F(Schema, TypesAreComparedInThisOrder) {
  start();
  planType(CFArrayGetTypeID());
  ask("AttributeType");
  planType(CFArrayGetTypeID());
  EXPECT_EQ(
      (Calls{"REALGetStringCFString", kMeta, "CFDictionaryGetValue", "CFNumberGetValue", "CFBooleanGetTypeID",
             "CFNumberGetTypeID", "CFDateGetTypeID", "CFStringGetTypeID", "CFUUIDGetTypeID",
             "CFArrayGetTypeID", "REALBuildString", "REALSetStringEncoding", "CFRelease", "CFRelease"}),
      callsOf([] { ask("AttributeType"); }));
  planType(CFNumberGetTypeID());
  EXPECT_EQ(
      (Calls{"REALGetStringCFString", kMeta, "CFDictionaryGetValue", "CFNumberGetValue", "CFBooleanGetTypeID",
             "CFNumberGetTypeID", "REALBuildString", "REALSetStringEncoding", "CFRelease", "CFRelease"}),
      callsOf([] { ask("AttributeType"); }));
}

TEST_F(Schema, HasNoTypeWhereItSaysNoneOrANumberThatCantBeRead) {
  start();
  planMeta({});
  EXPECT_TRUE(ask("AttributeType").isNil());
  planType(CFStringGetTypeID());
  standin::failCall("CFNumberGetValue", 1);
  EXPECT_TRUE(ask("AttributeType").isNil());
  // The platform writes the low half of this one, which would be a type, and says that it failed.
  const CFOwner tooWide = cfInt64((int64_t{1} << 32) + static_cast<int64_t>(CFStringGetTypeID()));
  planMeta({{kMDAttributeType, tooWide.get()}});
  EXPECT_TRUE(ask("AttributeType").isNil());
  standin::failCall(kMeta, 1);
  EXPECT_TRUE(ask("AttributeType").isNil());
  EXPECT_EQ(Exceptions(), host::takeExceptions());
}

TEST_F(Schema, ReleasesTheMetaAttributesThenTheKey) {
  start();
  for (const char* method : {"AttributeType", "AttributeMultiValued"}) {
    const CFOwner other = cfText("other");
    CFOwner witness = cfWitness();
    planMeta({{other.get(), witness.get()}});
    witness = {};
    const Calls calls = callsOf([&] { ask(method); });
    EXPECT_EQ((Calls{"CFDictionaryGetValue", "CFRelease", "value finalized", "CFRelease"}), lastOf(calls, 4))
        << method;
  }
}

// Several values

TEST_F(Schema, TellsWhetherAKeyHoldsSeveralValues) {
  start();
  planMeta({{kMDAttributeMultiValued, kCFBooleanTrue}});
  EXPECT_TRUE(ask("AttributeMultiValued").boolean());
  planMeta({{kMDAttributeMultiValued, kCFBooleanFalse}});
  EXPECT_FALSE(ask("AttributeMultiValued").boolean());
  planMeta({});
  EXPECT_FALSE(ask("AttributeMultiValued").boolean());
  standin::failCall(kMeta, 1);
  EXPECT_FALSE(ask("AttributeMultiValued").boolean());
}

TEST_F(Schema, ReadsTextsAndFlagsWithTheseCalls) {
  start();
  const auto text = [](const char* call) { standin::planAnswer(call, cfText("x").leak()); };
  text("MDSchemaCopyDisplayNameForAttribute");
  ask("DisplayNameForAttribute");
  text("MDSchemaCopyDisplayNameForAttribute");
  EXPECT_EQ(
      (Calls{"REALGetStringCFString", "MDSchemaCopyDisplayNameForAttribute", "CFStringGetLength",
             "CFStringGetCString", "REALBuildString", "REALSetStringEncoding", "CFRelease", "CFRelease"}),
      callsOf([] { ask("DisplayNameForAttribute"); }));
  text("MDSchemaCopyDisplayDescriptionForAttribute");
  EXPECT_EQ(
      (Calls{"REALGetStringCFString", "MDSchemaCopyDisplayDescriptionForAttribute", "CFStringGetLength",
             "CFStringGetCString", "REALBuildString", "REALSetStringEncoding", "CFRelease", "CFRelease"}),
      callsOf([] { ask("DisplayDescriptionForAttribute"); }));
  planMeta({{kMDAttributeMultiValued, kCFBooleanTrue}});
  EXPECT_EQ((Calls{"REALGetStringCFString", kMeta, "CFDictionaryGetValue", "CFBooleanGetValue", "CFRelease",
                   "CFRelease"}),
            callsOf([] { ask("AttributeMultiValued"); }));
}

TEST_F(Schema, OfThisPlatformKnowsStringsNumbersDatesAndLists) {
  start();
  EXPECT_EQ("String", ask("AttributeType", "kMDItemFSName").text());
  EXPECT_EQ("Number", ask("AttributeType", "kMDItemFSSize").text());
  EXPECT_EQ("Date", ask("AttributeType", "kMDItemFSContentChangeDate").text());
  EXPECT_EQ("Boolean", ask("AttributeType", "kMDItemFSInvisible").text());
  EXPECT_TRUE(ask("AttributeMultiValued", "kMDItemAuthors").boolean());
  EXPECT_FALSE(ask("AttributeMultiValued", "kMDItemFSName").boolean());
  EXPECT_EQ(169u, host::elements(host::callShared("MDItemZNK", "AllAttributes")).size());
}

}  // namespace
