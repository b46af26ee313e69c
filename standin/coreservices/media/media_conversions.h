// From what exiftool prints to values: one function for each kind of meaning.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standin/coreservices/media/media_attributes.h"
#include "standin/coreservices/media/media_tags.h"

namespace standin::metadata {

// One tag of a file.
struct MediaTag {
  std::string_view group;                 // "EXIF"
  const std::vector<std::string>& texts;  // one, but for lists
  const MediaTags& all;                   // of the same file, for values that depend on others
};

// Appends what the tag's text means: nothing where it means nothing.
using Conversion = void (*)(const MediaTag& tag, std::vector<OwnedValue>& values);

// Tags that conversions look up beside their own.
inline constexpr std::string_view kFurtherTags[] = {"File:FileType",        "EXIF:ResolutionUnit#",
                                                    "JFIF:ResolutionUnit#", "PNG:PixelUnits#",
                                                    "EXIF:GPSSpeedRef#",    "EXIF:GPSDestDistanceRef#"};

namespace convert {

void text(const MediaTag&, std::vector<OwnedValue>&);   // a list becomes one text, with commas
void texts(const MediaTag&, std::vector<OwnedValue>&);  // one value for each
void words(const MediaTag&, std::vector<OwnedValue>&);  // one for each part between commas or semicolons
void keywordsInSubject(const MediaTag&, std::vector<OwnedValue>&);  // but for office documents
void subjectOfOffice(const MediaTag&, std::vector<OwnedValue>&);    // for office documents alone
void real(const MediaTag&, std::vector<OwnedValue>&);               // a double, also of 120
void integer(const MediaTag&, std::vector<OwnedValue>&);            // the nearest one
void leadingInteger(const MediaTag&, std::vector<OwnedValue>&);     // "3 of 12" and "8 8 8" are 3 and 8
void year(const MediaTag&, std::vector<OwnedValue>&);               // that a text starts with; 0 is none
void productOfTwo(const MediaTag&, std::vector<OwnedValue>&);       // "640 480"
void date(const MediaTag&, std::vector<OwnedValue>&);  // without a zone: in this system's; none that is unset
void day(const MediaTag&, std::vector<OwnedValue>&);   // a date in GMT, time or not

// Of pictures
void apex(const MediaTag&, std::vector<OwnedValue>&);             // from an f-number
void exposureProgram(const MediaTag&, std::vector<OwnedValue>&);  // the words of EXIF's numbers
void meteringMode(const MediaTag&, std::vector<OwnedValue>&);     // the same
void exifVersion(const MediaTag&, std::vector<OwnedValue>&);
void dotsPerInch(const MediaTag&, std::vector<OwnedValue>&);
void portrait(const MediaTag&, std::vector<OwnedValue>&);
void flashFired(const MediaTag&, std::vector<OwnedValue>&);
void redEyeReduced(const MediaTag&, std::vector<OwnedValue>&);
void colorModelOfProfile(const MediaTag&, std::vector<OwnedValue>&);
void colorModelOfComponents(const MediaTag&, std::vector<OwnedValue>&);  // 1, 3, 4
void colorModelOfPng(const MediaTag&, std::vector<OwnedValue>&);
void colorModelOfTiff(const MediaTag&, std::vector<OwnedValue>&);
void alphaOfPng(const MediaTag&, std::vector<OwnedValue>&);
void kilometersPerHour(const MediaTag&, std::vector<OwnedValue>&);
void kilometers(const MediaTag&, std::vector<OwnedValue>&);

// Of sound and movies
void codec(const MediaTag&, std::vector<OwnedValue>&);
void channels(const MediaTag&, std::vector<OwnedValue>&);       // a number, or the name of a mode
void bitsPerSecond(const MediaTag&, std::vector<OwnedValue>&);  // from bytes per second
void isSound(const MediaTag&, std::vector<OwnedValue>&);
void isVideo(const MediaTag&, std::vector<OwnedValue>&);

// Of documents
void encrypted(const MediaTag&, std::vector<OwnedValue>&);
void notEncrypted(const MediaTag&, std::vector<OwnedValue>&);

}  // namespace convert
}  // namespace standin::metadata
