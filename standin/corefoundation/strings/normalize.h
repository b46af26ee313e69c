// Normalizers over a chosen set of characters.
#pragma once

#include <CoreFoundation/CFString.h>
#include <unicode/unorm2.h>
#include <unicode/uset.h>

namespace cf {

// The form's normalizer for the characters of `among` (frozen); it leaves all others alone. For the life of
// the process. Null without ICU's data.
const UNormalizer2* normalizerFor(CFStringNormalizationForm form, const USet* among);

// The characters that the platform's normalization knows, as a set that the caller may change and then owns.
USet* copyKnownCharacters();

}  // namespace cf
