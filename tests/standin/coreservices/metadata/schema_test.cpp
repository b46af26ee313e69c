// The schema: what is known of attributes, whatever the file.
#include <CoreServices/CoreServices.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/support/owned.h"

namespace {

// In the order in which they are told.
const std::vector<std::string> kKeys = {"kMDItemAttributeChangeDate",
                                        "kMDItemContentType",
                                        "kMDItemContentTypeTree",
                                        "kMDItemKeywords",
                                        "kMDItemTitle",
                                        "kMDItemAuthors",
                                        "kMDItemEditors",
                                        "kMDItemParticipants",
                                        "kMDItemProjects",
                                        "kMDItemDownloadedDate",
                                        "kMDItemWhereFroms",
                                        "kMDItemComment",
                                        "kMDItemCopyright",
                                        "kMDItemLastUsedDate",
                                        "kMDItemContentCreationDate",
                                        "kMDItemContentModificationDate",
                                        "kMDItemDurationSeconds",
                                        "kMDItemContactKeywords",
                                        "kMDItemVersion",
                                        "kMDItemPixelHeight",
                                        "kMDItemPixelWidth",
                                        "kMDItemPixelCount",
                                        "kMDItemColorSpace",
                                        "kMDItemBitsPerSample",
                                        "kMDItemFlashOnOff",
                                        "kMDItemFocalLength",
                                        "kMDItemAcquisitionMake",
                                        "kMDItemAcquisitionModel",
                                        "kMDItemISOSpeed",
                                        "kMDItemOrientation",
                                        "kMDItemLayerNames",
                                        "kMDItemWhiteBalance",
                                        "kMDItemAperture",
                                        "kMDItemProfileName",
                                        "kMDItemResolutionWidthDPI",
                                        "kMDItemResolutionHeightDPI",
                                        "kMDItemExposureMode",
                                        "kMDItemExposureTimeSeconds",
                                        "kMDItemEXIFVersion",
                                        "kMDItemCameraOwner",
                                        "kMDItemFocalLength35mm",
                                        "kMDItemLensModel",
                                        "kMDItemEXIFGPSVersion",
                                        "kMDItemAltitude",
                                        "kMDItemLatitude",
                                        "kMDItemLongitude",
                                        "kMDItemSpeed",
                                        "kMDItemTimestamp",
                                        "kMDItemGPSTrack",
                                        "kMDItemImageDirection",
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
                                        "kMDItemCodecs",
                                        "kMDItemMediaTypes",
                                        "kMDItemStreamable",
                                        "kMDItemTotalBitRate",
                                        "kMDItemVideoBitRate",
                                        "kMDItemAudioBitRate",
                                        "kMDItemDeliveryType",
                                        "kMDItemAlbum",
                                        "kMDItemHasAlphaChannel",
                                        "kMDItemRedEyeOnOff",
                                        "kMDItemMeteringMode",
                                        "kMDItemMaxAperture",
                                        "kMDItemFNumber",
                                        "kMDItemExposureProgram",
                                        "kMDItemExposureTimeString",
                                        "kMDItemHeadline",
                                        "kMDItemInstructions",
                                        "kMDItemCity",
                                        "kMDItemStateOrProvince",
                                        "kMDItemCountry",
                                        "kMDItemFSName",
                                        "kMDItemDisplayName",
                                        "kMDItemPath",
                                        "kMDItemFSSize",
                                        "kMDItemFSCreationDate",
                                        "kMDItemFSContentChangeDate",
                                        "kMDItemFSOwnerUserID",
                                        "kMDItemFSOwnerGroupID",
                                        "kMDItemFSExists",
                                        "kMDItemFSIsReadable",
                                        "kMDItemFSIsWriteable",
                                        "kMDItemFSHasCustomIcon",
                                        "kMDItemFSIsExtensionHidden",
                                        "kMDItemFSIsStationery",
                                        "kMDItemFSInvisible",
                                        "kMDItemFSLabel",
                                        "kMDItemFSNodeCount",
                                        "kMDItemTextContent",
                                        "kMDItemAudioSampleRate",
                                        "kMDItemAudioChannelCount",
                                        "kMDItemTempo",
                                        "kMDItemKeySignature",
                                        "kMDItemTimeSignature",
                                        "kMDItemAudioEncodingApplication",
                                        "kMDItemComposer",
                                        "kMDItemLyricist",
                                        "kMDItemAudioTrackNumber",
                                        "kMDItemRecordingDate",
                                        "kMDItemMusicalGenre",
                                        "kMDItemIsGeneralMIDISequence",
                                        "kMDItemRecordingYear",
                                        "kMDItemOrganizations",
                                        "kMDItemLanguages",
                                        "kMDItemRights",
                                        "kMDItemPublishers",
                                        "kMDItemContributors",
                                        "kMDItemCoverage",
                                        "kMDItemSubject",
                                        "kMDItemTheme",
                                        "kMDItemDescription",
                                        "kMDItemIdentifier",
                                        "kMDItemAudiences",
                                        "kMDItemNumberOfPages",
                                        "kMDItemPageWidth",
                                        "kMDItemPageHeight",
                                        "kMDItemSecurityMethod",
                                        "kMDItemCreator",
                                        "kMDItemEncodingApplications",
                                        "kMDItemDueDate",
                                        "kMDItemStarRating",
                                        "kMDItemPhoneNumbers",
                                        "kMDItemEmailAddresses",
                                        "kMDItemInstantMessageAddresses",
                                        "kMDItemKind",
                                        "kMDItemRecipients",
                                        "kMDItemFinderComment",
                                        "kMDItemFonts",
                                        "kMDItemAppleLoopsRootKey",
                                        "kMDItemAppleLoopsKeyFilterType",
                                        "kMDItemAppleLoopsLoopMode",
                                        "kMDItemAppleLoopDescriptors",
                                        "kMDItemMusicalInstrumentCategory",
                                        "kMDItemMusicalInstrumentName",
                                        "kMDItemCFBundleIdentifier",
                                        "kMDItemSupportFileType",
                                        "kMDItemInformation",
                                        "kMDItemDirector",
                                        "kMDItemProducer",
                                        "kMDItemGenre",
                                        "kMDItemPerformers",
                                        "kMDItemOriginalFormat",
                                        "kMDItemOriginalSource",
                                        "kMDItemAuthorEmailAddresses",
                                        "kMDItemRecipientEmailAddresses",
                                        "kMDItemAuthorAddresses",
                                        "kMDItemRecipientAddresses",
                                        "kMDItemURL",
                                        "kMDItemLabelIcon",
                                        "kMDItemLabelID",
                                        "kMDItemLabelKind",
                                        "kMDItemLabelUUID",
                                        "kMDItemIsLikelyJunk",
                                        "kMDItemExecutableArchitectures",
                                        "kMDItemApplicationCategories",
                                        "kMDItemIsApplicationManaged",
                                        "kMDItemDateAdded"};

class Schema : public testing::Test {
 protected:
  ~Schema() override {
    standin::clearFailures();
    EXPECT_EQ(alive(), "");
  }

