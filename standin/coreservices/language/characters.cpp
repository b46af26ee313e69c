#include "standin/coreservices/language/characters.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <algorithm>

#include "standin/coreservices/attributes/text.h"

namespace standin::metadata {
namespace {

// Characters below this are their own composed form and never combine with what stands before them.
constexpr char32_t kFirstThatMayCompose = 0x300;

const UNormalizer2* normalizer() {
  UErrorCode error = U_ZERO_ERROR;
  return unorm2_getNFCInstance(&error);
}

bool hasMarkCategory(char32_t character) {
  return (U_GET_GC_MASK(static_cast<UChar32>(character)) & U_GC_M_MASK) != 0;
}

std::u32string withoutMarks(char32_t character) {
  UChar buffer[32];
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = unorm2_getDecomposition(
      unorm2_getNFDInstance(&error), static_cast<UChar32>(character), buffer, std::size(buffer), &error);
  std::u32string characters(1, character);
  if (U_SUCCESS(error) && length > 0) {
    characters = fromUtf16(std::u16string_view(buffer, static_cast<size_t>(length)));
  }
  std::erase_if(characters, hasMarkCategory);
  return characters;
}

std::u32string caseFolded(std::u32string_view text) {
  const std::u16string units = utf16(text);
  UChar buffer[96];
  UErrorCode error = U_ZERO_ERROR;
  const int32_t length = u_strFoldCase(buffer, std::size(buffer), units.data(),
                                       static_cast<int32_t>(units.size()), U_FOLD_CASE_DEFAULT, &error);
  if (U_FAILURE(error)) return std::u32string(text);
  return fromUtf16(std::u16string_view(buffer, static_cast<size_t>(length)));
}

uint16_t lookUp(char32_t character) {
  const auto c = static_cast<UChar32>(character);
  const std::u32string_view itself(&character, 1);
  const auto when = [](bool is, CharacterProperty property) { return is ? +property : 0; };
  return static_cast<uint16_t>(
      when(u_isalpha(c), kIsLetter) | when(u_islower(c), kIsSmall) | when(u_isupper(c), kIsCapital) |
      when(hasMarkCategory(character), kIsMark) |
      when(!unorm2_hasBoundaryBefore(normalizer(), c), kComposesBackward) |
      when(u_getIntPropertyValue(c, UCHAR_NFC_QUICK_CHECK) == UNORM_YES, kIsComposed) |
      when(caseFolded(itself) != itself, kHasCase) | when(withoutMarks(character) != itself, kHasMarks));
}

}  // namespace

std::array<std::atomic<uint16_t>, 0x10000> knownProperties;

uint16_t lookUpProperties(char32_t character) {
  constexpr uint16_t kKnown = 0x8000;
  const uint16_t found = lookUp(character) | kKnown;
  if (character < knownProperties.size()) knownProperties[character].store(found, std::memory_order_relaxed);
  return found;
}

bool isWordBorder(char32_t left, char32_t right) {
  const uint16_t after = propertiesOf(right);
  if ((after & kIsMark) != 0) return false;
  const uint16_t before = propertiesOf(left);
  if ((before & kIsLetter) == 0 || (after & kIsLetter) == 0) return true;
  return (before & kIsSmall) != 0 && (after & kIsCapital) != 0;
}

char lowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::u32string composed(std::u32string_view text) {
  const bool plain =
      std::all_of(text.begin(), text.end(), [](char32_t c) { return c < kFirstThatMayCompose; });
  if (plain) return std::u32string(text);
  const std::u16string units = utf16(text);
  UErrorCode error = U_ZERO_ERROR;
  std::u16string result(units.size() * 3 + 1, u'\0');  // the longest composed form of anything
  const int32_t length = unorm2_normalize(normalizer(), units.data(), static_cast<int32_t>(units.size()),
                                          result.data(), static_cast<int32_t>(result.size()), &error);
  if (U_FAILURE(error)) return std::u32string(text);
  result.resize(static_cast<size_t>(length));
  return fromUtf16(result);
}

std::u32string foldCharacter(char32_t character, TextOptions options) {
  const uint16_t properties = propertiesOf(character);
  const bool losesMarks = options.ignoreDiacritics && (properties & kHasMarks) != 0;
  const bool losesCase = options.ignoreCase && (properties & kHasCase) != 0;
  std::u32string folded = losesMarks ? withoutMarks(character) : std::u32string(1, character);
  // What lost its marks may have case where it had none before.
  return losesCase || (losesMarks && options.ignoreCase) ? caseFolded(folded) : folded;
}

}  // namespace standin::metadata
