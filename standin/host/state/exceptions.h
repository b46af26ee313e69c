// The exceptions of the host language that were raised.
#pragma once

#include "standin/host/host.h"

namespace standin::host {

// Puts the exception on record, for takeExceptions(); nothing is thrown.
void raise(Exception exception);
// True when the index is from 0 to below the end; otherwise an OutOfBoundsException is on record.
bool requireIndex(int64_t index, int64_t end);

// What a raised exception is thrown as when the settings ask for it.
struct Raised {
  Exception exception;
};

}  // namespace standin::host
