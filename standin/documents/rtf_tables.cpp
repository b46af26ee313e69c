#include "standin/documents/rtf_tables.h"

#include <algorithm>
#include <iterator>

namespace standin::documents {
namespace {

using enum RtfMeaning;

constexpr RtfWord kWords[] = {
    {"colortbl", Skipped},
    {"stylesheet", Skipped},
    {"info", Skipped},
    {"pict", Skipped},
    {"nonshppict", Skipped},
    {"objdata", Skipped},
    {"fldinst", Skipped},
    {"sp", Skipped},  // a property of a shape
    {"xe", Skipped},  // entries of the index and the table of contents
    {"tc", Skipped},
    {"filetbl", Skipped},
    {"listtable", Skipped},
    {"listoverridetable", Skipped},
    {"revtbl", Skipped},

    {"header", Apart},
    {"headerl", Apart},
    {"headerr", Apart},
    {"headerf", Apart},
    {"footer", Apart},
    {"footerl", Apart},
    {"footerr", Apart},
    {"footerf", Apart},
    {"footnote", Apart},
    {"annotation", Apart},
    {"shptxt", Apart},
    {"listtext", Apart},
    {"pntext", Apart},

    {"fonttbl", FontTable},

    {"par", Break},
    {"line", Break},
    {"softline", Break},
    {"tab", Break},
    {"cell", Break},
    {"nestcell", Break},
    {"row", Break},
    {"nestrow", Break},
    {"sect", Break},
    {"page", Break},
    {"column", Break},

    {"emdash", Character, 0x2014},
    {"endash", Character, 0x2013},
    {"bullet", Character, 0x2022},
    {"lquote", Character, 0x2018},
    {"rquote", Character, 0x2019},
    {"ldblquote", Character, 0x201C},
    {"rdblquote", Character, 0x201D},
    {"emspace", Character, 0x2003},
    {"enspace", Character, 0x2002},
    {"qmspace", Character, 0x2005},
    {"zwj", Character, 0x200D},
    {"zwnj", Character, 0x200C},

    {"plain", Plain},
    {"v", Hidden},
    {"deleted", Hidden},

    {"ansi", DocumentCodePage, 1252},
    {"mac", DocumentCodePage, 10000},
    {"pc", DocumentCodePage, 437},
    {"pca", DocumentCodePage, 850},
    {"ansicpg", DocumentCodePage, 1252},
    {"deff", DefaultFont},
    {"f", Font},
    {"fcharset", FontCharset},
    {"cpg", FontCodePage},
    {"u", Unicode},
    {"uc", FallbackLength, 1},
    {"bin", Binary},
};

constexpr std::string_view kShownThoughOptional[] = {"annotation", "shpinst"};

constexpr struct {
  int charset;
  int codePage;
} kCharsets[] = {
    {0, 1252},   {1, kOfDocument}, {2, kSymbols}, {77, 10000}, {128, 932},  {129, 949},  {134, 936},
    {136, 950},  {161, 1253},      {162, 1254},   {163, 1258}, {177, 1255}, {178, 1256}, {186, 1257},
    {204, 1251}, {222, 874},       {238, 1250},   {254, 437},  {255, 850},
};

}  // namespace

const RtfWord* rtfWordNamed(std::string_view name) {
  const auto* const found = std::ranges::find(kWords, name, &RtfWord::name);
  return found == std::end(kWords) ? nullptr : found;
}

bool isShownThoughOptional(std::string_view name) {
  return std::ranges::find(kShownThoughOptional, name) != std::end(kShownThoughOptional);
}

int codePageOfCharset(int charset) {
  for (const auto& row : kCharsets) {
    if (row.charset == charset) return row.codePage;
  }
  return kOfDocument;
}

}  // namespace standin::documents