  static Owned<CFDictionaryRef> about(const std::string& key) {
    return Owned(MDSchemaCopyMetaAttributesForAttribute(makeString(key).get()));
  }
  static CFTypeID typeOf(const std::string& key) {
    const auto dictionary = about(key);
    int type = 0;
    if (!dictionary) return 0;
    const auto* const number =
        static_cast<CFNumberRef>(CFDictionaryGetValue(dictionary.get(), kMDAttributeType));
    return CFNumberGetValue(number, kCFNumberIntType, &type) ? static_cast<CFTypeID>(type) : 0;
  }
  static CFTypeRef isMultiValued(const std::string& key) {
    const auto dictionary = about(key);
    return dictionary ? CFDictionaryGetValue(dictionary.get(), kMDAttributeMultiValued) : nullptr;
  }
};

TEST_F(Schema, TellsAll169KeysInOrder) {
  ASSERT_EQ(kKeys.size(), 169u);
  const Owned<CFArrayRef> keys(MDSchemaCopyAllAttributes());
  ASSERT_TRUE(keys);
  std::vector<std::string> told;
  for (CFIndex i = 0; i < CFArrayGetCount(keys.get()); ++i) {
    told.push_back(textOf(CFArrayGetValueAtIndex(keys.get(), i)));
  }
  EXPECT_EQ(told, kKeys);
}

TEST_F(Schema, NamesAndDescribesEveryKeyInWordsOfItsOwn) {
  std::set<std::string> names;
  for (const std::string& key : kKeys) {
    const auto string = makeString(key);
    const Owned<CFStringRef> name(MDSchemaCopyDisplayNameForAttribute(string.get()));
    const Owned<CFStringRef> description(MDSchemaCopyDisplayDescriptionForAttribute(string.get()));
    ASSERT_TRUE(name && description) << key;
    EXPECT_TRUE(names.insert(textOf(name.get())).second) << key << " is called as another";
    EXPECT_GT(CFStringGetLength(name.get()), 2) << key;
    EXPECT_GT(CFStringGetLength(description.get()), 10) << key;
    EXPECT_EQ(textOf(name.get()).find("kMDItem"), std::string::npos) << key;
  }
}

// MetaAttributes: name, type and multi-valued flag.
TEST_F(Schema, TellsNameTypeAndWhetherThereMayBeSeveralOfEveryKey) {
  const std::set<CFTypeID> types = {CFBooleanGetTypeID(), CFNumberGetTypeID(), CFDateGetTypeID(),
                                    CFStringGetTypeID(),  CFUUIDGetTypeID(),   CFDataGetTypeID(),
                                    CFArrayGetTypeID()};
  for (const std::string& key : kKeys) {
    const auto dictionary = about(key);
    ASSERT_TRUE(dictionary) << key;
    EXPECT_EQ(CFDictionaryGetCount(dictionary.get()), 3) << key;
    EXPECT_EQ(textOf(CFDictionaryGetValue(dictionary.get(), kMDAttributeName)), key);
    EXPECT_TRUE(types.count(typeOf(key))) << key;
    EXPECT_EQ(isMultiValued(key), typeOf(key) == CFArrayGetTypeID() ? kCFBooleanTrue : kCFBooleanFalse)
        << key;
  }
}

TEST_F(Schema, KnowsTheDocumentedTypes) {
  const std::pair<CFTypeID, std::vector<const char*>> kDocumented[] = {
      {CFStringGetTypeID(),
       {"kMDItemTitle", "kMDItemKind", "kMDItemContentType", "kMDItemFinderComment", "kMDItemMeteringMode",
        "kMDItemGPSStatus", "kMDItemVersion", "kMDItemURL"}},
      {CFNumberGetTypeID(),
       {"kMDItemFSSize", "kMDItemPixelWidth", "kMDItemLatitude", "kMDItemTempo", "kMDItemOrientation",
        "kMDItemGPSDifferental", "kMDItemStarRating"}},
      {CFDateGetTypeID(),
       {"kMDItemFSCreationDate", "kMDItemDueDate", "kMDItemGPSDateStamp", "kMDItemDateAdded",
        "kMDItemTimestamp"}},
      {CFBooleanGetTypeID(),
       {"kMDItemFSInvisible", "kMDItemHasAlphaChannel", "kMDItemStreamable", "kMDItemIsGeneralMIDISequence"}},
      {CFArrayGetTypeID(),
       {"kMDItemAuthors", "kMDItemKeywords", "kMDItemContentTypeTree", "kMDItemCodecs", "kMDItemWhereFroms",
        "kMDItemLayerNames", "kMDItemFonts"}},
  };
  for (const auto& [type, keys] : kDocumented) {
    for (const char* const key : keys) EXPECT_EQ(typeOf(key), type) << key;
  }
}

TEST_F(Schema, AnswersNullForAKeyThatItDoesNotKnow) {
  for (const std::string& key :
       {std::string(), std::string("kMDItemNothing"), std::string("kmditemtitle"), std::string("Title"),
        std::string("kMDItemTitle "), std::string("\xC3\xA9"), std::string(1000, 'k')}) {
    const auto string = makeString(key);
    EXPECT_EQ(MDSchemaCopyMetaAttributesForAttribute(string.get()), nullptr) << key;
    EXPECT_EQ(MDSchemaCopyDisplayNameForAttribute(string.get()), nullptr) << key;
    EXPECT_EQ(MDSchemaCopyDisplayDescriptionForAttribute(string.get()), nullptr) << key;
  }
}

TEST_F(Schema, AnswersNullWhenACallIsMadeToFail) {
  const auto key = makeString("kMDItemTitle");
  standin::failCall("MDSchemaCopyAllAttributes", 1);
  EXPECT_EQ(MDSchemaCopyAllAttributes(), nullptr);
  standin::failCall("MDSchemaCopyMetaAttributesForAttribute", 1);
  EXPECT_EQ(MDSchemaCopyMetaAttributesForAttribute(key.get()), nullptr);
  standin::failCall("MDSchemaCopyDisplayNameForAttribute", 1);
  EXPECT_EQ(MDSchemaCopyDisplayNameForAttribute(key.get()), nullptr);
  standin::failCall("MDSchemaCopyDisplayDescriptionForAttribute", 1);
  EXPECT_EQ(MDSchemaCopyDisplayDescriptionForAttribute(key.get()), nullptr);
}

using SchemaDeathTest = Schema;

TEST_F(SchemaDeathTest, EndsTheProcessForWhatIsNoString) {
  EXPECT_DEATH(MDSchemaCopyDisplayNameForAttribute(nullptr),
               "MDSchemaCopyDisplayNameForAttribute: the string is null");
  EXPECT_DEATH(MDSchemaCopyDisplayDescriptionForAttribute(nullptr),
               "MDSchemaCopyDisplayDescriptionForAttribute: the string is null");
  const auto wrong = static_cast<CFStringRef>(static_cast<CFTypeRef>(kCFNull));
  EXPECT_DEATH(MDSchemaCopyMetaAttributesForAttribute(wrong),
               "MDSchemaCopyMetaAttributesForAttribute: this is no string");
}

}  // namespace
