#include "standin/corefoundation/strings/icu_encodings.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace cf {
namespace {

struct NamedEncoding {
  CFStringEncoding encoding;
  const char* name;  // ICU's
};

constexpr NamedEncoding kEncodings[] = {
    {0x0006, "x-mac-greek"},   {0x0007, "x-mac-cyrillic"}, {0x001D, "x-mac-centraleurroman"},
    {0x0023, "x-mac-turkish"}, {0x0202, "iso-8859-2"},     {0x0203, "iso-8859-3"},
    {0x0204, "iso-8859-4"},    {0x0205, "iso-8859-5"},     {0x0206, "iso-8859-6"},
    {0x0207, "iso-8859-7"},    {0x0208, "iso-8859-8"},     {0x0209, "iso-8859-9"},
    {0x020A, "iso-8859-10"},   {0x020B, "iso-8859-11"},    {0x020D, "iso-8859-13"},
    {0x020E, "iso-8859-14"},   {0x020F, "iso-8859-15"},    {0x0400, "ibm-437"},
    {0x0405, "ibm-737"},       {0x0406, "ibm-775"},        {0x0410, "ibm-850"},
    {0x0412, "ibm-852"},       {0x0413, "ibm-855"},        {0x0414, "ibm-857"},
    {0x0415, "ibm-860"},       {0x0416, "ibm-861"},        {0x0417, "ibm-862"},
    {0x0418, "ibm-863"},       {0x0419, "ibm-864"},        {0x041A, "ibm-865"},
    {0x041B, "ibm-866"},       {0x041C, "ibm-869"},        {0x041D, "windows-874"},
    {0x0420, "windows-932"},   {0x0421, "windows-936"},    {0x0422, "windows-949"},
    {0x0423, "windows-950"},   {0x0501, "windows-1250"},   {0x0502, "windows-1251"},
    {0x0503, "windows-1253"},  {0x0504, "windows-1254"},   {0x0505, "windows-1255"},
    {0x0506, "windows-1256"},  {0x0507, "windows-1257"},   {0x0508, "windows-1258"},
    {0x0631, "windows-936"},   {0x0632, "gb18030"},        {0x0920, "euc-jp"},
    {0x0930, "euc-cn"},        {0x0931, "euc-tw"},         {0x0940, "euc-kr"},
    {0x0A01, "windows-932"},   {0x0A02, "koi8-r"},         {0x0A03, "windows-950"},
    {0x0A06, "big5-hkscs"},    {0x0A08, "koi8-u"},
};

const NamedEncoding* find(CFStringEncoding encoding) {
  const auto isIt = [encoding](const NamedEncoding& named) { return named.encoding == encoding; };
  const auto found = std::find_if(std::begin(kEncodings), std::end(kEncodings), isIt);
  return found == std::end(kEncodings) ? nullptr : found;
}

UConverter* open(const char* name) {
  UErrorCode error = U_ZERO_ERROR;
  UConverter* const converter = ucnv_open(name, &error);
  ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
  ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
  return U_SUCCESS(error) ? converter : nullptr;
}

}  // namespace

bool isConvertedByICU(CFStringEncoding encoding) {
  return find(encoding) != nullptr;
}

UConverter* converterFor(CFStringEncoding encoding) {
  const NamedEncoding* const named = find(encoding);
  if (named == nullptr) return nullptr;
  static std::array<UConverter*, std::size(kEncodings)> converters{};
  UConverter*& converter = converters[static_cast<size_t>(named - kEncodings)];
  if (converter == nullptr) converter = open(named->name);
  return converter;
}

}  // namespace cf
