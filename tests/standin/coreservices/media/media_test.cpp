// Attributes that content tells about itself, of real files, beside what exiftool itself prints of them.
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <span>

#include "tests/standin/coreservices/media/exiftool_command.h"
#include "tests/standin/coreservices/media/sample_files.h"
#include "tests/standin/coreservices/metadata/item_fixture.h"
#include "tests/support/local_zone.h"

namespace {

using Strings = std::vector<std::string>;

// An attribute that has just the value of a tag: how the tag is set, and how exiftool prints it.
struct Plain {
  const char* key;
  const char* assignment;
  const char* tag;
};

const Plain kOfPictures[] = {
    {"kMDItemTitle", "-XMP:Title=1.10", "XMP:Title"},
    {"kMDItemAuthors", "-XMP:Creator=Ann Bee", "XMP:Creator"},
    {"kMDItemEditors", "-IPTC:Writer-Editor=Ed", "IPTC:Writer-Editor"},
    {"kMDItemContributors", "-XMP:Contributor=Con", "XMP:Contributor"},
    {"kMDItemPublishers", "-XMP:Publisher=Pub", "XMP:Publisher"},
    {"kMDItemParticipants", "-XMP:PersonInImage=Peter", "XMP:PersonInImage"},
    {"kMDItemKeywords", "-XMP:Subject=blue, sky", "XMP:Subject"},
    {"kMDItemDescription", "-XMP:Description=caf\xC3\xA9 \xF0\x9F\x98\x80", "XMP:Description"},
    {"kMDItemComment", "-File:Comment=a comment", "File:Comment"},
    {"kMDItemHeadline", "-XMP:Headline=head", "XMP:Headline"},
    {"kMDItemInstructions", "-XMP:Instructions=handle with care", "XMP:Instructions"},
    {"kMDItemIdentifier", "-XMP:Identifier=007", "XMP:Identifier"},
    {"kMDItemCoverage", "-XMP:Coverage=1900 to 1910", "XMP:Coverage"},
    {"kMDItemLanguages", "-XMP:Language=de", "XMP:Language"},
    {"kMDItemCopyright", "-EXIF:Copyright=2011 Ann", "EXIF:Copyright"},
    {"kMDItemRights", "-XMP:Rights=all reserved", "XMP:Rights"},
    {"kMDItemStarRating", "-XMP:Rating=4", "XMP:Rating#"},
    {"kMDItemCity", "-XMP:City=Rome", "XMP:City"},
    {"kMDItemStateOrProvince", "-XMP:State=Lazio", "XMP:State"},
    {"kMDItemCountry", "-XMP:Country=Italy", "XMP:Country"},
    {"kMDItemNamedLocation", "-XMP:Location=Forum", "XMP:Location"},
    {"kMDItemAuthorEmailAddresses", "-XMP:CreatorWorkEmail=ann@example.org", "XMP:CreatorWorkEmail"},
    {"kMDItemAuthorAddresses", "-XMP:CreatorAddress=1 Way", "XMP:CreatorAddress"},
    {"kMDItemPhoneNumbers", "-XMP:CreatorWorkTelephone=+1 555", "XMP:CreatorWorkTelephone"},
    {"kMDItemCreator", "-XMP:CreatorTool=A Tool", "XMP:CreatorTool"},
    {"kMDItemPixelWidth", nullptr, "ImageWidth#"},
    {"kMDItemPixelHeight", nullptr, "ImageHeight#"},
    {"kMDItemBitsPerSample", nullptr, "File:BitsPerSample#"},
    {"kMDItemResolutionWidthDPI", "-EXIF:XResolution=300", "EXIF:XResolution#"},
    {"kMDItemResolutionHeightDPI", "-EXIF:YResolution=150", "EXIF:YResolution#"},
    {"kMDItemAcquisitionMake", "-EXIF:Make=A Maker", "EXIF:Make"},
    {"kMDItemAcquisitionModel", "-EXIF:Model=X 1", "EXIF:Model"},
    {"kMDItemCameraOwner", "-EXIF:OwnerName=Olga", "EXIF:OwnerName"},
    {"kMDItemLensModel", "-EXIF:LensModel=50mm f/1.8", "EXIF:LensModel"},
    {"kMDItemFocalLength", "-EXIF:FocalLength=52.5", "EXIF:FocalLength#"},
    {"kMDItemFocalLength35mm", "-EXIF:FocalLengthIn35mmFormat=78", "EXIF:FocalLengthIn35mmFormat#"},
    {"kMDItemFNumber", "-EXIF:FNumber=5.6", "EXIF:FNumber#"},
    {"kMDItemISOSpeed", "-EXIF:ISO=200", "EXIF:ISO#"},
    {"kMDItemExposureTimeSeconds", "-EXIF:ExposureTime=1/250", "EXIF:ExposureTime#"},
    {"kMDItemExposureTimeString", nullptr, "EXIF:ExposureTime"},
    {"kMDItemExposureMode", "-EXIF:ExposureMode#=1", "EXIF:ExposureMode#"},
    {"kMDItemWhiteBalance", "-EXIF:WhiteBalance#=1", "EXIF:WhiteBalance#"},
    {"kMDItemLatitude", "-GPSLatitude=33.5", "Composite:GPSLatitude#"},
    {"kMDItemLongitude", "-GPSLongitude=151.25", "Composite:GPSLongitude#"},
    {"kMDItemAltitude", "-GPSAltitude=12.5", "Composite:GPSAltitude#"},
    {"kMDItemSpeed", "-GPSSpeed=36", "GPSSpeed#"},
    {"kMDItemGPSTrack", "-GPSTrack=90.5", "GPSTrack#"},
    {"kMDItemImageDirection", "-GPSImgDirection=180", "GPSImgDirection#"},
    {"kMDItemGPSStatus", "-GPSStatus#=A", "GPSStatus#"},
    {"kMDItemGPSMeasureMode", "-GPSMeasureMode#=3", "GPSMeasureMode#"},
    {"kMDItemGPSDOP", "-GPSDOP=1.5", "GPSDOP#"},
    {"kMDItemGPSMapDatum", "-GPSMapDatum=WGS-84", "GPSMapDatum"},
    {"kMDItemGPSDestLatitude", "-GPSDestLatitude=40.25", "Composite:GPSDestLatitude#"},
    {"kMDItemGPSDestLongitude", "-GPSDestLongitude=10.5", "Composite:GPSDestLongitude#"},
    {"kMDItemGPSDestBearing", "-GPSDestBearing=45", "GPSDestBearing#"},
    {"kMDItemGPSDestDistance", "-GPSDestDistance=7", "GPSDestDistance#"},
    {"kMDItemGPSProcessingMethod", "-GPSProcessingMethod=GPS", "GPSProcessingMethod"},
    {"kMDItemGPSAreaInformation", "-GPSAreaInformation=Rome", "GPSAreaInformation"},
    {"kMDItemGPSDifferental", "-GPSDifferential#=1", "GPSDifferential#"},
    {"kMDItemEXIFGPSVersion", nullptr, "GPSVersionID"},
    {"kMDItemLayerNames", "-XMP:TextLayerName=a layer", "XMP:TextLayerName"},
    {"kMDItemOriginalSource", "-XMP:Source=an archive", "XMP:Source"},
    {"kMDItemFonts", "-XMP:FontName=Bodoni", "XMP:FontName"},
};

const Plain kOfDocuments[] = {
    {"kMDItemTitle", nullptr, "PDF:Title"},
    {"kMDItemAuthors", nullptr, "PDF:Author"},
    {"kMDItemSubject", nullptr, "PDF:Subject"},
    {"kMDItemKeywords", nullptr, "PDF:Keywords"},
    {"kMDItemCreator", nullptr, "PDF:Creator"},
    {"kMDItemEncodingApplications", nullptr, "PDF:Producer"},
    {"kMDItemLanguages", nullptr, "PDF:Language"},
    {"kMDItemVersion", nullptr, "PDF:PDFVersion"},
    {"kMDItemNumberOfPages", nullptr, "PDF:PageCount#"},
};

const Plain kOfOfficeDocuments[] = {
    {"kMDItemTitle", nullptr, "XMP:Title"},           {"kMDItemAuthors", nullptr, "XMP:Creator"},
    {"kMDItemSubject", nullptr, "XMP:Subject"},       {"kMDItemEditors", nullptr, "XML:LastModifiedBy"},
    {"kMDItemOrganizations", nullptr, "XML:Company"}, {"kMDItemCreator", nullptr, "XML:Application"},
    {"kMDItemNumberOfPages", nullptr, "XML:Pages#"},
};

const Plain kOfSongs[] = {
    {"kMDItemTitle", nullptr, "ID3:Title"},
    {"kMDItemAuthors", nullptr, "ID3:Artist"},
    {"kMDItemAlbum", nullptr, "ID3:Album"},
    {"kMDItemComposer", nullptr, "ID3:Composer"},
    {"kMDItemLyricist", nullptr, "ID3:Lyricist"},
    {"kMDItemMusicalGenre", nullptr, "ID3:Genre"},
    {"kMDItemPublishers", nullptr, "ID3:Publisher"},
    {"kMDItemCopyright", nullptr, "ID3:Copyright"},
    {"kMDItemLanguages", nullptr, "ID3:Language"},
    {"kMDItemKeySignature", nullptr, "ID3:InitialKey"},
    {"kMDItemTempo", nullptr, "ID3:BeatsPerMinute#"},
    {"kMDItemAudioEncodingApplication", nullptr, "ID3:EncoderSettings"},
    {"kMDItemDurationSeconds", nullptr, "Composite:Duration#"},
    {"kMDItemAudioSampleRate", nullptr, "MPEG:SampleRate"},
    {"kMDItemAudioBitRate", nullptr, "MPEG:AudioBitrate#"},
};

const Plain kOfWaves[] = {
    {"kMDItemDurationSeconds", nullptr, "Composite:Duration#"},
    {"kMDItemAudioSampleRate", nullptr, "RIFF:SampleRate"},
    {"kMDItemAudioChannelCount", nullptr, "RIFF:NumChannels"},
    {"kMDItemBitsPerSample", nullptr, "RIFF:BitsPerSample#"},
};

const Plain kOfMovies[] = {
    {"kMDItemPixelWidth", nullptr, "RIFF:ImageWidth#"},
    {"kMDItemPixelHeight", nullptr, "RIFF:ImageHeight#"},
    {"kMDItemDurationSeconds", nullptr, "Composite:Duration#"},
};

const Plain kOfMpeg4[] = {
    {"kMDItemTitle", "-ItemList:Title=A Song", "ItemList:Title"},
    {"kMDItemAuthors", "-ItemList:Artist=Singer", "ItemList:Artist"},
    {"kMDItemAlbum", "-ItemList:Album=An Album", "ItemList:Album"},
    {"kMDItemTempo", "-ItemList:BeatsPerMinute=99", "ItemList:BeatsPerMinute#"},
    {"kMDItemComposer", "-ItemList:Composer=Bach", "ItemList:Composer"},
    {"kMDItemMusicalGenre", "-ItemList:Genre=Jazz", "ItemList:Genre"},
    {"kMDItemDescription", "-ItemList:Description=of a song", "ItemList:Description"},
    {"kMDItemPerformers", "-UserData:Performers=A Band", "UserData:Performers"},
    {"kMDItemDirector", "-UserData:Director=Di", "UserData:Director"},
    {"kMDItemProducer", "-UserData:Producer=Pro", "UserData:Producer"},
    {"kMDItemInformation", "-UserData:Information=more", "UserData:Information"},
    {"kMDItemOriginalFormat", "-UserData:Format=tape", "UserData:Format"},
    {"kMDItemDurationSeconds", nullptr, "QuickTime:Duration#"},
    {"kMDItemTotalBitRate", nullptr, "Composite:AvgBitrate#"},
};

class Media : public ItemTest {
 protected:
  // The way exiftool prints it.
  static std::string printed(CFTypeRef value) {
    if (!value) return "-";
    if (CFGetTypeID(value) == CFArrayGetTypeID()) {
      std::string all;
      for (const std::string& part : textsOf(value)) all += (all.empty() ? "" : ", ") + part;
      return all;
    }
    return textOf(value);
  }

