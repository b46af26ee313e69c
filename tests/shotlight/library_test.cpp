// The files of examples/library, whose metadata are known: by what another program reads of them, and by what
// they were made with.
#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

#include "tests/shotlight/run.h"

namespace {

using nlohmann::json;

// A tag of exiftool, its value without interpretation where it ends in "#", and the attribute that holds it.
struct Row {
  std::string tag;
  std::string key;
};
const Row kRows[] = {
    {"Title", "kMDItemTitle"},
    {"ImageWidth#", "kMDItemPixelWidth"},
    {"ImageHeight#", "kMDItemPixelHeight"},
    {"Make", "kMDItemAcquisitionMake"},
    {"Model", "kMDItemAcquisitionModel"},
    {"LensModel", "kMDItemLensModel"},
    {"ISO#", "kMDItemISOSpeed"},
    {"ExposureTime#", "kMDItemExposureTimeSeconds"},
    {"FNumber#", "kMDItemFNumber"},
    {"FocalLength#", "kMDItemFocalLength"},
    {"FocalLengthIn35mmFormat#", "kMDItemFocalLength35mm"},
    {"ExposureMode#", "kMDItemExposureMode"},
    {"WhiteBalance#", "kMDItemWhiteBalance"},
    {"Composite:GPSLatitude#", "kMDItemLatitude"},
    {"Composite:GPSLongitude#", "kMDItemLongitude"},
    {"Composite:GPSAltitude#", "kMDItemAltitude"},
    {"GPSImgDirection#", "kMDItemImageDirection"},
    {"City", "kMDItemCity"},
    {"State", "kMDItemStateOrProvince"},
    {"Country", "kMDItemCountry"},
    {"Headline", "kMDItemHeadline"},
    {"Instructions", "kMDItemInstructions"},
    {"Rating#", "kMDItemStarRating"},
    {"Copyright", "kMDItemCopyright"},
    {"Description", "kMDItemDescription"},
    {"Artist", "kMDItemAuthors"},
    {"PDF:Author", "kMDItemAuthors"},
    {"IPTC:Keywords", "kMDItemKeywords"},
    {"PDF:Keywords", "kMDItemKeywords"},
    {"Album", "kMDItemAlbum"},
    {"Composer", "kMDItemComposer"},
    {"Genre", "kMDItemMusicalGenre"},
    {"BeatsPerMinute#", "kMDItemTempo"},
    {"InitialKey", "kMDItemKeySignature"},
    {"SampleRate", "kMDItemAudioSampleRate"},
    {"Composite:Duration#", "kMDItemDurationSeconds"},
    {"PageCount#", "kMDItemNumberOfPages"},
};

std::string withoutMark(const std::string& tag) {
  const size_t group = tag.find(':');
  const std::string name = group == std::string::npos ? tag : tag.substr(group + 1);
  return name.ends_with('#') ? name.substr(0, name.size() - 1) : name;
}

// By path.
std::map<std::string, json> readByExiftool() {
  std::vector<std::string> arguments = {"-config", "", "-j", "-r", "-a", "-charset", "filename=UTF8"};
  for (const Row& row : kRows) arguments.push_back('-' + row.tag);
  arguments.push_back(exampleLibrary());
  const Result result = run({.arguments = arguments, .program = "/usr/bin/exiftool"});
  std::map<std::string, json> files;
  for (const json& file : json::parse(result.output)) files[file["SourceFile"]] = file;
  return files;
}

std::map<std::string, json> readByShotlight(const std::string& plugin) {
  std::vector<std::string> arguments = {"attrs", "--json", "--plugin", plugin};
  for (const auto& entry : std::filesystem::recursive_directory_iterator(exampleLibrary())) {
    if (entry.is_regular_file()) arguments.push_back(entry.path());
  }
  const Result result = run({.arguments = arguments});
  EXPECT_EQ(result.status, 0) << result.errors;
  std::map<std::string, json> files;
  for (const json& file : json::parse(result.output)) files[file["path"]] = file["attributes"];
  return files;
}

// The one tells a single value of an attribute that may have several, and a text of digits, as the other
// doesn't.
bool sameValue(const json& tag, const json& attribute) {
  if (attribute.is_array() && !tag.is_array()) return attribute.size() == 1 && sameValue(tag, attribute[0]);
  if (tag.is_number() && attribute.is_number())
    return std::abs(tag.get<double>() - attribute.get<double>()) <= 1e-9 * std::abs(tag.get<double>());
  if (tag.is_number() && attribute.is_string()) return tag.dump() == attribute.get<std::string>();
  return tag == attribute;
}

TEST(Library, IsReadAsExiftoolReadsIt) {
  const auto expected = readByExiftool();
  ASSERT_GE(expected.size(), 25u);  // it leaves out hidden files
  for (const std::string& plugin : {files.dylib, files.elf}) {
    SCOPED_TRACE(plugin);
    const auto read = readByShotlight(plugin);
    std::map<std::string, int> compared;
    int all = 0;
    for (const auto& [path, tags] : expected) {
      ASSERT_EQ(read.count(path), 1u) << path;
      const json& attributes = read.at(path);
      for (const Row& row : kRows) {
        const std::string name = withoutMark(row.tag);
        if (!tags.contains(name)) continue;
        ASSERT_TRUE(attributes.contains(row.key)) << path << ": " << row.key;
        EXPECT_PRED2(sameValue, tags[name], attributes[row.key]) << path << ": " << row.key;
        ++compared[row.tag];
        ++all;
      }
    }
    std::cout << all << " values of " << expected.size() << " files compared\n";
    for (const Row& row : kRows) EXPECT_GE(compared[row.tag], 1) << "no file has " << row.tag;
  }
}

std::vector<std::string> names(const std::string& query, const std::vector<std::string>& options = {}) {
  std::vector<std::string> arguments = {query, "--in", exampleLibrary(), "--show", "kMDItemFSName"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return lines(find(arguments).output);
}

TEST(Library, HasThePhotosOfAQueryForWidthAndSpeed) {
  const Texts expected = {"Harbour at dawn.jpg", "Лодка.jpg"};
  EXPECT_EQ(sorted(names("kMDItemPixelWidth > 1000 && kMDItemISOSpeed <= 400")), expected);
  EXPECT_EQ(sorted(names("kMDItemPixelWidth > 1000 && kMDItemISOSpeed <= 400", {"--plugin", files.elf})),
            expected);
  EXPECT_EQ(sorted(names("kMDItemPixelWidth > 1000 && kMDItemISOSpeed > 400")),
            sorted({"Gulls in a storm.jpg", "Fog.heic"}));
}

TEST(Library, HasAuthorsAlbumsAndKeywordsToSearchFor) {
  EXPECT_EQ(sorted(names("kMDItemAuthors == \"Hanne*\"")),
            sorted({"Opening hours.html", "Summer regatta.docx"}));
  EXPECT_EQ(sorted(names("kMDItemAlbum == \"tide tables\"c")),
            sorted({"01 Low Water.mp3", "02 High Water.flac", "03 Slack.ogg"}));
  EXPECT_EQ(sorted(names("kMDItemKeywords == \"harbour\"")),
            sorted({"Harbour at dawn.jpg", "Harbour report.pdf"}));
  EXPECT_EQ(names("kMDItemTitle == \"夜の港\""), (Texts{"夜の港.m4a"}));
  EXPECT_EQ(names("kMDItemLatitude < 0"), (Texts{"Лодка.jpg"}));
}

TEST(Library, IsSortedByWhatPhotosSayOfThemselves) {
  EXPECT_EQ(names("kMDItemISOSpeed > 0", {"--sort", "kMDItemISOSpeed:desc"}),
            (Texts{"Fog.heic", "Gulls in a storm.jpg", "Лодка.jpg", "Harbour at dawn.jpg",
                   "Lamp on the pier.jpg", "Negative 14.tif"}));
}

TEST(Library, ListsItsAlbums) {
  EXPECT_EQ(find({"kMDItemFSName == \"*\"", "--in", exampleLibrary(), "--values", "kMDItemAlbum"}).output,
            "3\tTide Tables\n1\t港の歌\n");
}

TEST(Library, FindsNamesInEitherUnicodeForm) {
  const std::string decomposed = "\u0427\u0430\u0438\u0306\u043A\u0430.txt";
  const std::string composed = "\u0427\u0430\u0439\u043A\u0430.txt";
  EXPECT_EQ(names("kMDItemFSName == \"" + decomposed + "\""), (Texts{decomposed}));
  EXPECT_EQ(names("kMDItemFSName == \"" + composed + "\""), (Texts{decomposed}));
  EXPECT_EQ(names("kMDItemFSName == \"crepes*\"cd"), (Texts{"Cre\u0302pes a\u0300 l\u2019orange.md"}));
}

}  // namespace
