#include "standin/corefoundation/urls/file_name.h"

#include "standin/corefoundation/strings/encode.h"
#include "standin/corefoundation/strings/normalize.h"

namespace cf {
namespace {

// The file system decomposes all but three ranges, whose characters would not survive the way back. Kept for
// the life of the process; null without ICU's data.
const UNormalizer2* fileNameNormalizer() {
  static const UNormalizer2* const normalizer = []() -> const UNormalizer2* {
    USet* const affected = copyKnownCharacters();
    if (affected == nullptr) return nullptr;
    uset_removeRange(affected, 0x2000, 0x2FFF);
    uset_removeRange(affected, 0xF900, 0xFAFF);
    uset_removeRange(affected, 0x2F800, 0x2FAFF);
    uset_freeze(affected);
    return normalizerFor(kCFStringNormalizationFormD, affected);
  }();
  return normalizer;
}

}  // namespace

std::optional<std::string> fileNameOf(Text text) {
  if (text.narrow || isASCII(text.wide, text.length)) return utf8Of(text);
  const UNormalizer2* const normalizer = fileNameNormalizer();
  if (normalizer == nullptr) return std::nullopt;
  const UChar* const units = reinterpret_cast<const UChar*>(text.wide);
  const int32_t length = static_cast<int32_t>(text.length);
  constexpr size_t kGrowth = 4;  // no character's decomposition has more units for each of its own
  std::u16string result(text.length * kGrowth, u'\0');
  UErrorCode error = U_ZERO_ERROR;
  const int32_t written =
      unorm2_normalize(normalizer, units, length, result.data(), static_cast<int32_t>(result.size()), &error);
  if (U_FAILURE(error)) return std::nullopt;
  return utf8Of({nullptr, reinterpret_cast<const UniChar*>(result.data()), static_cast<size_t>(written)});
}

}  // namespace cf
