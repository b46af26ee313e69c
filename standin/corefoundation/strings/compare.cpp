// Comparing strings: by UTF-16 unit, or through ICU where an option asks for more.
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <string>

#include "standin/corefoundation/strings/string.h"
#include "standin/gate/collation.h"

namespace cf {
namespace {

constexpr CFStringCompareFlags kOptionsByICU = kCFCompareCaseInsensitive | kCFCompareNonliteral |
                                               kCFCompareLocalized | kCFCompareNumerically |
                                               kCFCompareDiacriticInsensitive;

template <class T>
CFComparisonResult order(const T& a, const T& b) {
  return a < b ? kCFCompareLessThan : b < a ? kCFCompareGreaterThan : kCFCompareEqualTo;
}

CFComparisonResult compareUnits(Text a, Text b) {
  const size_t common = std::min(a.length, b.length);
  for (size_t i = 0; i < common; ++i) {
    if (a[i] != b[i]) return order(a[i], b[i]);
  }
  return order(a.length, b.length);
}

std::u16string unitsOf(Text text) {
  std::u16string units(text.length, u'\0');
  for (size_t i = 0; i < text.length; ++i) units[i] = text[i];
  return units;
}

// ICU's functions tell the room that they need when they get none.
template <class Fill>
std::u16string filled(const Fill& fill) {
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = fill(static_cast<UChar*>(nullptr), 0, &error);
  std::u16string result(static_cast<size_t>(std::max(length, 0)), u'\0');
  error = U_ZERO_ERROR;
  fill(result.data(), length, &error);
  return U_SUCCESS(error) ? result : std::u16string();
}

std::u16string decomposed(const std::u16string& text) {
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* const nfd = unorm2_getNFDInstance(&error);
  return filled([&](UChar* out, int32_t room, UErrorCode* status) {
    return unorm2_normalize(nfd, text.data(), static_cast<int32_t>(text.size()), out, room, status);
  });
}

std::u16string folded(const std::u16string& text) {
  return filled([&](UChar* out, int32_t room, UErrorCode* status) {
    return u_strFoldCase(out, room, text.data(), static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT,
                         status);
  });
}

// Of a decomposed text: without its combining marks.
std::u16string withoutMarks(const std::u16string& text) {
  std::u16string kept;
  const int32_t length = static_cast<int32_t>(text.size());
  for (int32_t i = 0; i < length;) {
    const int32_t start = i;
    UChar32 c;
    U16_NEXT(text.data(), i, length, c);
    if (u_charType(c) != U_NON_SPACING_MARK)
      kept.append(text, static_cast<size_t>(start), static_cast<size_t>(i - start));
  }
  return kept;
}

std::u16string prepared(Text text, CFStringCompareFlags options) {
  std::u16string units = unitsOf(text);
  if (options & (kCFCompareNonliteral | kCFCompareDiacriticInsensitive)) units = decomposed(units);
  if (options & kCFCompareDiacriticInsensitive) units = withoutMarks(units);
  if (options & kCFCompareCaseInsensitive) units = folded(units);
  return units;
}

bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

// The digits of the number that starts at `at`, without leading zeros; moves `at` behind them.
std::u16string_view takeNumber(std::u16string_view text, size_t& at) {
  while (at + 1 < text.size() && text[at] == u'0' && isDigit(text[at + 1])) ++at;
  const size_t start = at;
  while (at < text.size() && isDigit(text[at])) ++at;
  return text.substr(start, at - start);
}

CFComparisonResult compareWithNumbers(std::u16string_view a, std::u16string_view b) {
  size_t i = 0;
  size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (isDigit(a[i]) && isDigit(b[j])) {
      const std::u16string_view x = takeNumber(a, i);
      const std::u16string_view y = takeNumber(b, j);
      if (x.size() != y.size()) return order(x.size(), y.size());
      if (x != y) return order(x, y);
    } else {
      if (a[i] != b[j]) return order(a[i], b[j]);
      ++i;
      ++j;
    }
  }
  return order(a.size() - i, b.size() - j);
}

UCollationStrength strengthFor(CFStringCompareFlags options) {
  const bool ignoresCase = options & kCFCompareCaseInsensitive;
  if (options & kCFCompareDiacriticInsensitive) return UCOL_PRIMARY;
  return ignoresCase ? UCOL_SECONDARY : UCOL_TERTIARY;
}

// By the root of all languages: the same on every machine, where the default of a machine without a language
// would be the order of units. Opened once for each set of options that matters to it, and kept: opening one
// is slow. Null without ICU's data.
UCollator* collatorFor(CFStringCompareFlags options) {
  struct Slot {
    CFStringCompareFlags options;
    UCollator* collator;
  };
  static std::array<Slot, 8> slots{};
  const CFStringCompareFlags key =
      options & (kCFCompareCaseInsensitive | kCFCompareDiacriticInsensitive | kCFCompareNumerically);
  for (Slot& slot : slots) {
    if (slot.collator && slot.options == key) return slot.collator;
    if (slot.collator) continue;
    const standin::Collation& icu = standin::collation();
    UErrorCode error = U_ZERO_ERROR;
    UCollator* const collator = icu.open("", &error);
    if (U_FAILURE(error)) return nullptr;
    icu.setStrength(collator, strengthFor(key));
    const bool keepsCase = (key & kCFCompareDiacriticInsensitive) && !(key & kCFCompareCaseInsensitive);
    icu.setAttribute(collator, UCOL_CASE_LEVEL, keepsCase ? UCOL_ON : UCOL_OFF, &error);
    icu.setAttribute(collator, UCOL_NUMERIC_COLLATION, (key & kCFCompareNumerically) ? UCOL_ON : UCOL_OFF,
                     &error);
    icu.setAttribute(collator, UCOL_NORMALIZATION_MODE, UCOL_ON, &error);
    slot = {key, collator};
    return collator;
  }
  return nullptr;
}

CFComparisonResult compareByICU(Text a, Text b, CFStringCompareFlags options) {
  UCollator* const collator = (options & kCFCompareLocalized) ? collatorFor(options) : nullptr;
  if (collator) {
    const std::u16string x = unitsOf(a);
    const std::u16string y = unitsOf(b);
    const UCollationResult result = standin::collation().compare(
        collator, x.data(), static_cast<int32_t>(x.size()), y.data(), static_cast<int32_t>(y.size()));
    return result == UCOL_LESS      ? kCFCompareLessThan
           : result == UCOL_GREATER ? kCFCompareGreaterThan
                                    : kCFCompareEqualTo;
  }
  const std::u16string x = prepared(a, options);
  const std::u16string y = prepared(b, options);
  return (options & kCFCompareNumerically) ? compareWithNumbers(x, y) : order(x, y);
}

}  // namespace
}  // namespace cf

