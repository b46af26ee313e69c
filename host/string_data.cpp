#include "string_data.h"

#include <string.h>

#include "owned.h"
#include "services.h"

namespace {

const int32_t kTerminatorSize = 4;  // enough zero bytes to end a text in any encoding

// Copies `length` bytes of the string to a new block, which has `blockLength` bytes and the terminator.
bool copyBytes(REALstring string, int32_t length, int32_t blockLength, uint32_t encoding,
               REALstringData* data) {
  const char* const bytes = StringGetCString(string);
  auto block = allocateZeroed(int64_t{blockLength} + kTerminatorSize);
  if (!bytes || !block) return false;
  if (length > 0) memcpy(block.get(), bytes, static_cast<size_t>(length));
  *data = {block.leak(), length, encoding};
  return true;
}

bool copyConverted(REALstring string, uint32_t encoding, REALstringData* data) {
  const auto converted = adopt(REALConvertString(string, encoding));
  if (!converted) return false;
  const int32_t length = LenB(converted.get());
  return copyBytes(converted.get(), length, length, encoding, data);
}

bool canCopy(REALstring string) {
  return StringGetCString.function() && LenB.function() && string;
}

bool copyStringData(REALstring string, uint32_t encoding, REALstringData* data) {
  if (!canCopy(string)) return false;
  if (encoding == kUnknownEncoding) return copyBytes(string, LenB(string), data->length, encoding, data);
  if (encoding != REALGetStringEncoding(string)) return copyConverted(string, encoding, data);
  const int32_t length = LenB(string);
  return copyBytes(string, length, length, encoding, data);
}

}  // namespace

bool REALGetStringData(REALstring string, uint32_t encoding, REALstringData* data) {
  if (const auto get = PluginGetStringData.function()) return get(string, encoding, data);
  return copyStringData(string, encoding, data);
}

ScopedStringData::ScopedStringData(REALstring string) {
  // copyStringData sizes its block from data_.length.
  if (!PluginGetStringData.function() && canCopy(string)) data_.length = LenB(string);
  filled_ = REALGetStringData(string, kUnknownEncoding, &data_);
}

void ScopedStringData::reset() {
  if (!filled_) return;
  filled_ = false;
  if (const auto dispose = REALDisposeStringData.function()) {
    dispose(&data_);
  } else {
    free(data_.data);
  }
}
