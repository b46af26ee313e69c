#include "standin/coreservices/media/media_conversions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <span>

#include "standin/coreservices/attributes/dates.h"

namespace standin::metadata {
namespace {

constexpr double kCentimetersPerInch = 2.54;
constexpr double kInchesPerMeter = 39.3700787402;
constexpr double kKilometersPerMile = 1.609344;
constexpr double kKilometersPerNauticalMile = 1.852;
constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kStartOf1904 = -3061152000;  // in seconds since 2001

using Values = std::vector<OwnedValue>;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlank(" \t\r\n\0", 5);
  const size_t first = text.find_first_not_of(kBlank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) - first + 1);
}

std::string_view firstText(const MediaTag& tag) {
  return tag.texts.empty() ? std::string_view() : trimmed(tag.texts.front());
}

void addText(std::string_view text, Values& values) {
  if (const std::string_view rest = trimmed(text); !rest.empty()) values.emplace_back(std::string(rest));
}

// `end` is where the number ends. A number that is no integer, or too large for one, is a double.
std::optional<OwnedValue> parseNumber(std::string_view text, size_t& end) {
  int64_t integer = 0;
  double real = 0;
  const char* const last = text.data() + text.size();
  const auto asInteger = std::from_chars(text.data(), last, integer);
  const auto asReal = std::from_chars(text.data(), last, real, std::chars_format::general);
  if (asReal.ec != std::errc() || !std::isfinite(real)) return {};
  end = static_cast<size_t>(asReal.ptr - text.data());
  if (asInteger.ec == std::errc() && asInteger.ptr == asReal.ptr) return integer;
  return real;
}

std::optional<OwnedValue> numberOf(std::string_view text) {
  size_t end = 0;
  const std::optional<OwnedValue> value = parseNumber(text, end);
  return end == text.size() ? value : std::nullopt;
}

double realOf(const OwnedValue& number) {
  const auto* const integer = std::get_if<int64_t>(&number);
  return integer ? static_cast<double>(*integer) : std::get<double>(number);
}

std::optional<double> realOf(const MediaTag& tag) {
  const std::optional<OwnedValue> value = numberOf(firstText(tag));
  return value ? std::optional(realOf(*value)) : std::nullopt;
}

void addInteger(const std::optional<OwnedValue>& number, Values& values) {
  constexpr double kMost = 9e18;
  if (!number) return;
  const auto* const integer = std::get_if<int64_t>(&*number);
  if (integer) {
    values.emplace_back(*integer);
  } else if (std::abs(realOf(*number)) < kMost) {
    values.emplace_back(int64_t{std::llround(realOf(*number))});
  }
}

std::optional<int64_t> integerOf(const MediaTag& tag) {
  const std::optional<OwnedValue> value = numberOf(firstText(tag));
  const auto* const integer = value ? std::get_if<int64_t>(&*value) : nullptr;
  return integer ? std::optional(*integer) : std::nullopt;
}

// Empty when the file has no such tag.
std::string_view otherTag(const MediaTag& tag, std::string_view name) {
  const auto found = tag.all.find(std::string(tag.group) + ':' + std::string(name));
  return found == tag.all.end() || found->second.empty() ? std::string_view() : found->second.front();
}

// "2011:03:05 12:00:00.5+01:00", of which the date is enough. What cameras and programs write is read as far
// as it makes sense: other separators, numbers of fewer digits, hours past 23, and anything behind it. The
// dates of queries (time_values.h) are a grammar of their own, which takes none of this and tells what is
// wrong with it.
struct ParsedDate {
  std::tm fields{};
  double fraction = 0;
  std::optional<int> secondsEast;
};

std::optional<int> parseZone(const char* text) {
  if (*text == 'Z') return 0;
  int hours = 0, minutes = 0;
  char sign = 0;
  if (std::sscanf(text, "%c%2d:%2d", &sign, &hours, &minutes) < 2 || (sign != '+' && sign != '-')) return {};
  const int seconds = (hours * 60 + minutes) * 60;
  return sign == '-' ? -seconds : seconds;
}

