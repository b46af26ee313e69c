#include "standin/corefoundation/strings/normalize.h"

#include <array>
#include <iterator>
#include <string>

#include "standin/corefoundation/strings/mutable_string.h"

namespace cf {
namespace {

// The platform's data is that of Unicode 6: later characters neither decompose nor compose there.
const USet* knownCharacters() {
  static const USet* const known = [] {
    constexpr UChar kPattern[] = u"[:age=6.3:]";
    UErrorCode error = U_ZERO_ERROR;
    USet* const set = uset_openPattern(kPattern, std::size(kPattern) - 1, &error);
    if (set) uset_freeze(set);
    return set;
  }();
  return known;
}

using GetInstance = const UNormalizer2* (*)(UErrorCode*);

constexpr GetInstance kInstances[] = {
    [](UErrorCode* error) { return unorm2_getNFDInstance(error); },
    [](UErrorCode* error) { return unorm2_getNFKDInstance(error); },
    [](UErrorCode* error) { return unorm2_getNFCInstance(error); },
    [](UErrorCode* error) { return unorm2_getNFKCInstance(error); },
};
constexpr CFStringNormalizationForm kFormCount = std::size(kInstances);

}  // namespace

const UNormalizer2* normalizerFor(CFStringNormalizationForm form, const USet* among) {
  UErrorCode error = U_ZERO_ERROR;
  const UNormalizer2* const whole = kInstances[form](&error);
  const UNormalizer2* const filtered = among ? unorm2_openFiltered(whole, among, &error) : nullptr;
  return U_SUCCESS(error) ? filtered : nullptr;
}

USet* copyKnownCharacters() {
  const USet* const known = knownCharacters();
  return known ? uset_cloneAsThawed(known) : nullptr;
}

namespace {

void normalize(MutableString* s, CFStringNormalizationForm form, const char* call) {
  if (form < 0 || form >= kFormCount) {
    misuse(call, "normalization form " + std::to_string(form) + " doesn't exist");
  }
  // Made when first needed, and kept.
  static std::array<const UNormalizer2*, kFormCount> normalizers{};
  const UNormalizer2*& normalizer = normalizers[static_cast<size_t>(form)];
  if (normalizer == nullptr) normalizer = normalizerFor(form, knownCharacters());
  if (normalizer == nullptr) return;
  UErrorCode error = U_ZERO_ERROR;
  const UChar* const units = reinterpret_cast<const UChar*>(s->units);
  const int32_t length = static_cast<int32_t>(s->length);
  std::u16string result(s->length * 3 + 16, u'\0');
  int32_t written =
      unorm2_normalize(normalizer, units, length, result.data(), static_cast<int32_t>(result.size()), &error);
  if (error == U_BUFFER_OVERFLOW_ERROR) {
    error = U_ZERO_ERROR;
    result.resize(static_cast<size_t>(written));
    written = unorm2_normalize(normalizer, units, length, result.data(), written, &error);
  }
  if (U_SUCCESS(error)) {
    setUnits(s, reinterpret_cast<const UniChar*>(result.data()), static_cast<size_t>(written), call);
  }
}

}  // namespace
}  // namespace cf

using standin::Gate;

void CFStringNormalize(CFMutableStringRef theString, CFStringNormalizationForm theForm) {
  const Gate gate(__func__);
  MutableString* const s = cf::checkedMutable(theString, __func__);
  if (!gate.fails()) cf::normalize(s, theForm, __func__);
}
