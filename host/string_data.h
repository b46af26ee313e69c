// The bytes of a host string, also on hosts from before the service that hands them out.
#pragma once

#include "records.h"

// Fills `data` with the string's bytes in that encoding, or in the string's own for kUnknownEncoding. False,
// with the data pointer as it was, when they can't be had. What was filled in is given back to the host's
// "PluginDisposeStringData", or to `free` on a host without it.
//
// On a host without the service, and for kUnknownEncoding, data->length must hold at least the string's byte
// length when the call is made: the block is sized from it.
bool REALGetStringData(REALstring string, uint32_t encoding, REALstringData* data);

// A string's bytes in its own encoding, for the time of a scope.
class OwnStringData {
 public:
  explicit OwnStringData(REALstring string);
  OwnStringData(const OwnStringData&) = delete;
  OwnStringData& operator=(const OwnStringData&) = delete;
  ~OwnStringData() noexcept(false) { reset(); }

  const char* bytes() const { return filled_ ? data_.data : nullptr; }  // null when they can't be had
  int32_t length() const { return data_.length; }

  // Gives the bytes back now.
  void reset();

 private:
  REALstringData data_ = {};
  bool filled_;
};