std::optional<ParsedDate> parseDate(const std::string& text) {
  ParsedDate date;
  std::tm& fields = date.fields;
  int used = 0;
  if (std::sscanf(text.c_str(), "%4d%*1[:-]%2d%*1[:-]%2d%n", &fields.tm_year, &fields.tm_mon, &fields.tm_mday,
                  &used) != 3) {
    return {};
  }
  if (fields.tm_mon < 1 || fields.tm_mon > 12 || fields.tm_mday < 1 || fields.tm_mday > 31) return {};
  fields.tm_year -= 1900;
  fields.tm_mon -= 1;
  const char* rest = text.c_str() + used;
  used = 0;
  if (std::sscanf(rest, "%*1[ T]%2d:%2d%n", &fields.tm_hour, &fields.tm_min, &used) != 2) return date;
  rest += used;
  double seconds = 0;
  used = 0;
  if (std::sscanf(rest, ":%2d%n", &fields.tm_sec, &used) == 1) rest += used;
  if (*rest == '.') {
    const auto parsed = std::from_chars(rest, text.c_str() + text.size(), seconds, std::chars_format::fixed);
    if (parsed.ec == std::errc()) rest = parsed.ptr;
  }
  date.fraction = seconds;
  date.secondsEast = parseZone(rest);
  return date;
}

// A movie counts seconds from 1904, and has 0 where nobody said when it was made. Clocks may show that in any
// zone.
bool isUnset(ParsedDate date, std::string_view group) {
  const int64_t shown = ::timegm(&date.fields) - kFrom1970To2001;
  return group == "QuickTime" && std::abs(shown - kStartOf1904) <= kSecondsPerDay;
}

void addWord(int64_t number, std::span<const char* const> words, Values& values) {
  if (number >= 0 && static_cast<size_t>(number) < words.size())
    addText(words[static_cast<size_t>(number)], values);
}

void addDate(ParsedDate date, bool isLocal, Values& values) {
  const int64_t shown = ::timegm(&date.fields) - kFrom1970To2001;
  const double seconds = static_cast<double>(shown) + date.fraction;
  if (isLocal) {
    values.emplace_back(ClockTime{seconds});
  } else {
    values.emplace_back(Date{seconds - date.secondsEast.value_or(0)});
  }
}

double perUnit(const MediaTag& tag, double value) {
  const std::string_view unit = otherTag(tag, tag.group == "PNG" ? "PixelUnits" : "ResolutionUnit");
  if (tag.group == "PNG") return unit == "1" ? value / kInchesPerMeter : 0;
  if (tag.group == "JFIF") return unit == "2" ? value * kCentimetersPerInch : unit == "1" ? value : 0;
  if (tag.group == "EXIF") return unit == "3" ? value * kCentimetersPerInch : unit == "1" ? 0 : value;
  return value;
}

double kilometersFrom(double value, std::string_view unit) {
  if (unit == "M") return value * kKilometersPerMile;
  if (unit == "N") return value * kKilometersPerNauticalMile;
  return value;
}

bool isOfficeDocument(const MediaTags& tags) {
  constexpr std::string_view kTypes[] = {"DOCX", "DOCM", "XLSX", "XLSM", "PPTX", "PPTM", "ODT", "ODS", "ODP"};
  const auto type = tags.find("File:FileType");
  return type != tags.end() && !type->second.empty() &&
         std::ranges::find(kTypes, type->second.front()) != std::end(kTypes);
}

// Null where the number means no color model.
const char* modelOfComponents(int64_t components) {
  return components == 1 ? "Gray" : components == 3 ? "RGB" : components == 4 ? "CMYK" : nullptr;
}

bool isPngWithAlpha(int64_t colorType) {
  return colorType == 4 || colorType == 6;
}

}  // namespace

