#include "standin/documents/code_pages.h"

#include <unicode/ucnv.h>

#include <new>

namespace standin::documents {
namespace {

// Where ICU's name isn't made of the number.
constexpr struct {
  int codePage;
  const char* name;
} kNames[] = {
    {10000, "macintosh"},      {10006, "x-mac-greek"},
    {10007, "x-mac-cyrillic"}, {10029, "x-mac-centraleurroman"},
    {10081, "x-mac-turkish"},  {20866, "KOI8-R"},
    {65001, "UTF-8"},
};

// No code page makes more of a byte than a character of the basic plane.
constexpr size_t kMostUtf8PerByte = 3;

UConverter* openNamed(const std::string& name) {
  UErrorCode error = U_ZERO_ERROR;
  return ucnv_open(name.c_str(), &error);
}

}  // namespace

void CodePages::Close::operator()(UConverter* converter) const {
  ucnv_close(converter);
}

CodePages::Converter CodePages::open(int codePage) {
  for (const auto& row : kNames) {
    if (row.codePage == codePage) return Converter(openNamed(row.name));
  }
  for (const char* const maker : {"windows-", "ibm-"}) {
    Converter converter(openNamed(maker + std::to_string(codePage)));
    if (converter) return converter;
  }
  return Converter(openNamed("windows-1252"));
}

UConverter& CodePages::converterOf(int codePage) {
  Converter& converter = converters_[codePage];
  if (!converter) converter = open(codePage);
  if (!converter) throw std::bad_alloc();
  return *converter;
}

std::string CodePages::toUtf8(std::string_view bytes, int codePage) {
  std::string utf8(bytes.size() * kMostUtf8PerByte, '\0');
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length =
      ucnv_toAlgorithmic(UCNV_UTF8, &converterOf(codePage), utf8.data(), static_cast<int32_t>(utf8.size()),
                         bytes.data(), static_cast<int32_t>(bytes.size()), &error);
  utf8.resize(U_SUCCESS(error) ? static_cast<size_t>(length) : 0);
  return utf8;
}

}  // namespace standin::documents
