#include "tests/plugin/bridge/rows.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "standin/applicationservices/control.h"
#include "standin/corefoundation/CFRuntime.h"

namespace {

constexpr Treatment native = Treatment::native, plain = Treatment::plain, checked = Treatment::checked,
                    shadowed = Treatment::shadowed;

CFOwner folderURL() {
  return own(CFURLCreateWithFileSystemPath(nullptr, CFSTR("/usr"), kCFURLPOSIXPathStyle, true));
}
CFOwner truth() {
  return own(CFRetain(kCFBooleanTrue));
}
CFOwner seven() {
  return cfInt32(7);
}
CFOwner arrayOfOne() {
  return cfArray({kCFBooleanTrue});
}
// Another than kCFNull, which is known by its address: of the same type, and as immortal.
CFOwner otherNull() {
  static CFRuntimeBase other;
  std::memcpy(&other, kCFNull, sizeof other);
  return own(&other);
}
CFOwner dictionaryOfOne() {
  return cfDictionary({{CFSTR("key"), kCFBooleanTrue}});
}
CFOwner word() {
  return cfText("word");
}
CFOwner bytes() {
  return own(CFDataCreate(nullptr, reinterpret_cast<const UInt8*>("bytes"), 5));
}
CFOwner date() {
  return own(CFDateCreate(nullptr, 0));
}
CFOwner characters() {
  return own(CFCharacterSetCreateWithCharactersInRange(nullptr, CFRangeMake('a', 3)));
}
CFOwner bundle() {
  return own(CFBundleCreate(nullptr, static_cast<CFURLRef>(folderURL().get())));
}
CFOwner set() {
  return own(CFSetCreate(nullptr, nullptr, 0, &kCFTypeSetCallBacks));
}
CFOwner bag() {
  return own(CFBagCreate(nullptr, nullptr, 0, &kCFTypeBagCallBacks));
}
CFOwner uuid() {
  return own(CFUUIDCreate(nullptr));
}
CFOwner timeZone() {
  return own(CFTimeZoneCreateWithTimeIntervalFromGMT(nullptr, 3600));
}
CFOwner attributedText() {
  return own(CFAttributedStringCreate(nullptr, CFSTR("text"), nullptr));
}
CFOwner error() {
  return own(CFErrorCreate(nullptr, CFSTR("domain"), 5, nullptr));
}
// Of a type that no row names.
CFOwner notificationCenter() {
  return own(CFRetain(CFNotificationCenterGetLocalCenter()));
}

#define GRAPHICS(type) #type, #type "ZNK", nullptr, [] { return own(standin::makeInstance(#type)); }

}  // namespace

void PrintTo(const Row& row, std::ostream* out) {
  *out << "row " << row.number << ", " << (row.className ? row.className : row.outcome);
}

const std::vector<Row>& rows() {
  // clang-format off
  static const std::vector<Row> all = {
      { 1, native,   "CFURL",              nullptr,                 "the object FolderItem",  folderURL},
      { 2, native,   "CFBoolean",          nullptr,                 "true",                   truth},
      { 3, native,   "CFNumber",           nullptr,                 "7",                      seven},
      { 4, native,   "CFArray",            nullptr,                 "the array of 1",         arrayOfOne},
      { 5, native,   "CFNull",             nullptr,                 "nil",                    otherNull},
      { 6, native,   "CFDictionary",       "Dictionary",            "the object Dictionary",  dictionaryOfOne},
      { 7, native,   "CFString",           nullptr,                 "\"word\"",               word},
      { 8, native,   "CFData",             nullptr,                 "\"bytes\"",              bytes},
      { 9, native,   "CFDate",             "Date",                  "the object Date",        date},
      {10, plain,    GRAPHICS(CGColorSpace)},
      {11, plain,    GRAPHICS(CGColor)},
      {12, plain,    GRAPHICS(CGImage)},
      {13, plain,    GRAPHICS(CGLayer)},
      {14, plain,    GRAPHICS(CGPath)},
      {15, plain,    GRAPHICS(CGDataConsumer)},
      {16, plain,    GRAPHICS(CGDataProvider)},
      {17, plain,    GRAPHICS(CGPSConverter)},
      {18, plain,    GRAPHICS(CGContext)},
      {19, checked,  GRAPHICS(CGEvent)},
      {20, checked,  GRAPHICS(CGEventSource)},
      {21, plain,    GRAPHICS(CGFont)},
      {22, shadowed, "CFURL",              "CFURLZNK",              "the object FolderItem",  folderURL},
      {23, shadowed, "CFDictionary",       "CFDictionaryZNK",       "the object Dictionary",  dictionaryOfOne},
      {24, shadowed, "CFString",           "CFStringZNK",           "\"word\"",               word},
      {25, shadowed, "CFNumber",           "CFNumberZNK",           "7",                      seven},
      {26, shadowed, "CFArray",            "CFArrayZNK",            "the array of 1",         arrayOfOne},
      {27, shadowed, "CFBoolean",          "CFBooleanZNK",          "true",                   truth},
      {28, shadowed, "CFData",             "CFBinaryDataZNK",       "\"bytes\"",              bytes},
      {29, checked,  "CFCharacterSet",     "CFCharacterSetZNK",     nullptr,                  characters},
      {30, checked,  "CFBundle",           "CFBundleZNK",           nullptr,                  bundle},
      {31, checked,  "CFSet",              "CFSetZNK",              nullptr,                  set},
      {32, checked,  "CFBag",              "CFBagZNK",              nullptr,                  bag},
      {33, checked,  "CFUUID",             "CFUUIDZNK",             nullptr,                  uuid},
      {34, checked,  "CFTimeZone",         "CFTimeZoneZNK",         nullptr,                  timeZone},
      {35, shadowed, "CFDate",             "CFDateZNK",             "the object Date",        date},
      {36, checked,  "CFAttributedString", "CFAttributedStringZNK", nullptr,                  attributedText},
      {37, checked,  "CFError",            "CFErrorZNK",            nullptr,                  error},
      {38, checked,  GRAPHICS(CTFont)},
      {39, checked,  GRAPHICS(CTFontCollection)},
      {40, checked,  GRAPHICS(CTFrame)},
      {41, checked,  GRAPHICS(CTFramesetter)},
      {42, checked,  GRAPHICS(CTGlyphInfo)},
      {43, checked,  GRAPHICS(CTLine)},
      {44, checked,  GRAPHICS(CTParagraphStyle)},
      {45, checked,  GRAPHICS(CTRun)},
      {46, checked,  GRAPHICS(CTTypesetter)},
      {47, checked,  GRAPHICS(CTRunDelegate)},
      {48, checked,  nullptr,              "CFObjectZNK",           nullptr,                  notificationCenter},
  };
  // clang-format on
  return all;
}

std::vector<Row> rowsOf(Treatment treatment) {
  std::vector<Row> chosen;
  std::copy_if(rows().begin(), rows().end(), std::back_inserter(chosen),
               [treatment](const Row& row) { return row.treatment == treatment; });
  return chosen;
}
