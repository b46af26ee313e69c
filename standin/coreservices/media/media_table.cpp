#include "standin/coreservices/media/media_table.h"

#include <algorithm>
#include <bitset>

#include "standin/coreservices/attributes/schema.h"

namespace standin::metadata {
namespace {

using enum FileAttribute;
using namespace convert;

// clang-format off
constexpr MediaRow kRows[] = {
    // What every kind of content may say about itself
    {Title, text, {"XMP:Title", "IPTC:ObjectName", "PDF:Title", "XML:Title", "Title"}},
    {Authors, texts, {"XMP:Initial-creator", "XMP:Creator", "XMP:Author", "PDF:Author", "EXIF:Artist",
        "IPTC:By-line", "XML:Creator", "HTML:Author", "Author", "Artist"}},
    {Editors, texts, {"XML:LastModifiedBy", "FlashPix:LastModifiedBy", "XMP:CaptionWriter",
        "IPTC:Writer-Editor", "RIFF:EditedBy"}},
    {Contributors, texts, {"XMP:Contributor"}},
    {Publishers, texts, {"XMP:Publisher", "XML:Publisher", "ID3:Publisher", "Publisher"}},
    {Organizations, texts, {"XML:Company", "FlashPix:Company", "RTF:Company", "Vorbis:Organization",
        "RIFF:Organization"}},
    {Participants, texts, {"XMP:PersonInImage"}},
    {Keywords, keywordsInSubject, {"XMP:Subject"}},
    {Keywords, texts, {"IPTC:Keywords", "PDF:Keywords", "XMP:Keyword", "XML:Subject"}},
    {Keywords, words, {"XML:Keywords", "FlashPix:Keywords", "HTML:Keywords", "QuickTime:Keyword",
        "QuickTime:Keywords", "RIFF:Keywords", "RTF:Keywords", "Keywords"}},
    {Subject, subjectOfOffice, {"XMP:Subject"}},
    {Subject, text, {"PDF:Subject", "FlashPix:Subject", "RTF:Subject", "ID3:Subtitle",
        "RIFF:Subject"}},
    {Description, text, {"XMP:Description", "IPTC:Caption-Abstract", "EXIF:ImageDescription",
        "PNG:Description", "SVG:Desc", "Description"}},
    {Comment, text, {"File:Comment", "EXIF:UserComment", "Comment", "FlashPix:Comments", "RTF:Comments"}},
    {Headline, text, {"XMP:Headline", "IPTC:Headline"}},
    {Instructions, text, {"XMP:Instructions", "IPTC:SpecialInstructions"}},
    {Identifier, text, {"XMP:Identifier", "ID3:ISRC", "Vorbis:ISRCNumber"}},
    {Coverage, text, {"XMP:Coverage"}},
    {Languages, texts, {"XMP:Language", "PDF:Language", "XML:Language", "ID3:Language", "RIFF:Language"}},
    {Copyright, text, {"EXIF:Copyright", "IPTC:CopyrightNotice", "Copyright"}},
    {Rights, text, {"XMP:Rights", "XMP:UsageTerms", "ID3:TermsOfUse", "Vorbis:License"}},
    {StarRating, real, {"XMP:Rating#"}},
    {Version, text, {"PDF:PDFVersion", "XML:AppVersion"}},
    {ContentCreationDate, date, {"Composite:SubSecDateTimeOriginal", "EXIF:DateTimeOriginal",
        "XMP:DateTimeOriginal", "EXIF:CreateDate", "XMP:DateCreated", "XMP:CreateDate", "PDF:CreateDate",
        "QuickTime:ContentCreateDate", "QuickTime:CreateDate"}},
    {ContentCreationDate, date, {"XML:CreateDate", "XMP:Creation-date", "FlashPix:CreateDate",
        "RTF:CreateDate", "PNG:CreationTime", "RIFF:DateTimeOriginal"}},

    // People and places
    {City, text, {"XMP:City", "IPTC:City"}},
    {StateOrProvince, text, {"XMP:State", "IPTC:Province-State"}},
    {Country, text, {"XMP:Country", "IPTC:Country-PrimaryLocationName"}},
    {NamedLocation, text, {"XMP:Location", "IPTC:Sub-location"}},
    {AuthorEmailAddresses, words, {"XMP:CreatorWorkEmail"}},
    {AuthorAddresses, texts, {"XMP:CreatorAddress"}},
    {PhoneNumbers, words, {"XMP:CreatorWorkTelephone"}},

    // Programs and protection
    {Creator, text, {"PDF:Creator", "XMP:CreatorTool", "EXIF:Software", "XML:Application",
        "XMP:Generator", "FlashPix:Software", "HTML:Generator", "PNG:Software", "RIFF:Software"}},
    {EncodingApplications, texts, {"PDF:Producer", "XMP:Producer", "QuickTime:Encoder"}},
    {SecurityMethod, encrypted, {"PDF:Encryption"}},
    {SecurityMethod, notEncrypted, {"PDF:PDFVersion"}},

    // Pages
    {NumberOfPages, integer, {"PDF:PageCount#", "XML:Pages#", "XML:Slides#", "FlashPix:Pages#",
        "FlashPix:Slides#", "XMP:NPages#", "XMP:Document-statisticPage-count#"}},
    {Fonts, texts, {"Font:FontName", "Font:FullName", "XMP:FontName"}},

    // Pictures
    {PixelWidth, integer, {"ImageWidth#", "EXIF:ExifImageWidth#"}},
    {PixelHeight, integer, {"ImageHeight#", "EXIF:ExifImageHeight#"}},
    {PixelCount, productOfTwo, {"Composite:ImageSize#"}},
    {ColorSpace, colorModelOfProfile, {"ICC_Profile:ColorSpaceData"}},
    {ColorSpace, colorModelOfComponents, {"File:ColorComponents#"}},
    {ColorSpace, colorModelOfPng, {"PNG:ColorType#"}},
    {ColorSpace, colorModelOfTiff, {"EXIF:PhotometricInterpretation#"}},
    {ProfileName, text, {"ICC_Profile:ProfileDescription", "PNG:ProfileName"}},
    {BitsPerSample, leadingInteger, {"File:BitsPerSample#", "PNG:BitDepth#", "EXIF:BitsPerSample#",
        "Photoshop:BitDepth#", "RIFF:BitsPerSample#"}},
    {HasAlphaChannel, alphaOfPng, {"PNG:ColorType#"}},
    {LayerNames, texts, {"Photoshop:LayerNames", "XMP:TextLayerName"}},
    {ResolutionWidthDPI, dotsPerInch, {"EXIF:XResolution#", "JFIF:XResolution#", "PNG:PixelsPerUnitX#",
        "Photoshop:XResolution#"}},
    {ResolutionHeightDPI, dotsPerInch, {"EXIF:YResolution#", "JFIF:YResolution#", "PNG:PixelsPerUnitY#",
        "Photoshop:YResolution#"}},
    {Orientation, portrait, {"EXIF:Orientation#", "XMP:Orientation#"}},

    // The camera
    {AcquisitionMake, text, {"EXIF:Make", "XMP:Make", "QuickTime:Make"}},
    {AcquisitionModel, text, {"EXIF:Model", "XMP:Model", "QuickTime:Model"}},
    {CameraOwner, text, {"EXIF:OwnerName", "XMP:OwnerName", "MakerNotes:OwnerName"}},
    {LensModel, text, {"EXIF:LensModel", "XMP:LensModel", "XMP:Lens", "MakerNotes:LensModel"}},
    {FocalLength, real, {"EXIF:FocalLength#", "XMP:FocalLength#"}},
    {FocalLength35mm, integer, {"EXIF:FocalLengthIn35mmFormat#", "XMP:FocalLengthIn35mmFormat#"}},
    {FNumber, real, {"EXIF:FNumber#", "XMP:FNumber#"}},
    {Aperture, apex, {"EXIF:ApertureValue#", "XMP:ApertureValue#"}},
    {MaxAperture, apex, {"EXIF:MaxApertureValue#", "XMP:MaxApertureValue#"}},
    {ISOSpeed, leadingInteger, {"EXIF:ISO#", "XMP:ISO#"}},
    {ExposureTimeSeconds, real, {"EXIF:ExposureTime#", "XMP:ExposureTime#"}},
    {ExposureTimeString, text, {"Composite:ShutterSpeed"}},
    {ExposureMode, integer, {"EXIF:ExposureMode#", "XMP:ExposureMode#"}},
    {ExposureProgram, exposureProgram, {"EXIF:ExposureProgram#", "XMP:ExposureProgram#"}},
    {MeteringMode, meteringMode, {"EXIF:MeteringMode#", "XMP:MeteringMode#"}},
    {WhiteBalance, integer, {"EXIF:WhiteBalance#", "XMP:WhiteBalance#"}},
    {FlashOnOff, flashFired, {"EXIF:Flash#"}},
    {RedEyeOnOff, redEyeReduced, {"EXIF:Flash#"}},
    {EXIFVersion, exifVersion, {"EXIF:ExifVersion", "XMP:ExifVersion"}},

    // The satellites
    {EXIFGPSVersion, text, {"EXIF:GPSVersionID", "XMP:GPSVersionID"}},
    {Latitude, real, {"Composite:GPSLatitude#", "XMP:GPSLatitude#", "QuickTime:GPSLatitude#"}},
    {Longitude, real, {"Composite:GPSLongitude#", "XMP:GPSLongitude#", "QuickTime:GPSLongitude#"}},
    {Altitude, real, {"Composite:GPSAltitude#", "QuickTime:GPSAltitude#"}},
    {Speed, kilometersPerHour, {"EXIF:GPSSpeed#"}},
    {Timestamp, date, {"Composite:GPSDateTime", "XMP:GPSDateTime"}},
    {GPSTrack, real, {"EXIF:GPSTrack#", "XMP:GPSTrack#"}},
    {ImageDirection, real, {"EXIF:GPSImgDirection#", "XMP:GPSImgDirection#"}},
    {GPSStatus, text, {"EXIF:GPSStatus#", "XMP:GPSStatus#"}},
    {GPSMeasureMode, text, {"EXIF:GPSMeasureMode#", "XMP:GPSMeasureMode#"}},
    {GPSDOP, real, {"EXIF:GPSDOP#", "XMP:GPSDOP#"}},
    {GPSMapDatum, text, {"EXIF:GPSMapDatum", "XMP:GPSMapDatum"}},
    {GPSDestLatitude, real, {"Composite:GPSDestLatitude#", "XMP:GPSDestLatitude#"}},
    {GPSDestLongitude, real, {"Composite:GPSDestLongitude#", "XMP:GPSDestLongitude#"}},
    {GPSDestBearing, real, {"EXIF:GPSDestBearing#", "XMP:GPSDestBearing#"}},
    {GPSDestDistance, kilometers, {"EXIF:GPSDestDistance#"}},
    {GPSProcessingMethod, text, {"EXIF:GPSProcessingMethod", "XMP:GPSProcessingMethod"}},
    {GPSAreaInformation, text, {"EXIF:GPSAreaInformation", "XMP:GPSAreaInformation"}},
    {GPSDateStamp, day, {"EXIF:GPSDateStamp"}},
    {GPSDifferental, integer, {"EXIF:GPSDifferential#", "XMP:GPSDifferential#"}},

    // Sound and movies
    {DurationSeconds, real, {"Composite:Duration#", "Duration#"}},
    {MediaTypes, isVideo, {"VideoFrameRate", "FrameRate", "Matroska:VideoCodecID"}},
    {MediaTypes, isSound, {"AudioSampleRate", "SampleRate"}},
    {Codecs, codec, {"QuickTime:CompressorID", "Matroska:VideoCodecID", "ASF:VideoCodecName",
        "RIFF:VideoCodec", "QuickTime:AudioFormat", "Matroska:AudioCodecID", "ASF:AudioCodecName",
        "RIFF:Encoding"}},
    {TotalBitRate, real, {"Composite:AvgBitrate#", "ASF:MaxBitrate#"}},
    {VideoBitRate, real, {"MPEG:VideoBitrate#", "Flash:VideoBitrate#"}},
    {AudioBitRate, real, {"MPEG:AudioBitrate#", "Flash:AudioBitrate#", "Vorbis:NominalBitrate#"}},
    {AudioBitRate, bitsPerSecond, {"RIFF:AvgBytesPerSec#"}},
    {AudioSampleRate, real, {"AudioSampleRate", "SampleRate"}},
    {AudioChannelCount, channels, {"AudioChannels", "NumChannels", "FLAC:Channels", "MPEG:ChannelMode"}},
    {Album, text, {"Album", "ASF:AlbumTitle"}},
    {AudioTrackNumber, leadingInteger, {"ID3:Track#", "QuickTime:TrackNumber", "Vorbis:TrackNumber",
        "RIFF:TrackNumber", "TrackNumber"}},
    {MusicalGenre, text, {"Genre"}},
    {Composer, text, {"Composer", "RIFF:MusicBy"}},
    {Lyricist, text, {"ID3:Lyricist", "Lyricist"}},
    {Performers, texts, {"QuickTime:Performers", "QuickTime:Performer", "Vorbis:Performer", "RIFF:Starring",
        "Vorbis:Actor"}},
    {Tempo, real, {"BeatsPerMinute#"}},
    {KeySignature, text, {"ID3:InitialKey"}},
    {AudioEncodingApplication, text, {"ID3:EncoderSettings", "MPEG:Encoder", "QuickTime:Encoder",
        "Vorbis:EncodedUsing", "Vorbis:Encoder", "Vorbis:Vendor"}},
    {RecordingYear, year, {"ID3:Year", "ID3:RecordingTime", "QuickTime:Year",
        "QuickTime:ContentCreateDate", "Vorbis:Date", "ASF:Year", "RIFF:Year"}},
    {RecordingDate, date, {"ID3:RecordingTime", "QuickTime:ContentCreateDate", "Vorbis:Date",
        "RIFF:DateCreated"}},
    {Director, text, {"QuickTime:Director", "Vorbis:Director", "ASF:Director"}},
    {Producer, text, {"QuickTime:Producer", "Vorbis:Producer", "ASF:Producer", "RIFF:ProducedBy"}},
    {Information, text, {"QuickTime:Information"}},
    {OriginalFormat, text, {"QuickTime:Format", "RIFF:SourceForm"}},
    {OriginalSource, text, {"XMP:Source", "IPTC:Source", "QuickTime:SourceCredits", "RIFF:Source"}},
};
// clang-format on

constexpr size_t kAttributes = static_cast<size_t>(DateAdded) + 1;

bool takesEveryTag(FileAttribute attribute) {
  return attribute == Codecs || attribute == MediaTypes;
}

// Null when the file has no such tag.
const MediaTags::value_type* find(const MediaTags& tags, std::string_view wanted) {
  if (wanted.ends_with('#')) wanted.remove_suffix(1);
  if (wanted.find(':') != std::string_view::npos) {
    const auto found = tags.find(wanted);
    return found == tags.end() ? nullptr : &*found;
  }
  for (const auto& entry : tags) {
    if (entry.first.size() > wanted.size() && entry.first.ends_with(wanted) &&
        entry.first[entry.first.size() - wanted.size() - 1] == ':') {
      return &entry;
    }
  }
  return nullptr;
}

void addValues(const MediaRow& row, const MediaTags& tags, std::vector<OwnedValue>& values) {
  for (const std::string_view name : row.tags) {
    if (name.empty() || (!values.empty() && !takesEveryTag(row.attribute))) return;
    const auto* const tag = find(tags, name);
    if (!tag) continue;
    const std::string_view group = std::string_view(tag->first).substr(0, tag->first.find(':'));
    std::vector<OwnedValue> found;
    row.convert({group, tag->second, tags}, found);
    for (OwnedValue& value : found) {
      if (std::ranges::find(values, value) == values.end()) values.push_back(std::move(value));
    }
  }
}

}  // namespace

std::span<const MediaRow> mediaTable() {
  return kRows;
}

bool isMediaAttribute(FileAttribute attribute) {
  static const std::bitset<kAttributes> known = [] {
    std::bitset<kAttributes> attributes;
    for (const MediaRow& row : kRows) attributes.set(static_cast<size_t>(row.attribute));
    return attributes;
  }();
  return known[static_cast<size_t>(attribute)];
}

MediaAttributes attributesOf(const MediaTags& tags) {
  MediaAttributes attributes;
  for (auto row = std::begin(kRows); row != std::end(kRows);) {
    const FileAttribute attribute = row->attribute;
    std::vector<OwnedValue> values;
    for (; row != std::end(kRows) && row->attribute == attribute; ++row) addValues(*row, tags, values);
    for (OwnedValue& value : values) attributes.emplace_back(attribute, std::move(value));
  }
  return attributes;
}

}  // namespace standin::metadata