  static void expectAsPrinted(const Owned<MDItemRef>& item, const std::string& path,
                              std::span<const Plain> attributes) {
    std::vector<std::string> tags;
    for (const Plain& attribute : attributes) tags.push_back(attribute.tag);
    const std::vector<std::string> expected = printedTags(path, tags);
    ASSERT_EQ(expected.size(), attributes.size());
    for (size_t i = 0; i < attributes.size(); ++i) {
      const auto value = get(item, makeString(attributes[i].key).get());
      EXPECT_NE(expected[i], "-") << attributes[i].tag << " isn't in the file";
      ASSERT_TRUE(value) << attributes[i].key;
      double number = 0;
      if (CFGetTypeID(value.get()) == CFNumberGetTypeID()) {
        CFNumberGetValue(static_cast<CFNumberRef>(value.get()), kCFNumberDoubleType, &number);
        EXPECT_DOUBLE_EQ(number, std::stod(expected[i])) << attributes[i].key;
      } else {
        EXPECT_EQ(printed(value.get()), expected[i]) << attributes[i].key;
      }
    }
  }

  static void write(const std::string& path, std::span<const Plain> attributes, Strings more = {}) {
    for (const Plain& attribute : attributes) {
      if (attribute.assignment) more.push_back(attribute.assignment);
    }
    writeTags(path, more);
  }

