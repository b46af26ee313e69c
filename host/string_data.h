// The bytes of a host string, also on hosts that lack the service for them.
#pragma once

#include "records.h"

// Fills `data` with the string's bytes in that encoding, or in the string's own for kUnknownEncoding. False,
// with the data pointer unchanged, when the bytes can't be read or converted. The caller gives them back with
// REALDisposeStringData, or with `free` on a host without that service.
//
// For kUnknownEncoding, on a host without the service, the block is sized from data->length, which must be at
// least the string's length in bytes.
bool REALGetStringData(REALstring string, uint32_t encoding, REALstringData* data);

// A string's bytes in its own encoding, given back at the end of a scope.
class ScopedStringData {
 public:
  explicit ScopedStringData(REALstring string);
  ScopedStringData(const ScopedStringData&) = delete;
  ScopedStringData& operator=(const ScopedStringData&) = delete;
  ~ScopedStringData() noexcept(false) { reset(); }

  const char* bytes() const { return filled_ ? data_.data : nullptr; }  // null when they can't be read
  int32_t length() const { return data_.length; }

  // Gives the bytes back now, for the reasons of Owned::reset.
  void reset();

 private:
  REALstringData data_ = {};
  bool filled_;
};