using standin::Gate;

CFComparisonResult CFStringCompare(CFStringRef theString1, CFStringRef theString2,
                                   CFStringCompareFlags compareOptions) {
  const Gate gate(__func__);
  const cf::Text a = cf::textOf(cf::checked(theString1, __func__));
  const cf::Text b = cf::textOf(cf::checked(theString2, __func__));
  if (gate.fails()) return kCFCompareEqualTo;
  return (compareOptions & cf::kOptionsByICU) ? cf::compareByICU(a, b, compareOptions)
                                              : cf::compareUnits(a, b);
}

// Nothing starts or ends with the empty string.
Boolean CFStringHasPrefix(CFStringRef theString, CFStringRef prefix) {
  const Gate gate(__func__);
  cf::Text whole = cf::textOf(cf::checked(theString, __func__));
  const cf::Text part = cf::textOf(cf::checked(prefix, __func__));
  if (gate.fails() || part.length == 0 || part.length > whole.length) return false;
  whole.length = part.length;
  return cf::compareUnits(whole, part) == kCFCompareEqualTo;
}

Boolean CFStringHasSuffix(CFStringRef theString, CFStringRef suffix) {
  const Gate gate(__func__);
  const cf::Text whole = cf::textOf(cf::checked(theString, __func__));
  const cf::Text part = cf::textOf(cf::checked(suffix, __func__));
  if (gate.fails() || part.length == 0 || part.length > whole.length) return false;
  const size_t start = whole.length - part.length;
  for (size_t i = 0; i < part.length; ++i) {
    if (whole[start + i] != part[i]) return false;
  }
  return true;
}