  static void expectTypesOfTheSchema(const Owned<MDItemRef>& item) {
    const Owned<CFArrayRef> names(MDItemCopyAttributeNames(item.get()));
    for (CFIndex i = 0; i < CFArrayGetCount(names.get()); ++i) {
      const auto key = static_cast<CFStringRef>(CFArrayGetValueAtIndex(names.get(), i));
      const Owned<CFDictionaryRef> about(MDSchemaCopyMetaAttributesForAttribute(key));
      int type = 0;
      CFNumberGetValue(static_cast<CFNumberRef>(CFDictionaryGetValue(about.get(), kMDAttributeType)),
                       kCFNumberIntType, &type);
      EXPECT_EQ(CFGetTypeID(get(item, key).get()), static_cast<CFTypeID>(type)) << textOf(key);
    }
  }
};

TEST_F(Media, OfPicturesIsWhatExiftoolPrints) {
  const std::string path = scratch.file("photo.jpg", sample::jpeg());
  write(path, kOfPictures,
        {"-GPSLatitudeRef=S", "-GPSLongitudeRef=E", "-GPSAltitudeRef#=1", "-GPSDestLatitudeRef=N",
         "-GPSDestLongitudeRef=W", "-GPSSpeedRef#=K", "-GPSDestDistanceRef#=K"});
  const auto item = make(path);
  expectAsPrinted(item, path, kOfPictures);
  EXPECT_EQ(real(item, kMDItemLatitude), -33.5);
  EXPECT_EQ(real(item, kMDItemAltitude), -12.5);
  EXPECT_EQ(real(item, kMDItemGPSDestLongitude), -10.5);
  expectTypesOfTheSchema(item);
}

TEST_F(Media, OfDocumentsIsWhatExiftoolPrints) {
  const std::string path = scratch.file("paper.pdf", sample::pdf());
  const auto item = make(path);
  expectAsPrinted(item, path, kOfDocuments);
  EXPECT_EQ(texts(item, kMDItemKeywords), (Strings{"one", "two"}));
  EXPECT_EQ(text(item, kMDItemSecurityMethod), "None");
  EXPECT_EQ(date(item, kMDItemContentCreationDate), 1299326400.0 - 978307200.0);  // 2011-03-05 12:00 GMT
  expectTypesOfTheSchema(item);
}

TEST_F(Media, OfOfficeDocumentsIsWhatExiftoolPrints) {
  const std::string path = scratch.file("letter.docx", sample::docx());
  const auto item = make(path);
  expectAsPrinted(item, path, kOfOfficeDocuments);
  EXPECT_EQ(texts(item, kMDItemKeywords), (Strings{"a", "b", "c"}));
  expectTypesOfTheSchema(item);
}

TEST_F(Media, OfWebPagesAndRichTextIsTold) {
  const auto page = make(scratch.file("page.html",
                                      "<!DOCTYPE html>\n<html>\n<head>\n<title>T</title>\n"
                                      "<meta name=\"author\" content=\"Ann\">\n"
                                      "<meta name=\"keywords\" content=\"a, b\">\n"
                                      "<meta name=\"generator\" content=\"G\">\n</head>\n</html>\n"));
  EXPECT_EQ(text(page, kMDItemTitle), "T");
  EXPECT_EQ(texts(page, kMDItemAuthors), Strings{"Ann"});
  EXPECT_EQ(texts(page, kMDItemKeywords), (Strings{"a", "b"}));
  EXPECT_EQ(text(page, kMDItemCreator), "G");
  const auto note = make(scratch.file(
      "note.rtf", "{\\rtf1\\ansi{\\info{\\title T}{\\author Ann}{\\company Co}{\\doccomm C}}x}"));
  EXPECT_EQ(text(note, kMDItemTitle), "T");
  EXPECT_EQ(texts(note, kMDItemOrganizations), Strings{"Co"});
  EXPECT_EQ(text(note, kMDItemComment), "C");
}

TEST_F(Media, OfSongsIsWhatExiftoolPrints) {
  const std::string path = scratch.file("song.mp3", sample::mp3({{"TIT2", "L\xC3\xB6we"},
                                                                 {"TPE1", "Ann"},
                                                                 {"TALB", "Album"},
                                                                 {"TCOM", "Bach"},
                                                                 {"TEXT", "Poet"},
                                                                 {"TCON", "Jazz"},
                                                                 {"TPUB", "Pub"},
                                                                 {"TCOP", "2001 me"},
                                                                 {"TLAN", "deu"},
                                                                 {"TKEY", "Am"},
                                                                 {"TBPM", "120"},
                                                                 {"TRCK", "3/12"},
                                                                 {"TDRC", "1999-05-06T07:08:09"},
                                                                 {"TSSE", "LAME"}}));
  const auto item = make(path);
  expectAsPrinted(item, path, kOfSongs);
  EXPECT_EQ(number(item, kMDItemAudioTrackNumber), 3);
  EXPECT_EQ(number(item, kMDItemAudioChannelCount), 2);
  EXPECT_EQ(number(item, kMDItemRecordingYear), 1999);
  EXPECT_EQ(texts(item, kMDItemMediaTypes), Strings{"Sound"});
  expectTypesOfTheSchema(item);
}

TEST_F(Media, OfPlainSoundIsWhatExiftoolPrints) {
  const std::string path = scratch.file("sound.wav", sample::wave());
  const auto item = make(path);
  expectAsPrinted(item, path, kOfWaves);
  EXPECT_EQ(number(item, kMDItemAudioBitRate), 64000);
  EXPECT_EQ(texts(item, kMDItemCodecs), Strings{"Linear PCM"});
  expectTypesOfTheSchema(item);
}

TEST_F(Media, OfMoviesIsWhatExiftoolPrints) {
  const std::string path = scratch.file("movie.avi", sample::avi());
  const auto item = make(path);
  expectAsPrinted(item, path, kOfMovies);
  EXPECT_EQ(texts(item, kMDItemMediaTypes), Strings{"Video"});
  EXPECT_EQ(number(item, kMDItemPixelCount), 3072);
  expectTypesOfTheSchema(item);
}

TEST_F(Media, OfMpeg4IsWhatExiftoolPrints) {
  const std::string path = scratch.file("song.m4a", sample::mpeg4Audio());
  write(path, kOfMpeg4,
        {"-ItemList:TrackNumber=3 of 12", "-ItemList:ContentCreateDate=2010:02:03 04:05:06Z"});
  const auto item = make(path);
  expectAsPrinted(item, path, kOfMpeg4);
  EXPECT_EQ(number(item, kMDItemAudioTrackNumber), 3);
  EXPECT_EQ(number(item, kMDItemRecordingYear), 2010);
  EXPECT_EQ(date(item, kMDItemRecordingDate), 1265169906.0 - 978307200.0);  // 2010-02-03 04:05:06 GMT
  expectTypesOfTheSchema(item);
}

TEST_F(Media, OfTransparentPicturesTellsSo) {
  const auto item = make(scratch.file("drawing.png", sample::png()));
  EXPECT_EQ(get(item, kMDItemHasAlphaChannel).get(), kCFBooleanTrue);
  EXPECT_EQ(text(item, kMDItemColorSpace), "RGB");
  EXPECT_EQ(number(item, kMDItemPixelCount), 6);
  EXPECT_NEAR(real(item, kMDItemResolutionWidthDPI), 144, 0.01);
  EXPECT_NEAR(real(item, kMDItemResolutionHeightDPI), 144, 0.01);
  EXPECT_FALSE(get(make(scratch.file("photo.jpg", sample::jpeg())), kMDItemHasAlphaChannel));
}

TEST_F(Media, OfCamerasIsPutIntoTheUnitsOfTheAttributes) {
  const std::string path = scratch.file("photo.jpg", sample::jpeg());
  writeTags(path, {"-EXIF:Flash#=65", "-EXIF:ApertureValue=4", "-EXIF:MaxApertureValue=2",
                   "-EXIF:Orientation#=6", "-EXIF:ExifVersion=0221", "-EXIF:XResolution=100",
                   "-EXIF:YResolution=50", "-EXIF:ResolutionUnit#=3", "-GPSSpeed=10", "-GPSSpeedRef#=M",
                   "-GPSDestDistance=2", "-GPSDestDistanceRef#=N"});
  const auto item = make(path);
  EXPECT_EQ(get(item, kMDItemFlashOnOff).get(), kCFBooleanTrue);
  EXPECT_EQ(get(item, kMDItemRedEyeOnOff).get(), kCFBooleanTrue);
  EXPECT_DOUBLE_EQ(real(item, kMDItemAperture), 4);
  EXPECT_DOUBLE_EQ(real(item, kMDItemMaxAperture), 2);
  EXPECT_EQ(number(item, kMDItemOrientation), 1);
  EXPECT_EQ(text(item, kMDItemEXIFVersion), "2.2.1");
  EXPECT_DOUBLE_EQ(real(item, kMDItemResolutionWidthDPI), 254);
  EXPECT_DOUBLE_EQ(real(item, kMDItemResolutionHeightDPI), 127);
  EXPECT_DOUBLE_EQ(real(item, kMDItemSpeed), 16.09344);
  EXPECT_DOUBLE_EQ(real(item, kMDItemGPSDestDistance), 3.704);
  EXPECT_EQ(text(item, kMDItemColorSpace), "RGB");
  EXPECT_EQ(number(item, kMDItemPixelCount), 512);
}

TEST_F(Media, OfCamerasHasTheWordsOfItsNumbers) {
  const std::string path = scratch.file("photo.jpg", sample::jpeg());
  struct Case {
    int number;
    const char* program;
    const char* metering;
  };
  for (const Case& each : {Case{1, "Manual", "Average"}, Case{2, "Normal", "CenterWeightedAverage"},
                           Case{3, "Aperture priority", "Spot"}, Case{5, "Creative", "Pattern"}}) {
    const std::string number = std::to_string(each.number);
    writeTags(path, {"-EXIF:ExposureProgram#=" + number, "-EXIF:MeteringMode#=" + number});
    EXPECT_EQ(text(make(path), kMDItemExposureProgram), each.program);
    EXPECT_EQ(text(make(path), kMDItemMeteringMode), each.metering);
  }
  writeTags(path, {"-EXIF:ExposureProgram#=99", "-EXIF:MeteringMode#=255"});
  EXPECT_FALSE(get(make(path), kMDItemExposureProgram));
  EXPECT_EQ(text(make(path), kMDItemMeteringMode), "Other");
}

// An f-number is one with a point also where it is whole.
TEST_F(Media, HasNumbersOfOneTypeInAllFiles) {
  const auto isReal = [](const Owned<MDItemRef>& item, CFStringRef key) {
    const auto value = get(item, key);
    EXPECT_TRUE(value) << textOf(key);
    return value && CFNumberIsFloatType(static_cast<CFNumberRef>(value.get()));
  };
  for (const char* number : {"8", "5.6"}) {
    const std::string path = scratch.file("photo.jpg", sample::jpeg());
    writeTags(path, {std::string("-EXIF:FNumber=") + number, std::string("-EXIF:FocalLength=") + number,
                     "-EXIF:ISO=200"});
    EXPECT_TRUE(isReal(make(path), kMDItemFNumber)) << number;
    EXPECT_TRUE(isReal(make(path), kMDItemFocalLength)) << number;
    EXPECT_FALSE(isReal(make(path), kMDItemISOSpeed));
    EXPECT_FALSE(isReal(make(path), kMDItemPixelWidth));
    const auto song = make(scratch.file("song.mp3", sample::mp3({{"TBPM", number}, {"TRCK", "3/12"}})));
    EXPECT_TRUE(isReal(song, kMDItemTempo)) << number;
    EXPECT_TRUE(isReal(song, kMDItemAudioSampleRate));
    EXPECT_FALSE(isReal(song, kMDItemAudioTrackNumber));
  }
}

TEST_F(Media, WithADateThatWasNeverSetHasTheFiles) {
  for (const char* zone : {"GMT", "XYZ-9", "XYZ5"}) {
    const LocalZone local(zone);
    const auto item = make(scratch.file("song.m4a", sample::mpeg4Audio(0)));
    EXPECT_NE(date(item, kMDItemFSCreationDate), -1);
    EXPECT_EQ(date(item, kMDItemContentCreationDate), date(item, kMDItemFSCreationDate)) << zone;
  }
  const auto song2011 = make(scratch.file("2011.m4a", sample::mpeg4Audio()));
  EXPECT_EQ(date(song2011, kMDItemContentCreationDate), 1299326400.0 - 978307200.0);
  const auto song = make(scratch.file("song.mp3", sample::mp3({{"TYER", "0000"}})));
  EXPECT_FALSE(get(song, kMDItemRecordingYear));
}

TEST_F(Media, OfDocumentsIsReadWhereverItIsRepeated) {
  const Strings keywords = {"one", "two, three", "four"};
  EXPECT_EQ(texts(make(scratch.file("a.odt", sample::odt(keywords))), kMDItemKeywords), keywords);
  const auto book = make(scratch.file("a.epub", sample::epub(keywords)));
  EXPECT_EQ(texts(book, kMDItemKeywords), keywords);
  EXPECT_EQ(texts(book, kMDItemAuthors), (Strings{"Ann", "Bob"}));
  const auto page = make(scratch.file("a.html",
                                      "<!DOCTYPE html>\n<html>\n<head>\n"
                                      "<meta name=\"author\" content=\"Ann\">\n"
                                      "<meta name=\"author\" content=\"Bob\">\n"
                                      "<meta name=\"keywords\" content=\"a, b\">\n"
                                      "<meta name=\"keywords\" content=\"c\">\n</head>\n</html>\n"));
  EXPECT_EQ(texts(page, kMDItemAuthors), (Strings{"Ann", "Bob"}));
  EXPECT_EQ(texts(page, kMDItemKeywords), (Strings{"a", "b", "c"}));
}

TEST_F(Media, KeepsListsApart) {
  const std::string path = scratch.file("photo.jpg", sample::jpeg());
  writeTags(path, {"-XMP:Creator=Ann, of here", "-XMP:Creator=Bob", "-XMP:Subject=one", "-XMP:Subject=2"});
  const auto item = make(path);
  EXPECT_EQ(texts(item, kMDItemAuthors), (Strings{"Ann, of here", "Bob"}));
  EXPECT_EQ(texts(item, kMDItemKeywords), (Strings{"one", "2"}));
}

TEST_F(Media, PrefersTheTagThatSaysMore) {
  const std::string path = scratch.file("photo.jpg", sample::jpeg());
  writeTags(path, {"-EXIF:Artist=Carl"});
  EXPECT_EQ(texts(make(path), kMDItemAuthors), Strings{"Carl"});
  writeTags(path, {"-XMP:Creator=Ann"});
  EXPECT_EQ(texts(make(path), kMDItemAuthors), Strings{"Ann"});
}

TEST_F(Media, DatesWithoutAZoneAreOfThisSystemsZone) {
  const LocalZone zone("XYZ-2");  // two hours east of Greenwich
  const std::string path = scratch.file("photo.jpg", sample::jpeg());
  writeTags(path, {"-EXIF:DateTimeOriginal=2011:03:05 12:00:00", "-GPSTimeStamp=10:20:30",
                   "-GPSDateStamp=2011:03:05"});
  const double noon = 1299326400.0 - 978307200.0;
  EXPECT_EQ(date(make(path), kMDItemContentCreationDate), noon - 7200);
  EXPECT_EQ(date(make(path), kMDItemTimestamp), noon - 5970);
  EXPECT_EQ(date(make(path), kMDItemGPSDateStamp), noon - 43200);
  writeTags(path, {"-EXIF:OffsetTimeOriginal=-01:30", "-EXIF:SubSecTimeOriginal=25"});
  EXPECT_EQ(date(make(path), kMDItemContentCreationDate), noon + 5400.25);
}

TEST_F(Media, DatesInAnHourThatClocksShowTwiceAreBeforeTheChange) {
  const LocalZone zone("EST5EDT,M3.2.0,M11.1.0");
  const double before = 1320557400.0 - 978307200.0;  // 2011-11-06 05:30 GMT, 01:30 in summer time
  for (const char* month : {"07", "01"}) {           // whatever date is read before it
    const std::string earlier = scratch.file(std::string("earlier") + month + ".jpg", sample::jpeg());
    const std::string path = scratch.file(std::string("photo") + month + ".jpg", sample::jpeg());
    writeTags(earlier, {std::string("-EXIF:DateTimeOriginal=2011:") + month + ":15 12:00:00"});
    writeTags(path, {"-EXIF:DateTimeOriginal=2011:11:06 01:30:00"});
    EXPECT_NE(date(make(earlier), kMDItemContentCreationDate), -1);
    EXPECT_EQ(date(make(path), kMDItemContentCreationDate), before) << month;
  }
}

TEST_F(Media, WithoutADateOfItsOwnHasTheFiles) {
  const auto item = make(scratch.file("photo.jpg", sample::jpeg()));
  EXPECT_EQ(date(item, kMDItemContentCreationDate), date(item, kMDItemFSCreationDate));
}

TEST_F(Media, IsReadAgainAfterAChange) {
  const std::string path = scratch.file("photo.jpg", sample::jpeg());
  const auto item = make(path);
  EXPECT_FALSE(get(item, kMDItemTitle));
  writeTags(path, {"-XMP:Title=new"});
  EXPECT_EQ(text(item, kMDItemTitle), "new");
}

TEST_F(Media, IsReadWhateverTheFileIsCalled) {
  for (const char* const name : {"-execute.jpg", "a\nb.jpg", "a.jpg\r", " a b .jpg", "#[CSTR]$x @y %d.jpg",
                                 "bad\xFF.jpg", "caf\xC3\xA9.jpg", "{ready1}.jpg", "*.jpg", "a'\"\\.jpg"}) {
    const auto item = make(scratch.file(name, sample::jpeg()));
    EXPECT_EQ(number(item, kMDItemPixelWidth), 32) << name;
  }
}

TEST_F(Media, IsReadHoweverLongThePathIs) {
  const std::string name(200, 'd');
  std::string path = scratch.path();
  int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY);
  for (int i = 0; i < 25; ++i) {
    ASSERT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
    const int next = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
    ::close(folder);
    folder = next;
    path += '/' + name;
  }
  ASSERT_GT(path.size(), size_t{PATH_MAX});
  const int file = ::openat(folder, "photo.jpg", O_CREAT | O_WRONLY, 0600);
  ::close(folder);
  const std::string content = sample::jpeg();
  ASSERT_EQ(::write(file, content.data(), content.size()), static_cast<ssize_t>(content.size()));
  const bool keepsAttributes = ::fsetxattr(file, "user.xdg.comment", "deep", 4, 0) == 0;
  ::close(file);
  const auto item = make(path + "/photo.jpg");
  ASSERT_TRUE(item);
  EXPECT_EQ(number(item, kMDItemPixelWidth), 32);
  if (keepsAttributes) {
    EXPECT_EQ(text(item, kMDItemFinderComment), "deep");
  }
}

TEST_F(Media, OfABrokenFileIsNone) {
  for (const char* const name : {"a.jpg", "a.pdf", "a.mp3", "a.docx"}) {
    const auto item = make(scratch.file(name, "this is something else"));
    EXPECT_FALSE(get(item, kMDItemPixelWidth)) << name;
    EXPECT_FALSE(get(item, kMDItemTitle)) << name;
  }
}

}  // namespace