namespace convert {

void text(const MediaTag& tag, Values& values) {
  std::string all;
  for (const std::string& part : tag.texts) {
    const std::string_view rest = trimmed(part);
    if (rest.empty()) continue;
    if (!all.empty()) all += ", ";
    all += rest;
  }
  addText(all, values);
}

void texts(const MediaTag& tag, Values& values) {
  for (const std::string& part : tag.texts) addText(part, values);
}

void words(const MediaTag& tag, Values& values) {
  for (std::string_view rest : tag.texts) {
    while (!rest.empty()) {
      const size_t end = std::min(rest.find_first_of(",;"), rest.size());
      addText(rest.substr(0, end), values);
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
}

// What is a list of keywords to a picture is the one subject of an office document.
void keywordsInSubject(const MediaTag& tag, Values& values) {
  if (!isOfficeDocument(tag.all)) texts(tag, values);
}

void subjectOfOffice(const MediaTag& tag, Values& values) {
  if (isOfficeDocument(tag.all)) text(tag, values);
}

void real(const MediaTag& tag, Values& values) {
  if (const auto value = realOf(tag)) values.emplace_back(*value);
}

void integer(const MediaTag& tag, Values& values) {
  addInteger(numberOf(firstText(tag)), values);
}

void leadingInteger(const MediaTag& tag, Values& values) {
  size_t end = 0;
  addInteger(parseNumber(firstText(tag), end), values);
}

void year(const MediaTag& tag, Values& values) {
  Values found;
  leadingInteger(tag, found);
  if (!found.empty() && found.front() != OwnedValue(int64_t{0})) values.push_back(found.front());
}

void productOfTwo(const MediaTag& tag, Values& values) {
  long long first = 0, second = 0;
  if (std::sscanf(std::string(firstText(tag)).c_str(), "%lld %lld", &first, &second) == 2) {
    int64_t product = 0;
    if (!__builtin_mul_overflow(first, second, &product)) values.emplace_back(product);
  }
}

void date(const MediaTag& tag, Values& values) {
  const auto parsed = parseDate(std::string(firstText(tag)));
  if (parsed && !isUnset(*parsed, tag.group)) addDate(*parsed, !parsed->secondsEast, values);
}

void day(const MediaTag& tag, Values& values) {
  const auto parsed = parseDate(std::string(firstText(tag)));
  if (parsed) addDate(*parsed, false, values);
}

// exiftool tells the f-number that the value stands for.
void apex(const MediaTag& tag, Values& values) {
  if (const auto fNumber = realOf(tag); fNumber && *fNumber > 0) {
    values.emplace_back(2 * std::log2(*fNumber));
  }
}

void exposureProgram(const MediaTag& tag, Values& values) {
  constexpr const char* kWords[] = {"Not defined",      "Manual",   "Normal", "Aperture priority",
                                    "Shutter priority", "Creative", "Action", "Portrait",
                                    "Landscape"};
  if (const auto program = integerOf(tag)) addWord(*program, kWords, values);
}

void meteringMode(const MediaTag& tag, Values& values) {
  constexpr const char* kWords[] = {"Unknown", "Average", "CenterWeightedAverage", "Spot", "MultiSpot",
                                    "Pattern", "Partial"};
  constexpr int64_t kOther = 255;
  const auto mode = integerOf(tag);
  if (mode) addWord(*mode, kWords, values);
  if (mode == kOther) addText("Other", values);
}

// "0221" is version 2.2.1, "0230" is 2.3.
void exifVersion(const MediaTag& tag, Values& values) {
  const std::string_view version = firstText(tag);
  const bool isDigits =
      version.size() == 4 && std::ranges::all_of(version, [](char c) { return c >= '0' && c <= '9'; });
  if (!isDigits) return addText(version, values);
  std::string result(version.substr(version[0] == '0' ? 1 : 0, version[0] == '0' ? 1 : 2));
  result += '.';
  result += version[2];
  if (version[3] != '0') (result += '.') += version[3];
  values.emplace_back(result);
}

void dotsPerInch(const MediaTag& tag, Values& values) {
  const auto value = realOf(tag);
  if (!value) return;
  if (const double dots = perUnit(tag, *value); dots > 0) values.emplace_back(dots);
}

// From 5 on, the picture is turned by a quarter.
void portrait(const MediaTag& tag, Values& values) {
  const auto value = integerOf(tag);
  if (value && *value >= 1 && *value <= 8) values.emplace_back(int64_t{*value >= 5});
}

void flashFired(const MediaTag& tag, Values& values) {
  constexpr int64_t kFired = 1;
  if (const auto value = integerOf(tag)) values.emplace_back((*value & kFired) != 0);
}

void redEyeReduced(const MediaTag& tag, Values& values) {
  constexpr int64_t kRedEyeReduction = 0x40;
  if (const auto value = integerOf(tag)) values.emplace_back((*value & kRedEyeReduction) != 0);
}

void colorModelOfProfile(const MediaTag& tag, Values& values) {
  const std::string_view model = firstText(tag);
  addText(model == "GRAY" ? "Gray" : model, values);
}

void colorModelOfComponents(const MediaTag& tag, Values& values) {
  const auto value = integerOf(tag);
  if (const char* const model = value ? modelOfComponents(*value) : nullptr) addText(model, values);
}

void colorModelOfPng(const MediaTag& tag, Values& values) {
  if (const auto type = integerOf(tag)) addText(*type == 0 || *type == 4 ? "Gray" : "RGB", values);
}

void colorModelOfTiff(const MediaTag& tag, Values& values) {
  const auto value = integerOf(tag);
  if (!value) return;
  switch (*value) {
    case 0:
    case 1:
      return addText("Gray", values);
    case 2:
    case 3:
    case 6:
      return addText("RGB", values);
    case 5:
      return addText("CMYK", values);
    case 8:
      return addText("Lab", values);
    default:
      return;
  }
}

void alphaOfPng(const MediaTag& tag, Values& values) {
  if (const auto type = integerOf(tag)) values.emplace_back(isPngWithAlpha(*type));
}

void kilometersPerHour(const MediaTag& tag, Values& values) {
  if (const auto speed = realOf(tag))
    values.emplace_back(kilometersFrom(*speed, otherTag(tag, "GPSSpeedRef")));
}

void kilometers(const MediaTag& tag, Values& values) {
  if (const auto distance = realOf(tag)) {
    values.emplace_back(kilometersFrom(*distance, otherTag(tag, "GPSDestDistanceRef")));
  }
}

void codec(const MediaTag& tag, Values& values) {
  constexpr std::pair<std::string_view, std::string_view> kNames[] = {
      {"avc1", "H.264"}, {"hvc1", "HEVC"},           {"hev1", "HEVC"},       {"mp4v", "MPEG-4 Video"},
      {"mp4a", "AAC"},   {"alac", "Apple Lossless"}, {"av01", "AV1"},        {"V_VP9", "VP9"},
      {"V_VP8", "VP8"},  {"A_OPUS", "Opus"},         {"A_VORBIS", "Vorbis"}, {"Microsoft PCM", "Linear PCM"},
  };
  const std::string_view code = firstText(tag);
  const auto* const known = std::ranges::find(kNames, code, [](const auto& name) { return name.first; });
  addText(known == std::end(kNames) ? code : known->second, values);
}

void channels(const MediaTag& tag, Values& values) {
  const std::string_view mode = firstText(tag);
  if (const auto count = numberOf(mode)) {
    addInteger(count, values);
  } else if (!mode.empty()) {
    values.emplace_back(int64_t{mode == "Single Channel" ? 1 : 2});
  }
}

void bitsPerSecond(const MediaTag& tag, Values& values) {
  if (const auto bytes = realOf(tag)) values.emplace_back(*bytes * 8);
}

void isSound(const MediaTag&, Values& values) {
  values.emplace_back("Sound");
}

void isVideo(const MediaTag&, Values& values) {
  values.emplace_back("Video");
}

void encrypted(const MediaTag&, Values& values) {
  values.emplace_back("Password Encrypted");
}

void notEncrypted(const MediaTag&, Values& values) {
  values.emplace_back("None");
}

}  // namespace convert
}  // namespace standin::metadata
